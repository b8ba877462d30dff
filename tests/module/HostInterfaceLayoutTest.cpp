// The host reads and writes the exchanged records by byte offset and calls the
// extension's operations by vtable position; these tests look at both from the
// host's side.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

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

// The virtual destructor takes slots 0 and 1 (complete and deleting), so the
// operation at host position N (N >= 2) sits in slot N.
TEST(HostInterfaceOrder, OperationsSitAtTheirHostPositions) {
  EXPECT_EQ(VtableSlot(&VQ_Ext::Initialize), 2u);
  EXPECT_EQ(VtableSlot(&VQ_Ext::InitializeCamera), 3u);
  EXPECT_EQ(VtableSlot(&VQ_Ext::ReservedOperation4), 4u);
  EXPECT_EQ(VtableSlot(&VQ_Ext::ReservedOperation5), 5u);
  EXPECT_EQ(VtableSlot(&VQ_Ext::GetExtensionName), 6u);
  EXPECT_EQ(VtableSlot(&VQ_Ext::GetParameterCount), 7u);
  EXPECT_EQ(VtableSlot(&VQ_Ext::GetParameterAttribute), 8u);
  EXPECT_EQ(VtableSlot(&VQ_Ext::ReservedOperation9), 9u);
  EXPECT_EQ(VtableSlot(&VQ_Ext::ReservedOperation10), 10u);
  EXPECT_EQ(VtableSlot(&VQ_Ext::ReservedOperation11), 11u);
  EXPECT_EQ(VtableSlot(&VQ_Ext::PressParameterButton), 12u);
  EXPECT_EQ(VtableSlot(&VQ_Ext::SetHostCallback), 13u);
  EXPECT_EQ(VtableSlot(&VQ_Ext::ReservedOperation14), 14u);
  EXPECT_EQ(VtableSlot(&VQ_Ext::QueryCommand), 15u);
  EXPECT_EQ(VtableSlot(&VQ_Ext::ExecuteCommand), 16u);
  EXPECT_EQ(VtableSlot(&VQ_Ext::GetCategoryCount), 17u);
  EXPECT_EQ(VtableSlot(&VQ_Ext::GetCategoryName), 18u);
  EXPECT_EQ(VtableSlot(&VQ_Ext::SetParameterValue), 19u);
  EXPECT_EQ(VtableSlot(&VQ_Ext::ReservedOperation20), 20u);
  EXPECT_EQ(VtableSlot(&VQ_Ext::ReservedOperation21), 21u);
  EXPECT_EQ(VtableSlot(&VQ_Ext::ReservedOperation22), 22u);
  EXPECT_EQ(VtableSlot(&VQ_Ext::ReservedOperation23), 23u);
  EXPECT_EQ(VtableSlot(&VQ_Ext::ReservedOperation24), 24u);
  EXPECT_EQ(VtableSlot(&VQ_Ext::ReservedOperation25), 25u);
  EXPECT_EQ(VtableSlot(&VQ_Ext::ReservedOperation26), 26u);
  EXPECT_EQ(VtableSlot(&VQ_Ext::ReservedOperation27), 27u);
  EXPECT_EQ(VtableSlot(&VQ_Ext::ReservedOperation28), 28u);
}

template <typename T>
void PutAt(unsigned char* bytes, std::size_t offset, T value) {
  std::memcpy(bytes + offset, &value, sizeof(value));
}

template <typename T>
T GetAt(const unsigned char* bytes, std::size_t offset) {
  T value;
  std::memcpy(&value, bytes + offset, sizeof(value));
  return value;
}

