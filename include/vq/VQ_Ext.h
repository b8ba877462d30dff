// Host SDK: the contract between a camera-configuration host and a camera
// extension module. The host loads the module, calls CreateExtension, and then
// drives the returned VQ_Ext through its virtual operations, which it calls by
// position. Every record that crosses the boundary has a fixed byte layout,
// checked below.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// The module defines VQ_EXT_BUILDING_MODULE; hosts import.
#if defined(_WIN32)
#if defined(VQ_EXT_BUILDING_MODULE)
#define VQ_EXT_EXPORT __declspec(dllexport)
#else
#define VQ_EXT_EXPORT __declspec(dllimport)
#endif
#define VQ_EXT_INTERFACE
#else
#define VQ_EXT_EXPORT __attribute__((visibility("default")))
#define VQ_EXT_INTERFACE __attribute__((visibility("default")))
#endif

// ---------------------------------------------------------------------------
// Host callback

// Opaque value the host registers with its callback and receives back with
// every call.
using HostContext = std::uint64_t;

// The host's notification function: (code, detail, data, context) -> result.
using HostCallback = std::int32_t (*)(std::uint32_t code, std::uint32_t detail, void* data,
                                      HostContext context);

// Codes of HostCallback.
enum HostCallbackCode : std::uint32_t {
  HOST_MESSAGE = 7,          // detail: MessageLevel; data: NUL-terminated text
  HOST_FEATURE_CHANGED = 9,  // detail: parameter index; data: null
  HOST_SERIAL_REQUEST = 22,  // detail: SerialRequest; data: request record (see below)
  HOST_SELECTOR_STATE = 26,  // detail: 0; data: uint32 check-box state (1 checked, 0 not)
};

// Levels of HOST_MESSAGE.
enum MessageLevel : std::uint32_t {
  MESSAGE_FAILURE = 0,
  MESSAGE_INFORMATION = 2,
  MESSAGE_DEVICE_ERROR = 3,
};

// Serial requests (the detail of HOST_SERIAL_REQUEST).
enum SerialRequest : std::uint32_t {
  SERIAL_QUERY_PORT_INFO = 6,        // data: SerialRequestRecord, pointer: PortInformationBlock
  SERIAL_SELECT_PORT = 8,            // data: uint32 the host fills with the largest port index
  SERIAL_IS_PORT_ALIVE = 14,         // data: SerialRequestRecord; result 0: camera gone
  SERIAL_READ = 16,                  // data: SerialRequestRecord
  SERIAL_WRITE = 17,                 // data: SerialRequestRecord
  SERIAL_GET_BAUD_RATES = 18,        // data: SerialRequestRecord, pointer: uint32 bit mask
  SERIAL_SET_BAUD_RATE = 20,         // data: SerialRequestRecord, value: baud-rate value
  SERIAL_REPORT_PROBE_FAILURE = 22,  // data: SerialRequestRecord
};

// ---------------------------------------------------------------------------
// Records. All little-endian, laid out exactly as below.

// Host-defined parameter record; opaque to the module, copied whole.
struct ParameterRecord {
  unsigned char bytes[776];
};
using ParameterRecordList = std::vector<ParameterRecord>;

#pragma pack(push, 4)
// Data block of CMD_OPEN_CAMERA.
struct CommandRecord {
  std::int32_t openRequest;               // >= 0 open, < 0 close
  unsigned char hostReserved[512];        // never touched by the module
  std::uint32_t portIndex;                // host serial port to open
  void* parentWindow;                     // parent of the selector dialog
  std::uint32_t openStatus;               // written by the module: OpenStatus
  std::uint32_t alwaysShowSelector;       // 1: show the selector even on a match
  std::uint32_t showSelectorWhenNoMatch;  // 1: show the selector when nothing matches
};
#pragma pack(pop)

// Values of CommandRecord::openStatus.
enum OpenStatus : std::uint32_t {
  OPEN_CONNECTED = 0,
  OPEN_FAILED = 1,
  OPEN_NO_SELECTION = 2,
  OPEN_NOTHING_TO_LOAD = 3,
};

// Data of HOST_SERIAL_REQUEST (except SERIAL_SELECT_PORT). Unused fields are 0.
struct SerialRequestRecord {
  std::uint32_t portIndex;
  std::int32_t status;    // written by the host: Camera Link status, 0 success
  std::uint32_t timeout;  // reads and writes, milliseconds
  std::uint32_t reserved1;
  std::uint32_t value;  // byte count (in/out), baud-rate value, or port index asked about
  std::uint32_t reserved2;
  void* data;  // buffer, bit mask, or PortInformationBlock
};

// Filled by the host for SERIAL_QUERY_PORT_INFO.
struct PortInformationBlock {
  char hostTexts[4108];           // the host's own identification of the port
  char cameraText[2052];          // host-reported camera text, NUL-terminated
  std::uint32_t cameraTextValid;  // 1 when cameraText holds a text
  unsigned char reserved[12];
};

