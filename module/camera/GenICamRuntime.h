// Where the GenICam runtime lives, and the node-map reference the camera owns.
#pragma once

#include <cstdint>
#include <memory>

#include "camera/GenICamCalls.h"

namespace vq {

// Environment variable naming the GenICam runtime root.
constexpr const char* kGenICamRootVariable = "GENICAM_ROOT_V2_3";
// Appended as is to the root to form the runtime's library directory.
constexpr const char* kGenICamRuntimeSubdirectory = "/bin/Win64_x64";
// Device name of the node-map reference, and the port name it connects with.
constexpr const char* kNodeMapDeviceName = "Device";

// Points the process's library directory at the GenICam runtime. Returns 1
// when the variable was found (the directory was handed over), 0 when it is
// not set; nothing changes then.
std::int32_t LocateGenICamRuntime();

// A fresh, empty node-map reference for the device "Device".
std::unique_ptr<GenApi::CNodeMapRef> CreateNodeMapReference();

// Loads the description text into the reference. A reference loads once; a
// second load throws GenICam::RuntimeException "DLL already loaded".
void LoadNodeMapFromText(GenApi::CNodeMapRef& reference, const GenICam::gcstring& xmlText);

// Attaches the camera's port to the loaded node map under the port name
// "Device"; true when the node map accepted it. Without a node map this throws
// GenICam::AccessException.
bool ConnectNodeMap(GenApi::CNodeMapRef& reference, GenApi::IPort* port);

// Destroys the node map (when one was loaded) and frees the reference.
void DeleteNodeMapReference(std::unique_ptr<GenApi::CNodeMapRef>& reference);

}  // namespace vq
