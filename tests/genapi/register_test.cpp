// Register-backed nodes: IntReg lengths, endianness and sign, MaskedIntReg
// bit numbering, FloatReg, StringReg and raw Register text forms.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <sstream>
#include <string>

#include "TestPort.h"

namespace {

using namespace GenApi;
using genapi_test::Loaded;
using genapi_test::Reg;

std::string IntReg(int length, const char* endian, const char* sign) {
  return genapi_test::IntReg(
      "R", 0x40, "RW",
      std::string("<Sign>") + sign + "</Sign><Endianess>" + endian + "</Endianess>", length);
}

// "A7 E5" as bytes.
std::vector<uint8_t> Bytes(const std::string& hex) {
  std::vector<uint8_t> out;
  std::istringstream in(hex);
  for (unsigned byte; in >> std::hex >> byte;) out.push_back(uint8_t(byte));
  return out;
}

TEST(IntReg, EveryLengthEndiannessAndSign) {
  for (int length = 1; length <= 8; ++length) {
    for (const char* endian : {"LittleEndian", "BigEndian"}) {
      for (const char* sign : {"Unsigned", "Signed"}) {
        SCOPED_TRACE(std::to_string(length) + endian + sign);
        Loaded m(IntReg(length, endian, sign));
        IInteger* r = m.As<IInteger>("R");
        const bool isSigned = std::strcmp(sign, "Signed") == 0;
        const int bits = 8 * length;
        const int64_t max = bits == 64 ? INT64_MAX
                            : isSigned ? (int64_t(1) << (bits - 1)) - 1
                                       : (int64_t(1) << bits) - 1;
        const int64_t min = !isSigned ? 0 : bits == 64 ? INT64_MIN : -(int64_t(1) << (bits - 1));
        EXPECT_EQ(r->GetMax(), max);
        EXPECT_EQ(r->GetMin(), min);
        // Byte k of the register holds 0x11*(k+1); check the interpretation.
        std::vector<uint8_t> bytes;
        for (int k = 0; k < length; ++k) bytes.push_back(uint8_t(0x81 + k));
        m.port.Poke(0x40, bytes);
        uint64_t raw = 0;
        for (int k = 0; k < length; ++k) {
          const int index = std::strcmp(endian, "BigEndian") == 0 ? k : length - 1 - k;
          raw = (raw << 8) | bytes[index];
        }
        int64_t expected = static_cast<int64_t>(raw);
        if (isSigned && bits < 64)
          expected = static_cast<int64_t>(raw << (64 - bits)) >> (64 - bits);
        r->GetNode()->InvalidateNode();
        EXPECT_EQ(r->GetValue(), expected);
        // And the write puts the same bytes back.
        m.port.Poke(0x40, std::vector<uint8_t>(length, 0));
        // An 8-byte unsigned register cannot hold more than INT64_MAX as a verified value.
        r->SetValue(expected, bits < 64 || isSigned);
        EXPECT_EQ(m.port.Peek(0x40, length), bytes);
        if (bits < 64) {
          EXPECT_THROW(r->SetValue(max + 1, true), GenICam::OutOfRangeException);
        }
      }
    }
  }
}

TEST(IntReg, IsBothIntegerAndRegister) {
  Loaded m(IntReg(4, "LittleEndian", "Unsigned"));
  CRegisterPtr reg = m.ref._GetNode("R");
  ASSERT_TRUE(reg.IsValid());
  EXPECT_EQ(reg->GetAddress(), 0x40);
  EXPECT_EQ(reg->GetLength(), 4);
  const uint8_t bytes[4] = {1, 2, 3, 4};
  reg->Set(bytes, 4);
  EXPECT_EQ(m.As<IInteger>("R")->GetValue(), 0x04030201);
  uint8_t out[4] = {};
  reg->Get(out, 4);
  EXPECT_EQ(std::memcmp(out, bytes, 4), 0);
  EXPECT_THROW(reg->Set(bytes, 3), GenICam::OutOfRangeException);
}

// MaskedIntReg bit numbering: bit 0 is the least significant bit of a
// little-endian register and the most significant of a big-endian one.
TEST(MaskedIntReg, BitNumberingSignAndReadModifyWrite) {
  const struct {
    int length;
    const char* endian;
    int lsb, msb;
    const char* sign;
    const char* before;
    int64_t value, min, max, written;
    const char* after;  // empty: not written
  } cases[] = {
      {4, "LittleEndian", 4, 11, "Unsigned", "A7 E5 CD AB", 0x5A, 0, 255, 0x3C, "C7 E3 CD AB"},
      {8, "BigEndian", 15, 8, "Unsigned", "11 22 33 44 55 66 77 88", 0x22, 0, 255, 0xEE,
       "11 EE 33 44 55 66 77 88"},
      {2, "BigEndian", 11, 0, "Unsigned", "AB CD", 0xABC, 0, 4095, 0, ""},
      {4, "LittleEndian", 0, 3, "Signed", "0F 00 00 00", -1, -8, 7, 0, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.length) + c.endian + std::to_string(c.lsb));
    Loaded m(Reg("MaskedIntReg", "M", 0, "RW",
                 "<LSB>" + std::to_string(c.lsb) + "</LSB><MSB>" + std::to_string(c.msb) +
                     "</MSB><Sign>" + c.sign + "</Sign><Endianess>" + c.endian + "</Endianess>",
                 c.length));
    m.port.Poke(0, Bytes(c.before));
    IInteger* f = m.As<IInteger>("M");
    EXPECT_EQ(f->GetValue(), c.value);
    EXPECT_EQ(f->GetMin(), c.min);
    EXPECT_EQ(f->GetMax(), c.max);
    if (!*c.after) continue;
    f->SetValue(c.written);  // the other bits are kept
    EXPECT_EQ(m.port.Peek(0, c.length), Bytes(c.after));
  }
  Loaded wo(Reg("MaskedIntReg", "M", 0, "WO", "<Bit>3</Bit>"));
  wo.port.PokeLE32(0, 0xFFFFFFFF);
  wo.As<IInteger>("M")->SetValue(1);  // a write-only register is not read before the write
  EXPECT_EQ(wo.port.reads, 0);
  EXPECT_EQ(wo.port.PeekLE32(0), 8u);
}

