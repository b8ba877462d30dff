#include <CLProtocol/CLPort.h>
#include <CLProtocol/DeviceID.h>

#include <cstring>
#include <fstream>
#include <mutex>
#include <sstream>
#include <vector>

#include "DriverCatalog.h"
#include "PortRegistry.h"
#include "XmlIdList.h"

namespace CLProtocol {

using GenICam::gcstring;

struct CCLPort::Impl {
  mutable std::recursive_mutex mutex;
  std::shared_ptr<DriverLibrary> driver;
  ISerialAdapter* serial = nullptr;
  std::string portID;
  CLUINT32 cookie = 0;
  std::string deviceID;       // full
  std::string shortDeviceID;
  CLUINT32 timeout = 500;

  std::vector<XmlIdEntry> CollectXmlIds();

  void RequireConnected(const char* what) const {
    if (driver == nullptr || serial == nullptr || cookie == 0) {
      throw ACCESS_EXCEPTION("%s failed: the port is not connected", what);
    }
  }
};

namespace {

// Parses a full device ID or template and loads the driver it names.
std::shared_ptr<DriverLibrary> DriverFor(const gcstring& text, CDeviceID& id) {
  if (!id.FromString(text) || !id.HasDriver()) {
    ThrowDriverError(CL_ERR_INVALID_DEVICEID, "Parsing device ID '" + std::string(text.c_str()) + "'",
                     "invalid device ID");
  }
  return GetDriver(id.GetDriverPath().c_str());
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

CLUINT32 HighestBit(CLUINT32 bits) {
  CLUINT32 best = 0;
  for (CLUINT32 bit = 1; bit <= CL_BAUDRATE_921600; bit <<= 1) {
    if (bits & bit) best = bit;
  }
  return best;
}

std::string LocationOf(const std::string& driverDirectory) {
  const size_t slash = driverDirectory.find_last_of('/');
  if (slash != std::string::npos && driverDirectory.substr(slash + 1) == kDriverSubfolder) {
    return driverDirectory.substr(0, slash);
  }
  return driverDirectory;
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
  for (const auto& driver : LoadAllDrivers()) {
    std::vector<std::string> templates;
    try {
      templates = driver->ShortTemplates();
    } catch (const GenICam::GenericException&) {
      continue;  // a driver that cannot list templates offers none
    }
    for (const auto& shortTemplate : templates) {
      DeviceIDTemplates.push_back(gcstring(driver->Directory() + "#" + driver->FileName() + "#" +
                                           shortTemplate));
    }
  }
}

gcstring CCLPort::ProbeDevice(const gcstring& PortID, const gcstring& strDeviceIDTemplate,
                              const CLUINT32 SerialTimeout) {
  CDeviceID id;
  auto driver = DriverFor(strDeviceIDTemplate, id);
  ISerialAdapter* serial = PortRegistry::Open(PortID.c_str());
  CLUINT32 cookie = 0;
  const std::string shortID =
      Probe(*driver, serial, id.GetShortDeviceID().c_str(), SerialTimeout, cookie);
  if (cookie != 0) driver->Functions().Disconnect(cookie);
  return gcstring(driver->Directory() + "#" + driver->FileName() + "#" + shortID);
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
  CLUINT32 cookie = 0;
  const std::string shortID =
      Probe(*driver, serial, id.GetShortDeviceID().c_str(), m_pImpl->timeout, cookie);
  if (cookie == 0) {
    ThrowDriverError(CL_ERR_INVALID_COOKIE, "Connecting", "the driver returned no connection");
  }
  m_pImpl->driver = driver;
  m_pImpl->serial = serial;
  m_pImpl->portID = PortID.c_str();
  m_pImpl->cookie = cookie;
  m_pImpl->shortDeviceID = shortID;
  m_pImpl->deviceID = driver->Directory() + "#" + driver->FileName() + "#" + shortID;
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

// ---- descriptions ----

void CCLPort::GetXMLIDs(GenICam::gcstring_vector& XMLIDs) {
  std::lock_guard<std::recursive_mutex> lock(m_pImpl->mutex);
  m_pImpl->RequireConnected("GetXMLIDs");
  XMLIDs.clear();
  for (const auto& entry : m_pImpl->CollectXmlIds()) XMLIDs.push_back(gcstring(entry.id));
}

gcstring CCLPort::GetXML(const bool UseMaxBaudrate) {
  std::lock_guard<std::recursive_mutex> lock(m_pImpl->mutex);
  m_pImpl->RequireConnected("GetXML");
  const auto entries = m_pImpl->CollectXmlIds();
  if (entries.empty()) return gcstring();
  return GetXML(gcstring(entries.front().id), UseMaxBaudrate);
}

gcstring CCLPort::GetXML(const gcstring& XMLID, const bool UseMaxBaudrate) {
  std::lock_guard<std::recursive_mutex> lock(m_pImpl->mutex);
  m_pImpl->RequireConnected("GetXML");
  Impl& impl = *m_pImpl;
  for (const auto& entry : DescriptionFilesFor(LocationOf(impl.driver->Directory()), impl.shortDeviceID)) {
    if (entry.id == XMLID.c_str()) {
      std::ifstream in(entry.filePath, std::ios::binary);
      std::ostringstream text;
      text << in.rdbuf();
      return gcstring(text.str());
    }
  }
  // Boost the link for the download when driver and port allow it, restore it afterwards.
  CLUINT32 restoreRate = 0;
  if (UseMaxBaudrate && impl.driver->SupportsParam(CLP_DEVICE_BAUDERATE) &&
      impl.driver->SupportsParam(CLP_DEVICE_SUPPORTED_BAUDERATES)) {
    try {
      const CLUINT32 current = GetDeviceBauderate();
      const CLUINT32 best = HighestBit(SupportedBaudrates());
      if (best > current) {
        SetDeviceBauderate(best);
        restoreRate = current;
      }
    } catch (const GenICam::GenericException&) {
      restoreRate = 0;  // download at the present rate
    }
  }
  std::string text;
  CLINT32 status = CL_ERR_NO_ERR;
  try {
    const auto& f = impl.driver->Functions();
    CLUINT32 size = 0;
    status = f.GetXMLDescription(impl.serial, impl.cookie, XMLID.c_str(), nullptr, &size, impl.timeout);
    if (status == CL_ERR_BUFFER_TOO_SMALL && size > 0) {
      std::vector<CLINT8> buffer(size, '\0');
      status = f.GetXMLDescription(impl.serial, impl.cookie, XMLID.c_str(), buffer.data(), &size,
                                   impl.timeout);
      if (status == CL_ERR_NO_ERR) text.assign(buffer.data(), strnlen(buffer.data(), buffer.size()));
    }
  } catch (...) {
    if (restoreRate != 0) SetDeviceBauderate(restoreRate);
    throw;
  }
  if (restoreRate != 0) SetDeviceBauderate(restoreRate);
  if (status == CL_ERR_NO_XMLDESCRIPTION_FOUND) return gcstring();
  impl.driver->Check(status, "Getting the XML description", impl.cookie);
  return gcstring(text);
}

std::vector<XmlIdEntry> CCLPort::Impl::CollectXmlIds() {
  Impl& impl = *this;
  std::vector<XmlIdEntry> entries;
  const auto& f = impl.driver->Functions();
  CLUINT32 size = 0;
  CLINT32 status = f.GetXMLIDs(impl.serial, impl.cookie, nullptr, &size, impl.timeout);
  if (status == CL_ERR_BUFFER_TOO_SMALL && size > 0) {
    std::vector<CLINT8> buffer(size, '\0');
    status = f.GetXMLIDs(impl.serial, impl.cookie, buffer.data(), &size, impl.timeout);
    impl.driver->Check(status, "Listing XML IDs", impl.cookie);
    std::string list(buffer.data(), strnlen(buffer.data(), buffer.size()));
    size_t start = 0;
    while (start < list.size()) {
      size_t tab = list.find('\t', start);
      if (tab == std::string::npos) tab = list.size();
      XmlIdEntry entry;
      if (ParseXmlId(list.substr(start, tab - start), entry)) entries.push_back(entry);
      start = tab + 1;
    }
  } else if (status != CL_ERR_NO_ERR) {
    impl.driver->Check(status, "Listing XML IDs", impl.cookie);
  }
  for (auto& file : DescriptionFilesFor(LocationOf(impl.driver->Directory()), impl.shortDeviceID)) {
    entries.push_back(file);
  }
  SortBestFirst(entries);
  return entries;
}

// ---- baud rate and events ----

void CCLPort::SetDeviceBauderate(CLUINT32 BaudRate) {
  std::lock_guard<std::recursive_mutex> lock(m_pImpl->mutex);
  m_pImpl->RequireConnected("SetDeviceBauderate");
  if (!m_pImpl->driver->SupportsParam(CLP_DEVICE_BAUDERATE)) {
    ThrowDriverError(CL_ERR_PARAM_NOT_SUPPORTED, "Setting the baud rate", "parameter not supported");
  }
  const CLINT32 status = m_pImpl->driver->Functions().SetParam(
      m_pImpl->serial, CLP_DEVICE_BAUDERATE, m_pImpl->cookie,
      reinterpret_cast<const CLINT8*>(&BaudRate), sizeof BaudRate, m_pImpl->timeout);
  m_pImpl->driver->Check(status, "Setting the baud rate", m_pImpl->cookie);
}

CLUINT32 CCLPort::GetDeviceBauderate() {
  std::lock_guard<std::recursive_mutex> lock(m_pImpl->mutex);
  m_pImpl->RequireConnected("GetDeviceBauderate");
  if (!m_pImpl->driver->SupportsParam(CLP_DEVICE_BAUDERATE)) return CL_BAUDRATE_9600;
  CLUINT32 value = 0;
  const CLINT32 status = m_pImpl->driver->Functions().GetParam(
      m_pImpl->serial, CLP_DEVICE_BAUDERATE, m_pImpl->cookie, reinterpret_cast<CLINT8*>(&value),
      sizeof value, m_pImpl->timeout);
  m_pImpl->driver->Check(status, "Reading the baud rate", m_pImpl->cookie);
  return value;
}

CLUINT32 CCLPort::SupportedBaudrates() {
  std::lock_guard<std::recursive_mutex> lock(m_pImpl->mutex);
  m_pImpl->RequireConnected("SupportedBaudrates");
  if (!m_pImpl->driver->SupportsParam(CLP_DEVICE_SUPPORTED_BAUDERATES)) return CL_BAUDRATE_9600;
  CLUINT32 value = 0;
  const CLINT32 status = m_pImpl->driver->Functions().GetParam(
      m_pImpl->serial, CLP_DEVICE_SUPPORTED_BAUDERATES, m_pImpl->cookie,
      reinterpret_cast<CLINT8*>(&value), sizeof value, m_pImpl->timeout);
  m_pImpl->driver->Check(status, "Reading the supported baud rates", m_pImpl->cookie);
  return value;
}

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
  CLINT32 status = f.WriteRegister(m_pImpl->serial, m_pImpl->cookie, Address,
                                   static_cast<const CLINT8*>(pBuffer), Length, m_pImpl->timeout);
  // The driver bounds the total wait; it ends the loop with a final status.
  while (status == CL_ERR_PENDING_WRITE) {
    status = f.ContinueWriteRegister(m_pImpl->serial, m_pImpl->cookie, 1, m_pImpl->timeout);
  }
  m_pImpl->driver->Check(status, "Write", m_pImpl->cookie);
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
