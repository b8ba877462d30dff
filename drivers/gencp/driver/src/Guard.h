// Helpers shared by the exported entry points: failures to codes, texts into caller buffers,
// connection lookup and locking.
#pragma once

#include <CLProtocol/CLProtocol.h>

#include <new>
#include <string>

#include "Connection.h"
#include "DriverFailure.h"

namespace vq::gencpdrv {

// Last error of calls that have no connection (probe, global parameters).
void setGlobalLastError(const std::string& text);
std::string globalLastError();

// Copies text and its terminator following the buffer-size protocol.
CLINT32 copyText(const std::string& text, CLINT8* buffer, CLUINT32* bufferSize);

// Runs `body`, turning failures into codes and remembering their text.
template <typename Body>
CLINT32 guarded(std::string* lastError, Body&& body) {
  try {
    return body();
  } catch (const DriverFailure& failure) {
    if (lastError != nullptr) *lastError = failure.what(); else setGlobalLastError(failure.what());
    return failure.code();
  } catch (const std::bad_alloc&) {
    return CL_ERR_OUT_OF_MEMORY;
  } catch (...) {
    return CL_ERR_INVALID_REFERENCE;
  }
}

// Runs `body(connection)` under the connection's lock.
template <typename Body>
CLINT32 onConnection(CLUINT32 cookie, Body&& body) {
  const auto connection = ConnectionRegistry::find(cookie);
  if (!connection) return CL_ERR_INVALID_COOKIE;
  std::lock_guard<std::mutex> lock(connection->mutex);
  return guarded(&connection->lastError, [&] { return body(*connection); });
}

}  // namespace vq::gencpdrv