// One choice of a list parameter (attribute PARAM_ENTRY_LIST), back to back.
struct EntryBlock {
  std::uint32_t value;
  char name[512];              // NUL-terminated, at most 511 characters
  unsigned char unused[1024];  // not written by the module
  std::uint32_t reserved1;     // 0
  std::uint32_t reserved2;     // 0
};

// One element of the host's list behind CMD_PARAMETER_TEXTS.
struct ParameterTextItem {
  std::string text;
  std::uint32_t style;
};

// Data of CMD_PARAMETER_TEXTS.
struct ParameterTextsQuery {
  std::uint32_t parameterIndex;
  std::uint32_t ignored;
  std::vector<ParameterTextItem>* texts;
};

// ---------------------------------------------------------------------------
// Identifiers

// Command identifiers of QueryCommand and ExecuteCommand.
enum CommandId : std::uint32_t {
  CMD_OPEN_CAMERA = 25,             // Execute, data: CommandRecord
  CMD_REFRESH_PARAMETER = 26,       // Execute, data: parameter name
  CMD_MAX_BAUD_RATE = 31,           // Query, data out: uint32 baud-rate bit
  CMD_CURRENT_BAUD_RATE = 32,       // Query, data out: uint32 baud-rate bit
  CMD_SET_BAUD_RATE = 33,           // Execute, data in: uint32 baud-rate bit
  CMD_VISIBILITY_LEVEL = 48,        // Query/Execute, 516-byte level name
  CMD_PARAMETER_TEXTS = 49,         // Query, data: ParameterTextsQuery
  CMD_MODEL_NAME = 50,              // Query, data out: text
  CMD_CAN_SAVE_CONFIGURATION = 51,  // Query
  CMD_SAVE_CONFIGURATION = 52,      // Execute
  CMD_HELP_FILE_NAME = 53,          // Query, data out: text
  CMD_IS_PARAMETER_VISIBLE = 54,    // Query, data in: parameter name
};

// Size of the visibility-level buffer of CMD_VISIBILITY_LEVEL.
constexpr std::uint32_t VISIBILITY_LEVEL_DATA_SIZE = 516;

// Attribute codes of GetParameterAttribute.
enum ParameterAttribute : std::uint32_t {
  PARAM_DISPLAY_NAME = 0,    // text
  PARAM_CATEGORY_INDEX = 1,  // uint32
  PARAM_VALUE_TEXT = 2,      // text
  PARAM_MINIMUM = 3,         // float
  PARAM_MAXIMUM = 4,         // float
  PARAM_INCREMENT = 5,       // int32
  PARAM_ENTRY_LIST = 6,      // EntryBlock[]
  PARAM_ENTRY_COUNT = 7,     // uint32
  PARAM_WRITABLE = 8,        // uint32 0/1
  PARAM_RESERVED9 = 9,       // uint32 0
  PARAM_VALUE_KIND = 10,     // uint32 ValueKind
  PARAM_CONSTANT_FOUR = 11,  // uint32 4, written whatever the size
  PARAM_IDENTIFIER = 12,     // uint32 index | 0x80000000
  PARAM_DECIMALS = 13,       // uint32
};

// Editor kinds of PARAM_VALUE_KIND.
enum ValueKind : std::uint32_t {
  VALUE_KIND_NUMBER = 0,
  VALUE_KIND_TEXT = 1,
  VALUE_KIND_LIST = 2,
  VALUE_KIND_BUTTON = 4,
};

// Identifier bit of a parameter (PARAM_IDENTIFIER).
constexpr std::uint32_t PARAMETER_IDENTIFIER_BIT = 0x80000000u;

// ---------------------------------------------------------------------------
// The extension interface. The host calls the operations by position: the
// declaration order below is part of the contract.