// A host that builds the record as raw bytes and a module that reads fields
// must agree on every value.
TEST(HostRecordLayout, CommandRecordFieldsAtTheirByteOffsets) {
  unsigned char bytes[sizeof(CommandRecord)] = {};
  int window = 0;
  PutAt<std::int32_t>(bytes, 0, -1);
  bytes[4] = 0xAB;
  bytes[515] = 0xCD;
  PutAt<std::uint32_t>(bytes, 516, 7);
  PutAt<void*>(bytes, 520, &window);
  PutAt<std::uint32_t>(bytes, 528, 3);
  PutAt<std::uint32_t>(bytes, 532, 1);
  PutAt<std::uint32_t>(bytes, 536, 0x01020304);

  CommandRecord record;
  static_assert(sizeof(record) == sizeof(bytes), "size");
  std::memcpy(&record, bytes, sizeof(record));
  EXPECT_EQ(record.openRequest, -1);
  EXPECT_EQ(record.hostReserved[0], 0xAB);
  EXPECT_EQ(record.hostReserved[511], 0xCD);
  EXPECT_EQ(record.portIndex, 7u);
  EXPECT_EQ(record.parentWindow, &window);
  EXPECT_EQ(record.openStatus, 3u);
  EXPECT_EQ(record.alwaysShowSelector, 1u);
  EXPECT_EQ(record.showSelectorWhenNoMatch, 0x01020304u);
}

TEST(HostRecordLayout, SerialRequestRecordFieldsAtTheirByteOffsets) {
  SerialRequestRecord record{};
  unsigned char buffer[4];
  record.portIndex = 2;
  record.status = -10004;
  record.timeout = 500;
  record.value = 4;
  record.data = buffer;
  unsigned char bytes[32];
  std::memcpy(bytes, &record, sizeof(bytes));
  EXPECT_EQ(GetAt<std::uint32_t>(bytes, 0), 2u);
  EXPECT_EQ(GetAt<std::int32_t>(bytes, 4), -10004);
  EXPECT_EQ(GetAt<std::uint32_t>(bytes, 8), 500u);
  EXPECT_EQ(GetAt<std::uint32_t>(bytes, 12), 0u);
  EXPECT_EQ(GetAt<std::uint32_t>(bytes, 16), 4u);
  EXPECT_EQ(GetAt<std::uint32_t>(bytes, 20), 0u);
  EXPECT_EQ(GetAt<void*>(bytes, 24), static_cast<void*>(buffer));
}

TEST(HostRecordLayout, PortInformationBlockCameraTextAndFlag) {
  static unsigned char bytes[6176];
  std::memset(bytes, 'x', sizeof(bytes));
  std::memcpy(bytes + 4108, "KORVA-1024", 11);
  PutAt<std::uint32_t>(bytes, 6160, 1);
  static PortInformationBlock block;
  std::memcpy(&block, bytes, sizeof(block));
  EXPECT_STREQ(block.cameraText, "KORVA-1024");
  EXPECT_EQ(block.cameraTextValid, 1u);
  EXPECT_EQ(block.hostTexts[4107], 'x');
}

TEST(HostRecordLayout, EntryBlocksLieBackToBack) {
  EntryBlock blocks[2] = {};
  blocks[1].value = 0x11223344;
  std::memcpy(blocks[1].name, "False", 6);
  const auto* bytes = reinterpret_cast<const unsigned char*>(blocks);
  EXPECT_EQ(GetAt<std::uint32_t>(bytes, 1548), 0x11223344u);
  EXPECT_STREQ(reinterpret_cast<const char*>(bytes + 1548 + 4), "False");
  EXPECT_EQ(GetAt<std::uint32_t>(bytes, 1548 + 1540), 0u);
  EXPECT_EQ(GetAt<std::uint32_t>(bytes, 1548 + 1544), 0u);
}

TEST(HostRecordLayout, ParameterRecordsAreContiguousAt776Bytes) {
  ParameterRecordList list(3);
  for (std::size_t i = 0; i < list.size(); ++i) std::memset(list[i].bytes, int(i + 1), 776);
  const auto* bytes = reinterpret_cast<const unsigned char*>(list.data());
  EXPECT_EQ(bytes[0], 1);
  EXPECT_EQ(bytes[775], 1);
  EXPECT_EQ(bytes[776], 2);
  EXPECT_EQ(bytes[2 * 776], 3);
}

