// Fuzz target: the driver's acknowledge handling. The input's first byte picks an operation;
// the rest is what the "camera" sends back on the serial line, in chunks whose sizes the input
// also decides. Whatever arrives, the driver must end with a result or a DriverFailure.
#include <CLProtocol/ISerial.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>

#include "Bootstrap.h"
#include "Channel.h"
#include "DriverFailure.h"
#include "Manifest.h"

namespace {

using namespace vq::gencpdrv;

// Serves the fuzz input as received bytes; swallows everything written.
class FuzzSerial : public ISerial {
 public:
  FuzzSerial(const uint8_t* data, std::size_t size) : data_(data), size_(size) {}

  CLINT32 CLPROTOCOL clSerialRead(CLINT8* buffer, CLUINT32* bufferSize, CLUINT32) override {
    if (offset_ >= size_ || *bufferSize == 0) return CL_ERR_TIMEOUT;
    // Short reads now and then, as real ports deliver them.
    std::size_t count = std::min<std::size_t>(*bufferSize, size_ - offset_);
    if ((data_[offset_] & 0x0F) == 0x0F && count > 1) count /= 2;
    std::memcpy(buffer, data_ + offset_, count);
    offset_ += count;
    *bufferSize = static_cast<CLUINT32>(count);
    return CL_ERR_NO_ERR;
  }
  CLINT32 CLPROTOCOL clSerialWrite(CLINT8*, CLUINT32*, CLUINT32) override { return CL_ERR_NO_ERR; }
  CLINT32 CLPROTOCOL clGetSupportedBaudRates(CLUINT32* rates) override {
    *rates = 0xFF;
    return CL_ERR_NO_ERR;
  }
  CLINT32 CLPROTOCOL clSetBaudRate(CLUINT32) override { return CL_ERR_NO_ERR; }

 private:
  const uint8_t* data_;
  std::size_t size_;
  std::size_t offset_ = 0;
};

void run(uint8_t operation, Channel& channel) {
  constexpr uint32_t kTimeoutMs = 5;
  switch (operation % 5) {
    case 0:
      channel.readMem(0x40108, 4, kTimeoutMs);
      break;
    case 1:
      channel.readMem(0x100000, 2100, kTimeoutMs);  // three packets
      break;
    case 2: {
      std::optional<PendingWrite> pending;
      const uint8_t value[4] = {0, 0, 4, 0};
      if (channel.writeMem(0x40108, value, sizeof value, kTimeoutMs, pending) ==
          CL_ERR_PENDING_WRITE) {
        channel.continueWrite(pending, kTimeoutMs);
      }
      break;
    }
    case 3: {
      const Identification found = identify(channel, {}, kTimeoutMs);
      readManifest(channel, found.device.bootstrap.manifestAddress,
                   found.device.identity.modelTemplate(), kTimeoutMs);
      break;
    }
    default:
      channel.writeOnce(0x10004, {0, 0, 0, 0x10}, kTimeoutMs);
      break;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  FuzzSerial serial(data + 1, size - 1);
  Channel::resetRequestIds(1);
  Channel channel(&serial, 921600, 5, [](const vq::gencp::Packet&) {});
  try {
    run(data[0], channel);
  } catch (const DriverFailure&) {
    // A defined failure is a fine outcome.
  }
  return 0;
}
