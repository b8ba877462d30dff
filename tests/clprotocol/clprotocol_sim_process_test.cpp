// CCLPort end to end against the real vqcam-sim program: the test starts it on a new
// pseudo-terminal, reads the device path it prints, and drives the camera through a termios
// serial adapter registered with CCLPort and the GenCP driver found next to the library.
// Nothing reports the host's baud rate to the simulator: the program follows the camera.
#include <CLProtocol/CLPort.h>
#include <CLProtocol/DeviceID.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <thread>

#include "clprotocol_port_access.h"
#include "clprotocol_test_serial.h"

extern char** environ;

namespace clprotocol_test {
namespace {

using GenICam::gcstring;
using Clock = std::chrono::steady_clock;

constexpr int kStartTimeoutMs = 10000;
constexpr int kStopTimeoutMs = 5000;
constexpr CLUINT32 kProbeTimeoutMs = 1000;
constexpr int64_t kVendorNameReg = 0x0004;
constexpr int64_t kUnmappedAddress = 0x7FF000;

// One example camera and what the test expects of it.
struct Camera {
  const char* folder;
  const char* shortTemplate;
  const char* descriptionFile;
  int64_t rwRegister;
};
void PrintTo(const Camera& camera, std::ostream* os) { *os << camera.folder; }

const Camera kCameras[] = {
    {"korva-area", "KORVA#AreaScan#A2040M", "KORVA_AreaScan.xml", 0x40108},  // zipped
    {"korva-line", "KORVA#LineScan#L4096", "KORVA_LineScan.xml", 0x50000},   // plain
};

std::string DriverDirectory() { return std::string(VQ_BINARY_DIR) + "/lib/clprotocol/Linux64_x64"; }
std::string ExampleDir(const Camera& camera) {
  return std::string(VQ_SOURCE_DIR) + "/examples/" + camera.folder;
}

int MsLeft(Clock::time_point deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
  return left.count() > 0 ? static_cast<int>(left.count()) : 0;
}

// The vqcam-sim program as a child process. Its standard input stays open (end of input would
// stop it, which is also what happens if this test process dies).
class SimProcess {
 public:
  ~SimProcess() { Stop(); }