TEST(HostRecordLayout, ParameterTextsQueryCarriesTheHostListAtByte8) {
  std::vector<ParameterTextItem> texts;
  unsigned char bytes[16] = {};
  PutAt<std::uint32_t>(bytes, 0, 5);
  PutAt<std::vector<ParameterTextItem>*>(bytes, 8, &texts);
  ParameterTextsQuery query;
  std::memcpy(&query, bytes, sizeof(query));
  EXPECT_EQ(query.parameterIndex, 5u);
  EXPECT_EQ(query.texts, &texts);
}

struct CodeRow {
  std::uint32_t actual;
  std::uint32_t expected;
};

TEST(HostIdentifiers, NumericValuesMatchTheHostContract) {
  const CodeRow rows[] = {
      {HOST_MESSAGE, 7},
      {HOST_FEATURE_CHANGED, 9},
      {HOST_SERIAL_REQUEST, 22},
      {HOST_SELECTOR_STATE, 26},
      {MESSAGE_FAILURE, 0},
      {MESSAGE_INFORMATION, 2},
      {MESSAGE_DEVICE_ERROR, 3},
      {SERIAL_QUERY_PORT_INFO, 6},
      {SERIAL_SELECT_PORT, 8},
      {SERIAL_IS_PORT_ALIVE, 14},
      {SERIAL_READ, 16},
      {SERIAL_WRITE, 17},
      {SERIAL_GET_BAUD_RATES, 18},
      {SERIAL_SET_BAUD_RATE, 20},
      {SERIAL_REPORT_PROBE_FAILURE, 22},
      {CMD_OPEN_CAMERA, 25},
      {CMD_REFRESH_PARAMETER, 26},
      {CMD_MAX_BAUD_RATE, 31},
      {CMD_CURRENT_BAUD_RATE, 32},
      {CMD_SET_BAUD_RATE, 33},
      {CMD_VISIBILITY_LEVEL, 48},
      {CMD_PARAMETER_TEXTS, 49},
      {CMD_MODEL_NAME, 50},
      {CMD_CAN_SAVE_CONFIGURATION, 51},
      {CMD_SAVE_CONFIGURATION, 52},
      {CMD_HELP_FILE_NAME, 53},
      {CMD_IS_PARAMETER_VISIBLE, 54},
      {PARAM_DISPLAY_NAME, 0},
      {PARAM_CATEGORY_INDEX, 1},
      {PARAM_VALUE_TEXT, 2},
      {PARAM_MINIMUM, 3},
      {PARAM_MAXIMUM, 4},
      {PARAM_INCREMENT, 5},
      {PARAM_ENTRY_LIST, 6},
      {PARAM_ENTRY_COUNT, 7},
      {PARAM_WRITABLE, 8},
      {PARAM_RESERVED9, 9},
      {PARAM_VALUE_KIND, 10},
      {PARAM_CONSTANT_FOUR, 11},
      {PARAM_IDENTIFIER, 12},
      {PARAM_DECIMALS, 13},
      {VALUE_KIND_NUMBER, 0},
      {VALUE_KIND_TEXT, 1},
      {VALUE_KIND_LIST, 2},
      {VALUE_KIND_BUTTON, 4},
      {OPEN_CONNECTED, 0},
      {OPEN_FAILED, 1},
      {OPEN_NO_SELECTION, 2},
      {OPEN_NOTHING_TO_LOAD, 3},
  };
  for (const CodeRow& row : rows) EXPECT_EQ(row.actual, row.expected);
  EXPECT_EQ(PARAMETER_IDENTIFIER_BIT, 0x80000000u);
  EXPECT_EQ(VISIBILITY_LEVEL_DATA_SIZE, 516u);
}

}  // namespace
