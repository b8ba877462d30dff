#include <CLProtocol/CLPort.h>
#include <CLProtocol/DeviceID.h>

#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include "CLPortImpl.h"
#include "DriverCatalog.h"
#include "PortRegistry.h"

namespace CLProtocol {

using GenICam::gcstring;

void CCLPort::Impl::RequireConnected(const char* what) const {
  if (driver == nullptr || serial == nullptr || cookie == 0) {
    throw ACCESS_EXCEPTION("%s failed: the port is not connected", what);
  }
}

std::string CCLPort::Impl::ModelTemplate() const {
  CDeviceID id;
  if (!id.FromString(gcstring(shortDeviceID.c_str()))) return shortDeviceID;
  return std::string(id.GetCameraManufacturer().c_str()) + "#" + id.GetCameraFamily().c_str() +
         "#" + id.GetCameraModel().c_str();
}

namespace {

// Parses a full device ID or template and loads the driver it names. Fails before any line
// traffic when the text breaks the device-ID rules or names no driver directory.
std::shared_ptr<DriverLibrary> DriverFor(const gcstring& text, CDeviceID& id) {
  const std::string what = "Parsing device ID '" + std::string(text.c_str()) + "'";
  if (!id.FromString(text) || !id.HasDriver() || !id.HasIdentifierTokens()) {
    ThrowDriverError(CL_ERR_INVALID_DEVICEID, what, "invalid device ID");
  }
  if (id.GetDriverPath().empty()) {
    ThrowDriverError(CL_ERR_INVALID_DEVICEID, what, "the device ID names no driver directory");
  }
  return GetDriver(id.GetDriverPath().c_str());
}

// A short template a driver offers: one to three identifier tokens.
bool ValidShortTemplate(const std::string& text) {
  CDeviceID id;
  return id.FromString(gcstring(text.c_str())) && !id.HasDriver() && id.HasIdentifierTokens() &&
         id.GetNumShortTokens() <= 3;
}

std::string FullID(const DriverLibrary& driver, const std::string& shortID) {
  return driver.Directory() + "#" + driver.FileName() + "#" + shortID;
}

// Calls the driver's probe, growing the ID buffer when asked to.
std::string Probe(DriverLibrary& driver, ISerial* serial, const std::string& shortTemplate,
                  CLUINT32 timeout, CLUINT32& cookie) {
  std::vector<CLINT8> buffer(256, '\0');
  for (int attempt = 0; attempt < 3; ++attempt) {
    auto size = static_cast<CLUINT32>(buffer.size());
    const CLINT32 status = driver.Functions().ProbeDevice(serial, shortTemplate.c_str(),
                                                          buffer.data(), &size, &cookie, timeout);
    if (status == CL_ERR_BUFFER_TOO_SMALL && size > buffer.size() && size < 65536) {
      buffer.assign(size, '\0');
      continue;
    }
    driver.Check(status, "Probing the device");
    buffer.back() = '\0';
    return std::string(buffer.data());
  }
  driver.Check(CL_ERR_BUFFER_TOO_SMALL, "Probing the device");
  return std::string();
}

}  // namespace

CCLPort::CCLPort() : m_pImpl(new Impl) {}

CCLPort::~CCLPort() {
  try {
    Disconnect();
  } catch (...) {
    // Destruction never throws.
  }
  delete m_pImpl;
}

// ---- registered ports ----

gcstring CCLPort::RegisterSerial(const gcstring& PortName, ISerialAdapter* pSerialAdapter) {
  if (pSerialAdapter == nullptr) throw INVALID_ARGUMENT_EXCEPTION("RegisterSerial: null adapter");
  return gcstring(PortRegistry::Register(PortName.c_str(), pSerialAdapter));
}

void CCLPort::UnRegisterSerial(const gcstring& PortID) { PortRegistry::Unregister(PortID.c_str()); }
void CCLPort::UnRegisterSerials() { PortRegistry::UnregisterAll(); }

void CCLPort::GetPortIDs(GenICam::gcstring_vector& PortIDs) {
  PortIDs.clear();
  for (const auto& id : PortRegistry::PortIDs()) PortIDs.push_back(gcstring(id));
}

ISerialAdapter* CCLPort::GetPort(const gcstring& PortID) {
  return PortRegistry::Find(PortID.c_str());
}

// ---- drivers ----

void CCLPort::GetDeviceIDTemplates(GenICam::gcstring_vector& DeviceIDTemplates) {
  DeviceIDTemplates.clear();
  std::vector<std::string> problems;
  for (const auto& driver : LoadAllDrivers()) {
    const std::string path = driver->Directory() + "/" + driver->FileName();
    std::vector<std::string> templates;
    try {
      templates = driver->ShortTemplates();
    } catch (const GenICam::GenericException& e) {
      problems.push_back("driver '" + path + "' lists no templates: " + e.GetDescription());
      continue;
    }
    for (const auto& shortTemplate : templates) {
      if (!ValidShortTemplate(shortTemplate)) {
        problems.push_back("driver '" + path + "' offers the malformed template '" +
                           shortTemplate + "'; it is ignored");
        continue;
      }
      DeviceIDTemplates.push_back(gcstring(FullID(*driver, shortTemplate)));
    }
  }
  Diagnose(std::move(problems));
}

void CCLPort::GetDiagnostics(GenICam::gcstring_vector& Messages) {
  Messages.clear();
  for (const auto& message : Diagnostics()) Messages.push_back(gcstring(message));
}

gcstring CCLPort::ProbeDevice(const gcstring& PortID, const gcstring& strDeviceIDTemplate,
                              const CLUINT32 SerialTimeout) {
  CDeviceID id;
  auto driver = DriverFor(strDeviceIDTemplate, id);
  ISerialAdapter* serial = PortRegistry::Open(PortID.c_str());
  CLUINT32 cookie = 0;
  const std::string shortID =
      Probe(*driver, serial, id.GetShortDeviceID().c_str(), SerialTimeout, cookie);
  const std::string deviceID = FullID(*driver, shortID);
  PortRegistry::KeepProbed(PortID.c_str(), driver, cookie, deviceID);
  return gcstring(deviceID);
}

void CCLPort::StopProbing(CLUINT32 toStop) {
  for (const auto& driver : LoadAllDrivers()) {
    if (driver->SupportsParam(CLP_STOP_PROBE_DEVICE)) {
      driver->Functions().SetParam(nullptr, CLP_STOP_PROBE_DEVICE, 0,
                                   reinterpret_cast<const CLINT8*>(&toStop), sizeof toStop, 0);
    }
  }
}

void CCLPort::Terminate() {
  PortRegistry::UnregisterAll();
  UnloadDrivers();
}

// ---- connection ----

void CCLPort::Connect(const gcstring& PortID, const gcstring& strDeviceID) {
  std::lock_guard<std::recursive_mutex> lock(m_pImpl->mutex);
  Disconnect();
  CDeviceID id;
  auto driver = DriverFor(strDeviceID, id);
  ISerialAdapter* serial = PortRegistry::Open(PortID.c_str());
  // Right after ProbeDevice found this very device, its connection is taken over as it is.
  CLUINT32 cookie = PortRegistry::TakeProbed(PortID.c_str(), *driver, strDeviceID.c_str());
  const std::string shortID =
      cookie != 0 ? std::string(id.GetShortDeviceID().c_str())
                  : Probe(*driver, serial, id.GetShortDeviceID().c_str(), m_pImpl->timeout, cookie);
  if (cookie == 0) {
    ThrowDriverError(CL_ERR_INVALID_COOKIE, "Connecting", "the driver returned no connection");
  }
  m_pImpl->driver = driver;
  m_pImpl->serial = serial;
  m_pImpl->portID = PortID.c_str();
  m_pImpl->cookie = cookie;
  m_pImpl->shortDeviceID = shortID;
  m_pImpl->deviceID = FullID(*driver, shortID);
}

void CCLPort::Disconnect() {
  std::lock_guard<std::recursive_mutex> lock(m_pImpl->mutex);
  if (m_pImpl->driver && m_pImpl->cookie != 0) m_pImpl->driver->Functions().Disconnect(m_pImpl->cookie);
  m_pImpl->driver.reset();
  m_pImpl->serial = nullptr;
  m_pImpl->cookie = 0;
  m_pImpl->portID.clear();
  m_pImpl->deviceID.clear();
  m_pImpl->shortDeviceID.clear();
}

bool CCLPort::IsConnected() const {
  std::lock_guard<std::recursive_mutex> lock(m_pImpl->mutex);
  return m_pImpl->cookie != 0;
}

gcstring CCLPort::GetDeviceID() const {
  std::lock_guard<std::recursive_mutex> lock(m_pImpl->mutex);
  return gcstring(m_pImpl->deviceID);
}

void CCLPort::SetSerialTimeOut(CLUINT32 TimeOut) {
  std::lock_guard<std::recursive_mutex> lock(m_pImpl->mutex);
  m_pImpl->timeout = TimeOut;
}

CLUINT32 CCLPort::GetSerialTimeOut() const {
  std::lock_guard<std::recursive_mutex> lock(m_pImpl->mutex);
  return m_pImpl->timeout;
}

// ---- events ----

CLINT32 CCLPort::GetEvent(void* buffer, CLUINT32* bufferSize) {
  std::lock_guard<std::recursive_mutex> lock(m_pImpl->mutex);
  if (m_pImpl->cookie == 0) return CL_ERR_INVALID_COOKIE;
  if (m_pImpl->driver->Functions().GetEventData == nullptr) return CL_ERR_FUNCTION_NOT_FOUND;
  return m_pImpl->driver->Functions().GetEventData(m_pImpl->cookie, static_cast<CLINT8*>(buffer),
                                                   bufferSize);
}

// ---- GenApi::IPort ----

GenApi::EAccessMode CCLPort::GetAccessMode() const {
  return IsConnected() ? GenApi::RW : GenApi::NA;
}

void CCLPort::Read(void* pBuffer, int64_t Address, int64_t Length) {
  std::lock_guard<std::recursive_mutex> lock(m_pImpl->mutex);
  m_pImpl->RequireConnected("Read");
  if ((pBuffer == nullptr && Length != 0) || Length < 0 || Address < 0) {
    throw INVALID_ARGUMENT_EXCEPTION("Read: invalid buffer, address or length");
  }
  const CLINT32 status = m_pImpl->driver->Functions().ReadRegister(
      m_pImpl->serial, m_pImpl->cookie, Address, static_cast<CLINT8*>(pBuffer), Length,
      m_pImpl->timeout);
  m_pImpl->driver->Check(status, "Read", m_pImpl->cookie);
}

void CCLPort::Write(const void* pBuffer, int64_t Address, int64_t Length) {
  std::lock_guard<std::recursive_mutex> lock(m_pImpl->mutex);
  m_pImpl->RequireConnected("Write");
  if ((pBuffer == nullptr && Length != 0) || Length < 0 || Address < 0) {
    throw INVALID_ARGUMENT_EXCEPTION("Write: invalid buffer, address or length");
  }
  const auto& f = m_pImpl->driver->Functions();
  m_pImpl->lastWriteWarning.clear();
  CLINT32 status = f.WriteRegister(m_pImpl->serial, m_pImpl->cookie, Address,
                                   static_cast<const CLINT8*>(pBuffer), Length, m_pImpl->timeout);
  // The driver bounds the total wait; it ends the loop with a final status.
  while (status == CL_ERR_PENDING_WRITE) {
    status = f.ContinueWriteRegister(m_pImpl->serial, m_pImpl->cookie, 1, m_pImpl->timeout);
  }
  if (status == kWrittenWithWarning) {
    // Written: the device only added a warning, kept for whoever asks.
    const DriverLibrary& driver = *m_pImpl->driver;
    m_pImpl->lastWriteWarning = "(Code: " + std::to_string(status) + ") " +
                                driver.ErrorText(status) + ": " +
                                driver.ErrorText(CL_ERR_GET_LAST_ERROR, m_pImpl->cookie);
    return;
  }
  m_pImpl->driver->Check(status, "Write", m_pImpl->cookie);
}

gcstring CCLPort::GetLastWriteWarning() const {
  std::lock_guard<std::recursive_mutex> lock(m_pImpl->mutex);
  return gcstring(m_pImpl->lastWriteWarning);
}

// ---- ISerial, forwarded to the connected port ----

CLINT32 CCLPort::clSerialRead(CLINT8* buffer, CLUINT32* bufferSize, CLUINT32 serialTimeOut) {
  std::lock_guard<std::recursive_mutex> lock(m_pImpl->mutex);
  if (m_pImpl->serial == nullptr) return CL_ERR_INVALID_REFERENCE;
  return m_pImpl->serial->clSerialRead(buffer, bufferSize, serialTimeOut);
}

CLINT32 CCLPort::clSerialWrite(CLINT8* buffer, CLUINT32* bufferSize, CLUINT32 serialTimeOut) {
  std::lock_guard<std::recursive_mutex> lock(m_pImpl->mutex);
  if (m_pImpl->serial == nullptr) return CL_ERR_INVALID_REFERENCE;
  return m_pImpl->serial->clSerialWrite(buffer, bufferSize, serialTimeOut);
}

CLINT32 CCLPort::clGetSupportedBaudRates(CLUINT32* baudRates) {
  std::lock_guard<std::recursive_mutex> lock(m_pImpl->mutex);
  if (m_pImpl->serial == nullptr) return CL_ERR_INVALID_REFERENCE;
  return m_pImpl->serial->clGetSupportedBaudRates(baudRates);
}

CLINT32 CCLPort::clSetBaudRate(CLUINT32 baudRate) {
  std::lock_guard<std::recursive_mutex> lock(m_pImpl->mutex);
  if (m_pImpl->serial == nullptr) return CL_ERR_INVALID_REFERENCE;
  return m_pImpl->serial->clSetBaudRate(baudRate);
}

}  // namespace CLProtocol
