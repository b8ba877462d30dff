// Serial ports over real pseudo-terminal pairs: raw byte transparency at
// several speeds, time-outs, large writes, reconnection, refusal of bad input.
#include "vq/platform/serial_port.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "vq/platform/pseudo_terminal.h"

namespace {

using vq::platform::PseudoTerminal;
using vq::platform::SerialPort;
using Bytes = std::vector<std::uint8_t>;

Bytes EveryByteValue() {
  Bytes bytes(256);
  for (int i = 0; i < 256; ++i) bytes[i] = static_cast<std::uint8_t>(i);
  return bytes;
}

Bytes Pattern(std::size_t size) {
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i)
    bytes[i] = static_cast<std::uint8_t>((i * 7 + i / 251) & 0xff);
  return bytes;
}

class SerialPortTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string error;
    ASSERT_TRUE(pty_.Open(&error)) << error;
    ASSERT_FALSE(pty_.SlavePath().empty());
    ASSERT_TRUE(port_.Open(pty_.SlavePath(), &error)) << error;
  }

  PseudoTerminal pty_;
  SerialPort port_;
};

TEST_F(SerialPortTest, EveryByteValueCrossesBothWaysAtEachSpeed) {
  const Bytes sent = EveryByteValue();
  for (std::uint32_t baudRate : {9600u, 115200u, 921600u}) {
    std::string error;
    ASSERT_TRUE(port_.SetBaudRate(baudRate, &error)) << error;
    EXPECT_EQ(port_.BaudRate(), baudRate);
    EXPECT_EQ(pty_.SlaveBaudRate(), baudRate);  // the far end sees what the client set

    ASSERT_TRUE(port_.Write(sent.data(), sent.size(), 2000, &error)) << error;
    Bytes atMaster(sent.size());
    ASSERT_EQ(pty_.Read(atMaster.data(), atMaster.size(), 2000, &error), 256) << error;
    EXPECT_EQ(atMaster, sent) << baudRate;

    ASSERT_TRUE(pty_.Write(sent.data(), sent.size(), 2000, &error)) << error;
    Bytes atClient(sent.size());
    ASSERT_EQ(port_.Read(atClient.data(), atClient.size(), 2000, &error), 256) << error;
    EXPECT_EQ(atClient, sent) << baudRate;
  }
}

TEST_F(SerialPortTest, ReadsReturnWhatCameBeforeTheTimeOutOrAsSoonAsDataIsThere) {
  const std::uint8_t reply[] = {0x01, 0x02, 0x03};
  ASSERT_TRUE(pty_.Write(reply, sizeof reply));
  std::uint8_t buffer[64] = {};
  EXPECT_EQ(port_.Read(buffer, 10, 200), 3);
  EXPECT_EQ(buffer[2], 0x03);
  ASSERT_TRUE(port_.Write(reply, 1));
  EXPECT_EQ(pty_.ReadSome(buffer, sizeof buffer, 5000), 1);
  EXPECT_EQ(buffer[0], 0x01);
}

TEST_F(SerialPortTest, WritesLargerThanTheTerminalBufferArriveWhole) {
  const Bytes sent = Pattern(1 << 20);
  struct Direction {
    const char* label;
    vq::platform::DeviceStream* writer;
    vq::platform::DeviceStream* reader;
  } directions[] = {{"client to master", &port_, &pty_}, {"master to client", &pty_, &port_}};
  for (const Direction& d : directions) {
    Bytes received(sent.size());
    std::int64_t count = -1;
    std::thread reader([&] { count = d.reader->Read(received.data(), received.size(), 20000); });
    std::string error;
    EXPECT_TRUE(d.writer->Write(sent.data(), sent.size(), 20000, &error)) << d.label << error;
    reader.join();
    EXPECT_EQ(count, static_cast<std::int64_t>(sent.size())) << d.label;
    EXPECT_TRUE(received == sent) << d.label;
  }
}

TEST_F(SerialPortTest, WriteNobodyReadsTimesOut) {
  const Bytes sent = Pattern(1 << 20);
  std::string error;
  EXPECT_FALSE(pty_.Write(sent.data(), sent.size(), 100, &error));
  EXPECT_NE(error.find("timed out"), std::string::npos) << error;
}

TEST_F(SerialPortTest, FlushDiscardsPendingInput) {
  const std::uint8_t data[] = {1, 2, 3, 4};
  ASSERT_TRUE(pty_.Write(data, sizeof data));
  std::uint8_t first = 0;
  ASSERT_EQ(port_.Read(&first, 1, 2000), 1);
  std::string error;
  EXPECT_TRUE(port_.Flush(&error)) << error;
  std::uint8_t rest[4];
  EXPECT_EQ(port_.Read(rest, sizeof rest, 50), 0);
}

