#include "vq/gencp/PacketParser.h"

#include "vq/gencp/Checksum.h"
#include "vq/gencp/Endian.h"

namespace vq::gencp {

const char* parseErrorName(ParseError error) {
  switch (error) {
    case ParseError::None:
      return "none";
    case ParseError::CcdChecksum:
      return "CCD checksum mismatch";
    case ParseError::LengthTooLarge:
      return "packet longer than 1024 bytes";
    case ParseError::ScdChecksum:
      return "SCD checksum mismatch";
  }
  return "unknown";
}

void PacketParser::feed(const uint8_t* data, std::size_t size) {
  if (data == nullptr || size == 0) return;
  compact();
  buffer_.insert(buffer_.end(), data, data + size);
}

void PacketParser::reset() {
  discarded_ += bufferedBytes();
  buffer_.clear();
  start_ = 0;
}

bool PacketParser::inPacket() const {
  return bufferedBytes() >= 2 && buffer_[start_] == kPreambleByte0 &&
         buffer_[start_ + 1] == kPreambleByte1;
}

void PacketParser::consume(std::size_t count) {
  start_ += count;
  if (start_ >= buffer_.size()) {
    buffer_.clear();
    start_ = 0;
  }
}

void PacketParser::compact() {
  if (start_ == 0) return;
  buffer_.erase(buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(start_));
  start_ = 0;
}

// Drops bytes until the buffer starts with a preamble. A trailing first preamble byte is
// kept, since its second byte may still arrive.
void PacketParser::skipToPreamble() {
  std::size_t i = start_;
  const std::size_t end = buffer_.size();
  while (i < end) {
    if (buffer_[i] == kPreambleByte0 && (i + 1 == end || buffer_[i + 1] == kPreambleByte1)) break;
    ++i;
  }
  discarded_ += i - start_;
  consume(i - start_);
}

std::optional<ParseResult> PacketParser::next() {
  skipToPreamble();
  if (bufferedBytes() < kHeaderSize) return std::nullopt;
  const uint8_t* p = buffer_.data() + start_;

  ParseResult result;
  if (readU16(p + 2) != ccdChecksum(p)) {
    // Not a real header: skip this preamble and hunt again from the next byte.
    discarded_ += 1;
    consume(1);
    result.error = ParseError::CcdChecksum;
    return result;
  }
  result.packet.channelId = readU16(p + 6);
  result.packet.flagsOrStatus = readU16(p + 8);
  result.packet.commandId = readU16(p + 10);
  result.packet.requestId = readU16(p + 14);
  const std::size_t length = readU16(p + 12);
  if (length > kMaxScdSize) {
    discarded_ += kHeaderSize;
    consume(kHeaderSize);
    result.error = ParseError::LengthTooLarge;
    return result;
  }
  if (bufferedBytes() < kHeaderSize + length) return std::nullopt;
  if (readU16(p + 4) != scdChecksum(p, length)) {
    // The data may have lost or gained bytes; a following packet can start inside it, so
    // resume the hunt right after this preamble.
    discarded_ += 2;
    consume(2);
    result.error = ParseError::ScdChecksum;
    return result;
  }
  result.packet.scd.assign(p + kHeaderSize, p + kHeaderSize + length);
  consume(kHeaderSize + length);
  return result;
}

}  // namespace vq::gencp
