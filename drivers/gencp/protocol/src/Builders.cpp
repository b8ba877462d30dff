#include "vq/gencp/Builders.h"

#include <algorithm>

#include "vq/gencp/Endian.h"

namespace vq::gencp {

namespace {
Packet makePacket(uint16_t commandId, uint16_t flagsOrStatus, uint16_t requestId) {
  Packet packet;
  packet.commandId = commandId;
  packet.flagsOrStatus = flagsOrStatus;
  packet.requestId = requestId;
  return packet;
}
}  // namespace

Packet makeReadMemCommand(uint16_t requestId, uint64_t address, uint16_t length, uint16_t flags) {
  Packet packet = makePacket(kReadMemCmd, flags, requestId);
  appendU64(packet.scd, address);
  appendU16(packet.scd, 0);
  appendU16(packet.scd, length);
  return packet;
}

Packet makeWriteMemCommand(uint16_t requestId, uint64_t address, const uint8_t* data,
                           std::size_t size, uint16_t flags) {
  Packet packet = makePacket(kWriteMemCmd, flags, requestId);
  appendU64(packet.scd, address);
  if (data != nullptr) packet.scd.insert(packet.scd.end(), data, data + size);
  return packet;
}

Packet makeWriteMemCommand(uint16_t requestId, uint64_t address, const std::vector<uint8_t>& data,
                           uint16_t flags) {
  return makeWriteMemCommand(requestId, address, data.data(), data.size(), flags);
}

Packet makeReadMemAck(uint16_t requestId, uint16_t status, const std::vector<uint8_t>& data) {
  Packet packet = makePacket(kReadMemAck, status, requestId);
  packet.scd = data;
  return packet;
}

Packet makeWriteMemAck(uint16_t requestId, uint16_t status, uint16_t lengthWritten,
                       bool withLength) {
  Packet packet = makePacket(kWriteMemAck, status, requestId);
  if (withLength) {
    appendU16(packet.scd, 0);
    appendU16(packet.scd, lengthWritten);
  }
  return packet;
}

Packet makePendingAck(uint16_t requestId, uint16_t temporaryTimeoutMs) {
  Packet packet = makePacket(kPendingAck, kStatusSuccess, requestId);
  appendU16(packet.scd, 0);
  appendU16(packet.scd, temporaryTimeoutMs);
  return packet;
}

Packet makeStatusAck(uint16_t commandId, uint16_t requestId, uint16_t status) {
  return makePacket(ackIdFor(commandId), status, requestId);
}

}  // namespace vq::gencp