TEST(FloatReg, FourAndEightBytesBothEndiannesses) {
  for (int length : {4, 8}) {
    for (const char* endian : {"LittleEndian", "BigEndian"}) {
      SCOPED_TRACE(std::to_string(length) + endian);
      Loaded m(Reg("FloatReg", "F", 0x10, "RW",
                   std::string("<Endianess>") + endian + "</Endianess>", length));
      IFloat* f = m.As<IFloat>("F");
      f->SetValue(-2.5);
      EXPECT_DOUBLE_EQ(f->GetValue(), -2.5);
      std::vector<uint8_t> bytes = m.port.Peek(0x10, length);
      if (std::strcmp(endian, "BigEndian") == 0) std::reverse(bytes.begin(), bytes.end());
      if (length == 4) {
        float v;
        std::memcpy(&v, bytes.data(), 4);
        EXPECT_EQ(v, -2.5f);
      } else {
        double v;
        std::memcpy(&v, bytes.data(), 8);
        EXPECT_EQ(v, -2.5);
      }
    }
  }
  Loaded bad(Reg("FloatReg", "F", 0, "RO", "", 3));
  EXPECT_THROW(bad.As<IFloat>("F")->GetValue(), GenICam::OutOfRangeException);
}

TEST(StringReg, ReadsUpToTheFirstNulAndPadsWrites) {
  Loaded m(Reg("StringReg", "S", 0x80, "RW", "", 8));
  m.port.Poke(0x80, {'a', 'b', 'c', 0, 'x', 'y', 0, 0});
  IString* s = m.As<IString>("S");
  EXPECT_EQ(std::string(s->GetValue().c_str()), "abc");
  EXPECT_EQ(s->GetMaxLength(), 8);
  s->SetValue("hi");
  EXPECT_EQ(m.port.Peek(0x80, 8), (std::vector<uint8_t>{'h', 'i', 0, 0, 0, 0, 0, 0}));
  EXPECT_THROW(s->SetValue("much too long"), GenICam::OutOfRangeException);
  EXPECT_EQ(genapi_test::Property(s->GetNode(), "Length"), "8");
}

TEST(Register, HexTextForms) {
  Loaded m(Reg("Register", "R", 0, "RW", "", 3));
  m.port.Poke(0, {0x0A, 0xFF, 0x01});
  IRegister* r = m.As<IRegister>("R");
  EXPECT_EQ(std::string(r->ToString().c_str()), "0x0aff01");
  r->FromString("0x112233");
  EXPECT_EQ(m.port.Peek(0, 3), (std::vector<uint8_t>{0x11, 0x22, 0x33}));
  for (const char* bad : {"112233", "0x123", "0xzz", "0x1122334455"})
    EXPECT_THROW(r->FromString(bad), GenICam::GenericException) << bad;
  EXPECT_THROW(r->FromString("0x12G4"), GenICam::InvalidArgumentException);
}

TEST(Register, AddressFromIndexAndPointers) {
  Loaded m(R"(
    <Integer Name="Base"><Value>0x1000</Value></Integer>
    <Integer Name="Idx"><Value>3</Value></Integer>
    <Integer Name="Off"><Value>0x10</Value></Integer>
    <IntReg Name="A"><Address>4</Address><pAddress>Base</pAddress><pIndex Offset="8">Idx</pIndex>
      <Length>4</Length><AccessMode>RO</AccessMode><pPort>Device</pPort></IntReg>
    <IntReg Name="B"><pAddress>Base</pAddress><pIndex pOffset="Off">Idx</pIndex>
      <Length>4</Length><AccessMode>RO</AccessMode><pPort>Device</pPort></IntReg>
    <IntReg Name="C"><Address>0</Address><pIndex>Idx</pIndex>
      <Length>2</Length><AccessMode>RO</AccessMode><pPort>Device</pPort></IntReg>)");
  EXPECT_EQ(m.As<IRegister>("A")->GetAddress(), 0x1000 + 4 + 3 * 8);
  EXPECT_EQ(m.As<IRegister>("B")->GetAddress(), 0x1000 + 3 * 0x10);
  EXPECT_EQ(m.As<IRegister>("C")->GetAddress(), 3 * 2);  // offset defaults to the length
}

TEST(Register, PortSwapsWordsWhenAsked) {
  genapi_test::MemoryPort port;
  CNodeMapRef ref;
  ref._LoadXMLFromString(
      genapi_test::Describe(
          "<Port Name=\"P\"><SwapEndianess>Yes</SwapEndianess></Port><IntReg Name=\"R\"><Address>0"
          "</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>P</pPort></IntReg>")
          .c_str());
  ASSERT_TRUE(ref._Connect(&port, "P"));
  port.PokeLE32(0, 0x11223344);
  EXPECT_EQ(CIntegerPtr(ref._GetNode("R"))->GetValue(), 0x44332211);
}

}  // namespace
