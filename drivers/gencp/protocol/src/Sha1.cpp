#include "vq/gencp/Sha1.h"

#include <nettle/sha1.h>

#include <algorithm>

namespace vq::gencp {

Sha1Digest sha1(const uint8_t* data, std::size_t size) {
  sha1_ctx context;
  sha1_init(&context);
  if (data != nullptr) sha1_update(&context, size, data);
  Sha1Digest digest;
  sha1_digest(&context, digest.size(), digest.data());
  return digest;
}

std::string toHex(const uint8_t* data, std::size_t size) {
  static const char kDigits[] = "0123456789abcdef";
  std::string text;
  for (std::size_t i = 0; i < size; ++i) {
    text.push_back(kDigits[data[i] >> 4]);
    text.push_back(kDigits[data[i] & 0x0F]);
  }
  return text;
}

std::string toHex(const Sha1Digest& digest) { return toHex(digest.data(), digest.size()); }

bool isZero(const Sha1Digest& digest) {
  return std::all_of(digest.begin(), digest.end(), [](uint8_t b) { return b == 0; });
}

}  // namespace vq::gencp
