// Fuzz target for the description loader: any bytes go to
// CNodeMapRef::_LoadXMLFromString. When they load, the map is connected to a
// zero-filled port and every node is read the way a host browses a camera.
// GenICam exceptions are the defined way to fail; anything else is a defect.
#include <GenApi/GenApi.h>

#include "ZeroPort.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace {

using vq_support::ZeroPort;

constexpr std::size_t kMaxNodesVisited = 4096;
constexpr int64_t kMaxRegisterBytes = 1 << 16;

void ReadValue(GenApi::INode* node) {
  GenApi::IBase* base = dynamic_cast<GenApi::IBase*>(node);
  if (base == nullptr || !GenApi::IsReadable(base)) return;
  if (auto* value = dynamic_cast<GenApi::IValue*>(node)) value->ToString();
  if (auto* integer = dynamic_cast<GenApi::IInteger*>(node)) {
    integer->GetValue();
    integer->GetMin();
    integer->GetMax();
    integer->GetInc();
  } else if (auto* real = dynamic_cast<GenApi::IFloat*>(node)) {
    real->GetValue();
    real->GetMin();
    real->GetMax();
  } else if (auto* enumeration = dynamic_cast<GenApi::IEnumeration*>(node)) {
    enumeration->GetIntValue();
    GenApi::NodeList_t entries;
    enumeration->GetEntries(entries);
    enumeration->GetCurrentEntry();
  } else if (auto* text = dynamic_cast<GenApi::IString*>(node)) {
    text->GetValue();
  } else if (auto* flag = dynamic_cast<GenApi::IBoolean*>(node)) {
    flag->GetValue();
  }
  if (auto* reg = dynamic_cast<GenApi::IRegister*>(node)) {
    const int64_t length = reg->GetLength();
    if (length > 0 && length <= kMaxRegisterBytes) {
      std::vector<uint8_t> buffer(static_cast<std::size_t>(length));
      reg->Get(buffer.data(), length);
    }
  }
}

void Visit(GenApi::INode* node) {
  try {
    node->GetAccessMode();
    node->GetVisibility();
    GenApi::NodeList_t children;
    node->GetChildren(children);
    ReadValue(node);
    // Reading again exercises the cache.
    ReadValue(node);
  } catch (const GenICam::GenericException&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const GenICam::gcstring xml(reinterpret_cast<const char*>(data), size);
  GenApi::CNodeMapRef map;
  try {
    map._LoadXMLFromString(xml);
  } catch (const GenICam::GenericException&) {
    return 0;
  }
  ZeroPort port;
  try {
    map._Connect(&port, "Device");
  } catch (const GenICam::GenericException&) {
  }
  GenApi::NodeList_t nodes;
  map._GetNodes(nodes);
  std::size_t visited = 0;
  for (GenApi::INode* node : nodes) {
    if (node == nullptr || ++visited > kMaxNodesVisited) break;
    Visit(node);
  }
  try {
    map._InvalidateNodes();
  } catch (const GenICam::GenericException&) {
  }
  return 0;
}