  // Starts the program and waits (bounded) for the device path on its standard output.
  bool Start(const std::string& profileDir, std::string* error) {
    int in[2], out[2];
    if (pipe2(in, O_CLOEXEC) != 0) return Fail("pipe failed", error);
    if (pipe2(out, O_CLOEXEC) != 0) return Fail("pipe failed", error, in);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    std::string program = VQ_SIM_PROGRAM;
    std::string pty = "--pty", option = "--profile", dir = profileDir;
    char* argv[] = {program.data(), pty.data(), option.data(), dir.data(), nullptr};
    const int spawned = posix_spawn(&pid_, program.c_str(), &actions, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    close(in[0]);
    close(out[1]);
    stdin_ = in[1];
    stdout_ = out[0];
    if (spawned != 0) {
      pid_ = -1;
      *error = "cannot start " + program + ": errno " + std::to_string(spawned);
      return false;
    }
    return ReadPath(error);
  }

  const std::string& DevicePath() const { return path_; }

  // SIGTERM, a bounded wait, SIGKILL if the program did not end. Says how it ended.
  std::string Stop() {
    std::string how = "not running";
    if (pid_ > 0) {
      kill(pid_, SIGTERM);
      int status = 0;
      if (WaitFor(kStopTimeoutMs, &status)) {
        how = WIFEXITED(status) ? "exit " + std::to_string(WEXITSTATUS(status))
                                : "signal " + std::to_string(WTERMSIG(status));
      } else {
        kill(pid_, SIGKILL);
        waitpid(pid_, &status, 0);
        how = "killed after ignoring SIGTERM";
      }
      pid_ = -1;
    }
    for (int* fd : {&stdin_, &stdout_}) {
      if (*fd >= 0) close(*fd);
      *fd = -1;
    }
    return how;
  }

 private:
  static bool Fail(const std::string& why, std::string* error, int* pair = nullptr) {
    *error = why;
    if (pair) {
      close(pair[0]);
      close(pair[1]);
    }
    return false;
  }

  bool ReadPath(std::string* error) {
    const auto deadline = Clock::now() + std::chrono::milliseconds(kStartTimeoutMs);
    std::string line;
    while (line.find('\n') == std::string::npos) {
      pollfd fd{stdout_, POLLIN, 0};
      const int ready = poll(&fd, 1, MsLeft(deadline));
      if (ready < 0 && errno == EINTR) continue;
      if (ready <= 0) return Fail("no device path within the start time", error);
      char chunk[128];
      const ssize_t got = read(stdout_, chunk, sizeof chunk);
      if (got <= 0) return Fail("the program ended before printing a path: " + line, error);
      line.append(chunk, static_cast<std::size_t>(got));
    }
    path_ = line.substr(0, line.find('\n'));
    return path_.rfind("/dev/", 0) == 0 || Fail("not a device path: " + path_, error);
  }

  bool WaitFor(int timeoutMs, int* status) {
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    do {
      if (waitpid(pid_, status, WNOHANG) == pid_) return true;
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    } while (MsLeft(deadline) > 0);
    return false;
  }

  pid_t pid_ = -1;
  int stdin_ = -1;
  int stdout_ = -1;
  std::string path_;
};

class SimProgramPort : public ::testing::TestWithParam<Camera> {
 protected:
  void SetUp() override {
    unsetenv("GENICAM_CLPROTOCOL");  // the library's own location is enough
    std::string error;
    ASSERT_TRUE(sim_.Start(ExampleDir(GetParam()), &error)) << error;
    adapter_ = std::make_unique<TermiosAdapter>(sim_.DevicePath());
    portID_ = CLProtocol::CCLPort::RegisterSerial("SimProgram", adapter_.get());
  }
  void TearDown() override {
    port_.Disconnect();
    CLProtocol::CCLPort::UnRegisterSerials();
    adapter_.reset();
    if (!sim_.DevicePath().empty()) {
      EXPECT_EQ("exit 0", sim_.Stop());  // a clean shutdown on SIGTERM
    }
  }

  gcstring DeviceTemplate() {
    GenICam::gcstring_vector templates;
    CLProtocol::CCLPort::GetDeviceIDTemplates(templates);
    const std::string wanted =
        DriverDirectory() + "#libCLProtocolGenCP.so#" + GetParam().shortTemplate;
    for (const auto& t : templates) {
      if (wanted == t.c_str()) return t;
    }
    ADD_FAILURE() << "no template " << wanted << " among " << templates.size();
    return gcstring();
  }

