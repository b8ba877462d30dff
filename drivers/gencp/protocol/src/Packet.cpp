#include "vq/gencp/Packet.h"

#include <algorithm>

#include "vq/gencp/Checksum.h"
#include "vq/gencp/Endian.h"

namespace vq::gencp {

bool operator==(const Packet& a, const Packet& b) {
  return a.channelId == b.channelId && a.flagsOrStatus == b.flagsOrStatus &&
         a.commandId == b.commandId && a.requestId == b.requestId && a.scd == b.scd;
}

std::vector<uint8_t> encode(const Packet& packet) {
  if (packet.scd.size() > kMaxScdSize) return {};
  std::vector<uint8_t> out(kHeaderSize + packet.scd.size());
  uint8_t* p = out.data();
  p[0] = kPreambleByte0;
  p[1] = kPreambleByte1;
  writeU16(p + 6, packet.channelId);
  writeU16(p + 8, packet.flagsOrStatus);
  writeU16(p + 10, packet.commandId);
  writeU16(p + 12, static_cast<uint16_t>(packet.scd.size()));
  writeU16(p + 14, packet.requestId);
  if (!packet.scd.empty())
    std::copy(packet.scd.begin(), packet.scd.end(), out.begin() + kHeaderSize);
  writeU16(p + 2, ccdChecksum(p));
  writeU16(p + 4, scdChecksum(p, packet.scd.size()));
  return out;
}

std::optional<ReadMemRequest> decodeReadMem(const Packet& command) {
  if (command.commandId != kReadMemCmd || command.scd.size() != 12) return std::nullopt;
  const uint8_t* s = command.scd.data();
  if (readU16(s + 8) != 0) return std::nullopt;
  return ReadMemRequest{readU64(s), readU16(s + 10)};
}

std::optional<WriteMemRequest> decodeWriteMem(const Packet& command) {
  if (command.commandId != kWriteMemCmd || command.scd.size() < 8) return std::nullopt;
  WriteMemRequest request;
  request.address = readU64(command.scd.data());
  request.data.assign(command.scd.begin() + 8, command.scd.end());
  return request;
}

std::optional<uint16_t> decodePendingAck(const Packet& ack) {
  if (ack.commandId != kPendingAck || ack.scd.size() != 4) return std::nullopt;
  return readU16(ack.scd.data() + 2);
}

std::optional<uint16_t> decodeWriteMemAck(const Packet& ack) {
  if (ack.commandId != kWriteMemAck || ack.scd.size() != 4) return std::nullopt;
  return readU16(ack.scd.data() + 2);
}

}  // namespace vq::gencp
