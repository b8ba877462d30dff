#include "camera/GenICamRuntime.h"

#include <string>

#include "vq/platform/environment.h"
#include "vq/platform/shared_library.h"

namespace vq {

namespace {

// The runtime root is read into a buffer of this many characters, terminator
// included.
constexpr std::size_t kRootBufferSize = 260;

}  // namespace

std::int32_t LocateGenICamRuntime() {
  const std::optional<std::string> root = platform::GetEnv(kGenICamRootVariable);
  // An empty value reads as "not set", like a zero-length read of the variable.
  if (!root || root->empty()) return 0;
  // A root that does not fit the buffer cannot be used safely; it is treated
  // as not set.
  if (root->size() >= kRootBufferSize) return 0;
  platform::SetLibraryDirectory(*root + kGenICamRuntimeSubdirectory);
  return 1;
}

std::unique_ptr<GenApi::CNodeMapRef> CreateNodeMapReference() {
  return std::make_unique<GenApi::CNodeMapRef>(kNodeMapDeviceName);
}

void LoadNodeMapFromText(GenApi::CNodeMapRef& reference, const GenICam::gcstring& xmlText) {
  reference._LoadXMLFromString(xmlText);
}

bool ConnectNodeMap(GenApi::CNodeMapRef& reference, GenApi::IPort* port) {
  return reference._Connect(port, kNodeMapDeviceName);
}

void DeleteNodeMapReference(std::unique_ptr<GenApi::CNodeMapRef>& reference) {
  if (!reference) return;
  reference->_Destroy();  // releases the node map through IDestroy, if one exists
  reference.reset();
}

}  // namespace vq
