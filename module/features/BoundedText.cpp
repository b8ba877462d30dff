#include "features/BoundedText.h"

#include <cstdio>

namespace vq {

namespace {

bool IsUsableBuffer(const char* buffer, std::size_t size) {
  return buffer != nullptr && size != 0 && size <= kMaxTextBufferSize;
}

}  // namespace

void CopyText(char* buffer, std::size_t size, const char* text) {
  if (!IsUsableBuffer(buffer, size)) return;
  if (text == nullptr) text = "";
  std::size_t copied = 0;
  while (copied < size && text[copied] != '\0') {
    buffer[copied] = text[copied];
    ++copied;
  }
  if (copied == size) {
    buffer[size - 1] = '\0';  // no room for the terminator: cut by one character
  } else {
    buffer[copied] = '\0';
  }
}

std::uint32_t FormatTextV(char* buffer, std::size_t size, const char* format, va_list arguments) {
  if (!IsUsableBuffer(buffer, size)) return kTextInvalidArgument;
  if (format == nullptr) {
    buffer[0] = '\0';
    return kTextInvalidArgument;
  }
  const int needed = std::vsnprintf(buffer, size, format, arguments);
  if (needed < 0) {
    buffer[0] = '\0';
    return kTextInvalidArgument;
  }
  if (static_cast<std::size_t>(needed) >= size) {
    buffer[size - 1] = '\0';
    return kTextTruncated;
  }
  return kTextOk;
}

std::uint32_t FormatText(char* buffer, std::size_t size, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const std::uint32_t result = FormatTextV(buffer, size, format, arguments);
  va_end(arguments);
  return result;
}

}  // namespace vq
