#include "vq/sim/Simulator.h"

#include <algorithm>
#include <cmath>

#include "vq/gencp/Builders.h"
#include "vq/gencp/Constants.h"

namespace vq::sim {

namespace {

uint64_t toUs(double seconds) { return static_cast<uint64_t>(std::llround(seconds * 1e6)); }

// What a byte looks like when the two ends of the line disagree about the rate.
uint8_t garble(uint8_t b) { return static_cast<uint8_t>(((b << 3) | (b >> 5)) ^ 0xA5); }

}  // namespace

Simulator::Simulator(const Profile& profile) : device_(profile), rng_(1) {}

void Simulator::reset() {
  device_.powerCycle();
  faults_ = FaultPlan{};
  stats_ = LinkStats{};
  parser_.reset();
  output_.clear();
  deferred_.reset();
  haveLastAnswer_ = false;
  lastAnswer_.clear();
  hostBaud_ = gencp::kBaud9600;
  rng_.seed(faults_.seed);
}

double Simulator::byteSeconds(uint32_t rateBit) {
  uint32_t rate = gencp::baudBitToRate(rateBit);
  if (rate == 0) rate = 9600;
  return 10.0 / rate;
}

void Simulator::account(uint32_t rateBit) {
  const double seconds = byteSeconds(rateBit);
  stats_.linkSeconds += seconds;
  advanceTo(nowUs() + toUs(seconds));
}

bool Simulator::chance(double probability) {
  if (probability <= 0.0) return false;
  return std::uniform_real_distribution<double>(0.0, 1.0)(rng_) < probability;
}

void Simulator::receive(const uint8_t* data, std::size_t size) {
  if (data == nullptr) return;
  for (std::size_t i = 0; i < size; ++i) receiveByte(data[i]);
}

void Simulator::receiveByte(uint8_t byte) {
  account(hostBaudRate());
  ++stats_.bytesIn;
  if (faults_.silent) return;
  if (faults_.dropIncomingBytes > 0) {
    --faults_.dropIncomingBytes;
    ++stats_.lostBytes;
    return;
  }
  if (!followDevice_ && hostBaud_ != device_.baudRate()) {
    byte = garble(byte);
    ++stats_.garbledBytes;
  }
  expireStalePacket();
  lastRxUs_ = nowUs();
  parser_.feed(&byte, 1);
  while (auto result = parser_.next()) {
    if (result->ok()) {
      handle(result->packet);
    } else {
      ++stats_.badPackets;  // corrupt packets are discarded without an answer
    }
  }
}

// A packet that stops arriving for longer than a maximal packet takes is abandoned.
void Simulator::expireStalePacket() {
  if (parser_.bufferedBytes() == 0) return;
  const uint64_t packetUs = toUs(byteSeconds(device_.baudRate()) * gencp::kMaxPacketSize);
  if (nowUs() - lastRxUs_ > packetUs) parser_.reset();
}

void Simulator::handle(const gencp::Packet& command) {
  if (command.channelId != gencp::kControlChannel || command.isAck()) return;
  ++stats_.commands;
  device_.hostActivity();
  if (deferred_) {
    if (command.requestId == deferred_->requestId) {
      if (deferred_->pending) sendPending(command.requestId, deferred_->dueUs - nowUs());
    } else if (command.requestsAck()) {
      answer(gencp::encode(
          gencp::makeStatusAck(command.commandId, command.requestId, gencp::kStatusBusy)));
    }
    return;
  }
  if (command.requestId != 0 && haveLastAnswer_ && command.requestId == lastRequestId_) {
    ++stats_.repeatedAnswers;
    answer(lastAnswer_);
    return;
  }
  execute(command);
}

void Simulator::execute(const gencp::Packet& command) {
  Outcome outcome;
  gencp::Packet ack;
  if (faults_.forcedStatusCount > 0) {
    --faults_.forcedStatusCount;
    ack = gencp::makeStatusAck(command.commandId, command.requestId, faults_.forcedStatus);
  } else {
    ack = dispatch(command, outcome);
  }
  if (!command.requestsAck()) {
    if (outcome.switchBaudTo != 0) device_.commitBaudSwitch(outcome.switchBaudTo);
    return;
  }
  const auto bytes = gencp::encode(ack);
  haveLastAnswer_ = command.requestId != 0;  // id 0 reads are never answered from memory
  lastRequestId_ = command.requestId;
  lastAnswer_ = bytes;
  const uint32_t delayMs = outcome.processingMs + faults_.processingDelayMs;
  if (delayMs == 0) {
    answer(bytes, outcome.switchBaudTo);
    return;
  }
  Deferred deferred;
  deferred.requestId = command.requestId;
  deferred.answer = bytes;
  deferred.dueUs = nowUs() + uint64_t{delayMs} * 1000;
  deferred.switchBaudTo = outcome.switchBaudTo;
  deferred.pending = delayMs > device_.maxResponseTimeMs();
  deferred_ = deferred;
  device_.suspendHeartbeat(true);
  if (deferred.pending) sendPending(command.requestId, uint64_t{delayMs} * 1000);
}

gencp::Packet Simulator::dispatch(const gencp::Packet& command, Outcome& outcome) {
  using namespace gencp;
  if (command.commandId == kReadMemCmd) {
    const auto request = decodeReadMem(command);
    if (!request || request->length > kMaxReadData) {
      return makeStatusAck(command.commandId, command.requestId, kStatusInvalidParameter);
    }
    outcome = device_.read(request->address, request->length);
    return makeReadMemAck(command.requestId, outcome.status, outcome.data);
  }
  if (command.commandId == kWriteMemCmd) {
    const auto request = decodeWriteMem(command);
    if (!request || command.requestId == 0) {
      return makeStatusAck(command.commandId, command.requestId, kStatusInvalidParameter);
    }
    outcome = device_.write(request->address, request->data);
    if (outcome.status != kStatusSuccess && isErrorStatus(outcome.status)) {
      return makeStatusAck(command.commandId, command.requestId, outcome.status);
    }
    return makeWriteMemAck(command.requestId, outcome.status,
                           static_cast<uint16_t>(request->data.size()));
  }
  return makeStatusAck(command.commandId, command.requestId, kStatusNotImplemented);
}

void Simulator::sendPending(uint16_t requestId, uint64_t remainingUs) {
  ++stats_.pendingAcks;
  const uint64_t timeoutMs = std::min<uint64_t>(remainingUs / 1000 + 100, 0xFFFF);
  answer(gencp::encode(gencp::makePendingAck(requestId, static_cast<uint16_t>(timeoutMs))));
}

void Simulator::answer(const std::vector<uint8_t>& bytes, uint32_t switchBaudTo) {
  ++stats_.answers;
  if (faults_.dropAnswers > 0) {
    --faults_.dropAnswers;
    stats_.lostBytes += bytes.size();
  } else if (faults_.corruptAnswers > 0 && !bytes.empty()) {
    --faults_.corruptAnswers;
    auto damaged = bytes;
    damaged.back() ^= 0x20;
    queue(damaged);
  } else {
    queue(bytes);
  }
  // The answer to a baud-rate write leaves at the old rate; the switch follows it.
  if (switchBaudTo != 0) device_.commitBaudSwitch(switchBaudTo);
}

void Simulator::queue(const std::vector<uint8_t>& bytes) {
  const uint64_t due = nowUs() + uint64_t{faults_.answerDelayMs} * 1000;
  for (uint8_t value : bytes) {
    if (chance(faults_.byteDropRate)) {
      ++stats_.lostBytes;
      continue;
    }
    if (chance(faults_.byteCorruptRate)) value ^= static_cast<uint8_t>(1u << (rng_() % 8));
    output_.push_back(OutByte{value, device_.baudRate(), due});
  }
}

std::size_t Simulator::transmit(uint8_t* out, std::size_t max) {
  if (out == nullptr) return 0;
  std::size_t count = 0;
  while (count < max && !output_.empty() && output_.front().dueUs <= nowUs()) {
    const OutByte byte = output_.front();
    output_.pop_front();
    account(byte.rate);
    uint8_t value = byte.value;
    // A host that follows the camera switches exactly when the camera does.
    if (!followDevice_ && byte.rate != hostBaud_) {
      value = garble(value);
      ++stats_.garbledBytes;
    }
    out[count++] = value;
    ++stats_.bytesOut;
  }
  return count;
}

void Simulator::finishDeferred() {
  Deferred done = std::move(*deferred_);
  deferred_.reset();
  device_.suspendHeartbeat(false);
  answer(done.answer, done.switchBaudTo);
}

uint64_t Simulator::nextEventUs() const {
  uint64_t next = device_.nextTimerUs();
  if (deferred_) next = std::min(next, deferred_->dueUs);
  if (!output_.empty()) next = std::min(next, std::max(output_.front().dueUs, nowUs()));
  return next;
}

void Simulator::advance(uint64_t microseconds) { advanceTo(nowUs() + microseconds); }

void Simulator::advanceTo(uint64_t target) {
  for (;;) {
    uint64_t next = device_.nextTimerUs();
    if (deferred_) next = std::min(next, deferred_->dueUs);
    if (next > target) break;
    device_.advanceTo(next);
    if (deferred_ && deferred_->dueUs <= nowUs()) finishDeferred();
  }
  device_.advanceTo(target);
}

}  // namespace vq::sim
