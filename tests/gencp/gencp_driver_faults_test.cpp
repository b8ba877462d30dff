// The GenCP driver against the in-process simulated camera where simulated time makes the
// case exact: long writes continued, line noise, silence while probing, stopped probes, and the
// baud-rate change with its confirmation. (Fault runs over a pseudo-terminal are in the
// clprotocol suites.)
#include <string>

#include "gencp_driver_harness.h"

namespace gencp_driver_test {
namespace {

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
