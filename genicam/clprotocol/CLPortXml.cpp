// CCLPort's descriptions and baud rate: XML IDs, the cached or downloaded description with the
// rate boost around a download, and the baud-rate parameters.
#include <cstring>
#include <fstream>
#include <sstream>

#include "CLPortImpl.h"
#include "DescriptionCache.h"
#include "DriverCatalog.h"

namespace CLProtocol {

using GenICam::gcstring;

namespace {

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

// Schemas the node map of this project reads.
bool SupportedSchema(const XmlIdEntry& entry) { return entry.schema[0] == 1 && entry.schema[1] <= 1; }

// Calls a driver text function with the buffer-size protocol; the status and the text.
template <typename Call>
CLINT32 ReadText(Call&& call, std::string& text) {
  CLUINT32 size = 0;
  CLINT32 status = call(nullptr, &size);
  if (status == CL_ERR_BUFFER_TOO_SMALL && size > 0) {
    std::vector<CLINT8> buffer(size, '\0');
    status = call(buffer.data(), &size);
    if (status == CL_ERR_NO_ERR) text.assign(buffer.data(), strnlen(buffer.data(), buffer.size()));
  }
  return status;
}

}  // namespace

// Raises the line to the fastest rate device and port share, at most once, and restores the
// rate it found.
class CCLPort::Impl::RateBoost {
 public:
  explicit RateBoost(Impl& impl) : impl_(impl) {}
  ~RateBoost() {
    try {
      Restore();
    } catch (const GenICam::GenericException&) {
      // Already failing: the first error is the one reported.
    }
  }
  void Raise() {
    if (tried_) return;
    tried_ = true;
    if (!impl_.driver->SupportsParam(CLP_DEVICE_BAUDERATE) ||
        !impl_.driver->SupportsParam(CLP_DEVICE_SUPPORTED_BAUDERATES)) {
      return;
    }
    try {
      const CLUINT32 current = impl_.GetParam32(CLP_DEVICE_BAUDERATE, "Reading the baud rate");
      const CLUINT32 best = HighestBit(
          impl_.GetParam32(CLP_DEVICE_SUPPORTED_BAUDERATES, "Reading the supported baud rates"));
      if (best > current) {
        impl_.SetBaudRate(best);
        restore_ = current;
      }
    } catch (const GenICam::GenericException&) {
      restore_ = 0;  // download at the present rate
    }
  }
  void Restore() {
    const CLUINT32 rate = restore_;
    restore_ = 0;
    if (rate != 0) impl_.SetBaudRate(rate);
  }

