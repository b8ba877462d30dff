// One loaded CLProtocol driver: its entry points, its optional features, and calls that turn
// failures into GenICam exceptions carrying "(Code: N) <text>".
#pragma once

#include <CLProtocol/CLProtocol.h>
#include <CLProtocol/ISerial.h>
#include <GenICam.h>

#include <vq/platform/shared_library.h>

#include <memory>
#include <string>
#include <vector>

namespace CLProtocol {

struct DriverFunctions {
  decltype(&clpInitLib) InitLib = nullptr;
  decltype(&clpCloseLib) CloseLib = nullptr;
  decltype(&clpGetShortDeviceIDTemplates) GetShortDeviceIDTemplates = nullptr;
  decltype(&clpProbeDevice) ProbeDevice = nullptr;
  decltype(&clpGetXMLIDs) GetXMLIDs = nullptr;
  decltype(&clpGetXMLDescription) GetXMLDescription = nullptr;
  decltype(&clpReadRegister) ReadRegister = nullptr;
  decltype(&clpWriteRegister) WriteRegister = nullptr;
  decltype(&clpContinueWriteRegister) ContinueWriteRegister = nullptr;
  decltype(&clpGetErrorText) GetErrorText = nullptr;
  decltype(&clpDisconnect) Disconnect = nullptr;
  decltype(&clpGetCLProtocolVersion) GetCLProtocolVersion = nullptr;
  // Optional (interface 1.1 and 1.2).
  decltype(&clpGetParam) GetParam = nullptr;
  decltype(&clpSetParam) SetParam = nullptr;
  decltype(&clpIsParamSupported) IsParamSupported = nullptr;
  decltype(&clpGetEventData) GetEventData = nullptr;
  // Optional extension: SHA-1 of a description file as the device's manifest gives it.
  using GetXMLSha1Function = CLINT32(CLPROTOCOL*)(ISerial*, CLUINT32, const CLINT8*, CLINT8*,
                                                   CLUINT32*, CLUINT32);
  GetXMLSha1Function GetXMLSha1 = nullptr;
  // Optional extension: hands the driver a description it did not download itself.
  using SetXMLDescriptionFunction = CLINT32(CLPROTOCOL*)(CLUINT32, const CLINT8*, CLUINT32);
  SetXMLDescriptionFunction SetXMLDescription = nullptr;
};

class DriverLibrary {
 public:
  // Loads and initialises a driver from a path (never a bare file name); throws when the file
  // is no usable driver.
  static std::shared_ptr<DriverLibrary> Load(const std::string& path);
  ~DriverLibrary();
  DriverLibrary(const DriverLibrary&) = delete;
  DriverLibrary& operator=(const DriverLibrary&) = delete;

  const std::string& Directory() const { return m_Directory; }
  const std::string& FileName() const { return m_FileName; }
  const DriverFunctions& Functions() const { return m_Functions; }
  bool SupportsParam(CLP_PARAMS param) const;

  // The driver's text for a code, else the standard one, else a generic sentence.
  std::string ErrorText(CLINT32 code, CLUINT32 cookie = 0) const;
  // Throws a GenICam exception "<what> failed (Code: N) <text>" when code < 0.
  void Check(CLINT32 code, const char* what, CLUINT32 cookie = 0) const;

  std::vector<std::string> ShortTemplates() const;

 private:
  DriverLibrary() = default;

  vq::platform::SharedLibrary m_Library;
  DriverFunctions m_Functions;
  std::string m_Directory;
  std::string m_FileName;
};

// Builds the exception for a failed driver call (used where no driver is at hand too).
[[noreturn]] void ThrowDriverError(CLINT32 code, const std::string& what, const std::string& text);

}  // namespace CLProtocol
