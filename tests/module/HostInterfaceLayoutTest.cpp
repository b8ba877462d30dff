// A host calls the extension's operations by vtable position and uses the
// numeric codes of the host contract; both are fixed by hosts already built,
// so an edit of VQ_Ext.h that moves one is caught here. (The record layouts
// are checked where they are declared, in VQ_Ext.h.)
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

using Codes = std::vector<std::uint32_t>;

TEST(HostIdentifiers, NumericValuesMatchTheHostContract) {
  EXPECT_EQ((Codes{HOST_MESSAGE, HOST_FEATURE_CHANGED, HOST_SERIAL_REQUEST, HOST_SELECTOR_STATE}),
            (Codes{7, 9, 22, 26}));
  EXPECT_EQ((Codes{MESSAGE_FAILURE, MESSAGE_INFORMATION, MESSAGE_DEVICE_ERROR}), (Codes{0, 2, 3}));
  EXPECT_EQ((Codes{SERIAL_QUERY_PORT_INFO, SERIAL_SELECT_PORT, SERIAL_IS_PORT_ALIVE, SERIAL_READ,
                   SERIAL_WRITE, SERIAL_GET_BAUD_RATES, SERIAL_SET_BAUD_RATE,
                   SERIAL_REPORT_PROBE_FAILURE}),
            (Codes{6, 8, 14, 16, 17, 18, 20, 22}));
  EXPECT_EQ((Codes{CMD_OPEN_CAMERA, CMD_REFRESH_PARAMETER, CMD_MAX_BAUD_RATE, CMD_CURRENT_BAUD_RATE,
                   CMD_SET_BAUD_RATE, CMD_VISIBILITY_LEVEL, CMD_PARAMETER_TEXTS, CMD_MODEL_NAME,
                   CMD_CAN_SAVE_CONFIGURATION, CMD_SAVE_CONFIGURATION, CMD_HELP_FILE_NAME,
                   CMD_IS_PARAMETER_VISIBLE}),
            (Codes{25, 26, 31, 32, 33, 48, 49, 50, 51, 52, 53, 54}));
  EXPECT_EQ((Codes{PARAM_DISPLAY_NAME, PARAM_CATEGORY_INDEX, PARAM_VALUE_TEXT, PARAM_MINIMUM,
                   PARAM_MAXIMUM, PARAM_INCREMENT, PARAM_ENTRY_LIST, PARAM_ENTRY_COUNT,
                   PARAM_WRITABLE, PARAM_RESERVED9, PARAM_VALUE_KIND, PARAM_CONSTANT_FOUR,
                   PARAM_IDENTIFIER, PARAM_DECIMALS}),
            (Codes{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13}));
  EXPECT_EQ((Codes{VALUE_KIND_NUMBER, VALUE_KIND_TEXT, VALUE_KIND_LIST, VALUE_KIND_BUTTON}),
            (Codes{0, 1, 2, 4}));
  EXPECT_EQ((Codes{OPEN_CONNECTED, OPEN_FAILED, OPEN_NO_SELECTION, OPEN_NOTHING_TO_LOAD}),
            (Codes{0, 1, 2, 3}));
  EXPECT_EQ((Codes{PARAMETER_IDENTIFIER_BIT, VISIBILITY_LEVEL_DATA_SIZE}),
            (Codes{0x80000000u, 516}));
}

}  // namespace
