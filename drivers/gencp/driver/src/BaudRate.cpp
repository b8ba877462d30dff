// Baud-rate parameters: read through the serial bootstrap block, changed with the confirmation
// write at the new rate, and restored to the old rate when the confirmation fails.
#include <vq/gencp/Bootstrap.h>
#include <vq/gencp/Endian.h>
#include <vq/platform/sleep.h>

#include "DriverFailure.h"
#include "Operations.h"

namespace vq::gencpdrv {

namespace {

// Rounds of the change procedure before giving up (the second one after the fallback pause).
constexpr int kChangeRounds = 2;
// The confirmation must reach the device within its fallback window.
constexpr uint32_t kConfirmationTimeoutMs = 200;

bool isSingleBaudBit(uint32_t bit) { return bit != 0 && (bit & (bit - 1)) == 0 && bit <= 0x80; }

uint32_t highestBit(uint32_t bits) {
  uint32_t best = 0;
  for (uint32_t bit = 1; bit <= 0x80; bit <<= 1) {
    if (bits & bit) best = bit;
  }
  return best;
}

std::vector<uint8_t> bigEndian32(uint32_t value) {
  std::vector<uint8_t> bytes(4);
  vq::gencp::writeU32(bytes.data(), value);
  return bytes;
}

}  // namespace

uint32_t currentBaudRate(ISerial* serial, Connection& connection, uint32_t timeoutMs) {
  if (!connection.bootstrap.sbrmAddress) return connection.baudBit;
  Channel channel = connection.channel(serial);
  const auto bytes = channel.readMem(
      *connection.bootstrap.sbrmAddress + vq::gencp::sbrm::kCurrentBaudrate, 4, timeoutMs);
  return vq::gencp::readU32(bytes.data());
}

uint32_t supportedBaudRates(ISerial* serial, Connection& connection, uint32_t timeoutMs) {
  uint32_t device = CL_BAUDRATE_9600;
  if (connection.bootstrap.sbrmAddress) {
    Channel channel = connection.channel(serial);
    const auto bytes = channel.readMem(
        *connection.bootstrap.sbrmAddress + vq::gencp::sbrm::kSupportedBaudrates, 4, timeoutMs);
    device = vq::gencp::readU32(bytes.data()) | CL_BAUDRATE_9600;
  }
  CLUINT32 port = 0;
  if (serial->clGetSupportedBaudRates(&port) != CL_ERR_NO_ERR) port = CL_BAUDRATE_9600;
  return (device & (port | CL_BAUDRATE_9600)) & 0xFF;
}

void changeBaudRate(ISerial* serial, Connection& connection, uint32_t baudBit, uint32_t timeoutMs) {
  const uint32_t supported = supportedBaudRates(serial, connection, timeoutMs);
  if (baudBit == CL_BAUDRATE_AUTOMAX) baudBit = highestBit(supported);
  if (!isSingleBaudBit(baudBit)) {
    throw DriverFailure(CL_ERR_PARAM_DATA_VALUE, "not a single baud-rate value");
  }
  if ((supported & baudBit) == 0) {
    throw DriverFailure(CL_ERR_BAUD_RATE_NOT_SUPPORTED, "device or port lacks that baud rate");
  }
  if (baudBit == connection.baudBit) return;
  const uint64_t reg = *connection.bootstrap.sbrmAddress + vq::gencp::sbrm::kCurrentBaudrate;
  const std::vector<uint8_t> value = bigEndian32(baudBit);
  const uint32_t oldBit = connection.baudBit;
  for (int round = 0; round < kChangeRounds; ++round) {
    {
      Channel atOldRate = connection.channel(serial);
      std::optional<PendingWrite> pending;
      const CLINT32 status = atOldRate.writeMem(reg, value.data(), value.size(), timeoutMs, pending);
      if (status == CL_ERR_PENDING_WRITE) {
        throw DriverFailure(CL_ERR_TIMEOUT, "the device kept the baud-rate change pending");
      }
    }
    const CLINT32 portStatus = serial->clSetBaudRate(baudBit);
    if (portStatus != CL_ERR_NO_ERR) {
      // The device falls back by itself when no confirmation comes.
      vq::platform::SleepMilliseconds(vq::gencp::sbrm::kHostRetryDelayMs);
      throw DriverFailure(portStatus, "the port refused the new baud rate");
    }
    connection.baudBit = baudBit;
    Channel atNewRate = connection.channel(serial);
    if (atNewRate.writeOnce(reg, value, kConfirmationTimeoutMs)) return;
    serial->clSetBaudRate(oldBit);
    connection.baudBit = oldBit;
    vq::platform::SleepMilliseconds(vq::gencp::sbrm::kHostRetryDelayMs);
  }
  throw DriverFailure(CL_ERR_TIMEOUT, "the device did not confirm the new baud rate");
}

}  // namespace vq::gencpdrv
