#include "DriverLibrary.h"

#include <vector>

#include "ErrorTexts.h"

namespace CLProtocol {

namespace {

template <typename Function>
bool resolve(const vq::platform::SharedLibrary& library, const char* name, Function& target) {
  target = library.FindFunction<Function>(name);
  return target != nullptr;
}

}  // namespace

void ThrowDriverError(CLINT32 code, const std::string& what, const std::string& text) {
  if (code == CL_ERR_TIMEOUT) {
    throw TIMEOUT_EXCEPTION("%s failed (Code: %d) %s", what.c_str(), code, text.c_str());
  }
  throw RUNTIME_EXCEPTION("%s failed (Code: %d) %s", what.c_str(), code, text.c_str());
}

std::shared_ptr<DriverLibrary> DriverLibrary::Load(const std::string& path) {
  if (path.find('/') == std::string::npos) {
    ThrowDriverError(CL_ERR_UNABLE_TO_LOAD_DLL, "Loading driver '" + path + "'",
                     "a driver is loaded by its path only");
  }
  std::string error;
  auto library = vq::platform::SharedLibrary::Open(path, &error);
  if (!library) {
    ThrowDriverError(CL_ERR_UNABLE_TO_LOAD_DLL, "Loading driver '" + path + "'", error);
  }
  std::shared_ptr<DriverLibrary> driver(new DriverLibrary());
  DriverFunctions& f = driver->m_Functions;
  const bool complete =
      resolve(library, "clpInitLib", f.InitLib) && resolve(library, "clpCloseLib", f.CloseLib) &&
      resolve(library, "clpGetShortDeviceIDTemplates", f.GetShortDeviceIDTemplates) &&
      resolve(library, "clpProbeDevice", f.ProbeDevice) &&
      resolve(library, "clpGetXMLIDs", f.GetXMLIDs) &&
      resolve(library, "clpGetXMLDescription", f.GetXMLDescription) &&
      resolve(library, "clpReadRegister", f.ReadRegister) &&
      resolve(library, "clpWriteRegister", f.WriteRegister) &&
      resolve(library, "clpContinueWriteRegister", f.ContinueWriteRegister) &&
      resolve(library, "clpGetErrorText", f.GetErrorText) &&
      resolve(library, "clpDisconnect", f.Disconnect) &&
      resolve(library, "clpGetCLProtocolVersion", f.GetCLProtocolVersion);
  if (!complete) {
    ThrowDriverError(CL_ERR_FUNCTION_NOT_FOUND, "Loading driver '" + path + "'",
                     "not a CLProtocol driver");
  }
  resolve(library, "clpGetParam", f.GetParam);
  resolve(library, "clpSetParam", f.SetParam);
  resolve(library, "clpIsParamSupported", f.IsParamSupported);
  resolve(library, "clpGetEventData", f.GetEventData);
  resolve(library, "vxGetXMLSha1", f.GetXMLSha1);
  resolve(library, "vxSetXMLDescription", f.SetXMLDescription);

  CLUINT32 major = 0;
  CLUINT32 minor = 0;
  if (f.GetCLProtocolVersion(&major, &minor) != CL_ERR_NO_ERR || major != 1) {
    ThrowDriverError(CL_ERR_FUNCTION_NOT_FOUND, "Loading driver '" + path + "'",
                     "incompatible CLProtocol interface version");
  }
  const CLINT32 status = f.InitLib(nullptr, CLP_LOG_ERROR);
  if (status != CL_ERR_NO_ERR && status != CL_ERR_IN_USE) {
    ThrowDriverError(status, "Initialising driver '" + path + "'", StandardErrorText(status) != nullptr
                                                                        ? StandardErrorText(status)
                                                                        : "unknown error");
  }
  const size_t slash = path.find_last_of('/');
  driver->m_Directory = slash == std::string::npos ? std::string(".") : path.substr(0, slash);
  driver->m_FileName = slash == std::string::npos ? path : path.substr(slash + 1);
  driver->m_Library = std::move(library);
  return driver;
}

DriverLibrary::~DriverLibrary() {
  if (m_Functions.CloseLib != nullptr && m_Library) m_Functions.CloseLib();
}

bool DriverLibrary::SupportsParam(CLP_PARAMS param) const {
  return m_Functions.IsParamSupported != nullptr && m_Functions.GetParam != nullptr &&
         m_Functions.SetParam != nullptr && m_Functions.IsParamSupported(param) == CL_ERR_NO_ERR;
}

std::string DriverLibrary::ErrorText(CLINT32 code, CLUINT32 cookie) const {
  CLUINT32 size = 0;
  if (m_Functions.GetErrorText(code, nullptr, &size, cookie) == CL_ERR_BUFFER_TOO_SMALL &&
      size > 1 && size < 65536) {
    std::vector<CLINT8> text(size);
    if (m_Functions.GetErrorText(code, text.data(), &size, cookie) == CL_ERR_NO_ERR) {
      text.back() = '\0';
      return std::string(text.data());
    }
  }
  const char* standard = StandardErrorText(code);
  return standard != nullptr ? standard : "unknown error";
}

void DriverLibrary::Check(CLINT32 code, const char* what, CLUINT32 cookie) const {
  if (code >= 0) return;
  ThrowDriverError(code, what, ErrorText(code, cookie));
}

std::vector<std::string> DriverLibrary::ShortTemplates() const {
  CLUINT32 size = 0;
  CLINT32 status = m_Functions.GetShortDeviceIDTemplates(nullptr, &size);
  if (status != CL_ERR_BUFFER_TOO_SMALL && status != CL_ERR_NO_ERR) Check(status, "Listing templates");
  std::vector<CLINT8> buffer(size + 1, '\0');
  status = m_Functions.GetShortDeviceIDTemplates(buffer.data(), &size);
  Check(status, "Listing templates");
  buffer.back() = '\0';
  std::vector<std::string> templates;
  const std::string text(buffer.data());
  size_t start = 0;
  while (start <= text.size()) {
    size_t tab = text.find('\t', start);
    if (tab == std::string::npos) tab = text.size();
    if (tab > start) templates.push_back(text.substr(start, tab - start));
    start = tab + 1;
  }
  return templates;
}

}  // namespace CLProtocol
