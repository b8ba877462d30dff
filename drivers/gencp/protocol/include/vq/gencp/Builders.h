// Builders for the GenCP commands and acknowledges a serial link carries.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "vq/gencp/Packet.h"

namespace vq::gencp {

// Commands. `flags` defaults to RequestAck; add kFlagCommandResend for a resend.
Packet makeReadMemCommand(uint16_t requestId, uint64_t address, uint16_t length,
                          uint16_t flags = kFlagRequestAck);
Packet makeWriteMemCommand(uint16_t requestId, uint64_t address, const uint8_t* data,
                           std::size_t size, uint16_t flags = kFlagRequestAck);
Packet makeWriteMemCommand(uint16_t requestId, uint64_t address, const std::vector<uint8_t>& data,
                           uint16_t flags = kFlagRequestAck);

// Acknowledges.
Packet makeReadMemAck(uint16_t requestId, uint16_t status, const std::vector<uint8_t>& data);
// With `withLength` the SCD carries reserved + length_written (device capability bit 11).
Packet makeWriteMemAck(uint16_t requestId, uint16_t status, uint16_t lengthWritten,
                       bool withLength = true);
Packet makePendingAck(uint16_t requestId, uint16_t temporaryTimeoutMs);
// Acknowledge with an empty SCD answering `commandId` (the ack bit is set here).
Packet makeStatusAck(uint16_t commandId, uint16_t requestId, uint16_t status);

// Shorthands producing wire bytes directly.
inline std::vector<uint8_t> encodeReadMem(uint16_t requestId, uint64_t address, uint16_t length,
                                          uint16_t flags = kFlagRequestAck) {
  return encode(makeReadMemCommand(requestId, address, length, flags));
}
inline std::vector<uint8_t> encodeWriteMem(uint16_t requestId, uint64_t address,
                                           const std::vector<uint8_t>& data,
                                           uint16_t flags = kFlagRequestAck) {
  return encode(makeWriteMemCommand(requestId, address, data, flags));
}

}  // namespace vq::gencp
