// vqcam on bad input: each failure ends with its exit code and a one-line message that
// says what to do, in text and in JSON; nothing crashes or hangs.
#include <gtest/gtest.h>

#include "host_test_support.h"

namespace {

using hosttest::Vqcam;

struct BadInput {
  const char* what;
  std::vector<std::string> args;
  int exitCode;
  const char* message;
};

std::string GenICamLibrary() { return std::string(VQ_BINARY_DIR) + "/lib/libGCBase.so"; }

const BadInput kBadInputs[] = {
    {"unknown feature",
     {"--simulate", "get", "NoSuchFeature"},
     2,
     "unknown feature 'NoSuchFeature'"},
    {"value out of range",
     {"--simulate", "set", "Width=999999"},
     1,
     "the camera refused Width = 999999"},
    {"read-only feature", {"--simulate", "set", "DeviceModelName=X"}, 1, "is read-only"},
    {"value of the wrong kind", {"--simulate", "set", "Width=wide"}, 2, "takes a number"},
    {"unknown entry", {"--simulate", "set", "Pixel Format=Mono99"}, 2, "has no entry 'Mono99'"},
    {"button set as a value", {"--simulate", "set", "Acquisition Start=1"}, 2, "use 'press"},
    {"unknown command", {"--simulate", "frobnicate"}, 2, "unknown command 'frobnicate'"},
    {"assignment without value", {"--simulate", "set", "Width"}, 2, "NAME=VALUE"},
    {"missing argument", {"--simulate", "get"}, 2, "usage: vqcam get NAME..."},
    {"no command", {"--simulate"}, 2, "no command given"},
    {"unknown option", {"--colour", "info"}, 2, "run 'vqcam --help'"},
    {"two connections", {"--simulate", "--port", "/dev/null", "info"}, 2, "excludes"},
    {"unknown profile", {"--simulate=nosuch", "info"}, 2, "no simulated camera profile 'nosuch'"},
    {"port path that does not exist",
     {"--port", "/dev/vqcam-no-such-port", "info"},
     2,
     "cannot open serial port /dev/vqcam-no-such-port"},
    {"library without the Camera Link functions",
     {"--clser", GenICamLibrary(), "info"},
     2,
     "is not a Camera Link serial library (it has no clSerialInit)"},
    {"library that does not exist",
     {"--clser", "/nonexistent/libclser.so", "info"},
     2,
     "cannot load the Camera Link serial library"},
    {"port index beyond the library's ports",
     {"--clser", VQ_CLSER_LIBRARY ":9", "info"},
     2,
     "choose an index from 0 to"},
    {"camera text that matches no description",
     {"--clser", VQ_CLSER_LIBRARY, "--camera", "Z9", "info"},
     2,
     "no camera description was chosen"},
    {"module that does not exist",
     {"--module", "/nonexistent/libVQ.so", "info"},
     2,
     "cannot load the camera module"},
    {"unknown visibility",
     {"--visibility", "wizard", "info"},
     2,
     "unknown visibility level 'wizard'"},
    {"unsupported baud rate", {"--simulate", "baud", "12345"}, 2, "not a Camera Link baud rate"},
    {"import of a missing file",
     {"--simulate", "import", "/nonexistent/file.txt"},
     2,
     "cannot read"},
};

class BadInputs : public ::testing::TestWithParam<BadInput> {};

TEST_P(BadInputs, FailWithCodeAndOneLineMessage) {
  const BadInput& input = GetParam();
  const auto text = Vqcam(input.args);
  EXPECT_EQ(text.exitCode, input.exitCode) << text.err;
  EXPECT_NE(text.err.find(input.message), std::string::npos) << text.err;
  EXPECT_EQ(text.err.find("vqcam: "), text.err.rfind("vqcam: "))
      << "one failure line: " << text.err;

  std::vector<std::string> args = {"--json"};
  args.insert(args.end(), input.args.begin(), input.args.end());
  const auto json = Vqcam(args);
  EXPECT_EQ(json.exitCode, input.exitCode);
  for (const auto& line : hosttest::JsonLines(json.out)) {
    if (line.contains("error")) {
      EXPECT_EQ(line["exitCode"], input.exitCode);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Host, BadInputs, ::testing::ValuesIn(kBadInputs), [](const auto& info) {
  std::string name = info.param.what;
  for (char& c : name) c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
  return name;
});

// The camera on the pseudo-terminal stops (its process is suspended) in the middle of a
// session: the next command ends the session with exit code 2 and says what happened.
TEST(LostCamera, ACameraThatStopsAnsweringEndsTheSession) {
  const auto simulator = hosttest::StartSimulator();
  hosttest::Child vqcam;
  ASSERT_TRUE(vqcam.start({hosttest::VqcamProgram(), "--port", simulator->DevicePath(), "--camera",
                           "A2040M", "run", "-"},
                          {{"VQ_DIALOG", "none"}}));
  vqcam.write("get Width\n");
  ASSERT_TRUE(vqcam.waitForOutput("Width", 120000)) << "the camera did not open";
  simulator->Pause();
  vqcam.write("set Width=512\nget Width\n");
  const auto result = vqcam.finish(120000);
  simulator->Resume();
  EXPECT_EQ(result.exitCode, 2) << result.err;
  EXPECT_NE(result.err.find("the camera stopped answering on " + simulator->DevicePath()),
            std::string::npos)
      << result.err;
}

}  // namespace
