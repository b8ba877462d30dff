// Bounded text output into caller-supplied byte buffers: every text the module
// hands to a caller goes through these, so no write ever passes the buffer.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>

namespace vq {

// Largest buffer size accepted; anything above is taken for a corrupted size.
constexpr std::size_t kMaxTextBufferSize = 2147483647u;

// Results of FormatText.
constexpr std::uint32_t kTextOk = 0;
constexpr std::uint32_t kTextInvalidArgument = 0x80070057u;
constexpr std::uint32_t kTextTruncated = 0x8007007Au;

// Copies text into buffer: at most size - 1 characters and always a NUL.
// Writes nothing when size is 0 or above kMaxTextBufferSize, or buffer is null.
// A null text copies as the empty text.
void CopyText(char* buffer, std::size_t size, const char* text);

// printf-style formatting with the same limits as CopyText. Returns kTextOk,
// kTextTruncated when the output was cut to size - 1 characters (and
// terminated), or kTextInvalidArgument when nothing could be written.
std::uint32_t FormatText(char* buffer, std::size_t size, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
std::uint32_t FormatTextV(char* buffer, std::size_t size, const char* format, va_list arguments)
    __attribute__((format(printf, 3, 0)));

}  // namespace vq
