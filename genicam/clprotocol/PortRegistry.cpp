#include "PortRegistry.h"

#include <map>
#include <mutex>

#include "DriverLibrary.h"
#include "ErrorTexts.h"

namespace CLProtocol {

namespace {

struct Port {
  ISerialAdapter* adapter = nullptr;
  bool open = false;
};

struct Ports {
  std::mutex mutex;
  std::map<std::string, Port> byID;
};

Ports& ports() {
  static Ports instance;
  return instance;
}

void close(Port& port) {
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
    p.byID[portID] = Port{adapter, false};
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
}

void PortRegistry::UnregisterAll() {
  Ports& p = ports();
  std::lock_guard<std::mutex> lock(p.mutex);
  for (auto& entry : p.byID) close(entry.second);
  p.byID.clear();
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
