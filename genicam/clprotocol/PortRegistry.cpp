#include "PortRegistry.h"

#include <map>
#include <mutex>

#include "DescriptionCache.h"
#include "DriverLibrary.h"
#include "ErrorTexts.h"

namespace CLProtocol {

namespace {

struct Port {
  ISerialAdapter* adapter = nullptr;
  bool open = false;
  std::shared_ptr<DriverLibrary> probedDriver;
  CLUINT32 probedCookie = 0;
  std::string probedID;
};

struct Ports {
  std::mutex mutex;
  std::map<std::string, Port> byID;
};

// Never destroyed: at exit the drivers' own statics may already be gone, so a kept probe
// connection must not be disconnected from a destructor.
Ports& ports() {
  static Ports* const instance = new Ports;
  return *instance;
}

void dropProbed(Port& port) {
  if (port.probedDriver && port.probedCookie != 0) port.probedDriver->Functions().Disconnect(port.probedCookie);
  port.probedDriver.reset();
  port.probedCookie = 0;
  port.probedID.clear();
}

void close(Port& port) {
  dropProbed(port);
  if (port.open && port.adapter != nullptr) port.adapter->SerialClose();
  port.open = false;
}

}  // namespace

std::string PortRegistry::Register(const std::string& name, ISerialAdapter* adapter) {
  const std::string portID = "Local#" + name;
  Ports& p = ports();
  std::lock_guard<std::mutex> lock(p.mutex);
  auto it = p.byID.find(portID);
  if (it != p.byID.end()) {
    if (it->second.adapter != adapter) close(it->second);
    it->second.adapter = adapter;
  } else {
    p.byID[portID].adapter = adapter;
  }
  return portID;
}

void PortRegistry::Unregister(const std::string& portID) {
  Ports& p = ports();
  std::lock_guard<std::mutex> lock(p.mutex);
  auto it = p.byID.find(portID);
  if (it == p.byID.end()) return;
  close(it->second);
  p.byID.erase(it);
  DescriptionCache::ForgetPort(portID);
}

void PortRegistry::UnregisterAll() {
  Ports& p = ports();
  std::lock_guard<std::mutex> lock(p.mutex);
  for (auto& entry : p.byID) {
    close(entry.second);
    DescriptionCache::ForgetPort(entry.first);
  }
  p.byID.clear();
}

void PortRegistry::KeepProbed(const std::string& portID, std::shared_ptr<DriverLibrary> driver,
                              CLUINT32 cookie, const std::string& deviceID) {
  Ports& p = ports();
  std::lock_guard<std::mutex> lock(p.mutex);
  auto it = p.byID.find(portID);
  if (it == p.byID.end()) {
    if (cookie != 0) driver->Functions().Disconnect(cookie);
    return;
  }
  dropProbed(it->second);
  it->second.probedDriver = std::move(driver);
  it->second.probedCookie = cookie;
  it->second.probedID = deviceID;
}

CLUINT32 PortRegistry::TakeProbed(const std::string& portID, const DriverLibrary& driver,
                                  const std::string& deviceID) {
  Ports& p = ports();
  std::lock_guard<std::mutex> lock(p.mutex);
  auto it = p.byID.find(portID);
  if (it == p.byID.end()) return 0;
  Port& port = it->second;
  if (port.probedDriver.get() == &driver && port.probedID == deviceID && port.probedCookie != 0) {
    const CLUINT32 cookie = port.probedCookie;
    port.probedDriver.reset();
    port.probedCookie = 0;
    port.probedID.clear();
    return cookie;
  }
  dropProbed(port);
  return 0;
}

std::vector<std::string> PortRegistry::PortIDs() {
  Ports& p = ports();
  std::lock_guard<std::mutex> lock(p.mutex);
  std::vector<std::string> ids;
  for (const auto& entry : p.byID) ids.push_back(entry.first);
  return ids;
}

ISerialAdapter* PortRegistry::Find(const std::string& portID) {
  Ports& p = ports();
  std::lock_guard<std::mutex> lock(p.mutex);
  auto it = p.byID.find(portID);
  return it == p.byID.end() ? nullptr : it->second.adapter;
}

ISerialAdapter* PortRegistry::Open(const std::string& portID) {
  Ports& p = ports();
  std::lock_guard<std::mutex> lock(p.mutex);
  auto it = p.byID.find(portID);
  if (it == p.byID.end() || it->second.adapter == nullptr) {
    throw INVALID_ARGUMENT_EXCEPTION("Unknown serial port '%s'", portID.c_str());
  }
  if (!it->second.open) {
    const CLINT32 status = it->second.adapter->SerialInit();
    if (status < 0) {
      const char* text = StandardErrorText(status);
      ThrowDriverError(status, "Opening serial port '" + portID + "'",
                       text != nullptr ? text : "unknown error");
    }
    it->second.open = true;
  }
  return it->second.adapter;
}

}  // namespace CLProtocol
