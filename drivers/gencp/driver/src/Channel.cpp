#include "Channel.h"

#include <vq/gencp/Builders.h>
#include <vq/gencp/Constants.h>
#include <vq/gencp/Endian.h>

#include <algorithm>
#include <atomic>
#include <cstdio>

#include "DriverFailure.h"
#include "ErrorCodes.h"

namespace vq::gencpdrv {

using vq::gencp::Packet;

namespace {

// Pending acknowledges accepted for one command before the driver calls it a time-out.
constexpr int kMaxPendings = 64;
// Slack added to every wait for scheduling and host latency.
constexpr uint64_t kMarginMs = 50;
// Pause before a command refused with GENCP_BUSY is sent again as a new command; the busy
// retries of one command stop once their pauses add up to the caller's time-out.
constexpr uint32_t kBusyPauseMs = 100;

std::string hex(uint64_t value) {
  char text[32];
  std::snprintf(text, sizeof text, "0x%llx", static_cast<unsigned long long>(value));
  return text;
}

std::string statusText(uint16_t status) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%04X", status);
  const char* name = vq::gencp::statusName(status);
  return name != nullptr ? std::string(text) + " (" + name + ")" : std::string(text);
}

[[noreturn]] void throwStatus(const char* what, uint64_t address, uint16_t status) {
  throw DriverFailure(codeForDeviceStatus(status), std::string(what) + " at " + hex(address) +
                                                       " refused: device status " +
                                                       statusText(status));
}

std::atomic<uint16_t> gRequestCounter{1};

}  // namespace

void Channel::resetRequestIds(uint16_t first) { gRequestCounter = first == 0 ? 1 : first; }

Channel::Channel(ISerial* serial, uint32_t bitsPerSecond, uint32_t responseMs, EventSink events)
    : link_(serial),
      bitsPerSecond_(bitsPerSecond),
      responseMs_(responseMs),
      events_(std::move(events)) {}

// Request ids are process-wide so that a new connection never repeats the id of the last
// command a device answered (it would replay the stored acknowledge instead of executing).
uint16_t Channel::nextRequestId() {
  uint16_t current = gRequestCounter.load();
  uint16_t next = 0;
  do {
    next = current == 0xFFFF ? 1 : static_cast<uint16_t>(current + 1);
  } while (!gRequestCounter.compare_exchange_weak(current, next));
  return current;
}

uint64_t Channel::ackWindowMs(const Packet& command, std::size_t ackBytes) const {
  const std::size_t commandBytes = vq::gencp::kHeaderSize + command.scd.size();
  return responseMs_ + transferMs(commandBytes + ackBytes, bitsPerSecond_) + kMarginMs;
}

uint64_t Channel::pendingWindowMs(uint16_t pendingMs) const {
  return pendingMs + transferMs(vq::gencp::kMaxPacketSize, bitsPerSecond_) + kMarginMs;
}

void Channel::send(const Packet& command, uint32_t timeoutMs) {
  const std::vector<uint8_t> bytes = vq::gencp::encode(command);
  const uint64_t window =
      std::max(timeoutMs, responseMs_) + transferMs(bytes.size(), bitsPerSecond_) + kMarginMs;
  const CLINT32 status = link_.writeAll(bytes, static_cast<uint32_t>(std::min<uint64_t>(window, 0x7FFFFFFF)));
  if (status != CL_ERR_NO_ERR) {
    throw DriverFailure(status, "sending a command on the serial link failed");
  }
}

void Channel::pauseWhileBusy() {
  // Waiting on the line also swallows the late answer of the command the device is busy with.
  link_.drain(kBusyPauseMs);
  parser_.reset();
  mirror_.clear();
}

void Channel::resendPrepare(Packet& command) {
  link_.drain(static_cast<uint32_t>(20 + transferMs(vq::gencp::kHeaderSize, bitsPerSecond_)));
  parser_.reset();
  mirror_.clear();
  command.flagsOrStatus |= vq::gencp::kFlagCommandResend;
}

std::size_t Channel::bytesWanted() const {
  const std::size_t held = mirror_.size();
  if (held < vq::gencp::kHeaderSize) return vq::gencp::kHeaderSize - held;
  const std::size_t total = vq::gencp::kHeaderSize + vq::gencp::readU16(&mirror_[12]);
  return total > held ? total - held : 1;
}

void Channel::trimMirror() {
  const std::size_t held = std::min(parser_.bufferedBytes(), mirror_.size());
  mirror_.erase(mirror_.begin(), mirror_.end() - static_cast<std::ptrdiff_t>(held));
}

std::optional<vq::gencp::ParseResult> Channel::receive(const Deadline& deadline) {
  while (true) {
    if (auto result = parser_.next()) {
      trimMirror();
      return result;
    }
    std::vector<uint8_t> chunk(bytesWanted());
    if (link_.readExact(chunk.data(), chunk.size(), deadline) != CL_ERR_NO_ERR) {
      parser_.reset();
      mirror_.clear();
      return std::nullopt;
    }
    parser_.feed(chunk);
    mirror_.insert(mirror_.end(), chunk.begin(), chunk.end());
    trimMirror();
  }
}

