// A host's view of the module: the library is loaded with the platform's
// dynamic loader, the extension is created through the exported factory and
// driven only through VQ_Ext, as a third-party host would.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "vq/VQ_Ext.h"
#include "vq/platform/shared_library.h"

namespace {

const std::string kModulePath = std::string(VQ_BINARY_DIR) + "/lib/libVQGenericCamera.so";

struct HostCall {
  std::uint32_t code;
  std::uint32_t detail;
  HostContext context;
};

std::vector<HostCall>* recordedCalls = nullptr;

std::int32_t RecordingHost(std::uint32_t code, std::uint32_t detail, void*, HostContext context) {
  if (recordedCalls != nullptr) recordedCalls->push_back({code, detail, context});
  return 1;
}

class ExtensionHostTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    std::string error;
    library_ =
        new vq::platform::SharedLibrary(vq::platform::SharedLibrary::Open(kModulePath, &error));
    ASSERT_TRUE(library_->IsOpen()) << error;
    create_ = library_->FindFunction<CreateExtensionFunction>(CREATE_EXTENSION_SYMBOL, &error);
    ASSERT_NE(create_, nullptr) << error;
  }
  static void TearDownTestSuite() {
    delete library_;
    library_ = nullptr;
  }
  void SetUp() override {
    recordedCalls = &calls_;
    ASSERT_NE(create_, nullptr);
    extension_ = create_();
    ASSERT_NE(extension_, nullptr);
  }
  void TearDown() override {
    delete extension_;
    recordedCalls = nullptr;
  }

  static ParameterRecordList Records(int count) {
    ParameterRecordList records(count);
    for (int i = 0; i < count; ++i)
      std::memset(records[i].bytes, 0x10 + i, sizeof(records[i].bytes));
    return records;
  }

  static vq::platform::SharedLibrary* library_;
  static CreateExtensionFunction create_;
  VQ_Ext* extension_ = nullptr;
  std::vector<HostCall> calls_;
};

vq::platform::SharedLibrary* ExtensionHostTest::library_ = nullptr;
CreateExtensionFunction ExtensionHostTest::create_ = nullptr;

TEST_F(ExtensionHostTest, OnlyTheFactoryIsExported) {
  std::string error;
  for (const char* hidden :
       {"_ZN2vq12VQ_CameraExtC1Ev", "_ZN2vq20LocateGenICamRuntimeEv", "_ZN2vq8CopyTextEPcmPKc"}) {
    EXPECT_EQ(library_->FindSymbol(hidden, &error), nullptr) << hidden;
  }
}

TEST_F(ExtensionHostTest, EachCallCreatesAnIndependentObject) {
  VQ_Ext* second = create_();
  ASSERT_NE(second, nullptr);
  EXPECT_NE(second, extension_);
  EXPECT_EQ(second->SetHostCallback(&RecordingHost, 2), 1);
  EXPECT_EQ(second->InitializeCamera(nullptr, nullptr, nullptr, Records(1)), 1);
  EXPECT_EQ(extension_->InitializeCamera(nullptr, nullptr, nullptr, Records(2)), 1);
  delete second;  // the first object and its camera live on
  char name[32];
  std::uint32_t a = 9, b = 9, c = 9;
  EXPECT_EQ(extension_->GetExtensionName(name, sizeof(name), &a, &b, &c), 1);
  EXPECT_STREQ(name, "Generic Camera");
}

TEST_F(ExtensionHostTest, InitializeIsRefusedAndChangesNothing) {
  EXPECT_EQ(extension_->Initialize(nullptr, nullptr, Records(3)), 0);
  EXPECT_EQ(extension_->Initialize(nullptr, nullptr, ParameterRecordList()), 0);
  EXPECT_EQ(extension_->InitializeCamera(nullptr, nullptr, nullptr, Records(1)), 1);
  EXPECT_EQ(extension_->Initialize(nullptr, nullptr, Records(3)), 0);
}

TEST_F(ExtensionHostTest, InitializeCameraSucceedsOnceAndAgain) {
  EXPECT_EQ(extension_->SetHostCallback(&RecordingHost, 0x1234), 1);
  EXPECT_EQ(extension_->InitializeCamera(nullptr, nullptr, nullptr, ParameterRecordList()), 1);
  EXPECT_EQ(extension_->InitializeCamera(nullptr, nullptr, nullptr, Records(3)), 1);
  EXPECT_EQ(extension_->SetHostCallback(nullptr, 0), 1);
  // Initialising the camera sends nothing to the host.
  EXPECT_TRUE(calls_.empty());
}

struct NameRow {
  std::int32_t size;
  const char* expected;
};

