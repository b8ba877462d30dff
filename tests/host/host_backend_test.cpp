// The serial backends on their own, each with a real simulated camera behind it: a GenCP
// read of the camera's model name crosses each one, the baud rate follows requests, and a
// Camera Link serial library is checked before use.
#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "backend/ClSerialBackend.h"
#include "backend/SerialPortBackend.h"
#include "backend/SimulatorBackend.h"
#include "host_test_support.h"
#include "vq/gencp/Bootstrap.h"
#include "vq/gencp/Builders.h"
#include "vq/gencp/PacketParser.h"

namespace {

using vq::host::SerialBackend;

std::string ModelNameThrough(SerialBackend& backend) {
  const auto command = vq::gencp::encodeReadMem(7, vq::gencp::abrm::kModelName, 64);
  std::uint32_t count = static_cast<std::uint32_t>(command.size());
  EXPECT_EQ(backend.write(command.data(), count, 1000), vq::host::kClOk);
  vq::gencp::PacketParser parser;
  for (int i = 0; i < 4096; ++i) {
    std::uint8_t byte = 0;
    std::uint32_t one = 1;
    if (backend.read(&byte, one, 2000) != vq::host::kClOk) return "(no answer)";
    parser.feed(&byte, 1);
    if (auto result = parser.next()) {
      const auto& scd = result->packet.scd;
      return std::string(scd.begin(), std::find(scd.begin(), scd.end(), 0));
    }
  }
  return "(garbage)";
}

struct BackendCase {
  const char* name;
  std::function<std::unique_ptr<SerialBackend>(vq::test::SimProcess*)> make;
};

const BackendCase kBackends[] = {
    {"simulator",
     [](vq::test::SimProcess*) { return std::make_unique<vq::host::SimulatorBackend>("", ""); }},
    {"port",
     [](vq::test::SimProcess* process) {
       return std::make_unique<vq::host::SerialPortBackend>(process->DevicePath());
     }},
    {"clser",
     [](vq::test::SimProcess*) {
       return std::make_unique<vq::host::ClSerialBackend>(VQ_CLSER_LIBRARY, 0);
     }},
};

class Backends : public ::testing::TestWithParam<BackendCase> {};

TEST_P(Backends, CarryGenCPAndFollowTheBaudRate) {
  const auto process = hosttest::StartSimulator();
  auto backend = GetParam().make(process.get());
  EXPECT_EQ(ModelNameThrough(*backend), "A2040M");
  EXPECT_EQ(backend->baudRate(), 1u);
  EXPECT_NE(backend->supportedBaudRates() & 0x10, 0u);
  EXPECT_EQ(backend->setBaudRate(0x10), vq::host::kClOk);
  EXPECT_EQ(backend->baudRate(), 0x10u);
  EXPECT_NE(backend->setBaudRate(0x300), vq::host::kClOk);
  EXPECT_EQ(backend->baudRate(), 0x10u);
}

INSTANTIATE_TEST_SUITE_P(Host, Backends, ::testing::ValuesIn(kBackends),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(ClSerialArgument, SplitsLibraryAndIndex) {
  struct Case {
    const char* argument;
    bool ok;
    const char* library;
    std::uint32_t index;
  };
  const Case cases[] = {{"/lib/libclserx.so", true, "/lib/libclserx.so", 0},
                        {"/lib/libclserx.so:3", true, "/lib/libclserx.so", 3},
                        {"libclserx.so:x", false, "", 0},
                        {"/odd:dir/libclserx.so", true, "/odd:dir/libclserx.so", 0},
                        {"lib.so:", false, "", 0}};
  for (const auto& c : cases) {
    std::string library;
    std::uint32_t index = 99;
    ASSERT_EQ(vq::host::ClSerialBackend::ParseLibraryArgument(c.argument, library, index), c.ok)
        << c.argument;
    if (!c.ok) continue;
    EXPECT_EQ(library, c.library);
    EXPECT_EQ(index, c.index);
  }
}

}  // namespace