Channel::AwaitResult Channel::awaitAck(const Packet& command, const Deadline& deadline) {
  while (true) {
    const auto result = receive(deadline);
    if (!result) return {};
    const Packet& packet = result->packet;
    if (!result->ok()) {
      // A damaged answer to this very command is resent at once; other damage is skipped.
      if (result->error == vq::gencp::ParseError::ScdChecksum &&
          packet.requestId == command.requestId && packet.isAck()) {
        return {};
      }
      continue;
    }
    if (packet.channelId != vq::gencp::kControlChannel) {
      if (events_) events_(packet);
      continue;
    }
    if (!packet.isAck() || packet.requestId != command.requestId) continue;  // stale answer
    if (packet.commandId == vq::gencp::kPendingAck) {
      AwaitResult pending{AckKind::Pending, packet, 0};
      pending.pendingMs = vq::gencp::decodePendingAck(packet).value_or(0);
      return pending;
    }
    if (packet.commandId != vq::gencp::ackIdFor(command.commandId)) continue;
    return {AckKind::Ack, packet, 0};
  }
}

Packet Channel::exchange(Packet command, uint32_t timeoutMs) {
  // A read's acknowledge carries the data asked for; others carry at most four bytes.
  const bool isRead = command.commandId == vq::gencp::kReadMemCmd && command.scd.size() >= 12;
  const std::size_t expectedAck =
      vq::gencp::kHeaderSize + (isRead ? vq::gencp::readU16(&command.scd[10]) : 4);
  send(command, timeoutMs);
  int sends = 1;
  int pendings = 0;
  Deadline attempt(ackWindowMs(command, expectedAck));
  while (true) {
    AwaitResult result = awaitAck(command, attempt);
    if (result.kind == AckKind::Ack) return result.ack;
    if (result.kind == AckKind::Pending) {
      if (++pendings > kMaxPendings) break;
      attempt.extendTo(pendingWindowMs(result.pendingMs));
      continue;
    }
    if (sends >= maxSends_) break;
    resendPrepare(command);
    send(command, timeoutMs);
    ++sends;
    attempt = Deadline(ackWindowMs(command, expectedAck));
  }
  throw DriverFailure(CL_ERR_TIMEOUT, "no acknowledge from the device after " +
                                          std::to_string(sends) + " tries");
}

std::vector<uint8_t> Channel::readMem(uint64_t address, std::size_t length, uint32_t timeoutMs,
                                      bool requestIdZero) {
  std::vector<uint8_t> data;
  data.reserve(length);
  const uint32_t busyBudgetMs = std::max(timeoutMs, responseMs_);
  while (data.size() < length) {
    const auto chunk =
        static_cast<uint16_t>(std::min(length - data.size(), vq::gencp::kMaxReadData));
    const uint64_t chunkAddress = address + data.size();
    Packet ack;
    for (uint32_t waited = 0;; waited += kBusyPauseMs) {
      const uint16_t id = requestIdZero && data.empty() && waited == 0 ? 0 : nextRequestId();
      ack = exchange(vq::gencp::makeReadMemCommand(id, chunkAddress, chunk), timeoutMs);
      if (ack.status() != vq::gencp::kStatusBusy || waited >= busyBudgetMs) break;
      pauseWhileBusy();
    }
    if (vq::gencp::isErrorStatus(ack.status())) throwStatus("read", chunkAddress, ack.status());
    if (ack.scd.size() != chunk) {
      throw DriverFailure(kBadAnswer, "read at " + hex(chunkAddress) + " returned " +
                                          std::to_string(ack.scd.size()) + " bytes instead of " +
                                          std::to_string(chunk));
    }
    data.insert(data.end(), ack.scd.begin(), ack.scd.end());
  }
  return data;
}

bool Channel::checkWriteAck(const Packet& ack, std::size_t dataSize) const {
  if (vq::gencp::isErrorStatus(ack.status())) return false;
  const auto written = vq::gencp::decodeWriteMemAck(ack);
  if (written && *written != dataSize) {
    throw DriverFailure(kBadAnswer, "the device wrote " + std::to_string(*written) + " of " +
                                        std::to_string(dataSize) + " bytes");
  }
  return true;
}

CLINT32 Channel::writeMem(uint64_t address, const uint8_t* data, std::size_t size,
                          uint32_t timeoutMs, std::optional<PendingWrite>& pending) {
  const std::size_t first = std::min(size, vq::gencp::kMaxWriteData);
  PendingWrite state;
  state.command = vq::gencp::makeWriteMemCommand(nextRequestId(), address, data, first);
  state.rest.assign(data + first, data + size);
  state.restAddress = address + first;
  pending = std::move(state);
  send(pending->command, timeoutMs);
  return driveWrite(pending, timeoutMs, false);
}

CLINT32 Channel::continueWrite(std::optional<PendingWrite>& pending, uint32_t timeoutMs) {
  return driveWrite(pending, timeoutMs, true);
}

