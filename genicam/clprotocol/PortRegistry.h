// Serial ports the client registered, by port ID ("Local#<name>"). Adapters are not owned;
// each is opened (SerialInit) on first use and closed when unregistered.
#pragma once

#include <CLProtocol/ISerialAdapter.h>

#include <string>
#include <vector>

namespace CLProtocol {

class PortRegistry {
 public:
  static std::string Register(const std::string& name, ISerialAdapter* adapter);
  static void Unregister(const std::string& portID);
  static void UnregisterAll();
  static std::vector<std::string> PortIDs();
  static ISerialAdapter* Find(const std::string& portID);
  // The adapter, opened; throws when the port is unknown or does not open.
  static ISerialAdapter* Open(const std::string& portID);
};

}  // namespace CLProtocol
