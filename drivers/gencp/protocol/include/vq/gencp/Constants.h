// GenCP protocol numbers used on a serial (Camera Link) link.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vq::gencp {

// Framing sizes. Every packet is: preamble, CCD checksum, SCD checksum, channel id
// (the serial prefix, 8 bytes), then the 8-byte CCD, then `length` bytes of SCD.
constexpr uint16_t kPreamble = 0x0100;
constexpr uint8_t kPreambleByte0 = 0x01;
constexpr uint8_t kPreambleByte1 = 0x00;
constexpr std::size_t kPrefixSize = 8;
constexpr std::size_t kCcdSize = 8;
constexpr std::size_t kHeaderSize = kPrefixSize + kCcdSize;
constexpr std::size_t kMaxPacketSize = 1024;
constexpr std::size_t kMaxScdSize = kMaxPacketSize - kHeaderSize;
// A WriteMem SCD carries an 8-byte address before the data.
constexpr std::size_t kMaxWriteData = kMaxScdSize - 8;
constexpr std::size_t kMaxReadData = kMaxScdSize;
constexpr uint16_t kControlChannel = 0;

// CCD flags of a command.
constexpr uint16_t kFlagRequestAck = 0x4000;
constexpr uint16_t kFlagCommandResend = 0x8000;

// Command identifiers: bit 0 marks an acknowledge.
constexpr uint16_t kReadMemCmd = 0x0800;
constexpr uint16_t kReadMemAck = 0x0801;
constexpr uint16_t kWriteMemCmd = 0x0802;
constexpr uint16_t kWriteMemAck = 0x0803;
constexpr uint16_t kPendingAck = 0x0805;
constexpr uint16_t kReadMemStackedCmd = 0x0806;
constexpr uint16_t kReadMemStackedAck = 0x0807;
constexpr uint16_t kWriteMemStackedCmd = 0x0808;
constexpr uint16_t kWriteMemStackedAck = 0x0809;
constexpr uint16_t kEventCmd = 0x0C00;
constexpr uint16_t kEventAck = 0x0C01;
constexpr uint16_t kAckBit = 0x0001;

inline constexpr bool isAcknowledge(uint16_t commandId) { return (commandId & kAckBit) != 0; }
inline constexpr uint16_t ackIdFor(uint16_t commandId) { return commandId | kAckBit; }

// Acknowledge status codes. Bit 15 set means the command failed; clear means it was
// executed (possibly with a warning).
constexpr uint16_t kStatusSuccess = 0x0000;
constexpr uint16_t kStatusNotImplemented = 0x8001;
constexpr uint16_t kStatusInvalidParameter = 0x8002;
constexpr uint16_t kStatusInvalidAddress = 0x8003;
constexpr uint16_t kStatusWriteProtect = 0x8004;
constexpr uint16_t kStatusBadAlignment = 0x8005;
constexpr uint16_t kStatusAccessDenied = 0x8006;
constexpr uint16_t kStatusBusy = 0x8007;
constexpr uint16_t kStatusMsgTimeout = 0x800B;
constexpr uint16_t kStatusInvalidHeader = 0x800E;
constexpr uint16_t kStatusWrongConfig = 0x800F;
constexpr uint16_t kStatusError = 0x8FFF;

inline constexpr bool isErrorStatus(uint16_t status) { return (status & 0x8000) != 0; }

// Returns the status name ("GENCP_WRITE_PROTECT"), or nullptr for an unknown code.
const char* statusName(uint16_t status);

// Serial bit rates as bits, identical in GenCP's serial bootstrap block and CLProtocol.
constexpr uint32_t kBaud9600 = 0x01;
constexpr uint32_t kBaud19200 = 0x02;
constexpr uint32_t kBaud38400 = 0x04;
constexpr uint32_t kBaud57600 = 0x08;
constexpr uint32_t kBaud115200 = 0x10;
constexpr uint32_t kBaud230400 = 0x20;
constexpr uint32_t kBaud460800 = 0x40;
constexpr uint32_t kBaud921600 = 0x80;
constexpr uint32_t kAllBaudBits = 0xFF;

// Bits per second of a single baud-rate bit, 0 when the value is not exactly one known bit.
uint32_t baudBitToRate(uint32_t bit);
// The bit of a rate in bits per second, 0 when the rate is not one of the eight.
uint32_t baudRateToBit(uint32_t bitsPerSecond);

}  // namespace vq::gencp