CLINT32 Channel::writeMemToEnd(uint64_t address, const std::vector<uint8_t>& data,
                               uint32_t timeoutMs) {
  std::optional<PendingWrite> pending;
  CLINT32 status = writeMem(address, data.data(), data.size(), timeoutMs, pending);
  while (status == CL_ERR_PENDING_WRITE) status = continueWrite(pending, timeoutMs);
  return status;
}

CLINT32 Channel::driveWrite(std::optional<PendingWrite>& pending, uint32_t timeoutMs,
                            bool resumed) {
  try {
    bool inPending = resumed;
    while (true) {
      PendingWrite& state = *pending;
      const std::size_t dataSize = state.command.scd.size() - 8;
      // While the device runs the write, wait at most the caller's time-out per call, and
      // never beyond the time the device announced.
      bool waitedForCaller = false;
      uint64_t waitMs = ackWindowMs(state.command, 20);
      if (inPending) {
        waitedForCaller = state.pendingBudgetMs > timeoutMs;
        waitMs = waitedForCaller ? timeoutMs : state.pendingBudgetMs;
        state.pendingBudgetMs -= waitMs;
      }
      AwaitResult result = awaitAck(state.command, Deadline(waitMs));
      if (result.kind == AckKind::Pending) {
        if (++state.pendings > kMaxPendings) {
          throw DriverFailure(CL_ERR_TIMEOUT, "the device kept a write pending too long");
        }
        state.pendingBudgetMs = pendingWindowMs(result.pendingMs);
        inPending = true;
        continue;
      }
      if (result.kind == AckKind::Lost) {
        if (waitedForCaller) return CL_ERR_PENDING_WRITE;
        if (state.sends >= maxSends_) {
          throw DriverFailure(CL_ERR_TIMEOUT, "no acknowledge from the device after " +
                                                  std::to_string(state.sends) + " tries");
        }
        resendPrepare(state.command);
        send(state.command, timeoutMs);
        ++state.sends;
        inPending = false;
        continue;
      }
      const uint64_t chunkAddress = vq::gencp::readU64(state.command.scd.data());
      if (result.ack.status() == vq::gencp::kStatusBusy &&
          state.busyWaitedMs < std::max(timeoutMs, responseMs_)) {
        // The device still runs an earlier command: try again as a new command.
        pauseWhileBusy();
        state.busyWaitedMs += kBusyPauseMs;
        state.command.requestId = nextRequestId();
        state.command.flagsOrStatus = vq::gencp::kFlagRequestAck;
        state.sends = 1;
        inPending = false;
        send(state.command, timeoutMs);
        continue;
      }
      if (!checkWriteAck(result.ack, dataSize)) {
        throwStatus("write", chunkAddress, result.ack.status());
      }
      if (result.ack.status() != vq::gencp::kStatusSuccess) state.warningStatus = result.ack.status();
      if (state.rest.empty()) {
        warningStatus_ = state.warningStatus;
        pending.reset();
        return warningStatus_ != 0 ? kWriteWarning : CL_ERR_NO_ERR;
      }
      const std::size_t next = std::min(state.rest.size(), vq::gencp::kMaxWriteData);
      state.command = vq::gencp::makeWriteMemCommand(nextRequestId(), state.restAddress,
                                                     state.rest.data(), next);
      state.rest.erase(state.rest.begin(), state.rest.begin() + static_cast<std::ptrdiff_t>(next));
      state.restAddress += next;
      state.sends = 1;
      state.pendings = 0;
      inPending = false;
      send(state.command, timeoutMs);
    }
  } catch (...) {
    pending.reset();
    throw;
  }
}

bool Channel::writeOnce(uint64_t address, const std::vector<uint8_t>& data, uint32_t timeoutMs) {
  const Packet command = vq::gencp::makeWriteMemCommand(nextRequestId(), address, data);
  try {
    send(command, timeoutMs);
  } catch (const DriverFailure&) {
    return false;
  }
  const std::size_t bytes = 2 * vq::gencp::kHeaderSize + command.scd.size() + 4;
  Deadline attempt(std::min(timeoutMs, responseMs_) + transferMs(bytes, bitsPerSecond_) + kMarginMs);
  for (int pendings = 0; pendings <= kMaxPendings; ++pendings) {
    AwaitResult result = awaitAck(command, attempt);
    if (result.kind == AckKind::Ack) return !vq::gencp::isErrorStatus(result.ack.status());
    if (result.kind == AckKind::Lost) return false;
    attempt.extendTo(pendingWindowMs(result.pendingMs));
  }
  return false;
}

void Channel::awaitLateAnswer(uint16_t requestId, Deadline deadline) {
  Packet command;
  command.commandId = vq::gencp::kWriteMemCmd;
  command.requestId = requestId;
  for (int pendings = 0; pendings <= kMaxPendings && !deadline.expired(); ++pendings) {
    const AwaitResult result = awaitAck(command, deadline);
    if (result.kind != AckKind::Pending) return;
    deadline.extendTo(pendingWindowMs(result.pendingMs));
  }
}

}  // namespace vq::gencpdrv
