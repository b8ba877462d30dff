// RegisterMixin: raw byte access to a register-backed node.
#include "RegisterMixin.h"

#include <cstring>

namespace GenApi {
namespace impl {

void RegisterMixin::Set(const uint8_t* pBuffer, int64_t Length, bool Verify) {
  NodeImpl& self = Self();
  self.Map()->RunWrite(&self, [&] {
    if (Verify && !IsWritable(self.AccessModeLocked()))
      throw ACCESS_EXCEPTION_NODE(self.Name(), "Set")("Node is not writable.");
    const int64_t len = core_.Length(&self, false);
    if (!pBuffer || Length != len)
      throw OUT_OF_RANGE_EXCEPTION_NODE(self.Name(), "Set")(
          "Node '%s' : buffer length %lld does not match the register length %lld",
          self.Name(), static_cast<long long>(Length), static_cast<long long>(len));
    core_.Write(&self, std::vector<uint8_t>(pBuffer, pBuffer + Length));
  });
}

void RegisterMixin::Get(uint8_t* pBuffer, int64_t Length, bool, bool IgnoreCache) {
  NodeImpl& self = Self();
  AutoLock guard(self.Map()->GetLock());
  if (!IsReadable(self.AccessModeLocked()))
    throw ACCESS_EXCEPTION_NODE(self.Name(), "Get")("Node is not readable.");
  const std::vector<uint8_t> bytes = core_.Read(&self, IgnoreCache);
  if (!pBuffer || Length < 0 || static_cast<uint64_t>(Length) > bytes.size())
    throw OUT_OF_RANGE_EXCEPTION_NODE(self.Name(), "Get")(
        "Node '%s' : buffer length %lld does not match the register length %lld",
        self.Name(), static_cast<long long>(Length),
        static_cast<long long>(bytes.size()));
  if (Length > 0) std::memcpy(pBuffer, bytes.data(), static_cast<size_t>(Length));
}

int64_t RegisterMixin::GetLength(bool) {
  NodeImpl& self = Self();
  AutoLock guard(self.Map()->GetLock());
  return core_.Length(&self, false);
}

int64_t RegisterMixin::GetAddress(bool) {
  NodeImpl& self = Self();
  AutoLock guard(self.Map()->GetLock());
  return core_.Address(&self, false);
}

}  // namespace impl
}  // namespace GenApi
