// The vqcam-sim program on standard input/output, and its refusal of bad arguments. (Its
// pseudo-terminal transport is exercised by the clprotocol suites.)
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

#include "sim_test_support.h"
#include "vq/gencp/Bootstrap.h"

using namespace vq::gencp;

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
  PacketParser parser;
  parser.feed(std::vector<uint8_t>((std::istreambuf_iterator<char>(out)),
                                   std::istreambuf_iterator<char>()));
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
  for (const char* arguments :
       {" 2>/dev/null", " --stdio --profile /nonexistent 2>/dev/null </dev/null",
        " --bogus 2>/dev/null"}) {
    EXPECT_NE(std::system((program + arguments).c_str()), 0) << arguments;
  }
}
