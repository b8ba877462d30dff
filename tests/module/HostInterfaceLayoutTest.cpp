// A host calls the extension's operations by vtable position. (The record
// layouts are checked where they are declared, in VQ_Ext.h, whose enumerators
// carry their numbers explicitly.)
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "vq/VQ_Ext.h"

namespace {

// Itanium C++ ABI: a pointer to a virtual member function holds 1 + the byte
// offset of its slot in the vtable.
template <typename MemberFunction>
std::size_t VtableSlot(MemberFunction member) {
  static_assert(sizeof(member) >= sizeof(std::uintptr_t), "unexpected member pointer size");
  std::uintptr_t raw = 0;
  std::memcpy(&raw, &member, sizeof(raw));
  EXPECT_EQ(raw % sizeof(void*), 1u) << "not a virtual member";
  return (raw - 1) / sizeof(void*);
}

template <typename... Members>
std::vector<std::size_t> Slots(Members... members) {
  return {VtableSlot(members)...};
}

// The virtual destructor takes slots 0 and 1 (complete and deleting), so the
// operation at host position N (N >= 2) sits in slot N.
TEST(HostInterfaceOrder, OperationsSitAtTheirHostPositions) {
  using E = VQ_Ext;
  const std::vector<std::size_t> slots = Slots(
      &E::Initialize, &E::InitializeCamera, &E::ReservedOperation4, &E::ReservedOperation5,
      &E::GetExtensionName, &E::GetParameterCount, &E::GetParameterAttribute,
      &E::ReservedOperation9, &E::ReservedOperation10, &E::ReservedOperation11,
      &E::PressParameterButton, &E::SetHostCallback, &E::ReservedOperation14, &E::QueryCommand,
      &E::ExecuteCommand, &E::GetCategoryCount, &E::GetCategoryName, &E::SetParameterValue,
      &E::ReservedOperation20, &E::ReservedOperation21, &E::ReservedOperation22,
      &E::ReservedOperation23, &E::ReservedOperation24, &E::ReservedOperation25,
      &E::ReservedOperation26, &E::ReservedOperation27, &E::ReservedOperation28);
  for (std::size_t i = 0; i < slots.size(); ++i)
    EXPECT_EQ(slots[i], i + 2) << "host position " << i + 2;
}

}  // namespace
