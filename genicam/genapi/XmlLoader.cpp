// First loading pass: nodes are built straight from pugixml's tree. Groups
// are flattened, StructReg entries become MaskedIntRegs, EnumEntries and
// ConfRom keys become nodes of their own, embedded IntSwissKnifes become
// named knives. Element names are looked up once by id; names are interned;
// texts are copied once into the map's arena, where the nodes live too.
#include <cstring>
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

// The element name without its namespace prefix, in one pass.
std::string_view LocalName(const pugi::xml_node& n) {
  const char* start = n.name();
  const char* p = start;
  for (; *p != '\0'; ++p)
    if (*p == ':') start = p + 1;
  return std::string_view(start, static_cast<size_t>(p - start));
}

bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

std::string_view Trim(std::string_view s) {
  while (!s.empty() && IsSpace(s.front())) s.remove_prefix(1);
  while (!s.empty() && IsSpace(s.back())) s.remove_suffix(1);
  return s;
}

bool IsText(const pugi::xml_node& n) {
  return n.type() == pugi::node_pcdata || n.type() == pugi::node_cdata;
}

// A node for a node element, or null for anything else.
NodeImpl* CreateNode(NodeMap& map, Elem kind, const char* name) {
  Arena& a = map.Memory();
  switch (kind) {
    case Elem::Node:
      return a.New<PlainNode>(&map, name);
    case Elem::Category:
      return a.New<CategoryNode>(&map, name);
    case Elem::Integer:
      return a.New<IntegerNode>(&map, name);
    case Elem::IntReg:
    case Elem::AdvFeatureLock:
    case Elem::SmartFeature:
      return a.New<IntRegNode>(&map, name, kind);
    case Elem::MaskedIntReg:
      return a.New<MaskedIntRegNode>(&map, name);
    case Elem::IntSwissKnife:
      return a.New<IntSwissKnifeNode>(&map, name);
    case Elem::IntConverter:
      return a.New<IntConverterNode>(&map, name);
    case Elem::IntKey:
      return a.New<IntKeyNode>(&map, name);
    case Elem::Boolean:
      return a.New<BooleanNode>(&map, name);
    case Elem::Command:
      return a.New<CommandNode>(&map, name);
    case Elem::Enumeration:
      return a.New<EnumerationNode>(&map, name);
    case Elem::Float:
      return a.New<FloatNode>(&map, name);
    case Elem::FloatReg:
      return a.New<FloatRegNode>(&map, name);
    case Elem::SwissKnife:
      return a.New<SwissKnifeNode>(&map, name);
    case Elem::Converter:
      return a.New<ConverterNode>(&map, name);
    case Elem::String:
      return a.New<StringNode>(&map, name);
    case Elem::StringReg:
      return a.New<StringRegNode>(&map, name);
    case Elem::TextDesc:
      return a.New<TextDescNode>(&map, name);
    case Elem::Register:
    case Elem::ConfRom:
      return a.New<RegisterNode>(&map, name, kind);
    case Elem::Port:
      return a.New<PortNode>(&map, name);
    // Schema 1.0: entries stand alone and enumerations point to them.
    case Elem::EnumEntry:
      return a.New<EnumEntryNode>(&map, name, name);
    default:
      return nullptr;
  }
}

// Elements only GetProperty and the presentation queries read: no node parses them.
bool IsPresentationOnly(Elem id) {
  return id == Elem::ToolTip || id == Elem::Description || id == Elem::DisplayName ||
         id == Elem::DocuURL || id == Elem::EventID || id == Elem::Extension || id == Elem::Unknown;
}

// The elements CreateNode builds: the node kinds from Node to Port.
bool IsNodeElement(Elem kind) { return kind >= Elem::Node && kind <= Elem::Port; }

bool IsRegisterFamily(Elem kind) {
  switch (kind) {
    case Elem::Register:
    case Elem::IntReg:
    case Elem::MaskedIntReg:
    case Elem::FloatReg:
    case Elem::StringReg:
    case Elem::StructReg:
    case Elem::AdvFeatureLock:
    case Elem::SmartFeature:
    case Elem::ConfRom:
      return true;
    default:
      return false;
  }
}

