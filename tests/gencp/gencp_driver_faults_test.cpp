// The GenCP driver against a misbehaving simulated camera: lost, damaged, late or refused
// answers, pending acknowledges, silence, and baud-rate changes. Every call ends with success
// or the right code; none hangs.
#include <string>

#include "gencp_driver_harness.h"

namespace gencp_driver_test {
namespace {

struct FaultCase {
  const char* name;
  void (*inject)(vq::sim::FaultPlan&);
  bool write;
  CLINT32 expected;
};

class Faults : public DriverTest, public ::testing::WithParamInterface<FaultCase> {};

TEST_P(Faults, EndWithTheRightCode) {
  StartCamera();
  const CLUINT32 cookie = Connect();
  ASSERT_NE(0u, cookie);
  sim_->resetStats();
  GetParam().inject(sim_->faults());
  uint32_t value = 0;
  const CLINT32 status =
      GetParam().write ? Write32(cookie, kWidthReg, 512) : Read32(cookie, kWidthReg, value);
  EXPECT_EQ(GetParam().expected, status) << driver_.ErrorText(CL_ERR_GET_LAST_ERROR, cookie);
  if (status == CL_ERR_NO_ERR && !GetParam().write) {
    EXPECT_EQ(2048u, value);
  }
  // The link is usable again once the faults are gone and late answers have come in (they
  // are skipped as stale).
  sim_->faults() = vq::sim::FaultPlan{};
  sim_->advance(6'000'000);
  EXPECT_EQ(CL_ERR_NO_ERR, Read32(cookie, kWidthReg, value));
}

INSTANTIATE_TEST_SUITE_P(
    Table, Faults,
    ::testing::Values(
        FaultCase{"LostAnswerIsResent", [](vq::sim::FaultPlan& f) { f.dropAnswers = 1; }, false,
                  CL_ERR_NO_ERR},
        FaultCase{"LostWriteAnswerIsResentNotReexecuted",
                  [](vq::sim::FaultPlan& f) { f.dropAnswers = 2; }, true, CL_ERR_NO_ERR},
        FaultCase{"DamagedAnswerIsResent", [](vq::sim::FaultPlan& f) { f.corruptAnswers = 2; },
                  false, CL_ERR_NO_ERR},
        FaultCase{"LostCommandBytesAreResent",
                  [](vq::sim::FaultPlan& f) { f.dropIncomingBytes = 5; }, false, CL_ERR_NO_ERR},
        FaultCase{"LateAnswerWithinTimeOut", [](vq::sim::FaultPlan& f) { f.answerDelayMs = 200; },
                  false, CL_ERR_NO_ERR},
        FaultCase{"SlowReadSendsPending",
                  [](vq::sim::FaultPlan& f) { f.processingDelayMs = 1500; }, false, CL_ERR_NO_ERR},
        FaultCase{"ThreeLostAnswersTimeOut", [](vq::sim::FaultPlan& f) { f.dropAnswers = 3; },
                  false, CL_ERR_TIMEOUT},
        FaultCase{"SilenceTimesOut", [](vq::sim::FaultPlan& f) { f.silent = true; }, false,
                  CL_ERR_TIMEOUT},
        FaultCase{"SilenceTimesOutOnWrite", [](vq::sim::FaultPlan& f) { f.silent = true; }, true,
                  CL_ERR_TIMEOUT},
        FaultCase{"AnswerTooLateTimesOut", [](vq::sim::FaultPlan& f) { f.answerDelayMs = 5000; },
                  false, CL_ERR_TIMEOUT},
        FaultCase{"AccessDenied",
                  [](vq::sim::FaultPlan& f) {
                    f.forcedStatus = 0x8006;
                    f.forcedStatusCount = 1;
                  },
                  false, -30006},
        FaultCase{"BusyOnceIsRetried",
                  [](vq::sim::FaultPlan& f) {
                    f.forcedStatus = 0x8007;
                    f.forcedStatusCount = 1;
                  },
                  true, CL_ERR_NO_ERR},
        FaultCase{"BusyForeverGivesUp",
                  [](vq::sim::FaultPlan& f) {
                    f.forcedStatus = 0x8007;
                    f.forcedStatusCount = 1000;
                  },
                  false, -30007},
        FaultCase{"WarningOnWrite",
                  [](vq::sim::FaultPlan& f) {
                    f.forcedStatus = 0x0001;
                    f.forcedStatusCount = 1;
                  },
                  true, -30100}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(DriverTest, LostAnswerIsRepeatedFromTheStoredAcknowledge) {
  StartCamera();
  const CLUINT32 cookie = Connect();
  sim_->resetStats();
  sim_->faults().dropAnswers = 1;
  ASSERT_EQ(CL_ERR_NO_ERR, Write32(cookie, kWidthReg, 256));
  EXPECT_EQ(1u, sim_->stats().repeatedAnswers);
  uint32_t value = 0;
  ASSERT_EQ(CL_ERR_NO_ERR, Read32(cookie, kWidthReg, value));
  EXPECT_EQ(256u, value);
}

TEST_F(DriverTest, LongWriteReturnsPendingAndCompletesWhenContinued) {
  StartCamera();
  const CLUINT32 cookie = Connect();
  sim_->faults().processingDelayMs = 3000;
  CLINT32 status = Write32(cookie, kWidthReg, 640, 500);
  EXPECT_EQ(CL_ERR_PENDING_WRITE, status);
  int continues = 0;
  while (status == CL_ERR_PENDING_WRITE && continues < 50) {
    status = driver_.ContinueWriteRegister(serial_.get(), cookie, 1, 500);
    ++continues;
  }
  EXPECT_EQ(CL_ERR_NO_ERR, status);
  EXPECT_GE(sim_->stats().pendingAcks, 1u);
  sim_->faults() = vq::sim::FaultPlan{};
  uint32_t value = 0;
  ASSERT_EQ(CL_ERR_NO_ERR, Read32(cookie, kWidthReg, value));
  EXPECT_EQ(640u, value);
}

// The device cannot abort the write it runs: the next call waits it out instead of being
// refused as busy.
TEST_F(DriverTest, CancelledPendingWriteLeavesTheDeviceUsable) {
  StartCamera();
  const CLUINT32 cookie = Connect();
  sim_->faults().processingDelayMs = 3000;
  ASSERT_EQ(CL_ERR_PENDING_WRITE, Write32(cookie, kWidthReg, 320, 500));
  EXPECT_EQ(CL_ERR_NO_ERR, driver_.ContinueWriteRegister(serial_.get(), cookie, 0, 500));
  sim_->faults() = vq::sim::FaultPlan{};
  uint32_t value = 0;
  EXPECT_EQ(CL_ERR_NO_ERR, Read32(cookie, kWidthReg, value));
  EXPECT_EQ(320u, value);
}

// Waits follow the device's maximum response time, not the caller's time-out.
TEST_F(DriverTest, SlowButPunctualDeviceIsWaitedFor) {
  StartCamera("korva-area", "max_response_time_ms = 2000");
  const CLUINT32 cookie = Connect();
  sim_->faults().answerDelayMs = 1500;
  uint32_t value = 0;
  EXPECT_EQ(CL_ERR_NO_ERR, Read32(cookie, kWidthReg, value, 200));
  EXPECT_EQ(2048u, value);
}

TEST_F(DriverTest, RandomLineNoiseNeverHangsAndMostCallsSucceed) {
  StartCamera();
  const CLUINT32 cookie = Connect();
  sim_->faults().byteCorruptRate = 0.01;
  sim_->faults().byteDropRate = 0.01;
  sim_->faults().seed = 7;
  int ok = 0;
  for (int i = 0; i < 40; ++i) {
    uint32_t value = 0;
    const CLINT32 status = Read32(cookie, kWidthReg, value);
    if (status == CL_ERR_NO_ERR) {
      EXPECT_EQ(2048u, value);
      ++ok;
    } else {
      EXPECT_EQ(CL_ERR_TIMEOUT, status);
    }
  }
  EXPECT_GE(ok, 35);
}

TEST_F(DriverTest, SilentPortGivesNoDeviceFound) {
  StartCamera();
  sim_->faults().silent = true;
  CLUINT32 cookie = 0;
  EXPECT_EQ(CL_ERR_NO_DEVICE_FOUND, Probe("KORVA", nullptr, &cookie, 200));
  EXPECT_EQ(0u, cookie);
}

TEST_F(DriverTest, StopProbeParameterEndsProbes) {
  StartCamera();
  const CLUINT32 stop = 1;
  ASSERT_EQ(CL_ERR_NO_ERR, driver_.SetParam(nullptr, CLP_STOP_PROBE_DEVICE, 0,
                                            reinterpret_cast<const CLINT8*>(&stop), 4, 0));
  EXPECT_EQ(CL_ERR_NO_DEVICE_FOUND, Probe("KORVA"));
  const CLUINT32 go = 0;
  ASSERT_EQ(CL_ERR_NO_ERR, driver_.SetParam(nullptr, CLP_STOP_PROBE_DEVICE, 0,
                                            reinterpret_cast<const CLINT8*>(&go), 4, 0));
  EXPECT_EQ(CL_ERR_NO_ERR, Probe("KORVA"));
}

class BaudRates : public DriverTest {
 protected:
  CLUINT32 GetParam32(CLP_PARAMS param, CLUINT32 cookie) {
    CLUINT32 value = 0;
    EXPECT_EQ(CL_ERR_NO_ERR, driver_.GetParam(serial_.get(), param, cookie,
                                              reinterpret_cast<CLINT8*>(&value), 4, 500));
    return value;
  }
  CLINT32 SetBaud(CLUINT32 cookie, CLUINT32 value) {
    return driver_.SetParam(serial_.get(), CLP_DEVICE_BAUDERATE, cookie,
                            reinterpret_cast<const CLINT8*>(&value), 4, 500);
  }
};

TEST_F(BaudRates, SwitchToFastAndBackWithConfirmation) {
  StartCamera();
  const CLUINT32 cookie = Connect();
  EXPECT_EQ(0xFFu, GetParam32(CLP_DEVICE_SUPPORTED_BAUDERATES, cookie));
  EXPECT_EQ(CL_BAUDRATE_9600, GetParam32(CLP_DEVICE_BAUDERATE, cookie));
  ASSERT_EQ(CL_ERR_NO_ERR, SetBaud(cookie, CL_BAUDRATE_115200));
  EXPECT_EQ(CL_BAUDRATE_115200, sim_->device().baudRate());
  EXPECT_FALSE(sim_->device().awaitingBaudConfirmation());
  EXPECT_EQ(CL_BAUDRATE_115200, GetParam32(CLP_DEVICE_BAUDERATE, cookie));
  uint32_t value = 0;
  EXPECT_EQ(CL_ERR_NO_ERR, Read32(cookie, kWidthReg, value));
  ASSERT_EQ(CL_ERR_NO_ERR, SetBaud(cookie, CL_BAUDRATE_9600));
  EXPECT_EQ(CL_BAUDRATE_9600, sim_->device().baudRate());
  EXPECT_EQ(0u, sim_->device().baudFallbacks());
}

// A write of the serial bootstrap block's rate register (the description's baud-rate feature)
// takes the change procedure: the port follows and the device gets its confirmation, also when
// the device answers the change with a pending acknowledge.
TEST_F(BaudRates, RegisterWriteTakesTheChangeProcedure) {
  for (const char* overrides : {"", "baud_switch_ms = 800"}) {
    StartCamera("korva-area", overrides);
    const CLUINT32 cookie = Connect();
    ASSERT_EQ(CL_ERR_NO_ERR, Write32(cookie, kCurrentBaudReg, CL_BAUDRATE_115200)) << overrides;
    sim_->advance(1'000'000);
    EXPECT_EQ(CL_BAUDRATE_115200, sim_->device().baudRate()) << overrides;
    EXPECT_EQ(CL_BAUDRATE_115200, sim_->hostBaudRate()) << overrides;
    EXPECT_EQ(0u, sim_->device().baudFallbacks()) << overrides;
    sim_->resetStats();
    uint32_t value = 0;
    EXPECT_EQ(CL_ERR_NO_ERR, Read32(cookie, kCurrentBaudReg, value));
    EXPECT_EQ(CL_BAUDRATE_115200, value);
    EXPECT_EQ(1u, sim_->stats().commands) << "no resend needed";
    EXPECT_EQ(CL_ERR_NO_ERR, Write32(cookie, kCurrentBaudReg, CL_BAUDRATE_9600));
    EXPECT_EQ(CL_BAUDRATE_9600, sim_->device().baudRate());
    EXPECT_EQ(-30002, Write32(cookie, kCurrentBaudReg, 3));  // not one rate: the device refuses
  }
}

// A probe tries the rate that last worked, then 9600, then the port's other rates: it finds a
// device left at another rate, also by a process that has never seen it (a fresh driver).
TEST_F(BaudRates, ProbeFindsTheDeviceAtAnyRateThePortOffers) {
  StartCamera();
  const CLUINT32 cookie = Connect();
  ASSERT_EQ(CL_ERR_NO_ERR, SetBaud(cookie, CL_BAUDRATE_57600));
  ASSERT_EQ(CL_ERR_NO_ERR, driver_.Disconnect(cookie));
  sim_->resetStats();
  EXPECT_EQ(CL_ERR_NO_ERR, Probe("KORVA"));
  EXPECT_EQ(0u, sim_->stats().garbledBytes) << "the last rate is tried first";
  driver_.CloseLib();
  ASSERT_EQ(CL_ERR_NO_ERR, driver_.InitLib(nullptr, CLP_LOG_ERROR));
  std::string id;
  EXPECT_EQ(CL_ERR_NO_ERR, Probe("KORVA", &id));
  EXPECT_EQ(kAreaScanId, id);
  EXPECT_EQ(CL_BAUDRATE_57600, sim_->device().baudRate());
}

TEST_F(BaudRates, AutomaxPicksTheFastestCommonRate) {
  StartCamera();
  serial_->supported = CL_BAUDRATE_9600 | CL_BAUDRATE_57600;
  const CLUINT32 cookie = Connect();
  EXPECT_EQ(CL_BAUDRATE_9600 | CL_BAUDRATE_57600, GetParam32(CLP_DEVICE_SUPPORTED_BAUDERATES, cookie));
  ASSERT_EQ(CL_ERR_NO_ERR, SetBaud(cookie, CL_BAUDRATE_AUTOMAX));
  EXPECT_EQ(CL_BAUDRATE_57600, sim_->device().baudRate());
}

TEST_F(BaudRates, RefusesRatesOutsideTheCommonSet) {
  StartCamera("korva-line");  // supports 9600, 19200, 57600, 115200
  const CLUINT32 cookie = Connect();
  EXPECT_EQ(CL_ERR_BAUD_RATE_NOT_SUPPORTED, SetBaud(cookie, CL_BAUDRATE_230400));
  EXPECT_EQ(CL_ERR_PARAM_DATA_VALUE, SetBaud(cookie, CL_BAUDRATE_9600 | CL_BAUDRATE_19200));
  EXPECT_EQ(CL_ERR_PARAM_READ_ONLY,
            driver_.SetParam(serial_.get(), CLP_DEVICE_SUPPORTED_BAUDERATES, cookie,
                             reinterpret_cast<const CLINT8*>(&cookie), 4, 500));
  CLUINT32 value = CL_BAUDRATE_19200;
  EXPECT_EQ(CL_ERR_PARAM_DATA_SIZE,
            driver_.SetParam(serial_.get(), CLP_DEVICE_BAUDERATE, cookie,
                             reinterpret_cast<const CLINT8*>(&value), 2, 500));
  EXPECT_EQ(CL_BAUDRATE_9600, sim_->device().baudRate());
}

// Swallows the first write made after a switch away from 9600: the confirmation.
class LosesFirstConfirmation : public SimSerial {
 public:
  using SimSerial::SimSerial;
  CLINT32 CLPROTOCOL clSetBaudRate(CLUINT32 baudRate) override {
    if (baudRate != CL_BAUDRATE_9600 && !dropped_) armed_ = true;
    return SimSerial::clSetBaudRate(baudRate);
  }
  CLINT32 CLPROTOCOL clSerialWrite(CLINT8* buffer, CLUINT32* bufferSize, CLUINT32 timeout) override {
    if (armed_) {
      armed_ = false;
      dropped_ = true;
      return CL_ERR_NO_ERR;  // "sent", but never arrives
    }
    return SimSerial::clSerialWrite(buffer, bufferSize, timeout);
  }

 private:
  bool armed_ = false;
  bool dropped_ = false;
};

TEST_F(BaudRates, LostConfirmationFallsBackAndRetries) {
  StartCamera();
  serial_ = std::make_unique<LosesFirstConfirmation>(*sim_);
  const CLUINT32 cookie = Connect();
  ASSERT_EQ(CL_ERR_NO_ERR, SetBaud(cookie, CL_BAUDRATE_38400));
  EXPECT_EQ(1u, sim_->device().baudFallbacks());
  EXPECT_EQ(CL_BAUDRATE_38400, sim_->device().baudRate());
  uint32_t value = 0;
  EXPECT_EQ(CL_ERR_NO_ERR, Read32(cookie, kWidthReg, value));
}

}  // namespace
}  // namespace gencp_driver_test
