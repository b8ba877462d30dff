// A decoded GenCP packet and its wire encoding.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "vq/gencp/Constants.h"

namespace vq::gencp {

struct Packet {
  uint16_t channelId = kControlChannel;
  // Flags for a command, status code for an acknowledge (same CCD field).
  uint16_t flagsOrStatus = 0;
  uint16_t commandId = 0;
  uint16_t requestId = 0;
  std::vector<uint8_t> scd;

  bool isAck() const { return isAcknowledge(commandId); }
  uint16_t status() const { return flagsOrStatus; }
  uint16_t flags() const { return flagsOrStatus; }
  bool requestsAck() const { return (flagsOrStatus & kFlagRequestAck) != 0; }
  bool isResend() const { return (flagsOrStatus & kFlagCommandResend) != 0; }
};

bool operator==(const Packet& a, const Packet& b);
inline bool operator!=(const Packet& a, const Packet& b) { return !(a == b); }

// Serialises a packet with both checksums. An SCD longer than kMaxScdSize is an error the
// caller must avoid; encode() truncates nothing and returns an empty vector in that case.
std::vector<uint8_t> encode(const Packet& packet);

// Decoded SCDs of the commands and acknowledges the serial link uses. Each returns nullopt
// when the SCD has the wrong size or non-zero reserved fields.
struct ReadMemRequest {
  uint64_t address = 0;
  uint16_t length = 0;
};
struct WriteMemRequest {
  uint64_t address = 0;
  std::vector<uint8_t> data;
};
std::optional<ReadMemRequest> decodeReadMem(const Packet& command);
std::optional<WriteMemRequest> decodeWriteMem(const Packet& command);
// Temporary timeout (ms) of a pending acknowledge.
std::optional<uint16_t> decodePendingAck(const Packet& ack);
// length_written of a WriteMem acknowledge; nullopt when the device omits the field.
std::optional<uint16_t> decodeWriteMemAck(const Packet& ack);

}  // namespace vq::gencp