class Loader {
 public:
  explicit Loader(NodeMap& map) : map_(map), arena_(map.Memory()), names_(map.Names()) {}

  void LoadChildren(const pugi::xml_node& root) {
    // Groups nest; an explicit stack keeps hostile nesting off the call stack.
    std::vector<pugi::xml_node> stack;
    PushChildren(root, stack);
    while (!stack.empty()) {
      pugi::xml_node n = stack.back();
      stack.pop_back();
      const Elem kind = ElemOf(LocalName(n));
      if (kind == Elem::Group)
        PushChildren(n, stack);
      else if (kind == Elem::StructReg)
        LoadStructReg(n);
      else
        LoadNode(n, kind);
    }
  }

 private:
  // A node under construction; destroyed again if loading fails before the map takes it.
  class Building {
   public:
    Building(Loader& loader, NodeImpl* node, uint32_t nameId)
        : loader_(loader), node_(node), nameId_(nameId), first_(loader.props_.size()) {}
    ~Building() {
      if (node_ == nullptr) return;
      loader_.props_.resize(first_);
      node_->~NodeImpl();
    }
    Building(const Building&) = delete;
    Building& operator=(const Building&) = delete;

    NodeImpl* operator->() const { return node_; }
    NodeImpl& operator*() const { return *node_; }
    size_t FirstProperty() const { return first_; }

    void Add(const XmlElem& e) {
      loader_.props_.push_back(Property{e.name, e.text});
      if (!IsPresentationOnly(e.id)) node_->Parse(e);
    }

    // Hands the node with its properties to the map.
    void Finish() {
      auto& props = loader_.props_;
      const size_t count = props.size() - first_;
      Property* kept = loader_.arena_.Array<Property>(count);
      if (count != 0) std::memcpy(kept, props.data() + first_, sizeof(Property) * count);
      props.resize(first_);
      node_->SetProperties(Span<Property>(kept, static_cast<uint32_t>(count)));
      NodeImpl* node = node_;
      node_ = nullptr;
      loader_.map_.AddNode(node, nameId_);
    }

   private:
    Loader& loader_;
    NodeImpl* node_;
    uint32_t nameId_;
    size_t first_;
  };

  static void PushChildren(const pugi::xml_node& n, std::vector<pugi::xml_node>& stack) {
    for (pugi::xml_node c = n.last_child(); c; c = c.previous_sibling())
      if (c.type() == pugi::node_element) stack.push_back(c);
  }

  // The Name and NameSpace attributes of a node element, in one pass.
  struct NodeAttributes {
    const char* name = "";
    bool standard = false;
  };

  static NodeAttributes AttributesOf(const pugi::xml_node& n, const char* type) {
    NodeAttributes out;
    for (pugi::xml_attribute a = n.first_attribute(); a; a = a.next_attribute()) {
      const char* attr = a.name();
      if (attr[0] != 'N') continue;
      if (std::strcmp(attr, "Name") == 0)
        out.name = a.value();
      else if (std::strcmp(attr, "NameSpace") == 0)
        out.standard = std::strcmp(a.value(), "Standard") == 0;
    }
    if (*out.name == '\0')
      throw RUNTIME_EXCEPTION("Element '%s' (offset %lld) has no Name attribute", type,
                              static_cast<long long>(n.offset_debug()));
    return out;
  }

  // The trimmed character data of an element.
  std::string_view TextOf(const pugi::xml_node& n) {
    pugi::xml_node c = n.first_child();
    if (!c) return std::string_view();
    if (!c.next_sibling() && IsText(c)) return Trim(c.value());
    scratch_.clear();
    for (; c; c = c.next_sibling())
      if (IsText(c)) scratch_ += c.value();
    return Trim(scratch_);
  }

