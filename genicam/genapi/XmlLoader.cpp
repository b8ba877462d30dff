// First loading pass: the XML document becomes nodes. Groups are flattened,
// StructReg entries become MaskedIntRegs, EnumEntries and ConfRom keys become
// nodes of their own, embedded IntSwissKnifes become named knives.
#include <cstring>
#include <functional>
#include <pugixml.hpp>

#include "BooleanNode.h"
#include "CommandNode.h"
#include "EnumerationNodes.h"
#include "FloatNodes.h"
#include "FormulaNodes.h"
#include "IntRegNodes.h"
#include "IntegerNode.h"
#include "MiscNodes.h"
#include "NodeMap.h"
#include "PortNode.h"
#include "StringNodes.h"

namespace GenApi {
namespace impl {

namespace {

const char* LocalName(const pugi::xml_node& n) {
  const char* name = n.name();
  const char* colon = std::strrchr(name, ':');
  return colon ? colon + 1 : name;
}

std::string Trim(const std::string& s) {
  const char* ws = " \t\r\n";
  const size_t b = s.find_first_not_of(ws);
  if (b == std::string::npos) return std::string();
  const size_t e = s.find_last_not_of(ws);
  return s.substr(b, e - b + 1);
}

XmlElem MakeElem(const pugi::xml_node& n) {
  XmlElem e;
  e.name = LocalName(n);
  std::string text;
  for (pugi::xml_node c = n.first_child(); c; c = c.next_sibling())
    if (c.type() == pugi::node_pcdata || c.type() == pugi::node_cdata) text += c.value();
  e.text = Trim(text);
  for (pugi::xml_attribute a = n.first_attribute(); a; a = a.next_attribute())
    e.attrs.emplace_back(a.name(), a.value());
  return e;
}

using Factory = std::function<std::unique_ptr<NodeImpl>(NodeMap*, const std::string&)>;

template <class T>
Factory Make() {
  return [](NodeMap* m, const std::string& n) { return std::unique_ptr<NodeImpl>(new T(m, n)); };
}

Factory MakeIntReg(const char* type) {
  return [type](NodeMap* m, const std::string& n) {
    return std::unique_ptr<NodeImpl>(new IntRegNode(m, n, type));
  };
}

Factory MakeRegister(const char* type) {
  return [type](NodeMap* m, const std::string& n) {
    return std::unique_ptr<NodeImpl>(new RegisterNode(m, n, type));
  };
}

const std::vector<std::pair<std::string, Factory>>& Factories() {
  static const std::vector<std::pair<std::string, Factory>> table = {
      {"Node", Make<PlainNode>()},
      {"Category", Make<CategoryNode>()},
      {"Integer", Make<IntegerNode>()},
      {"IntReg", MakeIntReg("IntReg")},
      {"MaskedIntReg", Make<MaskedIntRegNode>()},
      {"IntSwissKnife", Make<IntSwissKnifeNode>()},
      {"IntConverter", Make<IntConverterNode>()},
      {"IntKey", Make<IntKeyNode>()},
      {"AdvFeatureLock", MakeIntReg("AdvFeatureLock")},
      {"SmartFeature", MakeIntReg("SmartFeature")},
      {"Boolean", Make<BooleanNode>()},
      {"Command", Make<CommandNode>()},
      {"Enumeration", Make<EnumerationNode>()},
      {"Float", Make<FloatNode>()},
      {"FloatReg", Make<FloatRegNode>()},
      {"SwissKnife", Make<SwissKnifeNode>()},
      {"Converter", Make<ConverterNode>()},
      {"String", Make<StringNode>()},
      {"StringReg", Make<StringRegNode>()},
      {"TextDesc", Make<TextDescNode>()},
      {"Register", MakeRegister("Register")},
      {"ConfRom", MakeRegister("ConfRom")},
      {"Port", Make<PortNode>()},
      {"EnumEntry",  // schema 1.0: entries stand alone and enumerations point to them
       [](NodeMap* m, const std::string& n) {
         return std::unique_ptr<NodeImpl>(new EnumEntryNode(m, n, n));
       }},
  };
  return table;
}

const Factory* FindFactory(const std::string& type) {
  for (const auto& entry : Factories())
    if (entry.first == type) return &entry.second;
  return nullptr;
}

bool IsRegisterFamily(const std::string& type) {
  return type == "Register" || type == "IntReg" || type == "MaskedIntReg" ||
         type == "FloatReg" || type == "StringReg" || type == "StructReg" ||
         type == "AdvFeatureLock" || type == "SmartFeature" || type == "ConfRom";
}

class Loader {
 public:
  explicit Loader(NodeMap& map) : map_(map) {}

