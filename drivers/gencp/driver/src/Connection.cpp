#include "Connection.h"

#include <vq/gencp/Constants.h>

#include <algorithm>

namespace vq::gencpdrv {

namespace {

struct Registry {
  std::mutex mutex;
  std::map<CLUINT32, std::shared_ptr<Connection>> connections;
  CLUINT32 nextCookie = 1;
};

Registry& registry() {
  static Registry instance;
  return instance;
}

}  // namespace

uint32_t bitsPerSecond(uint32_t baudBit) {
  const uint32_t rate = vq::gencp::baudBitToRate(baudBit);
  return rate != 0 ? rate : 9600;
}

namespace {
// Bounds of the wait for an answer; a device reporting 0 gets the usual 300 ms.
constexpr uint32_t kDefaultResponseMs = 300;
constexpr uint32_t kMinResponseMs = 20;
constexpr uint32_t kMaxResponseMs = 30000;
}  // namespace

uint32_t BootstrapInfo::responseMs() const {
  if (maxResponseMs == 0) return kDefaultResponseMs;
  return std::clamp(maxResponseMs, kMinResponseMs, kMaxResponseMs);
}

Channel Connection::pendingChannel(ISerial* serial) {
  return Channel(serial, bitsPerSecond(baudBit), bootstrap.responseMs(),
                 [this](const vq::gencp::Packet& event) {
                   if (events.size() >= kMaxQueuedEvents) events.pop_front();
                   events.push_back(vq::gencp::encode(event));
                 });
}

Channel Connection::channel(ISerial* serial) {
  Channel result = pendingChannel(serial);
  abandonPendingWrite();
  if (abandonedWrite) {
    const AbandonedWrite late = *abandonedWrite;
    abandonedWrite.reset();
    result.awaitLateAnswer(late.requestId, late.until);
  }
  return result;
}

void Connection::abandonPendingWrite() {
  if (!pendingWrite) return;
  const uint64_t leftMs = pendingWrite->pendingBudgetMs +
                          transferMs(vq::gencp::kMaxPacketSize, bitsPerSecond(baudBit));
  abandonedWrite = AbandonedWrite{pendingWrite->command.requestId, Deadline(leftMs)};
  pendingWrite.reset();
}

CLUINT32 ConnectionRegistry::add(std::shared_ptr<Connection> connection) {
  Registry& r = registry();
  std::lock_guard<std::mutex> lock(r.mutex);
  CLUINT32 cookie = r.nextCookie;
  while (cookie == 0 || r.connections.count(cookie) != 0) ++cookie;  // never 0, never in use
  r.nextCookie = cookie + 1;
  r.connections[cookie] = std::move(connection);
  return cookie;
}

std::shared_ptr<Connection> ConnectionRegistry::find(CLUINT32 cookie) {
  Registry& r = registry();
  std::lock_guard<std::mutex> lock(r.mutex);
  const auto it = r.connections.find(cookie);
  return it == r.connections.end() ? nullptr : it->second;
}

bool ConnectionRegistry::remove(CLUINT32 cookie) {
  Registry& r = registry();
  std::lock_guard<std::mutex> lock(r.mutex);
  return r.connections.erase(cookie) != 0;
}

void ConnectionRegistry::clear() {
  Registry& r = registry();
  std::lock_guard<std::mutex> lock(r.mutex);
  r.connections.clear();
}

}  // namespace vq::gencpdrv
