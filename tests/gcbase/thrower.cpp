#include "thrower.h"

#include <cstring>

namespace {
template <typename E>
[[noreturn]] void Throw(const char* text, unsigned int line) {
  throw GenICam::ExceptionReporter<E>(__FILE__, line).Report("%s", text);
}
}  // namespace

unsigned int ThrowerLine() { return 4242; }

void ThrowFromLibrary(const char* type, const char* text) {
  const unsigned int line = ThrowerLine();
  if (std::strcmp(type, "BadAllocException") == 0) Throw<GenICam::BadAllocException>(text, line);
  if (std::strcmp(type, "InvalidArgumentException") == 0)
    Throw<GenICam::InvalidArgumentException>(text, line);
  if (std::strcmp(type, "OutOfRangeException") == 0)
    Throw<GenICam::OutOfRangeException>(text, line);
  if (std::strcmp(type, "PropertyException") == 0) Throw<GenICam::PropertyException>(text, line);
  if (std::strcmp(type, "RuntimeException") == 0) Throw<GenICam::RuntimeException>(text, line);
  if (std::strcmp(type, "LogicalErrorException") == 0)
    Throw<GenICam::LogicalErrorException>(text, line);
  if (std::strcmp(type, "AccessException") == 0) Throw<GenICam::AccessException>(text, line);
  if (std::strcmp(type, "TimeoutException") == 0) Throw<GenICam::TimeoutException>(text, line);
  if (std::strcmp(type, "DynamicCastException") == 0)
    Throw<GenICam::DynamicCastException>(text, line);
  Throw<GenICam::GenericException>(text, line);
}

GenICam::gcstring JoinInLibrary(const GenICam::gcstring_vector& parts) {
  GenICam::gcstring joined;
  for (const GenICam::gcstring& part : parts) {
    if (!joined.empty()) joined += ",";
    joined += part;
  }
  return joined;
}