  void LoadChildren(const pugi::xml_node& root) {
    // Groups nest; an explicit stack keeps hostile nesting off the call stack.
    std::vector<pugi::xml_node> stack;
    for (pugi::xml_node c = root.last_child(); c; c = c.previous_sibling())
      if (c.type() == pugi::node_element) stack.push_back(c);
    while (!stack.empty()) {
      pugi::xml_node n = stack.back();
      stack.pop_back();
      const std::string type = LocalName(n);
      if (type == "Group") {
        for (pugi::xml_node c = n.last_child(); c; c = c.previous_sibling())
          if (c.type() == pugi::node_element) stack.push_back(c);
      } else if (type == "StructReg") {
        LoadStructReg(n);
      } else {
        LoadNode(n, type);
      }
    }
  }

 private:
  static std::string NameOf(const pugi::xml_node& n, const std::string& type) {
    const std::string name = n.attribute("Name").value();
    if (name.empty())
      throw RUNTIME_EXCEPTION("Element '%s' (offset %lld) has no Name attribute", type.c_str(),
                              static_cast<long long>(n.offset_debug()));
    return name;
  }

  std::unique_ptr<NodeImpl> Create(const pugi::xml_node& n, const std::string& type,
                                   const std::string& name) {
    const Factory* f = FindFactory(type);
    if (!f) return nullptr;
    std::unique_ptr<NodeImpl> node = (*f)(&map_, name);
    if (std::strcmp(n.attribute("NameSpace").value(), "Standard") == 0)
      node->SetNameSpace(Standard);
    return node;
  }

  void LoadNode(const pugi::xml_node& n, const std::string& type) {
    if (!FindFactory(type)) return;  // comments, unknown vendor elements
    const std::string name = NameOf(n, type);
    std::unique_ptr<NodeImpl> node = Create(n, type, name);
    int knife = 0;
    for (pugi::xml_node c = n.first_child(); c; c = c.next_sibling()) {
      if (c.type() != pugi::node_element) continue;
      const std::string child = LocalName(c);
      if (type == "Enumeration" && child == "EnumEntry") {
        LoadEnumEntry(c, static_cast<EnumerationNode&>(*node));
      } else if (IsRegisterFamily(type) && child == "IntSwissKnife") {
        node->Parse(XmlElem{"pAddress", LoadEmbeddedKnife(c, name, knife++), {}});
      } else if (type == "ConfRom" && (child == "TextDesc" || child == "IntKey")) {
        LoadRomKey(c, child, name);
      } else {
        node->Parse(MakeElem(c));
      }
    }
    map_.AddNode(std::move(node));
  }

  void LoadEnumEntry(const pugi::xml_node& n, EnumerationNode& owner) {
    const std::string entryName = NameOf(n, "EnumEntry");
    const std::string nodeName = "EnumEntry_" + owner.Name() + "_" + entryName;
    std::unique_ptr<NodeImpl> entry(new EnumEntryNode(&map_, nodeName, entryName));
    if (std::strcmp(n.attribute("NameSpace").value(), "Standard") == 0)
      entry->SetNameSpace(Standard);
    for (pugi::xml_node c = n.first_child(); c; c = c.next_sibling())
      if (c.type() == pugi::node_element) entry->Parse(MakeElem(c));
    owner.AddEntry(nodeName);
    map_.AddNode(std::move(entry));
  }

  std::string LoadEmbeddedKnife(const pugi::xml_node& n, const std::string& owner, int index) {
    std::string name = n.attribute("Name").value();
    if (name.empty()) name = "_" + owner + "_Address_" + std::to_string(index);
    std::unique_ptr<NodeImpl> knife(new IntSwissKnifeNode(&map_, name));
    for (pugi::xml_node c = n.first_child(); c; c = c.next_sibling())
      if (c.type() == pugi::node_element) knife->Parse(MakeElem(c));
    map_.AddNode(std::move(knife));
    return name;
  }

