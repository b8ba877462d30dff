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

std::string toHex(const Sha1Digest& digest) {
  static const char kDigits[] = "0123456789abcdef";
  std::string text;
  for (uint8_t byte : digest) {
    text.push_back(kDigits[byte >> 4]);
    text.push_back(kDigits[byte & 0x0F]);
  }
  return text;
}

bool isZero(const Sha1Digest& digest) {
  return std::all_of(digest.begin(), digest.end(), [](uint8_t b) { return b == 0; });
}

}  // namespace vq::gencp
