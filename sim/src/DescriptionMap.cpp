#include "vq/sim/DescriptionMap.h"

#include <cstring>
#include <map>
#include <pugixml.hpp>

#include "TextUtil.h"
#include "vq/sim/Profile.h"

namespace vq::sim {

namespace {

// Element name without a namespace prefix.
const char* localName(const pugi::xml_node& node) {
  const char* name = node.name();
  const char* colon = std::strrchr(name, ':');
  return colon ? colon + 1 : name;
}

pugi::xml_node child(const pugi::xml_node& node, const char* name) {
  for (auto c : node.children()) {
    if (c.type() == pugi::node_element && std::strcmp(localName(c), name) == 0) return c;
  }
  return {};
}

std::string childText(const pugi::xml_node& node, const char* name) {
  return trim(child(node, name).text().as_string());
}

bool isRegisterNode(const char* kind) {
  static const char* const kKinds[] = {"IntReg",    "MaskedIntReg", "FloatReg",
                                       "StringReg", "Register",     "StructReg"};
  for (const char* k : kKinds) {
    if (std::strcmp(kind, k) == 0) return true;
  }
  return false;
}

Access parseAccess(const std::string& text) {
  if (text == "RW") return Access::RW;
  if (text == "WO") return Access::WO;
  return Access::RO;
}

uint32_t versionAttribute(const pugi::xml_node& root, const char* name) {
  const auto value = parseInteger(root.attribute(name).as_string());
  return value && *value >= 0 ? static_cast<uint32_t>(*value) : 0;
}

// Fixed address and length of a register node, or false when they are computed.
bool fixedLayout(const pugi::xml_node& node, RegisterDef& def) {
  for (const char* dynamic : {"pAddress", "pIndex", "pLength", "IntSwissKnife"}) {
    if (child(node, dynamic)) return false;
  }
  uint64_t address = 0;
  bool haveAddress = false;
  for (auto c : node.children()) {
    if (c.type() != pugi::node_element || std::strcmp(localName(c), "Address") != 0) continue;
    const auto part = parseInteger(c.text().as_string());
    if (!part) return false;
    address += static_cast<uint64_t>(*part);  // several Address elements add up
    haveAddress = true;
  }
  const auto length = parseInteger(childText(node, "Length"));
  if (!haveAddress || !length || *length <= 0 || *length > (1 << 20)) return false;
  def.address = address;
  def.length = static_cast<uint64_t>(*length);
  return true;
}

}  // namespace

DescriptionInfo readDescription(const std::string& xmlText) {
  pugi::xml_document doc;
  const auto parsed = doc.load_buffer(xmlText.data(), xmlText.size());
  if (!parsed) {
    throw ProfileError(std::string("description is not well-formed XML: ") + parsed.description() +
                       " at offset " + std::to_string(parsed.offset));
  }
  const pugi::xml_node root = doc.document_element();
  if (std::strcmp(localName(root), "RegisterDescription") != 0) {
    throw ProfileError("description root element is not RegisterDescription");
  }
  DescriptionInfo info;
  info.schemaMajor = versionAttribute(root, "SchemaMajorVersion");
  info.schemaMinor = versionAttribute(root, "SchemaMinorVersion");
  info.schemaSubMinor = versionAttribute(root, "SchemaSubMinorVersion");
  info.fileMajor = versionAttribute(root, "MajorVersion");
  info.fileMinor = versionAttribute(root, "MinorVersion");
  info.fileSubMinor = versionAttribute(root, "SubMinorVersion");
  info.modelName = root.attribute("ModelName").as_string();

  std::map<std::string, RegisterDef> byName;
  std::vector<pugi::xml_node> commands;
  for (auto node : root.children()) {
    if (node.type() != pugi::node_element) continue;
    const char* kind = localName(node);
    if (std::strcmp(kind, "Command") == 0) commands.push_back(node);
    if (!isRegisterNode(kind)) continue;
    RegisterDef def;
    def.name = node.attribute("Name").as_string();
    def.access = parseAccess(childText(node, "AccessMode"));
    if (!fixedLayout(node, def)) {
      info.skipped.push_back(def.name);
      continue;
    }
    byName[def.name] = def;
    info.registers.push_back(def);
  }
  for (const auto& node : commands) {
    CommandDef command;
    command.name = node.attribute("Name").as_string();
    command.registerName = childText(node, "pValue");
    const auto reg = byName.find(command.registerName);
    if (reg == byName.end()) continue;  // floating or computed command: nothing to clear
    command.address = reg->second.address;
    command.length = reg->second.length;
    command.commandValue = parseInteger(childText(node, "CommandValue")).value_or(1);
    info.commands.push_back(command);
  }
  return info;
}

}  // namespace vq::sim
