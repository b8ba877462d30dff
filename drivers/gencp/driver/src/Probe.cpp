// Probing: identify the device on a port and open a connection for it.
#include <vq/platform/sleep.h>

#include "Bootstrap.h"
#include "DriverFailure.h"
#include "Operations.h"

namespace vq::gencpdrv {

std::atomic<bool>& stopProbeFlag() {
  static std::atomic<bool> flag{false};
  return flag;
}

namespace {

void checkStopped() {
  if (stopProbeFlag().load()) throw DriverFailure(CL_ERR_NO_DEVICE_FOUND, "probe stopped");
}

}  // namespace

std::shared_ptr<Connection> probeDevice(ISerial* serial, const std::string& shortTemplate,
                                        uint32_t timeoutMs) {
  if (!isValidShortTemplate(shortTemplate)) {
    throw DriverFailure(CL_ERR_INVALID_DEVICEID, "malformed device ID template '" + shortTemplate + "'");
  }
  checkStopped();
  const CLINT32 status = serial->clSetBaudRate(CL_BAUDRATE_9600);
  if (status != CL_ERR_NO_ERR) throw DriverFailure(status, "the port refused 9600 baud");
  auto connection = std::make_shared<Connection>();
  connection->baudBit = CL_BAUDRATE_9600;
  Channel channel = connection->channel(serial);
  try {
    readBootstrap(channel, timeoutMs, connection->bootstrap, connection->identity);
  } catch (const DriverFailure& failure) {
    if (failure.code() != CL_ERR_TIMEOUT) throw;
    throw DriverFailure(CL_ERR_NO_DEVICE_FOUND,
                        std::string("no GenCP device answered at 9600 baud: ") + failure.what());
  }
  checkStopped();
  connection->shortDeviceId = connection->identity.shortDeviceId();
  if (!templateMatches(shortTemplate, connection->shortDeviceId)) {
    throw DriverFailure(CL_ERR_NO_DEVICE_FOUND, "the device " + connection->shortDeviceId +
                                                    " does not match " + shortTemplate);
  }
  return connection;
}

}  // namespace vq::gencpdrv
