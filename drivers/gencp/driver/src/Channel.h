// GenCP transactions on the control channel of a serial link: one command at a time, its
// acknowledge awaited with resends, pending acknowledges honoured, large transfers split into
// packets of at most 1024 bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include <vq/gencp/Packet.h>
#include <vq/gencp/PacketParser.h>

#include "Deadline.h"
#include "SerialLink.h"

namespace vq::gencpdrv {

// Sends of one command before the driver gives up (the first send and two resends).
constexpr int kMaxSends = 3;

// A write the device is still executing when the caller's time-out ran out.
struct PendingWrite {
  vq::gencp::Packet command;      // the chunk in flight (its request id identifies the ack)
  std::vector<uint8_t> rest;      // data of the chunks not sent yet
  uint64_t restAddress = 0;
  uint64_t pendingBudgetMs = 0;   // what is left of the device's announced temporary time-out
  int sends = 1;
  int pendings = 0;
  uint32_t busyWaitedMs = 0;
  uint16_t warningStatus = 0;     // the last warning status a chunk was acknowledged with
};

class Channel {
 public:
  using EventSink = std::function<void(const vq::gencp::Packet&)>;

  // `responseMs` is the longest the device may take to answer a command (its maximum response
  // time); each wait for an acknowledge adds the transfer times of command and answer.
  Channel(ISerial* serial, uint32_t bitsPerSecond, uint32_t responseMs, EventSink events = {});

  // Sends of each command before a time-out (kMaxSends unless changed).
  void setMaxSends(int sends) { maxSends_ = sends; }

  // Reads `length` bytes; throws DriverFailure. `timeoutMs` bounds the retries of a device
  // that answers busy; with `requestIdZero` the first packet goes out with request id 0 (the
  // first command to an unknown device).
  std::vector<uint8_t> readMem(uint64_t address, std::size_t length, uint32_t timeoutMs,
                               bool requestIdZero = false);

  // Writes every byte. Returns CL_ERR_NO_ERR, kWriteWarning, or CL_ERR_PENDING_WRITE with the
  // state to continue in `pending`; throws DriverFailure on failure.
  CLINT32 writeMem(uint64_t address, const uint8_t* data, std::size_t size, uint32_t timeoutMs,
                   std::optional<PendingWrite>& pending);
  // The warning status behind the last kWriteWarning, 0 when none.
  uint16_t warningStatus() const { return warningStatus_; }

  // Waits again for a pending write and finishes its remaining chunks.
  CLINT32 continueWrite(std::optional<PendingWrite>& pending, uint32_t timeoutMs);
  // writeMem waiting out pending acknowledges (the driver still bounds the total wait).
  // Returns CL_ERR_NO_ERR or kWriteWarning; throws DriverFailure.
  CLINT32 writeMemToEnd(uint64_t address, const std::vector<uint8_t>& data, uint32_t timeoutMs);

  // A single write whose acknowledge is awaited once, without resends (baud-rate confirmation).
  bool writeOnce(uint64_t address, const std::vector<uint8_t>& data, uint32_t timeoutMs);

  // Swallows the acknowledge of an earlier command still running on the device, waiting at
  // most until `deadline`; pending acknowledges for it move the deadline as announced.
  void awaitLateAnswer(uint16_t requestId, Deadline deadline);

  static uint16_t nextRequestId();
  // Restarts the request ids (repeatable runs of the fuzz target).
  static void resetRequestIds(uint16_t first);

 private:
  enum class AckKind { Ack, Pending, Lost };
  struct AwaitResult {
    AckKind kind = AckKind::Lost;
    vq::gencp::Packet ack;
    uint16_t pendingMs = 0;
  };

  vq::gencp::Packet exchange(vq::gencp::Packet command, uint32_t timeoutMs);
  AwaitResult awaitAck(const vq::gencp::Packet& command, const Deadline& deadline);
  std::optional<vq::gencp::ParseResult> receive(const Deadline& deadline);
  std::size_t bytesWanted() const;
  void trimMirror();
  void send(const vq::gencp::Packet& command, uint32_t timeoutMs);
  void resendPrepare(vq::gencp::Packet& command);
  void pauseWhileBusy();
  uint64_t ackWindowMs(const vq::gencp::Packet& command, std::size_t ackBytes) const;
  uint64_t pendingWindowMs(uint16_t pendingMs) const;

  // Runs chunks of a write starting with `pending.command`; returns as writeMem.
  CLINT32 driveWrite(std::optional<PendingWrite>& pending, uint32_t timeoutMs, bool resumed);
  bool checkWriteAck(const vq::gencp::Packet& ack, std::size_t dataSize) const;

  SerialLink link_;
  uint32_t bitsPerSecond_;
  uint32_t responseMs_;
  int maxSends_ = kMaxSends;
  uint16_t warningStatus_ = 0;
  EventSink events_;
  vq::gencp::PacketParser parser_;
  std::vector<uint8_t> mirror_;  // the bytes the parser still holds
};

}  // namespace vq::gencpdrv
