// Fault runs against the vqcam-sim program on a pseudo-terminal: lost, damaged, late or refused
// answers, silence, slow commands, the program stopped and resumed. Each call ends with its
// value or the right code, none hangs, and the camera answers normally afterwards.
#include "clprotocol_sim_process.h"

namespace clprotocol_test {
namespace {

struct FaultRun {
  const char* name;
  const char* control;  // the program's fault options; "stop" pauses the program instead
  bool write;
  const char* expected;  // "(Code: N) " or "no exception"
  int settleMs;          // wait for late answers before the camera is used again
};
void PrintTo(const FaultRun& run, std::ostream* os) { *os << run.name; }

class Faults : public SimProgram, public ::testing::WithParamInterface<FaultRun> {};

TEST_P(Faults, EndWithTheRightCodeAndRecover) {
  StartSim();
  Open();
  const FaultRun& run = GetParam();
  const bool stop = std::string(run.control) == "stop";
  if (stop) {
    sim_.Pause();
  } else {
    ASSERT_TRUE(sim_.Control(run.control));
  }
  const std::string outcome = WidthOutcome(run.write);
  EXPECT_NE(std::string::npos, outcome.find(run.expected)) << outcome;
  if (stop) {
    sim_.Resume();
  } else {
    ASSERT_TRUE(sim_.Control(""));
  }
  SleepMs(run.settleMs);
  EXPECT_EQ(run.write && outcome == "no exception" ? 512u : 2048u, ReadU32(kWidthReg));
}

INSTANTIATE_TEST_SUITE_P(
    Table, Faults,
    ::testing::Values(FaultRun{"LostAnswerIsResent", "--drop-answers 1", false, "no exception", 0},
                      FaultRun{"LostWriteAnswerIsNotRepeated", "--drop-answers 2", true,
                               "no exception", 0},
                      FaultRun{"DamagedAnswersAreResent", "--corrupt-answers 2", false,
                               "no exception", 0},
                      FaultRun{"LateAnswerWithinResponseTime", "--answer-delay 200", false,
                               "no exception", 0},
                      FaultRun{"SlowReadSendsPending", "--processing 1500", false, "no exception",
                               0},
                      FaultRun{"BusyOnceIsRetried", "--status 0x8007:1", true, "no exception", 0},
                      FaultRun{"ThreeLostAnswersTimeOut", "--drop-answers 3", false,
                               "(Code: -10004) ", 0},
                      FaultRun{"AnswersTooLateTimeOut", "--answer-delay 2500", false,
                               "(Code: -10004) ", 2500},
                      FaultRun{"SilenceTimesOut", "--silent", true, "(Code: -10004) ", 0},
                      FaultRun{"ErrorStatus", "--status 0x8006:1", false, "(Code: -30006) ", 0},
                      FaultRun{"StoppedProgramTimesOut", "stop", false, "(Code: -10004) ", 100}),
    [](const ::testing::TestParamInfo<FaultRun>& info) { return std::string(info.param.name); });

// The program stopped in the middle of a read and resumed before the driver gives up: the read
// completes.
TEST_F(SimProgram, ProgramResumedWithinTheRetriesCompletesTheRead) {
  StartSim();
  Open();
  sim_.Pause();
  std::thread resume([this] {
    SleepMs(300);
    sim_.Resume();
  });
  uint32_t value = 0;
  EXPECT_NO_THROW(value = ReadU32(kWidthReg));
  resume.join();
  EXPECT_EQ(2048u, value);
}

}  // namespace
}  // namespace clprotocol_test
