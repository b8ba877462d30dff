// Typed writes: each accessor's write with verification, command execution
// with completion polling, and GenericFeature::SetValue choosing between them.
#include <chrono>
#include <cstring>

#include "features/CommandCompletion.h"
#include "features/GenericFeature.h"
#include "features/NumberConversion.h"
#include "features/RawBytes.h"
#include "features/TypedFeatures.h"
#include "vq/platform/sleep.h"

namespace vq {

namespace {

constexpr bool kVerify = true;
constexpr std::uint32_t kWordSize = 4;

}  // namespace

std::int32_t IntegerFeature::SetValue(double value, bool verify) {
  return Capture(
      [&](GenApi::IInteger& integer) { integer.SetValue(TruncateToInt64(value), verify); });
}

std::int32_t FloatFeature::SetValue(double value, bool verify) {
  return Capture([&](GenApi::IFloat& number) { number.SetValue(value, verify); });
}

std::int32_t BooleanFeature::SetValue(std::uint32_t value, bool verify) {
  return Capture([&](GenApi::IBoolean& boolean) { boolean.SetValue(value != 0, verify); });
}

std::int32_t StringFeature::SetValue(char* text, std::uint32_t size, bool verify) {
  return Capture([&](GenApi::IString& string) {
    text[size] = '\0';
    string.SetValue(GenICam::gcstring(text), verify);
  });
}

std::int32_t EnumerationFeature::SetIntValue(std::uint32_t value, bool verify) {
  return Capture([&](GenApi::IEnumeration& enumeration) {
    enumeration.SetIntValue(static_cast<std::int64_t>(static_cast<std::uint64_t>(value)), verify);
  });
}

std::int32_t CommandFeature::Execute() {
  return Capture([](GenApi::ICommand& command) { command.Execute(kVerify); });
}

std::int32_t CommandFeature::IsDone(std::uint8_t& done) {
  return Capture([&](GenApi::ICommand& command) { done = command.IsDone(false) ? 1 : 0; });
}

std::int32_t ExecuteAndAwait(GenApi::INode* node, std::string& lastError,
                             const CommandPolling& polling) {
  std::uint8_t done = 0;
  CommandFeature command(node);
  const std::int32_t executed = command.Execute();
  lastError = command.LastError();
  if (!executed) return 0;

  const auto start = std::chrono::steady_clock::now();
  const auto limit = std::chrono::milliseconds(polling.limitMs);
  const std::uint32_t interval = polling.intervalMs == 0 ? 1 : polling.intervalMs;
  const std::uint32_t maxPolls = polling.limitMs / interval + 1;
  std::int32_t result = 0;
  for (std::uint32_t poll = 0; poll < maxPolls; ++poll) {
    result = command.IsDone(done);
    platform::SleepMilliseconds(polling.intervalMs);
    if (done != 0) return result;
    if (std::chrono::steady_clock::now() - start >= limit) break;
  }
  lastError = "Command '" + std::string(node->GetName(false).c_str()) +
              "' did not complete within " + std::to_string(polling.limitMs) + " ms";
  return 0;
}

std::int32_t GenericFeature::SetValue(void* buffer, std::uint32_t size) {
  if (buffer == nullptr) return 0;
  std::int32_t result = 0;
  if (NodeAs<GenApi::IInteger>(node_)) {
    IntegerFeature integer(node_);
    result = integer.SetValue(LoadRaw<double>(buffer), kVerify);
    lastError_ = integer.LastError();
  } else if (NodeAs<GenApi::IBoolean>(node_)) {
    if (size != kWordSize) return 0;
    BooleanFeature boolean(node_);
    result = boolean.SetValue(LoadRaw<std::uint32_t>(buffer), kVerify);
    lastError_ = boolean.LastError();
  } else if (NodeAs<GenApi::IFloat>(node_)) {
    FloatFeature number(node_);
    result = number.SetValue(LoadRaw<double>(buffer), kVerify);
    lastError_ = number.LastError();
  } else if (NodeAs<GenApi::IString>(node_)) {
    StringFeature text(node_);
    result = text.SetValue(static_cast<char*>(buffer), size, kVerify);
    lastError_ = text.LastError();
  } else if (NodeAs<GenApi::IEnumeration>(node_)) {
    if (size != kWordSize) return 0;
    EnumerationFeature enumeration(node_);
    result = enumeration.SetIntValue(LoadRaw<std::uint32_t>(buffer), kVerify);
    lastError_ = enumeration.LastError();
  } else if (NodeAs<GenApi::ICommand>(node_)) {
    result = ExecuteAndAwait(node_, lastError_);
  } else {
    lastError_ = "Write error: Unknown feature type";
  }
  return result;
}

}  // namespace vq
