// Incremental GenCP packet parser for a byte stream: feed bytes as they arrive and take
// complete packets out. It hunts for the preamble, checks the length limit and both
// checksums, and resynchronises after garbage, so arbitrary input never breaks it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "vq/gencp/Packet.h"

namespace vq::gencp {

enum class ParseError {
  None,
  CcdChecksum,     // header checksum wrong: the candidate preamble was not a packet
  LengthTooLarge,  // header valid, but it announces more than kMaxPacketSize bytes
  ScdChecksum,     // header valid, data checksum wrong (header fields are reported)
};

const char* parseErrorName(ParseError error);

struct ParseResult {
  ParseError error = ParseError::None;
  // Complete packet when error is None; header fields only (empty SCD) for ScdChecksum
  // and LengthTooLarge; default for CcdChecksum.
  Packet packet;

  bool ok() const { return error == ParseError::None; }
};

class PacketParser {
 public:
  // Appends received bytes. A null pointer with a non-zero size is ignored.
  void feed(const uint8_t* data, std::size_t size);
  void feed(const std::vector<uint8_t>& data) { feed(data.data(), data.size()); }

  // Next complete packet or error, nullopt when more bytes are needed.
  std::optional<ParseResult> next();

  // Drops everything buffered (e.g. after an inter-byte timeout).
  void reset();

  // Bytes held that do not yet form a packet.
  std::size_t bufferedBytes() const { return buffer_.size() - start_; }
  // True when a preamble has been seen and its packet is not yet complete.
  bool inPacket() const;
  // Bytes skipped while hunting for a preamble or after a failed packet, since creation.
  uint64_t discardedBytes() const { return discarded_; }

 private:
  void skipToPreamble();
  void consume(std::size_t count);
  void compact();

  std::vector<uint8_t> buffer_;
  std::size_t start_ = 0;
  uint64_t discarded_ = 0;
};

}  // namespace vq::gencp
