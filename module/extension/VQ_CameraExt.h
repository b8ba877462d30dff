// The extension object the host drives: implements VQ_Ext and forwards the
// host's camera and parameter requests to its one camera object.
#pragma once

#include <memory>

#include "camera/GenericCamera.h"
#include "vq/VQ_Ext.h"

namespace vq {

// Text returned by GetExtensionName.
constexpr const char* kExtensionName = "Generic Camera";

class VQ_CameraExt : public VQ_Ext {
 public:
  VQ_CameraExt() = default;
  ~VQ_CameraExt() override;
  VQ_CameraExt(const VQ_CameraExt&) = delete;
  VQ_CameraExt& operator=(const VQ_CameraExt&) = delete;

  std::int32_t Initialize(void* hostArgument1, void* hostArgument2,
                          ParameterRecordList records) override;
  std::int32_t InitializeCamera(void* hostArgument1, void* hostArgument2, void* hostArgument3,
                                ParameterRecordList records) override;
  std::int32_t ReservedOperation4(void* hostArgument) override;
  std::int32_t ReservedOperation5(void* hostArgument) override;
  std::int32_t GetExtensionName(char* buffer, std::int32_t size, std::uint32_t* value1,
                                std::uint32_t* value2, std::uint32_t* value3) override;
  std::uint32_t GetParameterCount() override;
  std::int32_t GetParameterAttribute(std::uint32_t index, std::uint32_t code, void* buffer,
                                     std::int32_t size) override;
  std::int32_t ReservedOperation9(void* hostArgument) override;
  std::int32_t ReservedOperation10(void* hostArgument) override;
  std::int32_t ReservedOperation11(void* hostArgument) override;
  std::int32_t PressParameterButton(void* hostArgument, std::uint32_t index) override;
  std::int32_t SetHostCallback(HostCallback callback, HostContext context) override;
  std::int32_t ReservedOperation14(void* hostArgument) override;
  std::int32_t QueryCommand(std::uint32_t id, void* data, std::uint32_t size) override;
  std::int32_t ExecuteCommand(std::uint32_t id, void* data, std::uint32_t size) override;
  std::uint32_t GetCategoryCount() override;
  std::int32_t GetCategoryName(std::uint32_t categoryIndex, char* nameBuffer, std::int32_t nameSize,
                               void* secondBuffer, std::int32_t secondSize,
                               std::uint32_t* outValue) override;
  std::int32_t SetParameterValue(std::uint32_t index, const char* text) override;
  std::int32_t ReservedOperation20(void* hostArgument) override;
  std::int32_t ReservedOperation21(void* hostArgument) override;
  std::int32_t ReservedOperation22(void* hostArgument) override;
  std::int32_t ReservedOperation23(void* hostArgument) override;
  std::int32_t ReservedOperation24(void* hostArgument) override;
  std::int32_t ReservedOperation25(void* hostArgument) override;
  std::int32_t ReservedOperation26(void* hostArgument) override;
  std::int32_t ReservedOperation27(void* hostArgument) override;
  std::int32_t ReservedOperation28(void* hostArgument) override;

  // Read-only views for the module's own tests.
  HostCallback StoredHostCallback() const { return hostCallback_; }
  HostContext StoredHostContext() const { return hostContext_; }
  GenericCamera* Camera() const { return camera_.get(); }
  const ParameterRecordList& ParameterRecords() const { return parameterRecords_; }

 private:
  // CMD_OPEN_CAMERA: opens (openRequest >= 0) or closes the camera.
  std::int32_t OpenOrCloseCamera(CommandRecord* record);

  HostCallback hostCallback_ = nullptr;
  HostContext hostContext_ = 0;
  std::unique_ptr<GenericCamera> camera_;
  ParameterRecordList parameterRecords_;
};

}  // namespace vq
