#include "RegisterLookup.h"

#include <pugixml.hpp>

#include <cstdlib>
#include <cstring>
#include <map>

namespace vq::gencpdrv {

namespace {

// Links followed before a lookup gives up (protects against cycles).
constexpr int kMaxDepth = 16;

using NodeIndex = std::map<std::string, pugi::xml_node>;

// Every element with a Name attribute, by name (first wins), including StructEntry elements.
void indexNodes(pugi::xml_node parent, NodeIndex& index) {
  for (pugi::xml_node child : parent.children()) {
    if (child.type() != pugi::node_element) continue;
    const char* name = child.attribute("Name").value();
    if (name[0] != '\0') index.emplace(name, child);
    indexNodes(child, index);
  }
}

std::optional<int64_t> parseInteger(const char* text) {
  while (*text == ' ' || *text == '\t' || *text == '\n' || *text == '\r') ++text;
  if (*text == '\0') return std::nullopt;
  char* end = nullptr;
  const bool hex = text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
  const long long value = std::strtoll(text, &end, hex ? 16 : 10);
  while (*end == ' ' || *end == '\t' || *end == '\n' || *end == '\r') ++end;
  if (*end != '\0') return std::nullopt;
  return value;
}

std::optional<int64_t> constantValue(const NodeIndex& index, const std::string& name, int depth);

// Sum of the Address elements and constant pAddress targets of a register node.
std::optional<int64_t> registerAddress(const NodeIndex& index, pugi::xml_node node, int depth) {
  bool any = false;
  int64_t address = 0;
  for (pugi::xml_node child : node.children()) {
    const char* tag = child.name();
    std::optional<int64_t> part;
    if (std::strcmp(tag, "Address") == 0) {
      part = parseInteger(child.child_value());
    } else if (std::strcmp(tag, "pAddress") == 0) {
      part = constantValue(index, child.child_value(), depth + 1);
    } else if (std::strcmp(tag, "IntSwissKnife") == 0 || std::strcmp(tag, "pIndex") == 0) {
      return std::nullopt;  // computed addresses are not constants
    } else {
      continue;
    }
    if (!part) return std::nullopt;
    address += *part;
    any = true;
  }
  if (!any) return std::nullopt;
  return address;
}

// Value of an Integer (or similar) node with a constant Value element.
std::optional<int64_t> constantValue(const NodeIndex& index, const std::string& name, int depth) {
  if (depth > kMaxDepth) return std::nullopt;
  const auto it = index.find(name);
  if (it == index.end()) return std::nullopt;
  pugi::xml_node value = it->second.child("Value");
  if (!value) return std::nullopt;
  return parseInteger(value.child_value());
}

std::optional<int64_t> addressOf(const NodeIndex& index, const std::string& name, int depth) {
  if (depth > kMaxDepth) return std::nullopt;
  const auto it = index.find(name);
  if (it == index.end()) return std::nullopt;
  pugi::xml_node node = it->second;
  if (std::strcmp(node.name(), "StructEntry") == 0) node = node.parent();
  if (node.child("Address") || node.child("pAddress")) return registerAddress(index, node, depth);
  if (pugi::xml_node pValue = node.child("pValue")) {
    return addressOf(index, pValue.child_value(), depth + 1);
  }
  return std::nullopt;
}

}  // namespace

std::optional<uint64_t> findRegisterAddress(const std::string& xml, const std::string& name) {
  pugi::xml_document document;
  if (!document.load_buffer(xml.data(), xml.size())) return std::nullopt;
  NodeIndex index;
  indexNodes(document, index);
  const auto address = addressOf(index, name, 0);
  if (!address || *address < 0) return std::nullopt;
  return static_cast<uint64_t>(*address);
}

}  // namespace vq::gencpdrv
