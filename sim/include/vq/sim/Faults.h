// Faults the simulator injects on demand.
#pragma once

#include <cstdint>

namespace vq::sim {

struct FaultPlan {
  // The next N answers are executed but never sent (a resend then gets the stored answer).
  uint32_t dropAnswers = 0;
  // The next N answers are sent with one byte altered.
  uint32_t corruptAnswers = 0;
  // Every answer leaves this long after it is ready.
  uint32_t answerDelayMs = 0;
  // Extra processing time of every command; beyond the maximum response time the device
  // first sends a pending acknowledge.
  uint32_t processingDelayMs = 0;
  // The device ignores everything it receives and answers nothing.
  bool silent = false;
  // The next `forcedStatusCount` commands are answered with `forcedStatus` without being
  // executed.
  uint16_t forcedStatus = 0;
  uint32_t forcedStatusCount = 0;
  // The next N bytes from the host are lost on the line.
  uint32_t dropIncomingBytes = 0;
  // Per-byte probabilities (0..1) of losing or altering an answer byte; `seed` makes
  // runs repeatable.
  double byteDropRate = 0.0;
  double byteCorruptRate = 0.0;
  uint32_t seed = 1;
};

}  // namespace vq::sim
