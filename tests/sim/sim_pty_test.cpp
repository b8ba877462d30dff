// Stream transports through real parts: the server on a pseudo-terminal with a serial-port
// client, and the vqcam-sim program on standard input/output.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <thread>

#include "sim_test_support.h"
#include "vq/gencp/Bootstrap.h"
#include "vq/gencp/Endian.h"
#include "vq/platform/pseudo_terminal.h"
#include "vq/platform/serial_port.h"
#include "vq/sim/StreamServer.h"

using namespace vq;
using namespace vq::gencp;

namespace {

std::optional<Packet> readPacket(platform::SerialPort& port, uint32_t timeoutMs) {
  PacketParser parser;
  uint8_t header[kHeaderSize];
  if (port.Read(header, sizeof header, timeoutMs) != static_cast<int64_t>(sizeof header))
    return std::nullopt;
  parser.feed(header, sizeof header);
  std::vector<uint8_t> scd(readU16(header + 12));
  if (!scd.empty() &&
      port.Read(scd.data(), scd.size(), timeoutMs) != static_cast<int64_t>(scd.size())) {
    return std::nullopt;
  }
  parser.feed(scd);
  auto result = parser.next();
  if (!result || !result->ok()) return std::nullopt;
  return result->packet;
}

}  // namespace

TEST(SimPty, ServesGenCPOnAPseudoTerminal) {
  sim::Simulator simulator(simtest::areaProfile());
  platform::PseudoTerminal terminal;
  std::string error;
  if (!terminal.Open(&error)) GTEST_SKIP() << "no pseudo-terminals here: " << error;
  std::atomic<bool> stop{false};
  std::string ended = "not run";
  std::thread server([&] {
    sim::PseudoTerminalChannel channel(terminal);
    sim::ServeOptions options;
    options.stop = &stop;
    ended = sim::serve(simulator, channel, options);
  });
  platform::SerialPort port;
  ASSERT_TRUE(port.Open(terminal.SlavePath(), &error)) << error;
  const auto request = encodeReadMem(0, abrm::kModelName, 64);
  ASSERT_TRUE(port.Write(request.data(), request.size()));
  auto ack = readPacket(port, 5000);
  ASSERT_TRUE(ack);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(ack->scd.data())), "A2040M");
  for (const auto& write : {encodeWriteMem(1, abrm::kAccessPrivilege, simtest::u32Bytes(1)),
                            encodeWriteMem(2, 0x40108, simtest::u32Bytes(256))}) {
    ASSERT_TRUE(port.Write(write.data(), write.size()));
    ack = readPacket(port, 5000);
    ASSERT_TRUE(ack);
    EXPECT_EQ(ack->status(), kStatusSuccess);
  }
  // The client's line speed is the host's rate: at another one the camera hears garbage.
  ASSERT_TRUE(port.SetBaudRate(19200));
  ASSERT_TRUE(port.Write(request.data(), request.size()));
  EXPECT_FALSE(readPacket(port, 300));
  stop = true;
  server.join();
  EXPECT_EQ(ended, "");
  EXPECT_EQ(simulator.stats().commands, 3u);
  EXPECT_GT(simulator.stats().garbledBytes, 0u);
}

#ifdef VQ_SIM_PROGRAM
TEST(SimProgram, AnswersOnStandardInputAndOutput) {
  const std::string dir = std::string(VQ_BINARY_DIR) + "/sim_program_test";
  std::system(("mkdir -p '" + dir + "'").c_str());
  const std::string input = dir + "/in.bin";
  const std::string output = dir + "/out.bin";
  {
    std::ofstream in(input, std::ios::binary);
    for (const auto& packet :
         {encodeReadMem(0, abrm::kGenCPVersion, 4), encodeReadMem(1, abrm::kManufacturerName, 64),
          encodeReadMem(2, 0x30000, 4)}) {
      in.write(reinterpret_cast<const char*>(packet.data()),
               static_cast<std::streamsize>(packet.size()));
    }
  }
  const std::string command = std::string("'") + VQ_SIM_PROGRAM + "' --stdio --profile '" +
                              simtest::areaProfileDir() + "' < '" + input + "' > '" + output + "'";
  ASSERT_EQ(std::system(command.c_str()), 0) << command;
  std::ifstream out(output, std::ios::binary);
  const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(out)),
                                   std::istreambuf_iterator<char>());
  PacketParser parser;
  parser.feed(bytes);
  std::vector<Packet> answers;
  while (auto result = parser.next()) {
    if (result->ok()) answers.push_back(result->packet);
  }
  ASSERT_EQ(answers.size(), 3u);
  EXPECT_EQ(answers[0].scd, simtest::u32Bytes(0x00010003));
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(answers[1].scd.data())), "KORVA");
  EXPECT_EQ(answers[2].status(), kStatusInvalidAddress);
}

TEST(SimProgram, RefusesBadArguments) {
  const std::string program = std::string("'") + VQ_SIM_PROGRAM + "'";
  EXPECT_NE(std::system((program + " 2>/dev/null").c_str()), 0);
  EXPECT_NE(
      std::system((program + " --stdio --profile /nonexistent 2>/dev/null </dev/null").c_str()), 0);
  EXPECT_NE(std::system((program + " --bogus 2>/dev/null").c_str()), 0);
}
#endif
