// Byte I/O with time-outs on an open device (serial port, pseudo-terminal master).
#ifndef VQ_PLATFORM_DEVICE_STREAM_H
#define VQ_PLATFORM_DEVICE_STREAM_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace vq::platform {

// Common I/O of SerialPort and PseudoTerminal. Not used on its own. Calls on a
// closed stream, or with a null buffer and a non-zero size, fail cleanly with a
// text in *error; they never block.
class DeviceStream {
 public:
  static constexpr std::uint32_t kDefaultWriteTimeoutMs = 10000;

  bool IsOpen() const { return handle_ >= 0; }

  // Reads until `size` bytes arrived or `timeoutMs` passed. Returns the number of
  // bytes read (0 when nothing came in time), or -1 on an error.
  std::int64_t Read(void* buffer, std::size_t size, std::uint32_t timeoutMs,
                    std::string* error = nullptr);

  // Waits at most `timeoutMs` for data, then returns what is available (at most
  // `size` bytes). Returns 0 on time-out, -1 on an error.
  std::int64_t ReadSome(void* buffer, std::size_t size, std::uint32_t timeoutMs,
                        std::string* error = nullptr);

  // Writes every byte, waiting for the device to take them for at most
  // `timeoutMs` in all. False on an error or a time-out.
  bool Write(const void* data, std::size_t size, std::uint32_t timeoutMs = kDefaultWriteTimeoutMs,
             std::string* error = nullptr);

  // Discards unread input and unsent output.
  bool Flush(std::string* error = nullptr);

  void Close();

 protected:
  DeviceStream() noexcept = default;
  DeviceStream(DeviceStream&& other) noexcept;
  DeviceStream& operator=(DeviceStream&& other) noexcept;
  DeviceStream(const DeviceStream&) = delete;
  DeviceStream& operator=(const DeviceStream&) = delete;
  ~DeviceStream();

  // The operating system's handle (a file descriptor here), -1 when closed.
  std::intptr_t handle_ = -1;
};

}  // namespace vq::platform

#endif  // VQ_PLATFORM_DEVICE_STREAM_H
