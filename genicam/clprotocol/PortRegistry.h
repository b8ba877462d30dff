// Serial ports the client registered, by port ID ("Local#<name>"). Adapters are not owned;
// each is opened (SerialInit) on first use and closed when unregistered.
#pragma once

#include <CLProtocol/ISerialAdapter.h>

#include <memory>
#include <string>
#include <vector>

namespace CLProtocol {

class DriverLibrary;

class PortRegistry {
 public:
  static std::string Register(const std::string& name, ISerialAdapter* adapter);
  static void Unregister(const std::string& portID);
  static void UnregisterAll();
  static std::vector<std::string> PortIDs();
  static ISerialAdapter* Find(const std::string& portID);
  // The adapter, opened; throws when the port is unknown or does not open.
  static ISerialAdapter* Open(const std::string& portID);

  // The connection a probe opened, kept for the Connect that usually follows so that it need
  // not identify the device again. A newer probe on the port, unregistering it, or Terminate
  // disconnects it.
  static void KeepProbed(const std::string& portID, std::shared_ptr<DriverLibrary> driver,
                         CLUINT32 cookie, const std::string& deviceID);
  // The kept cookie when it was probed with `driver` for `deviceID`, else 0; either way the
  // port keeps none afterwards.
  static CLUINT32 TakeProbed(const std::string& portID, const DriverLibrary& driver,
                             const std::string& deviceID);
};

}  // namespace CLProtocol
