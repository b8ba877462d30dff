// Probing: find the rate the device talks at, identify it, open it.
#include <vq/gencp/Bootstrap.h>
#include <vq/gencp/Endian.h>

#include "Bootstrap.h"
#include "DeviceRecords.h"
#include "DriverFailure.h"
#include "ErrorCodes.h"
#include "Operations.h"
#include "PortMemory.h"

namespace vq::gencpdrv {

std::atomic<bool>& stopProbeFlag() {
  static std::atomic<bool> flag{false};
  return flag;
}

namespace {

namespace abrm = vq::gencp::abrm;

// Longest wait for the first answer at a rate being tried: the maximum response time GenCP
// recommends (a bootstrap register read is among the quickest commands).
constexpr uint32_t kProbeResponseMs = 300;
// Heartbeat time-out written when a device refuses to switch the heartbeat off.
constexpr uint32_t kLongestHeartbeatMs = 0xFFFFFFFFu;

void checkStopped() {
  if (stopProbeFlag().load()) throw DriverFailure(CL_ERR_NO_DEVICE_FOUND, "probe stopped");
}

// The rate that last worked on this port first, then 9600 (where a device starts and where
// its heartbeat returns it), then every other rate the port offers, fastest first.
std::vector<uint32_t> ratesToTry(ISerial* serial, uint32_t lastWorking) {
  CLUINT32 port = 0;
  if (serial->clGetSupportedBaudRates(&port) != CL_ERR_NO_ERR) port = 0;
  port |= CL_BAUDRATE_9600;
  std::vector<uint32_t> rates;
  if ((lastWorking & port) != 0) rates.push_back(lastWorking);
  if (lastWorking != CL_BAUDRATE_9600) rates.push_back(CL_BAUDRATE_9600);
  for (uint32_t bit = CL_BAUDRATE_921600; bit > CL_BAUDRATE_9600; bit >>= 1) {
    if ((port & bit) != 0 && bit != lastWorking) rates.push_back(bit);
  }
  return rates;
}

std::vector<uint8_t> bigEndian(uint64_t value, std::size_t size) {
  std::vector<uint8_t> bytes(8);
  vq::gencp::writeU64(bytes.data(), value);
  return std::vector<uint8_t>(bytes.end() - static_cast<std::ptrdiff_t>(size), bytes.end());
}

// GenCP start-up: the host takes the access privilege, then deals with the heartbeat. A device
// with more than one rate falls back to 9600 when it hears nothing within the heartbeat time-out,
// but this driver never talks on the line from a thread of its own (requests reach a host only on
// the thread that called into the protocol layer), so it cannot keep the heartbeat alive while the
// client is idle. It therefore switches the heartbeat off, which GenCP lets the host do: an idle
// client then never finds its device gone back to 9600 behind its back. If the device refuses, the
// time-out is set to its longest instead. Should a device still end up at 9600 (power cycle,
// another host), the next probe finds it there: it tries 9600 right after the rate last used.
void openDevice(Channel& channel, Connection& connection, bool configurationKnown,
                uint32_t timeoutMs) {
  BootstrapInfo& info = connection.bootstrap;
  if ((info.capabilities & abrm::kCapAccessPrivilegeHeartbeat) == 0) return;
  channel.writeMemToEnd(abrm::kAccessPrivilege, bigEndian(1, 4), timeoutMs);
  if (configurationKnown && (info.deviceConfiguration & 1) == 0) return;
  const uint64_t withoutHeartbeat = info.deviceConfiguration & ~uint64_t{1};
  try {
    channel.writeMemToEnd(abrm::kDeviceConfiguration, bigEndian(withoutHeartbeat, 8), timeoutMs);
    info.deviceConfiguration = withoutHeartbeat;
  } catch (const DriverFailure& failure) {
    if (failure.code() == CL_ERR_TIMEOUT) throw;
    channel.writeMemToEnd(abrm::kHeartbeatTimeout, bigEndian(kLongestHeartbeatMs, 4), timeoutMs);
  }
}

}  // namespace

std::shared_ptr<Connection> probeDevice(ISerial* serial, const std::string& shortTemplate,
                                        uint32_t timeoutMs) {
  if (!isValidShortTemplate(shortTemplate)) {
    throw DriverFailure(CL_ERR_INVALID_DEVICEID, "malformed device ID template '" + shortTemplate + "'");
  }
  const PortHints hints = PortMemory::recall(serial);
  // The device last identified on this port, else the records on disk (newest last).
  const std::vector<KnownDevice> candidates =
      hints.device ? std::vector<KnownDevice>{*hints.device} : DeviceRecords::load();
  std::string lastFailure = "nothing tried";
  for (uint32_t rate : ratesToTry(serial, hints.baudBit)) {
    checkStopped();
    if (serial->clSetBaudRate(rate) != CL_ERR_NO_ERR) continue;
    auto connection = std::make_shared<Connection>();
    connection->baudBit = rate;
    Channel channel(serial, bitsPerSecond(rate), std::min(timeoutMs, kProbeResponseMs));
    Identification found;
    try {
      found = identify(channel, candidates, timeoutMs);
    } catch (const DriverFailure& failure) {
      if (failure.code() != CL_ERR_TIMEOUT) throw;  // something answered, and was refused
      lastFailure = failure.what();
      continue;
    }
    PortMemory::rememberRate(serial, rate);
    PortMemory::rememberDevice(serial, found.device);
    if (found.freshlyRead) DeviceRecords::store(found.device);
    connection->identity = found.device.identity;
    connection->bootstrap = found.device.bootstrap;
    connection->shortDeviceId = connection->identity.shortDeviceId();
    if (!templateMatches(shortTemplate, connection->shortDeviceId)) {
      throw DriverFailure(CL_ERR_NO_DEVICE_FOUND, "the device " + connection->shortDeviceId +
                                                      " does not match " + shortTemplate);
    }
    checkStopped();
    Channel opened = connection->channel(serial);
    openDevice(opened, *connection, found.freshlyRead, timeoutMs);
    return connection;
  }
  serial->clSetBaudRate(CL_BAUDRATE_9600);
  throw DriverFailure(CL_ERR_NO_DEVICE_FOUND,
                      "no GenCP device answered at any rate the port offers: " + lastFailure);
}

}  // namespace vq::gencpdrv