  void LoadRomKey(const pugi::xml_node& n, const std::string& type, const std::string& rom) {
    const std::string name = NameOf(n, type);
    std::unique_ptr<NodeImpl> key = Create(n, type, name);
    key->Parse(XmlElem{"p1212Parser", rom, {}});
    for (pugi::xml_node c = n.first_child(); c; c = c.next_sibling())
      if (c.type() == pugi::node_element) key->Parse(MakeElem(c));
    map_.AddNode(std::move(key));
  }

  // Each StructEntry becomes a MaskedIntReg: the StructReg's elements first,
  // then the entry's own, which override them.
  void LoadStructReg(const pugi::xml_node& n) {
    std::vector<XmlElem> shared;
    for (pugi::xml_node c = n.first_child(); c; c = c.next_sibling()) {
      if (c.type() != pugi::node_element) continue;
      const std::string child = LocalName(c);
      if (child == "StructEntry") continue;
      if (child == "IntSwissKnife") {
        const std::string knife = LoadEmbeddedKnife(c, "StructReg", structKnives_++);
        shared.push_back(XmlElem{"pAddress", knife, {}});
      } else {
        shared.push_back(MakeElem(c));
      }
    }
    for (pugi::xml_node c = n.first_child(); c; c = c.next_sibling()) {
      if (c.type() != pugi::node_element || std::strcmp(LocalName(c), "StructEntry") != 0)
        continue;
      const std::string name = NameOf(c, "StructEntry");
      std::unique_ptr<NodeImpl> node(new MaskedIntRegNode(&map_, name));
      if (std::strcmp(c.attribute("NameSpace").value(), "Standard") == 0)
        node->SetNameSpace(Standard);
      for (const XmlElem& e : shared) node->Parse(e);
      for (pugi::xml_node k = c.first_child(); k; k = k.next_sibling())
        if (k.type() == pugi::node_element) node->Parse(MakeElem(k));
      map_.AddNode(std::move(node));
    }
  }

  NodeMap& map_;
  int structKnives_ = 0;
};

uint16_t VersionPart(const pugi::xml_node& root, const char* attr) {
  int64_t v = 0;
  if (!TryParseInt(root.attribute(attr).value(), v)) return 0;
  return static_cast<uint16_t>(v);
}

}  // namespace

void NodeMap::LoadText(const char* data, size_t size) {
  AutoLock guard(lock_);
  if (!nodes_.empty())
    throw RUNTIME_EXCEPTION("Device '%s' : a description is already loaded", deviceName_.c_str());
  if (!data || size == 0) throw RUNTIME_EXCEPTION("The description is empty");
  pugi::xml_document doc;
  const pugi::xml_parse_result result =
      doc.load_buffer(data, size, pugi::parse_default, pugi::encoding_auto);
  if (!result)
    throw RUNTIME_EXCEPTION("The description is not well-formed XML: %s (offset %lld)",
                            result.description(), static_cast<long long>(result.offset));
  pugi::xml_node root = doc.document_element();
  if (!root || std::strcmp(LocalName(root), "RegisterDescription") != 0)
    throw RUNTIME_EXCEPTION("The description's root element is not 'RegisterDescription'");
  info_.modelName = root.attribute("ModelName").value();
  info_.vendorName = root.attribute("VendorName").value();
  info_.toolTip = root.attribute("ToolTip").value();
  if (!root.attribute("StandardNameSpace").empty())
    info_.standardNameSpace = root.attribute("StandardNameSpace").value();
  info_.productGuid = root.attribute("ProductGuid").value();
  info_.versionGuid = root.attribute("VersionGuid").value();
  info_.schema = Version_t{VersionPart(root, "SchemaMajorVersion"),
                           VersionPart(root, "SchemaMinorVersion"),
                           VersionPart(root, "SchemaSubMinorVersion")};
  info_.device = Version_t{VersionPart(root, "MajorVersion"), VersionPart(root, "MinorVersion"),
                           VersionPart(root, "SubMinorVersion")};
  try {
    Loader(*this).LoadChildren(root);
    Link();
  } catch (...) {
    byName_.clear();
    nodes_.clear();
    throw;
  }
}

}  // namespace impl
}  // namespace GenApi
