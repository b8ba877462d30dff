// Process-wide table of live callback handles, so that the free Deregister
// can find the node a handle belongs to (and refuse stale handles).
#pragma once

#include <GenApi/INode.h>

namespace GenApi {
namespace impl {

void RememberCallback(CallbackHandleType handle, INode* node);
void ForgetCallback(CallbackHandleType handle);
INode* NodeOfCallback(CallbackHandleType handle);

}  // namespace impl
}  // namespace GenApi
