// Executing a command feature and waiting for it to complete.
#pragma once

#include <cstdint>
#include <string>

#include "camera/GenICamCalls.h"

namespace vq {

// Completion is polled every 100 ms on the caller's thread. A command that
// never reports done (or whose completion cannot be read) would otherwise
// block the host for good, so polling gives up after 30 s: long enough for
// configuration saves and calibrations, short enough for a user to wait out.
struct CommandPolling {
  std::uint32_t intervalMs = 100;
  std::uint32_t limitMs = 30000;
};

// Executes the command with verification, then polls IsDone until it reports
// done; every poll, the last included, ends with one interval's wait. Result:
// that of the last IsDone, or 0 when Execute fails (its description in
// lastError) or the limit passes first (lastError says so). Execute's outcome
// is always written to lastError; IsDone's failures are not.
std::int32_t ExecuteAndAwait(GenApi::INode* node, std::string& lastError,
                             const CommandPolling& polling = CommandPolling());

}  // namespace vq
