// Baud-rate parameters: the device's rates read once from the serial bootstrap block, the
// current rate as this driver set it, and the change procedure with the confirmation write at
// the new rate (restored to the old rate when the confirmation fails).
#include <vq/gencp/Bootstrap.h>
#include <vq/gencp/Endian.h>
#include <vq/platform/sleep.h>

#include "DriverFailure.h"
#include "Operations.h"
#include "PortMemory.h"

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

uint64_t currentRateRegister(const Connection& connection) {
  return *connection.bootstrap.sbrmAddress + vq::gencp::sbrm::kCurrentBaudrate;
}

}  // namespace

// Only this driver changes the device's rate, and it switches the heartbeat off, so the rate it
// last set is the device's: asking the device would cost a transaction at the present rate.
uint32_t currentBaudRate(Connection& connection) { return connection.baudBit; }

uint32_t supportedBaudRates(ISerial* serial, const Connection& connection) {
  CLUINT32 port = 0;
  if (serial->clGetSupportedBaudRates(&port) != CL_ERR_NO_ERR) port = CL_BAUDRATE_9600;
  return (connection.bootstrap.baudRates & (port | CL_BAUDRATE_9600)) & 0xFF;
}

bool isBaudRateRegister(const Connection& connection, uint64_t address, uint64_t size) {
  return connection.bootstrap.sbrmAddress && size == 4 && address == currentRateRegister(connection);
}

void changeBaudRate(ISerial* serial, Connection& connection, uint32_t baudBit, uint32_t timeoutMs) {
  const uint32_t supported = supportedBaudRates(serial, connection);
  if (baudBit == CL_BAUDRATE_AUTOMAX) baudBit = highestBit(supported);
  if (!isSingleBaudBit(baudBit)) {
    throw DriverFailure(CL_ERR_PARAM_DATA_VALUE, "not a single baud-rate value");
  }
  if ((supported & baudBit) == 0) {
    throw DriverFailure(CL_ERR_BAUD_RATE_NOT_SUPPORTED, "device or port lacks that baud rate");
  }
  if (baudBit == connection.baudBit) return;
  const uint64_t reg = currentRateRegister(connection);
  const std::vector<uint8_t> value = bigEndian32(baudBit);
  const uint32_t oldBit = connection.baudBit;
  for (int round = 0; round < kChangeRounds; ++round) {
    // The device may take its time to switch (a pending acknowledge): wait for its answer.
    connection.channel(serial).writeMemToEnd(reg, value, timeoutMs);
    const CLINT32 portStatus = serial->clSetBaudRate(baudBit);
    if (portStatus != CL_ERR_NO_ERR) {
      // The device falls back by itself when no confirmation comes.
      vq::platform::SleepMilliseconds(vq::gencp::sbrm::kHostRetryDelayMs);
      throw DriverFailure(portStatus, "the port refused the new baud rate");
    }
    connection.baudBit = baudBit;
    if (connection.channel(serial).writeOnce(reg, value, kConfirmationTimeoutMs)) {
      PortMemory::rememberRate(serial, baudBit);
      return;
    }
    serial->clSetBaudRate(oldBit);
    connection.baudBit = oldBit;
    vq::platform::SleepMilliseconds(vq::gencp::sbrm::kHostRetryDelayMs);
  }
  throw DriverFailure(CL_ERR_TIMEOUT, "the device did not confirm the new baud rate");
}

}  // namespace vq::gencpdrv