class VQ_EXT_INTERFACE VQ_Ext {
 public:
  // 1
  virtual ~VQ_Ext() {}
  // 2
  virtual std::int32_t Initialize(void* hostArgument1, void* hostArgument2,
                                  ParameterRecordList records) = 0;
  // 3
  virtual std::int32_t InitializeCamera(void* hostArgument1, void* hostArgument2,
                                        void* hostArgument3, ParameterRecordList records) = 0;
  // 4, 5
  virtual std::int32_t ReservedOperation4(void* hostArgument) = 0;
  virtual std::int32_t ReservedOperation5(void* hostArgument) = 0;
  // 6
  virtual std::int32_t GetExtensionName(char* buffer, std::int32_t size, std::uint32_t* value1,
                                        std::uint32_t* value2, std::uint32_t* value3) = 0;
  // 7, 8
  virtual std::uint32_t GetParameterCount() = 0;
  virtual std::int32_t GetParameterAttribute(std::uint32_t index, std::uint32_t code, void* buffer,
                                             std::int32_t size) = 0;
  // 9-11
  virtual std::int32_t ReservedOperation9(void* hostArgument) = 0;
  virtual std::int32_t ReservedOperation10(void* hostArgument) = 0;
  virtual std::int32_t ReservedOperation11(void* hostArgument) = 0;
  // 12
  virtual std::int32_t PressParameterButton(void* hostArgument, std::uint32_t index) = 0;
  // 13
  virtual std::int32_t SetHostCallback(HostCallback callback, HostContext context) = 0;
  // 14
  virtual std::int32_t ReservedOperation14(void* hostArgument) = 0;
  // 15, 16
  virtual std::int32_t QueryCommand(std::uint32_t id, void* data, std::uint32_t size) = 0;
  virtual std::int32_t ExecuteCommand(std::uint32_t id, void* data, std::uint32_t size) = 0;
  // 17, 18
  virtual std::uint32_t GetCategoryCount() = 0;
  virtual std::int32_t GetCategoryName(std::uint32_t categoryIndex, char* nameBuffer,
                                       std::int32_t nameSize, void* secondBuffer,
                                       std::int32_t secondSize, std::uint32_t* outValue) = 0;
  // 19
  virtual std::int32_t SetParameterValue(std::uint32_t index, const char* text) = 0;
  // 20-28
  virtual std::int32_t ReservedOperation20(void* hostArgument) = 0;
  virtual std::int32_t ReservedOperation21(void* hostArgument) = 0;
  virtual std::int32_t ReservedOperation22(void* hostArgument) = 0;
  virtual std::int32_t ReservedOperation23(void* hostArgument) = 0;
  virtual std::int32_t ReservedOperation24(void* hostArgument) = 0;
  virtual std::int32_t ReservedOperation25(void* hostArgument) = 0;
  virtual std::int32_t ReservedOperation26(void* hostArgument) = 0;
  virtual std::int32_t ReservedOperation27(void* hostArgument) = 0;
  virtual std::int32_t ReservedOperation28(void* hostArgument) = 0;
};

// The module's one exported entry: a new extension object, or null when out of
// memory. The host owns the object and deletes it through VQ_Ext.
extern "C" VQ_EXT_EXPORT VQ_Ext* CreateExtension();

// Type of CreateExtension, for hosts that look it up by name.
using CreateExtensionFunction = VQ_Ext* (*)();
constexpr const char* CREATE_EXTENSION_SYMBOL = "CreateExtension";

// ---------------------------------------------------------------------------
// Layout checks

static_assert(sizeof(ParameterRecord) == 776, "ParameterRecord is 776 bytes");

static_assert(sizeof(void*) == 8, "the host contract is 64-bit");
static_assert(sizeof(CommandRecord) == 540, "CommandRecord is 540 bytes");
static_assert(offsetof(CommandRecord, openRequest) == 0, "CommandRecord layout");
static_assert(offsetof(CommandRecord, hostReserved) == 4, "CommandRecord layout");
static_assert(offsetof(CommandRecord, portIndex) == 516, "CommandRecord layout");
static_assert(offsetof(CommandRecord, parentWindow) == 520, "CommandRecord layout");
static_assert(offsetof(CommandRecord, openStatus) == 528, "CommandRecord layout");
static_assert(offsetof(CommandRecord, alwaysShowSelector) == 532, "CommandRecord layout");
static_assert(offsetof(CommandRecord, showSelectorWhenNoMatch) == 536, "CommandRecord layout");

static_assert(sizeof(SerialRequestRecord) == 32, "SerialRequestRecord is 32 bytes");
static_assert(offsetof(SerialRequestRecord, portIndex) == 0, "SerialRequestRecord layout");
static_assert(offsetof(SerialRequestRecord, status) == 4, "SerialRequestRecord layout");
static_assert(offsetof(SerialRequestRecord, timeout) == 8, "SerialRequestRecord layout");
static_assert(offsetof(SerialRequestRecord, reserved1) == 12, "SerialRequestRecord layout");
static_assert(offsetof(SerialRequestRecord, value) == 16, "SerialRequestRecord layout");
static_assert(offsetof(SerialRequestRecord, reserved2) == 20, "SerialRequestRecord layout");
static_assert(offsetof(SerialRequestRecord, data) == 24, "SerialRequestRecord layout");

static_assert(sizeof(PortInformationBlock) == 6176, "PortInformationBlock is 6176 bytes");
static_assert(offsetof(PortInformationBlock, cameraText) == 4108, "PortInformationBlock layout");
static_assert(offsetof(PortInformationBlock, cameraTextValid) == 6160,
              "PortInformationBlock layout");

static_assert(sizeof(EntryBlock) == 1548, "EntryBlock is 1548 bytes");
static_assert(offsetof(EntryBlock, value) == 0, "EntryBlock layout");
static_assert(offsetof(EntryBlock, name) == 4, "EntryBlock layout");
static_assert(offsetof(EntryBlock, unused) == 516, "EntryBlock layout");
static_assert(offsetof(EntryBlock, reserved1) == 1540, "EntryBlock layout");
static_assert(offsetof(EntryBlock, reserved2) == 1544, "EntryBlock layout");

static_assert(offsetof(ParameterTextsQuery, parameterIndex) == 0, "ParameterTextsQuery layout");
static_assert(offsetof(ParameterTextsQuery, texts) == 8, "ParameterTextsQuery layout");
static_assert(sizeof(ParameterTextsQuery) == 16, "ParameterTextsQuery is 16 bytes");
