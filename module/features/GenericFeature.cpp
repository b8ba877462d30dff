#include "features/GenericFeature.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "features/BoundedText.h"
#include "features/FeatureCodes.h"
#include "features/TypedFeatures.h"

namespace vq {

namespace {

constexpr std::uint32_t kDoubleSize = 8;
constexpr std::uint32_t kWordSize = 4;

std::uint32_t AccessCode(GenApi::EAccessMode mode) {
  switch (mode) {
    case GenApi::RW:
      return FEATURE_ACCESS_RW;
    case GenApi::RO:
      return FEATURE_ACCESS_RO;
    case GenApi::WO:
      return FEATURE_ACCESS_WO;
    case GenApi::NI:
      return FEATURE_ACCESS_NI;
    case GenApi::NA:
      return FEATURE_ACCESS_NA;
    default:
      return FEATURE_ACCESS_OTHER;
  }
}

std::uint32_t VisibilityCode(GenApi::EVisibility visibility) {
  switch (visibility) {
    case GenApi::Beginner:
      return FEATURE_VISIBILITY_BEGINNER;
    case GenApi::Expert:
      return FEATURE_VISIBILITY_EXPERT;
    case GenApi::Guru:
      return FEATURE_VISIBILITY_GURU;
    default:
      return FEATURE_VISIBILITY_INVISIBLE;
  }
}

template <typename T>
void Store(void* buffer, const T& value) {
  std::memcpy(buffer, &value, sizeof(value));
}

// Value interfaces are asked first, so an integer, float or string register
// reports its value type and only a plain register reports FEATURE_TYPE_REGISTER.
std::uint32_t TypeCodeOf(GenApi::INode* node) {
  if (NodeAs<GenApi::IInteger>(node)) return FEATURE_TYPE_INTEGER;
  if (NodeAs<GenApi::IBoolean>(node)) return FEATURE_TYPE_BOOLEAN;
  if (NodeAs<GenApi::IFloat>(node)) return FEATURE_TYPE_FLOAT;
  if (NodeAs<GenApi::IString>(node)) return FEATURE_TYPE_STRING;
  if (NodeAs<GenApi::IRegister>(node)) return FEATURE_TYPE_REGISTER;
  if (NodeAs<GenApi::IEnumeration>(node)) return FEATURE_TYPE_ENUMERATION;
  if (NodeAs<GenApi::ICommand>(node)) return FEATURE_TYPE_BOOLEAN;
  return FEATURE_TYPE_NONE;
}

}  // namespace

std::int32_t GenericFeature::GetType(std::uint32_t& code) const {
  code = TypeCodeOf(node_);
  return code == FEATURE_TYPE_NONE ? 0 : 1;
}

// The queries below are made only on handles filled by a feature-tree look-up;
// a handle without a node is answered as a failure instead of being followed.
// GenICam exceptions from the node pass to the caller.

std::int32_t GenericFeature::GetAccessMode(std::uint32_t& code) const {
  if (node_ == nullptr) {
    code = FEATURE_ACCESS_OTHER;
    return 0;
  }
  code = AccessCode(node_->GetAccessMode());
  return 1;
}

std::int32_t GenericFeature::GetVisibility(std::uint32_t& code) const {
  if (node_ == nullptr) {
    code = FEATURE_VISIBILITY_INVISIBLE;
    return 0;
  }
  code = VisibilityCode(node_->GetVisibility());
  return 1;
}

std::int32_t GenericFeature::GetDecimals(std::uint32_t& count) const {
  count = 0;
  return 1;
}

std::int32_t GenericFeature::GetScale(float& factor) const {
  factor = 1.0f;
  return 1;
}

std::int32_t GenericFeature::GetName(char* buffer, std::uint32_t size) const {
  if (node_ == nullptr) return 0;
  CopyText(buffer, size, node_->GetName(false).c_str());
  return 1;
}

std::int32_t GenericFeature::GetDisplayName(char* buffer, std::uint32_t size) const {
  if (node_ == nullptr) return 0;
  CopyText(buffer, size, node_->GetDisplayName().c_str());
  return 1;
}

std::int32_t GenericFeature::GetDescription(char* buffer, std::uint32_t& size) const {
  if (node_ == nullptr) return 0;
  GenICam::gcstring text = node_->GetDescription();
  if (text.empty()) text = node_->GetToolTip();
  const std::size_t length = text.size();
  if (size >= length) {
    CopyText(buffer, size, text.c_str());
    return 1;
  }
  size = static_cast<std::uint32_t>(length + 1);
  return 0;
}

std::int32_t GenericFeature::GetValue(void* buffer, std::uint32_t size) {
  if (buffer == nullptr) return 0;
  if (NodeAs<GenApi::IInteger>(node_)) {
    // Integers always fill 8 bytes; every caller passes a double.
    IntegerFeature integer(node_);
    double value = 0;
    if (!integer.GetValue(value)) return 0;
    Store(buffer, value);
    return 1;
  }
  if (NodeAs<GenApi::IBoolean>(node_)) {
    if (size != kWordSize) return 0;
    BooleanFeature boolean(node_);
    std::uint32_t value = 0;
    if (!boolean.GetValue(value)) return 0;
    Store(buffer, value);
    return 1;
  }
  if (NodeAs<GenApi::IFloat>(node_)) {
    if (size != kDoubleSize) return 0;
    FloatFeature number(node_);
    double value = 0;
    if (!number.GetValue(value)) return 0;
    Store(buffer, value);
    return 1;
  }
  if (NodeAs<GenApi::IString>(node_)) {
    StringFeature text(node_);
    std::string value;
    if (!text.GetValue(value)) return 0;
    CopyText(static_cast<char*>(buffer), size, value.c_str());
    return 1;
  }
  if (NodeAs<GenApi::IEnumeration>(node_)) {
    if (size != kWordSize) return 0;
    EnumerationFeature enumeration(node_);
    std::uint32_t value = 0;
    if (!enumeration.GetValue(value)) return 0;
    Store(buffer, value);
    return 1;
  }
  lastError_ = "Read error: Unknown feature type ";
  return 0;
}

void GenericFeature::InvalidateRegisters(GenApi::INode* node) const {
  std::vector<GenApi::INode*> path;
  InvalidateRegistersBelow(node, path);
}

void GenericFeature::InvalidateRegistersBelow(GenApi::INode* node,
                                              std::vector<GenApi::INode*>& path) const {
  if (node == nullptr) return;
  // Invalidator links may form loops; a node already on the walk's path is not
  // entered again, so the walk always ends. Shared subtrees are still walked
  // once per path that reaches them.
  if (std::find(path.begin(), path.end(), node) != path.end()) return;
  path.push_back(node);
  GenApi::node_vector children;
  node->GetChildren(children, GenApi::ctInvalidatingChildren);
  for (GenApi::INode* child : children) {
    if (child == nullptr) continue;
    if (NodeAs<GenApi::IRegister>(child)) {
      child->InvalidateNode();  // a register is not descended into
    } else {
      InvalidateRegistersBelow(child, path);
    }
  }
  path.pop_back();
}

}  // namespace vq