TEST_F(ExtensionHostTest, ExtensionNameIsCutToTheBufferAndCarriesTheThreeValues) {
  const NameRow rows[] = {{10, "Generic C"},
                          {14, "Generic Camer"},
                          {15, "Generic Camera"},
                          {64, "Generic Camera"},
                          {1, ""}};
  for (const NameRow& row : rows) {
    char buffer[64];
    std::memset(buffer, '#', sizeof(buffer));
    std::uint32_t values[3] = {7, 7, 7};
    EXPECT_EQ(extension_->GetExtensionName(buffer, row.size, &values[0], &values[1], &values[2]),
              1);
    EXPECT_STREQ(buffer, row.expected) << row.size;
    EXPECT_EQ(values[0], 0u);
    EXPECT_EQ(values[1], 0u);
    EXPECT_EQ(values[2], 3u);
    if (row.size < 64) {
      EXPECT_EQ(buffer[row.size], '#') << "wrote past the buffer";
    }
  }
}

TEST_F(ExtensionHostTest, ExtensionNameWithUnusableSizeWritesNoText) {
  char buffer[8];
  std::memset(buffer, '#', sizeof(buffer));
  std::uint32_t values[3] = {7, 7, 7};
  EXPECT_EQ(extension_->GetExtensionName(buffer, 0, &values[0], &values[1], &values[2]), 1);
  EXPECT_EQ(extension_->GetExtensionName(buffer, -5, &values[0], &values[1], &values[2]), 1);
  EXPECT_EQ(buffer[0], '#');
  EXPECT_EQ(values[2], 3u);
}

void ExpectReservedConstants(VQ_Ext& extension) {
  int argument = 0;
  EXPECT_EQ(extension.ReservedOperation4(&argument), 0);
  EXPECT_EQ(extension.ReservedOperation5(&argument), 1);
  EXPECT_EQ(extension.ReservedOperation9(&argument), 0);
  EXPECT_EQ(extension.ReservedOperation10(&argument), 0);
  EXPECT_EQ(extension.ReservedOperation11(&argument), 0);
  EXPECT_EQ(extension.ReservedOperation14(&argument), 0);
  EXPECT_EQ(extension.ReservedOperation20(&argument), 0);
  EXPECT_EQ(extension.ReservedOperation21(&argument), 0);
  EXPECT_EQ(extension.ReservedOperation22(&argument), 0);
  EXPECT_EQ(extension.ReservedOperation23(&argument), 1);
  EXPECT_EQ(extension.ReservedOperation24(nullptr), 0);
  EXPECT_EQ(extension.ReservedOperation25(nullptr), 0);
  EXPECT_EQ(extension.ReservedOperation26(nullptr), 0);
  EXPECT_EQ(extension.ReservedOperation27(nullptr), 0);
  EXPECT_EQ(extension.ReservedOperation28(nullptr), 0);
}

TEST_F(ExtensionHostTest, ReservedOperationsAnswerTheirConstantsWithOrWithoutCamera) {
  ExpectReservedConstants(*extension_);
  ASSERT_EQ(extension_->InitializeCamera(nullptr, nullptr, nullptr, Records(1)), 1);
  ExpectReservedConstants(*extension_);
}

TEST_F(ExtensionHostTest, CallsByVtablePositionReachTheRightOperations) {
  // A host that knows only positions: slot 6 is GetExtensionName, slot 13
  // SetHostCallback, slot 23 ReservedOperation23 (destructor in slots 0-1).
  using NameSlot = std::int32_t (*)(VQ_Ext*, char*, std::int32_t, std::uint32_t*, std::uint32_t*,
                                    std::uint32_t*);
  using CallbackSlot = std::int32_t (*)(VQ_Ext*, HostCallback, HostContext);
  using ReservedSlot = std::int32_t (*)(VQ_Ext*, void*);
  void* const* vtable = *reinterpret_cast<void* const* const*>(extension_);
  char buffer[16];
  std::uint32_t a = 1, b = 1, c = 1;
  EXPECT_EQ(reinterpret_cast<NameSlot>(vtable[6])(extension_, buffer, 16, &a, &b, &c), 1);
  EXPECT_STREQ(buffer, "Generic Camera");
  EXPECT_EQ(c, 3u);
  EXPECT_EQ(reinterpret_cast<CallbackSlot>(vtable[13])(extension_, &RecordingHost, 5), 1);
  EXPECT_EQ(reinterpret_cast<ReservedSlot>(vtable[23])(extension_, nullptr), 1);
  EXPECT_EQ(reinterpret_cast<ReservedSlot>(vtable[5])(extension_, nullptr), 1);
  EXPECT_EQ(reinterpret_cast<ReservedSlot>(vtable[4])(extension_, nullptr), 0);
}

TEST_F(ExtensionHostTest, DestroyingAnObjectWithACameraIsClean) {
  ASSERT_EQ(extension_->SetHostCallback(&RecordingHost, 1), 1);
  ASSERT_EQ(extension_->InitializeCamera(nullptr, nullptr, nullptr, Records(2)), 1);
  delete extension_;
  extension_ = create_();
  ASSERT_NE(extension_, nullptr);
  EXPECT_TRUE(calls_.empty());
}

}  // namespace
