// SHA-1 digests: the manifest names each description file by the SHA-1 of its bytes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace vq::gencp {

using Sha1Digest = std::array<uint8_t, 20>;

Sha1Digest sha1(const uint8_t* data, std::size_t size);
// Lower-case hexadecimal text of bytes, and of a digest.
std::string toHex(const uint8_t* data, std::size_t size);
std::string toHex(const Sha1Digest& digest);
// True when every byte is zero (a manifest entry without a digest).
bool isZero(const Sha1Digest& digest);

}  // namespace vq::gencp