TEST_F(SerialPortTest, ClientsMayComeAndGo) {
  port_.Close();
  EXPECT_FALSE(port_.IsOpen());
  std::uint8_t buffer[4];
  std::string error;
  EXPECT_EQ(pty_.ReadSome(buffer, sizeof buffer, 50, &error), 0) << error;

  SerialPort next;
  ASSERT_TRUE(next.Open(pty_.SlavePath(), &error)) << error;
  EXPECT_EQ(next.BaudRate(), SerialPort::kDefaultBaudRate);
  const std::uint8_t hello[] = {'h', 'i'};
  ASSERT_TRUE(next.Write(hello, sizeof hello));
  EXPECT_EQ(pty_.Read(buffer, 2, 2000), 2);
  EXPECT_EQ(buffer[0], 'h');

  SerialPort moved(std::move(next));
  EXPECT_FALSE(next.IsOpen());  // NOLINT(bugprone-use-after-move)
  EXPECT_TRUE(moved.IsOpen());
  EXPECT_EQ(moved.DevicePath(), pty_.SlavePath());
  ASSERT_TRUE(moved.Write(hello, 1));
  EXPECT_EQ(pty_.Read(buffer, 1, 2000), 1);
}

TEST_F(SerialPortTest, BaudRatesOutsideTheTableAreRefused) {
  for (std::uint32_t rate : {9600u, 19200u, 38400u, 57600u, 115200u, 230400u, 460800u, 921600u}) {
    EXPECT_TRUE(SerialPort::IsSupportedBaudRate(rate)) << rate;
    std::string error;
    EXPECT_TRUE(port_.SetBaudRate(rate, &error)) << rate << ": " << error;
  }
  ASSERT_TRUE(port_.SetBaudRate(57600));
  for (std::uint32_t rate : {0u, 1u, 9601u, 100000u, 12345678u, 0xffffffffu}) {
    std::string error;
    EXPECT_FALSE(SerialPort::IsSupportedBaudRate(rate)) << rate;
    EXPECT_FALSE(port_.SetBaudRate(rate, &error)) << rate;
    EXPECT_NE(error.find(std::to_string(rate)), std::string::npos) << error;
    EXPECT_EQ(port_.BaudRate(), 57600u);
  }
  const std::vector<std::uint32_t> rates = SerialPort::SupportedBaudRates();
  EXPECT_TRUE(std::is_sorted(rates.begin(), rates.end()));
}

// Nothing arriving gives 0 after the time-out; null buffers -1, zero sizes 0.
TEST_F(SerialPortTest, TimeOutsNullBuffersAndZeroSizes) {
  std::uint8_t b[16];
  std::string error;
  const std::int64_t results[][2] = {
      {port_.Read(b, sizeof b, 50, &error), 0},   {port_.ReadSome(b, sizeof b, 50), 0},
      {port_.Read(b, sizeof b, 0), 0},            {pty_.Read(b, sizeof b, 50), 0},
      {pty_.ReadSome(b, sizeof b, 0), 0},         {port_.Read(nullptr, 4, 10, &error), -1},
      {port_.ReadSome(nullptr, 4, 10), -1},       {port_.Read(nullptr, 0, 10), 0},
      {port_.ReadSome(nullptr, 0, 10), 0},        {port_.Write(nullptr, 4), false},
      {port_.Write(nullptr, 0), true},            {pty_.Write(nullptr, 1), false}};
  for (const auto& r : results) EXPECT_EQ(r[0], r[1]) << &r - results;
  EXPECT_NE(error.find("null"), std::string::npos);
}

TEST(SerialPortClosedTest, EveryOperationFailsCleanly) {
  SerialPort port;
  std::uint8_t buffer[4];
  std::string error;
  EXPECT_EQ(port.Read(buffer, sizeof buffer, 10, &error), -1);
  EXPECT_NE(error.find("not open"), std::string::npos) << error;
  EXPECT_EQ(port.ReadSome(buffer, sizeof buffer, 10), -1);
  EXPECT_FALSE(port.Write(buffer, sizeof buffer));
  EXPECT_FALSE(port.Flush());
  EXPECT_FALSE(port.SetBaudRate(9600));
  port.Close();
  PseudoTerminal pty;
  EXPECT_EQ(pty.Read(buffer, sizeof buffer, 10), -1);
  EXPECT_TRUE(pty.SlavePath().empty());
}

TEST(SerialPortOpenTest, BadDevicesAreRefusedWithAText) {
  const std::string paths[] = {"", "/nonexistent/ttyVQ0", "/dev/null", std::string("/dev/\0x", 7)};
  for (const std::string& path : paths) {
    SerialPort port;
    std::string error;
    EXPECT_FALSE(port.Open(path, &error)) << path;
    EXPECT_FALSE(port.IsOpen()) << path;
    EXPECT_FALSE(error.empty()) << path;
  }
}

TEST(SerialPortClientCloseTest, MasterGoneIsAnErrorNotAHang) {
  PseudoTerminal pty;
  ASSERT_TRUE(pty.Open());
  SerialPort port;
  ASSERT_TRUE(port.Open(pty.SlavePath()));
  pty.Close();
  std::uint8_t buffer[4];
  std::string error;
  EXPECT_EQ(port.Read(buffer, sizeof buffer, 2000, &error), -1);
  EXPECT_FALSE(error.empty());
}

}  // namespace