  std::string DescriptionFile() const {
    std::ifstream in(ExampleDir(GetParam()) + "/" + GetParam().descriptionFile, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }

  void ExpectDescription(bool useMaxBaudrate) {
    const gcstring xml = port_.GetXML(useMaxBaudrate);
    const std::string expected = DescriptionFile();
    ASSERT_FALSE(expected.empty());
    EXPECT_TRUE(expected == std::string(xml.c_str(), xml.size()))
        << "description of " << xml.size() << " bytes differs from the file's " << expected.size();
  }

  uint32_t ReadU32(int64_t address) { return clprotocol_test::ReadU32(port_, address); }
  void WriteU32(int64_t address, uint32_t value) {
    clprotocol_test::WriteU32(port_, address, value);
  }
  std::string ErrorOf(void (*call)(CLProtocol::CCLPort&)) {
    return clprotocol_test::ErrorOf(port_, call);
  }

  SimProcess sim_;
  std::unique_ptr<TermiosAdapter> adapter_;
  gcstring portID_;
  CLProtocol::CCLPort port_;
};

TEST_P(SimProgramPort, ProbesConnectsDownloadsAndAccessesRegisters) {
  EXPECT_STREQ("Local#SimProgram", portID_.c_str());
  const gcstring deviceID =
      CLProtocol::CCLPort::ProbeDevice(portID_, DeviceTemplate(), kProbeTimeoutMs);
  CLProtocol::CDeviceID parsed;
  ASSERT_TRUE(parsed.FromString(deviceID)) << deviceID.c_str();
  EXPECT_EQ(GetParam().shortTemplate, std::string(parsed.GetCameraManufacturer().c_str()) + "#" +
                                          parsed.GetCameraFamily().c_str() + "#" +
                                          parsed.GetCameraModel().c_str());
  EXPECT_EQ(DriverDirectory() + "/libCLProtocolGenCP.so", parsed.GetDriverPath().c_str());

  port_.Connect(portID_, deviceID);
  EXPECT_STREQ(deviceID.c_str(), port_.GetDeviceID().c_str());
  EXPECT_EQ(GenApi::RW, port_.GetAccessMode());
  ExpectDescription(false);

  WriteU32(GetParam().rwRegister, 1280);
  EXPECT_EQ(1280u, ReadU32(GetParam().rwRegister));
  WriteU32(GetParam().rwRegister, 512);
  EXPECT_EQ(512u, ReadU32(GetParam().rwRegister));
}

TEST_P(SimProgramPort, SwitchesTo115200AndBack) {
  port_.Connect(portID_, DeviceTemplate());
  EXPECT_EQ(CL_BAUDRATE_9600, port_.GetDeviceBauderate());
  ASSERT_NE(0u, port_.SupportedBaudrates() & CL_BAUDRATE_115200);
  port_.SetDeviceBauderate(CL_BAUDRATE_115200);
  EXPECT_EQ(CL_BAUDRATE_115200, port_.GetDeviceBauderate());  // read from the camera
  EXPECT_EQ(CL_BAUDRATE_115200, adapter_->lastRate);
  WriteU32(GetParam().rwRegister, 640);
  EXPECT_EQ(640u, ReadU32(GetParam().rwRegister));
  port_.SetDeviceBauderate(CL_BAUDRATE_9600);
  EXPECT_EQ(CL_BAUDRATE_9600, port_.GetDeviceBauderate());
  EXPECT_EQ(CL_BAUDRATE_9600, adapter_->lastRate);
  EXPECT_EQ(640u, ReadU32(GetParam().rwRegister));
  // The boosted download switches up and back down the same way.
  ExpectDescription(true);
  EXPECT_GE(adapter_->highestRate, CL_BAUDRATE_115200);
  EXPECT_EQ(CL_BAUDRATE_9600, port_.GetDeviceBauderate());
}

TEST_P(SimProgramPort, ReportsInvalidAddressAndWriteProtection) {
  port_.Connect(portID_, DeviceTemplate());
  const std::string invalid = ErrorOf([](CLProtocol::CCLPort& p) {
    uint8_t bytes[4];
    p.Read(bytes, kUnmappedAddress, 4);
  });
  EXPECT_NE(std::string::npos, invalid.find("(Code: -30003) ")) << invalid;
  const std::string writeProtected = ErrorOf([](CLProtocol::CCLPort& p) {
    const uint8_t bytes[4] = {1, 2, 3, 4};
    p.Write(bytes, kVendorNameReg, 4);
  });
  EXPECT_NE(std::string::npos, writeProtected.find("(Code: -30004) ")) << writeProtected;
  // The connection survives both refusals and the name is untouched.
  uint8_t name[5] = {};
  port_.Read(name, kVendorNameReg, 4);
  EXPECT_STREQ("KORV", reinterpret_cast<const char*>(name));
}

INSTANTIATE_TEST_SUITE_P(ZippedAndPlain, SimProgramPort, ::testing::ValuesIn(kCameras),
                         [](const ::testing::TestParamInfo<Camera>& info) {
                           std::string name = info.param.folder;
                           for (char& c : name) c = c == '-' ? '_' : c;
                           return name;
                         });

}  // namespace
}  // namespace clprotocol_test