  // Stores "value\0attribute\0" once; a node's Description that repeats its
  // ToolTip (or the reverse) shares the stored text.
  const char* StoreText(std::string_view value, const char* attribute, Elem id, size_t first) {
    const std::string_view attr(attribute);
    if (attr.empty() && (id == Elem::Description || id == Elem::ToolTip)) {
      const char* other = ElemName(id == Elem::ToolTip ? Elem::Description : Elem::ToolTip);
      for (size_t i = first; i < props_.size(); ++i) {
        const char* v = props_[i].value;
        if (props_[i].name == other && std::strncmp(v, value.data(), value.size()) == 0 &&
            v[value.size()] == '\0' && v[value.size() + 1] == '\0')
          return v;
      }
    }
    char* out = static_cast<char*>(arena_.Allocate(value.size() + attr.size() + 2, 1));
    if (!value.empty()) std::memcpy(out, value.data(), value.size());
    out[value.size()] = '\0';
    if (!attr.empty()) std::memcpy(out + value.size() + 1, attr.data(), attr.size());
    out[value.size() + 1 + attr.size()] = '\0';
    return out;
  }

  XmlElem MakeElem(const pugi::xml_node& n, Elem id, size_t first) {
    XmlElem e;
    e.id = id;
    e.name = id != Elem::Unknown ? ElemName(id) : names_.Text(names_.Intern(LocalName(n)));
    const pugi::xml_attribute a = n.first_attribute();
    const std::string_view text = TextOf(n);
    e.text = StoreText(text, a.value(), id, first);
    e.size = static_cast<uint32_t>(text.size());
    if (a) {
      e.attrName = a.name();
      e.attr = e.text + text.size() + 1;
    }
    e.xml = n.internal_object();
    e.arena = &arena_;
    return e;
  }

  // An element the loader makes up (a knife or ROM reference).
  XmlElem Synthesised(Elem id, const char* text) {
    XmlElem e;
    e.id = id;
    e.name = ElemName(id);
    e.text = StoreText(text, "", id, props_.size());
    e.size = static_cast<uint32_t>(std::strlen(text));
    return e;
  }

  void LoadNode(const pugi::xml_node& n, Elem kind) {
    if (!IsNodeElement(kind)) return;  // comments, unknown vendor elements
    const NodeAttributes attributes = AttributesOf(n, ElemName(kind));
    const uint32_t nameId = names_.Intern(attributes.name);
    Building node(*this, CreateNode(map_, kind, names_.Text(nameId)), nameId);
    if (attributes.standard) node->SetNameSpace(Standard);
    const char* name = node->Name();
    int knife = 0;
    for (pugi::xml_node c = n.first_child(); c; c = c.next_sibling()) {
      if (c.type() != pugi::node_element) continue;
      const Elem child = ElemOf(LocalName(c));
      if (kind == Elem::Enumeration && child == Elem::EnumEntry) {
        LoadEnumEntry(c, static_cast<EnumerationNode&>(*node));
      } else if (child == Elem::IntSwissKnife && IsRegisterFamily(kind)) {
        node.Add(Synthesised(Elem::pAddress, LoadEmbeddedKnife(c, name, knife++)));
      } else if (kind == Elem::ConfRom && (child == Elem::TextDesc || child == Elem::IntKey)) {
        LoadRomKey(c, child, name);
      } else {
        node.Add(MakeElem(c, child, node.FirstProperty()));
      }
    }
    node.Finish();
  }

  void LoadEnumEntry(const pugi::xml_node& n, EnumerationNode& owner) {
    const NodeAttributes attributes = AttributesOf(n, "EnumEntry");
    scratch_.assign("EnumEntry_").append(owner.Name()).append(1, '_').append(attributes.name);
    const uint32_t nameId = names_.Intern(scratch_);
    Building entry(
        *this, arena_.New<EnumEntryNode>(&map_, names_.Text(nameId), arena_.Copy(attributes.name)),
        nameId);
    if (attributes.standard) entry->SetNameSpace(Standard);
    for (pugi::xml_node c = n.first_child(); c; c = c.next_sibling())
      if (c.type() == pugi::node_element)
        entry.Add(MakeElem(c, ElemOf(LocalName(c)), entry.FirstProperty()));
    owner.AddEntry(nameId);
    entry.Finish();
  }

