// Addresses and layouts of the GenCP bootstrap registers (ABRM), the manifest and the
// serial bootstrap block (SBRM).
#pragma once

#include <cstdint>

namespace vq::gencp::abrm {

constexpr uint64_t kGenCPVersion = 0x0000;      // 4 bytes: major << 16 | minor
constexpr uint64_t kManufacturerName = 0x0004;  // 64-byte strings follow
constexpr uint64_t kModelName = 0x0044;
constexpr uint64_t kFamilyName = 0x0084;
constexpr uint64_t kDeviceVersion = 0x00C4;
constexpr uint64_t kManufacturerInfo = 0x0104;
constexpr uint64_t kSerialNumber = 0x0144;
constexpr uint64_t kUserDefinedName = 0x0184;
constexpr uint64_t kDeviceCapability = 0x01C4;       // 8 bytes
constexpr uint64_t kMaxDeviceResponseTime = 0x01CC;  // 4 bytes, ms
constexpr uint64_t kManifestTableAddress = 0x01D0;   // 8 bytes
constexpr uint64_t kSbrmAddress = 0x01D8;            // 8 bytes
constexpr uint64_t kDeviceConfiguration = 0x01E0;    // 8 bytes
constexpr uint64_t kHeartbeatTimeout = 0x01E8;       // 4 bytes
constexpr uint64_t kMessageChannelId = 0x01EC;       // 4 bytes
constexpr uint64_t kAccessPrivilege = 0x0204;        // 4 bytes
constexpr uint64_t kImplementationEndianness = 0x020C;
constexpr uint32_t kStringSize = 64;
constexpr uint64_t kAbrmEnd = 0x10000;

// Device capability bits.
constexpr uint64_t kCapUserDefinedName = 1ull << 0;
constexpr uint64_t kCapAccessPrivilegeHeartbeat = 1ull << 1;
constexpr uint64_t kCapMessageChannel = 1ull << 2;
constexpr uint64_t kCapTimestamp = 1ull << 3;
constexpr uint64_t kCapFamilyName = 1ull << 8;
constexpr uint64_t kCapSbrm = 1ull << 9;
constexpr uint64_t kCapEndiannessRegister = 1ull << 10;
constexpr uint64_t kCapWrittenLength = 1ull << 11;
constexpr uint64_t kCapMultiEvent = 1ull << 12;
constexpr uint64_t kCapStackedCommands = 1ull << 13;

}  // namespace vq::gencp::abrm

namespace vq::gencp::manifest {

constexpr uint32_t kEntrySize = 64;
constexpr uint32_t kHeaderSize = 8;  // entry count (u64)
// Offsets inside an entry.
constexpr uint32_t kFileVersion = 0;      // major << 24 | minor << 16 | subminor
constexpr uint32_t kSchemaAndFormat = 4;  // schema major << 24 | minor << 16 | format << 10 | type
constexpr uint32_t kFileAddress = 8;
constexpr uint32_t kFileSize = 16;
constexpr uint32_t kSha1 = 24;
constexpr uint32_t kFormatUncompressed = 0;
constexpr uint32_t kFormatZip = 1;

inline constexpr uint32_t fileFormat(uint32_t schemaAndFormat) {
  return (schemaAndFormat >> 10) & 0x3F;
}
inline constexpr uint32_t schemaMajor(uint32_t schemaAndFormat) { return schemaAndFormat >> 24; }
inline constexpr uint32_t schemaMinor(uint32_t schemaAndFormat) {
  return (schemaAndFormat >> 16) & 0xFF;
}

}  // namespace vq::gencp::manifest

namespace vq::gencp::sbrm {

constexpr uint64_t kSupportedBaudrates = 0x000;  // offsets from the SBRM address
constexpr uint64_t kCurrentBaudrate = 0x004;
constexpr uint64_t kSize = 0x008;
// Time the device waits for the confirmation write at the new rate before falling back.
constexpr uint32_t kConfirmationWindowMs = 250;
// Time a host waits after a failed confirmation before retrying at the old rate.
constexpr uint32_t kHostRetryDelayMs = 500;

}  // namespace vq::gencp::sbrm
