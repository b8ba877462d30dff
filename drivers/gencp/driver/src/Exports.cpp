// The driver's C entry points: argument checks, connection look-up and the translation of
// failures into CLProtocol codes. The work itself is in Operations.
#include <CLProtocol/CLProtocol.h>
#include <CLProtocol/ISerial.h>

#include <cstdio>
#include <cstring>
#include <mutex>

#include <vq/gencp/Endian.h>

#include "ComPort.h"
#include "DescriptionStore.h"
#include "DriverLocation.h"
#include "ErrorCodes.h"
#include "Guard.h"
#include "Operations.h"
#include "PortMemory.h"
#include "Templates.h"

using namespace vq::gencpdrv;

namespace {

struct LibraryState {
  std::mutex mutex;
  bool open = false;
  clp_logger_t logger = nullptr;
  CLP_LOG_LEVEL_VALUE level = CLP_LOG_ERROR;
};

LibraryState& library() {
  static LibraryState state;
  return state;
}

// Largest single register transfer the driver accepts.
constexpr CLINT64 kMaxTransfer = 64ll * 1024 * 1024;

// Shared checks and set-up of a register read or write: a null serial or buffer, a bad size or
// address, and an empty transfer are answered here; transfer(channel, connection) does the rest.
template <class Transfer>
CLINT32 onRegisterTransfer(ISerial* serial, CLUINT32 cookie, CLINT64 address, const void* buffer,
                           CLINT64 bufferSize, Transfer&& transfer) {
  if (serial == nullptr || (buffer == nullptr && bufferSize != 0)) return CL_ERR_INVALID_PTR;
  if (bufferSize < 0 || bufferSize > kMaxTransfer || address < 0) return CL_ERR_INVALID_INDEX;
  return onConnection(cookie, [&](Connection& connection) {
    if (bufferSize == 0) return CL_ERR_NO_ERR;
    Channel channel = connection.channel(serial);
    return transfer(channel, connection);
  });
}

// A write done with a warning leaves the device's status as the connection's last error text.
CLINT32 noteWarning(Connection& connection, const Channel& channel, CLINT32 status) {
  if (status == kWriteWarning) {
    char text[96];
    std::snprintf(text, sizeof text, "the device executed the write with warning status 0x%04X",
                  channel.warningStatus());
    connection.lastError = text;
  }
  return status;
}

std::string joinWithTabs(const std::vector<std::string>& items) {
  std::string text;
  for (const auto& item : items) {
    if (!text.empty()) text += '\t';
    text += item;
  }
  return text;
}

CLINT32 readValue32(const CLINT8* buffer, CLINT64 size, uint32_t& value) {
  if (buffer == nullptr) return CL_ERR_INVALID_PTR;
  if (size != 4) return CL_ERR_PARAM_DATA_SIZE;
  std::memcpy(&value, buffer, 4);
  return CL_ERR_NO_ERR;
}

CLINT32 writeValue32(CLINT8* buffer, CLINT64 size, uint32_t value) {
  if (buffer == nullptr) return CL_ERR_INVALID_PTR;
  if (size != 4) return CL_ERR_PARAM_DATA_SIZE;
  std::memcpy(buffer, &value, 4);
  return CL_ERR_NO_ERR;
}

}  // namespace

CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpInitLib(clp_logger_t logger, CLP_LOG_LEVEL_VALUE logLevel) {
  LibraryState& state = library();
  std::lock_guard<std::mutex> lock(state.mutex);
  if (state.open) return CL_ERR_IN_USE;
  state.open = true;
  state.logger = logger;
  state.level = logLevel;
  stopProbeFlag() = false;
  return CL_ERR_NO_ERR;
}

CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpCloseLib(void) {
  LibraryState& state = library();
  std::lock_guard<std::mutex> lock(state.mutex);
  state.open = false;
  state.logger = nullptr;
  ConnectionRegistry::clear();
  PortMemory::clear();
  return CL_ERR_NO_ERR;
}

CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpGetShortDeviceIDTemplates(CLINT8* pShortDeviceTemplates,
                                                                 CLUINT32* pBufferSize) {
  return guarded(nullptr, [&] {
    return copyText(joinWithTabs(collectTemplates(driverLocation())), pShortDeviceTemplates,
                    pBufferSize);
  });
}

CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpProbeDevice(ISerial* pSerial,
                                                   const CLINT8* pDeviceIDTemplate,
                                                   CLINT8* pDeviceID, CLUINT32* pBufferSize,
                                                   CLUINT32* pCookie, const CLUINT32 TimeOut) {
  if (pSerial == nullptr || pDeviceIDTemplate == nullptr || pBufferSize == nullptr ||
      pCookie == nullptr) {
    return CL_ERR_INVALID_PTR;
  }
  return guarded(nullptr, [&] {
    auto connection = probeDevice(pSerial, pDeviceIDTemplate, TimeOut);
    const CLINT32 status = copyText(connection->shortDeviceId, pDeviceID, pBufferSize);
    if (status != CL_ERR_NO_ERR) return status;
    *pCookie = ConnectionRegistry::add(std::move(connection));
    return CL_ERR_NO_ERR;
  });
}

CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpGetXMLIDs(ISerial* pSerial, const CLUINT32 Cookie,
                                                 CLINT8* pXMLIDs, CLUINT32* pBufferSize,
                                                 const CLUINT32 TimeOut) {
  if (pSerial == nullptr || pBufferSize == nullptr) return CL_ERR_INVALID_PTR;
  return onConnection(Cookie, [&](Connection& connection) {
    return copyText(joinWithTabs(listXmlIds(pSerial, connection, TimeOut)), pXMLIDs, pBufferSize);
  });
}

CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpGetXMLDescription(ISerial* pSerial, const CLUINT32 Cookie,
                                                         const CLINT8* pXMLID, CLINT8* pXMLBuffer,
                                                         CLUINT32* pBufferSize,
                                                         const CLUINT32 TimeOut) {
  if (pSerial == nullptr || pBufferSize == nullptr) return CL_ERR_INVALID_PTR;
  const std::string xmlId = pXMLID != nullptr ? pXMLID : "";
  return onConnection(Cookie, [&](Connection& connection) {
    return copyText(fetchDescription(pSerial, connection, xmlId, TimeOut), pXMLBuffer,
                    pBufferSize);
  });
}

CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpReadRegister(ISerial* pSerial, const CLUINT32 Cookie,
                                                    const CLINT64 Address, CLINT8* pBuffer,
                                                    const CLINT64 BufferSize,
                                                    const CLUINT32 TimeOut) {
  return onRegisterTransfer(
      pSerial, Cookie, Address, pBuffer, BufferSize, [&](Channel& channel, Connection&) -> CLINT32 {
        const auto data = channel.readMem(static_cast<uint64_t>(Address),
                                          static_cast<std::size_t>(BufferSize), TimeOut);
        std::memcpy(pBuffer, data.data(), data.size());
        return CL_ERR_NO_ERR;
      });
}

CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpWriteRegister(ISerial* pSerial, const CLUINT32 Cookie,
                                                     const CLINT64 Address, const CLINT8* pBuffer,
                                                     const CLINT64 BufferSize,
                                                     const CLUINT32 TimeOut) {
  const auto* bytes = reinterpret_cast<const uint8_t*>(pBuffer);
  const auto address = static_cast<uint64_t>(Address);
  return onRegisterTransfer(
      pSerial, Cookie, Address, pBuffer, BufferSize,
      [&](Channel& channel, Connection& connection) -> CLINT32 {
        // A new rate written through the description's baud-rate feature takes the same
        // procedure as CLP_DEVICE_BAUDERATE, so that the port follows the device.
        if (isBaudRateRegister(connection, address, static_cast<uint64_t>(BufferSize))) {
          const uint32_t bit = vq::gencp::readU32(bytes);
          if (bit != 0 && (bit & (bit - 1)) == 0) {
            changeBaudRate(pSerial, connection, bit, TimeOut);
            return CL_ERR_NO_ERR;
          }
        }
        return noteWarning(connection, channel,
                           channel.writeMem(address, bytes, static_cast<std::size_t>(BufferSize),
                                            TimeOut, connection.pendingWrite));
      });
}

CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpContinueWriteRegister(ISerial* pSerial,
                                                             const CLUINT32 Cookie,
                                                             const BOOL8 ContinueWaiting,
                                                             const CLUINT32 TimeOut) {
  if (pSerial == nullptr) return CL_ERR_INVALID_PTR;
  return onConnection(Cookie, [&](Connection& connection) {
    if (!connection.pendingWrite) return CL_ERR_NO_ERR;
    if (!ContinueWaiting) {
      // A device cannot abort a command it executes: the chunks not sent yet are dropped, and
      // the next call first waits out the one running (its announced time) instead of being
      // refused as busy.
      connection.abandonPendingWrite();
      return CL_ERR_NO_ERR;
    }
    Channel channel = connection.pendingChannel(pSerial);
    return noteWarning(connection, channel, channel.continueWrite(connection.pendingWrite, TimeOut));
  });
}

CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpGetErrorText(CLINT32 errorCode, CLINT8* errorText,
                                                    CLUINT32* errorTextSize,
                                                    const CLUINT32 Cookie) {
  if (errorTextSize == nullptr) return CL_ERR_INVALID_PTR;
  return guarded(nullptr, [&] {
    if (errorCode == CL_ERR_GET_LAST_ERROR) {
      const auto connection = ConnectionRegistry::find(Cookie);
      if (!connection) return copyText(globalLastError(), errorText, errorTextSize);
      std::lock_guard<std::mutex> lock(connection->mutex);
      return copyText(connection->lastError, errorText, errorTextSize);
    }
    const std::string text = vq::gencpdrv::errorText(errorCode);
    if (text.empty()) return CL_ERR_ERROR_NOT_FOUND;
    return copyText(text, errorText, errorTextSize);
  });
}

CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpDisconnect(const CLUINT32 Cookie) {
  return ConnectionRegistry::remove(Cookie) ? CL_ERR_NO_ERR : CL_ERR_INVALID_COOKIE;
}

CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpGetCLProtocolVersion(CLUINT32* pVersionMajor,
                                                            CLUINT32* pVersionMinor) {
  if (pVersionMajor == nullptr || pVersionMinor == nullptr) return CL_ERR_INVALID_PTR;
  *pVersionMajor = 1;
  *pVersionMinor = 2;
  return CL_ERR_NO_ERR;
}

CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpIsParamSupported(CLP_PARAMS param) {
  switch (param) {
    case CLP_LOG_LEVEL:
    case CLP_LOG_CALLBACK:
    case CLP_STOP_PROBE_DEVICE:
    case CLP_DEVICE_BAUDERATE:
    case CLP_DEVICE_SUPPORTED_BAUDERATES:
      return CL_ERR_NO_ERR;
  }
  return CL_ERR_PARAM_NOT_SUPPORTED;
}

CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpGetParam(ISerial* pSerial, CLP_PARAMS param,
                                                const CLUINT32 Cookie, CLINT8* pBuffer,
                                                const CLINT64 BufferSize,
                                                const CLUINT32 /* answered without the line */) {
  switch (param) {
    case CLP_LOG_LEVEL: {
      LibraryState& state = library();
      std::lock_guard<std::mutex> lock(state.mutex);
      return writeValue32(pBuffer, BufferSize, static_cast<uint32_t>(state.level));
    }
    case CLP_STOP_PROBE_DEVICE:
      return writeValue32(pBuffer, BufferSize, stopProbeFlag().load() ? 1u : 0u);
    case CLP_LOG_CALLBACK:
      return CL_ERR_PARAM_NOT_SUPPORTED;  // write-only
    case CLP_DEVICE_BAUDERATE:
    case CLP_DEVICE_SUPPORTED_BAUDERATES:
      if (pSerial == nullptr || pBuffer == nullptr) return CL_ERR_INVALID_PTR;
      if (BufferSize != 4) return CL_ERR_PARAM_DATA_SIZE;
      return onConnection(Cookie, [&](Connection& connection) {
        const uint32_t value = param == CLP_DEVICE_BAUDERATE
                                   ? currentBaudRate(connection)
                                   : supportedBaudRates(pSerial, connection);
        return writeValue32(pBuffer, BufferSize, value);
      });
  }
  return CL_ERR_PARAM_NOT_SUPPORTED;
}

CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpSetParam(ISerial* pSerial, CLP_PARAMS param,
                                                const CLUINT32 Cookie, const CLINT8* pBuffer,
                                                const CLINT64 BufferSize, const CLUINT32 TimeOut) {
  uint32_t value = 0;
  switch (param) {
    case CLP_LOG_LEVEL: {
      const CLINT32 status = readValue32(pBuffer, BufferSize, value);
      if (status != CL_ERR_NO_ERR) return status;
      LibraryState& state = library();
      std::lock_guard<std::mutex> lock(state.mutex);
      state.level = static_cast<CLP_LOG_LEVEL_VALUE>(value);
      return CL_ERR_NO_ERR;
    }
    case CLP_LOG_CALLBACK: {
      if (pBuffer == nullptr) return CL_ERR_INVALID_PTR;
      if (BufferSize != static_cast<CLINT64>(sizeof(void*))) return CL_ERR_PARAM_DATA_SIZE;
      const clpLogCallback_t* callback = nullptr;
      std::memcpy(&callback, pBuffer, sizeof callback);
      if (callback != nullptr && callback->id != CLP_LOG_CALLBACK_ID) return CL_ERR_PARAM_DATA_VALUE;
      LibraryState& state = library();
      std::lock_guard<std::mutex> lock(state.mutex);
      state.logger = callback != nullptr ? callback->logger : nullptr;
      return CL_ERR_NO_ERR;
    }
    case CLP_STOP_PROBE_DEVICE: {
      const CLINT32 status = readValue32(pBuffer, BufferSize, value);
      if (status != CL_ERR_NO_ERR) return status;
      stopProbeFlag() = value != 0;
      return CL_ERR_NO_ERR;
    }
    case CLP_DEVICE_BAUDERATE: {
      if (pSerial == nullptr) return CL_ERR_INVALID_PTR;
      const CLINT32 status = readValue32(pBuffer, BufferSize, value);
      if (status != CL_ERR_NO_ERR) return status;
      return onConnection(Cookie, [&](Connection& connection) {
        changeBaudRate(pSerial, connection, value, TimeOut);
        return CL_ERR_NO_ERR;
      });
    }
    case CLP_DEVICE_SUPPORTED_BAUDERATES:
      return CL_ERR_PARAM_READ_ONLY;
  }
  return CL_ERR_PARAM_NOT_SUPPORTED;
}

CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpGetEventData(const CLUINT32 Cookie, CLINT8* pBuffer,
                                                    CLUINT32* pBufferSize) {
  if (pBufferSize == nullptr) return CL_ERR_INVALID_PTR;
  return onConnection(Cookie, [&](Connection& connection) {
    if (connection.events.empty()) return CL_ERR_TIMEOUT;
    const auto& event = connection.events.front();
    if (pBuffer == nullptr || *pBufferSize < event.size()) {
      *pBufferSize = static_cast<CLUINT32>(event.size());
      return CL_ERR_BUFFER_TOO_SMALL;
    }
    std::memcpy(pBuffer, event.data(), event.size());
    *pBufferSize = static_cast<CLUINT32>(event.size());
    connection.events.pop_front();
    return CL_ERR_NO_ERR;
  });
}

CLPROTOCOLEXPORT CLINT32 CLPROTOCOL vxGetXMLSha1(ISerial* pSerial, const CLUINT32 Cookie,
                                                 const CLINT8* pXMLID, CLINT8* pSha1,
                                                 CLUINT32* pBufferSize, const CLUINT32 TimeOut) {
  if (pSerial == nullptr || pXMLID == nullptr || pBufferSize == nullptr) return CL_ERR_INVALID_PTR;
  return onConnection(Cookie, [&](Connection& connection) {
    const std::string digest = descriptionSha1(pSerial, connection, pXMLID, TimeOut);
    if (digest.empty()) {
      throw DriverFailure(CL_ERR_NO_XMLDESCRIPTION_FOUND, "the device gives no SHA-1 for it");
    }
    return copyText(digest, pSha1, pBufferSize);
  });
}

CLPROTOCOLEXPORT CLINT32 CLPROTOCOL vxSetXMLDescription(const CLUINT32 Cookie, const CLINT8* pXML,
                                                        const CLUINT32 Size) {
  if (pXML == nullptr) return CL_ERR_INVALID_PTR;
  return onConnection(Cookie, [&](Connection& connection) {
    rememberDescription(connection.shortDeviceId, std::string(pXML, Size));
    return CL_ERR_NO_ERR;
  });
}