 private:
  Impl& impl_;
  bool tried_ = false;
  CLUINT32 restore_ = 0;
};

std::vector<XmlIdEntry> CCLPort::Impl::CollectXmlIds() {
  std::vector<XmlIdEntry> entries;
  std::string list;
  const CLINT32 status = ReadText(
      [&](CLINT8* buffer, CLUINT32* size) {
        return driver->Functions().GetXMLIDs(serial, cookie, buffer, size, timeout);
      },
      list);
  driver->Check(status, "Listing XML IDs", cookie);
  size_t start = 0;
  while (start < list.size()) {
    size_t tab = list.find('\t', start);
    if (tab == std::string::npos) tab = list.size();
    XmlIdEntry entry;
    if (ParseXmlId(list.substr(start, tab - start), entry)) entries.push_back(entry);
    start = tab + 1;
  }
  for (auto& file : DescriptionFilesFor(LocationOf(driver->Directory()), shortDeviceID)) {
    entries.push_back(file);
  }
  std::vector<XmlIdEntry> usable;
  for (auto& entry : entries) {
    if (SupportedSchema(entry)) usable.push_back(std::move(entry));
  }
  SortBestFirst(usable);
  return usable;
}

std::string CCLPort::Impl::Sha1Of(const std::string& xmlID) {
  const auto sha1Function = driver->Functions().GetXMLSha1;
  if (sha1Function == nullptr) return std::string();
  std::string sha1;
  const CLINT32 status = ReadText(
      [&](CLINT8* buffer, CLUINT32* size) {
        return sha1Function(serial, cookie, xmlID.c_str(), buffer, size, timeout);
      },
      sha1);
  return status == CL_ERR_NO_ERR ? sha1 : std::string();
}

std::string CCLPort::Impl::Download(const std::string& xmlID) {
  std::string text;
  const CLINT32 status = ReadText(
      [&](CLINT8* buffer, CLUINT32* size) {
        return driver->Functions().GetXMLDescription(serial, cookie, xmlID.c_str(), buffer, size,
                                                     timeout);
      },
      text);
  if (status == CL_ERR_NO_XMLDESCRIPTION_FOUND) return std::string();
  driver->Check(status, "Getting the XML description", cookie);
  return text;
}

std::string CCLPort::Impl::Description(const std::string& xmlID, bool useMaxBaudrate) {
  const std::string model = ModelTemplate();
  RateBoost boost(*this);
  // Without a cached candidate the manifest is read at the boosted rate too; with one it is
  // read at the present rate, and a hit needs no switch at all.
  if (useMaxBaudrate && !DescriptionCache::HasCandidate(portID, model)) boost.Raise();
  const auto entries = CollectXmlIds();
  const XmlIdEntry* chosen = nullptr;
  for (const auto& entry : entries) {
    if (xmlID.empty() || entry.id == xmlID) {
      chosen = &entry;
      break;
    }
  }
  if (chosen == nullptr) return std::string();
  if (!chosen->filePath.empty()) {
    std::ifstream in(chosen->filePath, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
  }
  const DescriptionKey key{chosen->id, Sha1Of(chosen->id), model};
  if (auto cached = DescriptionCache::Find(portID, key)) {
    // The driver did not see this description: it gets it for its parameter-name services.
    if (const auto share = driver->Functions().SetXMLDescription) {
      share(cookie, cached->data(), static_cast<CLUINT32>(cached->size()));
    }
    return *cached;
  }
  if (useMaxBaudrate) boost.Raise();
  const std::string text = Download(chosen->id);
  boost.Restore();
  if (!text.empty()) DescriptionCache::Store(portID, key, text);
  return text;
}

CLUINT32 CCLPort::Impl::GetParam32(CLP_PARAMS param, const char* what) {
  CLUINT32 value = 0;
  const CLINT32 status = driver->Functions().GetParam(
      serial, param, cookie, reinterpret_cast<CLINT8*>(&value), sizeof value, timeout);
  driver->Check(status, what, cookie);
  return value;
}

void CCLPort::Impl::SetBaudRate(CLUINT32 rate) {
  if (!driver->SupportsParam(CLP_DEVICE_BAUDERATE)) {
    ThrowDriverError(CL_ERR_PARAM_NOT_SUPPORTED, "Setting the baud rate", "parameter not supported");
  }
  const CLINT32 status = driver->Functions().SetParam(
      serial, CLP_DEVICE_BAUDERATE, cookie, reinterpret_cast<const CLINT8*>(&rate), sizeof rate,
      timeout);
  driver->Check(status, "Setting the baud rate", cookie);
}

void CCLPort::GetXMLIDs(GenICam::gcstring_vector& XMLIDs) {
  std::lock_guard<std::recursive_mutex> lock(m_pImpl->mutex);
  m_pImpl->RequireConnected("GetXMLIDs");
  XMLIDs.clear();
  for (const auto& entry : m_pImpl->CollectXmlIds()) XMLIDs.push_back(gcstring(entry.id));
}

gcstring CCLPort::GetXML(const bool UseMaxBaudrate) {
  std::lock_guard<std::recursive_mutex> lock(m_pImpl->mutex);
  m_pImpl->RequireConnected("GetXML");
  return gcstring(m_pImpl->Description(std::string(), UseMaxBaudrate));
}

gcstring CCLPort::GetXML(const gcstring& XMLID, const bool UseMaxBaudrate) {
  std::lock_guard<std::recursive_mutex> lock(m_pImpl->mutex);
  m_pImpl->RequireConnected("GetXML");
  return gcstring(m_pImpl->Description(XMLID.c_str(), UseMaxBaudrate));
}

void CCLPort::SetDeviceBauderate(CLUINT32 BaudRate) {
  std::lock_guard<std::recursive_mutex> lock(m_pImpl->mutex);
  m_pImpl->RequireConnected("SetDeviceBauderate");
  m_pImpl->SetBaudRate(BaudRate);
}

CLUINT32 CCLPort::GetDeviceBauderate() {
  std::lock_guard<std::recursive_mutex> lock(m_pImpl->mutex);
  m_pImpl->RequireConnected("GetDeviceBauderate");
  if (!m_pImpl->driver->SupportsParam(CLP_DEVICE_BAUDERATE)) return CL_BAUDRATE_9600;
  return m_pImpl->GetParam32(CLP_DEVICE_BAUDERATE, "Reading the baud rate");
}

CLUINT32 CCLPort::SupportedBaudrates() {
  std::lock_guard<std::recursive_mutex> lock(m_pImpl->mutex);
  m_pImpl->RequireConnected("SupportedBaudrates");
  if (!m_pImpl->driver->SupportsParam(CLP_DEVICE_SUPPORTED_BAUDERATES)) return CL_BAUDRATE_9600;
  return m_pImpl->GetParam32(CLP_DEVICE_SUPPORTED_BAUDERATES, "Reading the supported baud rates");
}

}  // namespace CLProtocol