  const char* LoadEmbeddedKnife(const pugi::xml_node& n, const char* owner, int index) {
    std::string name = n.attribute("Name").value();
    if (name.empty()) name = std::string("_") + owner + "_Address_" + std::to_string(index);
    const uint32_t nameId = names_.Intern(name);
    Building knife(*this, arena_.New<IntSwissKnifeNode>(&map_, names_.Text(nameId)), nameId);
    for (pugi::xml_node c = n.first_child(); c; c = c.next_sibling())
      if (c.type() == pugi::node_element)
        knife.Add(MakeElem(c, ElemOf(LocalName(c)), knife.FirstProperty()));
    knife.Finish();
    return names_.Text(nameId);
  }

  void LoadRomKey(const pugi::xml_node& n, Elem kind, const char* rom) {
    const NodeAttributes attributes = AttributesOf(n, ElemName(kind));
    const uint32_t nameId = names_.Intern(attributes.name);
    Building key(*this, CreateNode(map_, kind, names_.Text(nameId)), nameId);
    if (attributes.standard) key->SetNameSpace(Standard);
    key.Add(Synthesised(Elem::p1212Parser, rom));
    for (pugi::xml_node c = n.first_child(); c; c = c.next_sibling())
      if (c.type() == pugi::node_element)
        key.Add(MakeElem(c, ElemOf(LocalName(c)), key.FirstProperty()));
    key.Finish();
  }

  // Each StructEntry becomes a MaskedIntReg: the StructReg's elements first,
  // then the entry's own, which override them. The shared texts are stored once.
  void LoadStructReg(const pugi::xml_node& n) {
    std::vector<XmlElem> shared;
    for (pugi::xml_node c = n.first_child(); c; c = c.next_sibling()) {
      if (c.type() != pugi::node_element) continue;
      const Elem child = ElemOf(LocalName(c));
      if (child == Elem::StructEntry) continue;
      if (child == Elem::IntSwissKnife)
        shared.push_back(
            Synthesised(Elem::pAddress, LoadEmbeddedKnife(c, "StructReg", structKnives_++)));
      else
        shared.push_back(MakeElem(c, child, props_.size()));
    }
    for (pugi::xml_node c = n.first_child(); c; c = c.next_sibling()) {
      if (c.type() != pugi::node_element || ElemOf(LocalName(c)) != Elem::StructEntry) continue;
      const NodeAttributes attributes = AttributesOf(c, "StructEntry");
      const uint32_t nameId = names_.Intern(attributes.name);
      Building entry(*this, arena_.New<MaskedIntRegNode>(&map_, names_.Text(nameId)), nameId);
      if (attributes.standard) entry->SetNameSpace(Standard);
      for (const XmlElem& e : shared) entry.Add(e);
      for (pugi::xml_node k = c.first_child(); k; k = k.next_sibling())
        if (k.type() == pugi::node_element)
          entry.Add(MakeElem(k, ElemOf(LocalName(k)), entry.FirstProperty()));
      entry.Finish();
    }
  }

  NodeMap& map_;
  Arena& arena_;
  NameTable& names_;
  std::vector<Property> props_;  // properties of the nodes being built, innermost last
  std::string scratch_;
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
  if (!root || LocalName(root) != "RegisterDescription")
    throw RUNTIME_EXCEPTION("The description's root element is not 'RegisterDescription'");
  info_.modelName = root.attribute("ModelName").value();
  info_.vendorName = root.attribute("VendorName").value();
  info_.toolTip = root.attribute("ToolTip").value();
  if (!root.attribute("StandardNameSpace").empty())
    info_.standardNameSpace = root.attribute("StandardNameSpace").value();
  info_.productGuid = root.attribute("ProductGuid").value();
  info_.versionGuid = root.attribute("VersionGuid").value();
  info_.schema =
      Version_t{VersionPart(root, "SchemaMajorVersion"), VersionPart(root, "SchemaMinorVersion"),
                VersionPart(root, "SchemaSubMinorVersion")};
  info_.device = Version_t{VersionPart(root, "MajorVersion"), VersionPart(root, "MinorVersion"),
                           VersionPart(root, "SubMinorVersion")};
  try {
    names_.Reserve(size / 256);  // descriptions hold about one name per 300-500 bytes
    Loader(*this).LoadChildren(root);
    Link();
    names_.Shrink();
  } catch (...) {
    Clear();
    throw;
  }
}

}  // namespace impl
}  // namespace GenApi
