// The command identifiers that reach the camera's services: baud rate,
// visibility level, parameter texts, model name, configuration save, help file,
// parameter refresh and visibility. The dispatcher hands these identifiers here.
#pragma once

#include <cstdint>

namespace vq {

class GenericCamera;

// True for the identifiers QueryServiceCommand answers (31, 32, 48-51, 53, 54).
bool IsQueryServiceCommand(std::uint32_t id);
// True for the identifiers ExecuteServiceCommand performs (26, 33, 48, 52).
bool IsExecuteServiceCommand(std::uint32_t id);

// Results as the host's QueryCommand and ExecuteCommand return them. The camera
// may be null when the host asks before InitializeCamera.
std::int32_t QueryServiceCommand(GenericCamera* camera, std::uint32_t id, void* data,
                                 std::uint32_t size);
std::int32_t ExecuteServiceCommand(GenericCamera* camera, std::uint32_t id, void* data,
                                   std::uint32_t size);

}  // namespace vq
