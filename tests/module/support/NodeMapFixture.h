// Loads a description into a node-map reference connected to a MemoryPort,
// the way the camera object does it.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "camera/GenICamRuntime.h"
#include "features/GenericFeature.h"
#include "support/DescriptionText.h"
#include "support/MemoryPort.h"

namespace vq::test {

struct LoadedNodeMap {
  std::unique_ptr<MemoryPort> port = std::make_unique<MemoryPort>();
  std::unique_ptr<GenApi::CNodeMapRef> reference = CreateNodeMapReference();
  explicit LoadedNodeMap(const std::string& xmlText) {
    LoadNodeMapFromText(*reference, GenICam::gcstring(xmlText.c_str()));
    EXPECT_TRUE(ConnectNodeMap(*reference, port.get()));
  }
  GenApi::INode* Node(const char* name) const { return reference->_GetNode(name); }
  // A handle on the named node; the test fails when there is none.
  GenericFeature Feature(const char* name) const {
    GenApi::INode* node = Node(name);
    EXPECT_NE(node, nullptr) << name;
    return GenericFeature(node);
  }
};

}  // namespace vq::test
