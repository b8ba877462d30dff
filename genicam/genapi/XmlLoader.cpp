// First loading pass: nodes are built straight from pugixml's tree. Groups
// are flattened, StructReg entries become MaskedIntRegs, EnumEntries and
// ConfRom keys become nodes of their own, embedded IntSwissKnifes become
// named knives. Element names are looked up once by id; names are interned;
// texts are copied once into the map's arena, where the nodes live too.
#include <cstring>
#include <pugixml.hpp>

#include "ElemTable.h"
#include "EnumerationNodes.h"
#include "FormulaNodes.h"
#include "IntRegNodes.h"
#include "NodeFactory.h"
#include "NodeMap.h"
#include "XmlParseOptions.h"

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

// The text without the white space around it.
std::string_view Trim(const char* text) {
  while (IsSpace(*text)) ++text;
  size_t size = std::strlen(text);
  while (size != 0 && IsSpace(text[size - 1])) --size;
  return std::string_view(text, size);
}

// pugixml keeps the tree node a handle stands for in a protected member. A
// member pointer named through a derived class reads it, so telling an empty
// handle costs no call into the library.
class NodeHandle : public pugi::xml_node {
 public:
  static bool IsNull(const pugi::xml_node& n) { return n.*(&NodeHandle::_root) == nullptr; }
};

// The parser keeps no comments, processing instructions, declarations or
// doctypes, so a node under an element is an element, which always has a
// name, or character data, which has none: its name alone tells them apart.
static_assert((kXmlParseOptions & (pugi::parse_comments | pugi::parse_pi |
                                   pugi::parse_declaration | pugi::parse_doctype)) == 0,
              "nodes other than elements and character data would pass for text");

// Calls f(element, id) for each element under n, in order.
template <class F>
void ForEachElement(const pugi::xml_node& n, F&& f) {
  for (pugi::xml_node c = n.first_child(); !NodeHandle::IsNull(c); c = c.next_sibling()) {
    const char* name = c.name();
    if (*name != '\0') f(c, ElemOfQualified(name));
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
  ~Loader() {
    for (const Planned& p : plan_)
      if (p.node != nullptr) p.node->~NodeImpl();  // built ahead, never reached
  }
  Loader(const Loader&) = delete;
  Loader& operator=(const Loader&) = delete;

  // The elements under the root, groups flattened, are listed a few dozen
  // at a time and the nodes of the node elements among them built in one go;
  // then each is loaded in the same order. Building nodes back to back keeps
  // the tables their constructors read (VTTs, vtables of the virtual bases)
  // in the cache.
  void LoadChildren(const pugi::xml_node& root) {
    // Groups nest; an explicit stack of where to go on after each open group
    // keeps hostile nesting off the call stack. Siblings are read forwards,
    // in the order they lie in memory.
    std::vector<pugi::xml_node> resume;
    pugi::xml_node n = root.first_child();
    for (;;) {
      if (NodeHandle::IsNull(n)) {
        if (resume.empty()) break;
        n = resume.back();
        resume.pop_back();
        continue;
      }
      const char* name = n.name();
      if (*name != '\0') {
        const Elem kind = ElemOfQualified(name);
        if (kind == Elem::Group) {
          resume.push_back(n.next_sibling());
          n = n.first_child();
          continue;
        }
        Plan(n, kind, plan_.emplace_back());
        if (plan_.size() == kPlanned) LoadPlanned();
      }
      n = n.next_sibling();
    }
    LoadPlanned();
  }

 private:
  // Nodes built ahead at a time: enough to keep the constructors' tables in
  // the cache, few enough that the nodes are still there when they load.
  static constexpr size_t kPlanned = 64;

  void LoadPlanned() {
    for (Planned& p : plan_) {
      if (p.kind == Elem::StructReg)
        LoadStructReg(p.element);
      else
        LoadNode(p);
    }
    plan_.clear();
  }

  // An element under the root and, for a node element with a Name, its node
  // built ahead of loading.
  struct Planned {
    pugi::xml_node element;
    Elem kind = Elem::Unknown;
    NodeImpl* node = nullptr;  // owned by the plan until loading takes it
    uint32_t nameId = 0;
    bool standard = false;
  };

  // Fills p in place (a Planned copied whole stalls on its freshly stored parts).
  void Plan(const pugi::xml_node& n, Elem kind, Planned& p) {
    p.element = n;
    p.kind = kind;
    if (!IsNodeElement(kind)) return;
    // A missing Name is reported when the element is loaded, in document order.
    const NodeAttributes attributes = ReadAttributes(n);
    if (*attributes.name == '\0') return;
    p.nameId = names_.Intern(attributes.name);
    p.standard = attributes.standard;
    p.node = CreateNode(map_, kind, names_.Text(p.nameId));
  }

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
      loader_.Record(e.name, e.text);
      if (!IsPresentationOnly(e.id)) node_->Parse(e);
    }

    // Adds a child element straight from the tree. The property is recorded
    // while its texts are at hand, not read back from the element made.
    void AddChild(const pugi::xml_node& c, Elem id) {
      XmlElem e;
      loader_.MakeElem(c, id, first_, e, true);
      if (!IsPresentationOnly(id)) node_->Parse(e);
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

  // The Name and NameSpace attributes of a node element, in one pass.
  struct NodeAttributes {
    const char* name = "";
    bool standard = false;
  };

  // Whether the C string text is literal, compared inline.
  template <size_t N>
  static bool Equals(const char* text, const char (&literal)[N]) {
    for (size_t i = 0; i < N; ++i)  // the terminating NULs compare too
      if (text[i] != literal[i]) return false;
    return true;
  }

  static NodeAttributes AttributesOf(const pugi::xml_node& n, const char* type) {
    const NodeAttributes out = ReadAttributes(n);
    if (*out.name == '\0')
      throw RUNTIME_EXCEPTION("Element '%s' (offset %lld) has no Name attribute", type,
                              static_cast<long long>(n.offset_debug()));
    return out;
  }

  static NodeAttributes ReadAttributes(const pugi::xml_node& n) {
    NodeAttributes out;
    for (pugi::xml_attribute a = n.first_attribute(); a; a = a.next_attribute()) {
      const char* attr = a.name();
      if (attr[0] != 'N') continue;
      if (Equals(attr, "Name"))
        out.name = a.value();
      else if (Equals(attr, "NameSpace"))
        out.standard = Equals(a.value(), "Standard");
    }
    return out;
  }

  // The trimmed character data of an element. The parser keeps the first
  // run of character data in the element itself (parse_embed_pcdata), so
  // the usual element with one text has no child at all; any further text
  // (CDATA, text after a comment) follows as child nodes. pugixml's accessors
  // are calls into the library, so each is asked once.
  std::string_view TextOf(const pugi::xml_node& n) {
    const char* embedded = n.value();
    pugi::xml_node c = n.first_child();
    if (NodeHandle::IsNull(c)) return Trim(embedded);
    scratch_.assign(embedded);
    for (; !NodeHandle::IsNull(c); c = c.next_sibling())
      if (*c.name() == '\0') scratch_ += c.value();  // character data, not an element
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
    CopyBytes(out, value.data(), value.size());
    out[value.size()] = '\0';
    CopyBytes(out + value.size() + 1, attr.data(), attr.size());
    out[value.size() + 1 + attr.size()] = '\0';
    return out;
  }

  XmlElem MakeElem(const pugi::xml_node& n, Elem id, size_t first) {
    XmlElem e;
    MakeElem(n, id, first, e, false);
    return e;
  }

  // Fills e from the element n; with record, also records it as a property.
  void MakeElem(const pugi::xml_node& n, Elem id, size_t first, XmlElem& e, bool record) {
    const char* name =
        id != Elem::Unknown ? ElemName(id) : names_.Text(names_.Intern(LocalName(n)));
    const pugi::xml_attribute a = n.first_attribute();
    const char* attrName = a.name();  // "" when there is no attribute
    const std::string_view text = TextOf(n);
    const uint32_t target = IsPointerElement(id) ? names_.Intern(text) : XmlElem::kNoTarget;
    const char* stored;
    if (*attrName == '\0') {
      // A pointer's text is the interned name it gives.
      stored = target != XmlElem::kNoTarget ? names_.Text(target) : StoreText(text, "", id, first);
    } else {
      stored = StoreText(text, a.value(), id, first);
      e.attrName = attrName;
      e.attr = stored + text.size() + 1;
      e.xml = n.internal_object();  // for attributes after the first
    }
    if (record) Record(name, stored);
    e.id = id;
    e.name = name;
    e.text = stored;
    e.size = static_cast<uint32_t>(text.size());
    e.target = target;
    e.arena = &arena_;
  }

  // Appends a property field by field: building the pair on the stack and
  // copying it as one 16-byte value made the compiler reload two fresh 8-byte
  // stores at once, which the processor cannot forward.
  void Record(const char* name, const char* value) {
    Property& p = props_.emplace_back();
    p.name = name;
    p.value = value;
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

  void LoadNode(Planned& p) {
    const pugi::xml_node& n = p.element;
    const Elem kind = p.kind;
    if (!IsNodeElement(kind)) return;  // comments, unknown vendor elements
    if (p.node == nullptr) AttributesOf(n, ElemName(kind));  // throws: no Name
    Building node(*this, p.node, p.nameId);
    p.node = nullptr;
    if (p.standard) node->SetNameSpace(Standard);
    const char* name = node->Name();
    int knife = 0;
    ForEachElement(n, [&](const pugi::xml_node& c, Elem child) {
      if (kind == Elem::Enumeration && child == Elem::EnumEntry) {
        LoadEnumEntry(c, static_cast<EnumerationNode&>(*node));
      } else if (child == Elem::IntSwissKnife && IsRegisterFamily(kind)) {
        node.Add(Synthesised(Elem::pAddress, LoadEmbeddedKnife(c, name, knife++)));
      } else if (kind == Elem::ConfRom && (child == Elem::TextDesc || child == Elem::IntKey)) {
        LoadRomKey(c, child, name);
      } else {
        node.AddChild(c, child);
      }
    });
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
    ForEachElement(n, [&](const pugi::xml_node& c, Elem id) { entry.AddChild(c, id); });
    owner.AddEntry(nameId);
    entry.Finish();
  }

  const char* LoadEmbeddedKnife(const pugi::xml_node& n, const char* owner, int index) {
    std::string name = n.attribute("Name").value();
    if (name.empty()) name = std::string("_") + owner + "_Address_" + std::to_string(index);
    const uint32_t nameId = names_.Intern(name);
    Building knife(*this, arena_.New<IntSwissKnifeNode>(&map_, names_.Text(nameId)), nameId);
    ForEachElement(n, [&](const pugi::xml_node& c, Elem id) { knife.AddChild(c, id); });
    knife.Finish();
    return names_.Text(nameId);
  }

  void LoadRomKey(const pugi::xml_node& n, Elem kind, const char* rom) {
    const NodeAttributes attributes = AttributesOf(n, ElemName(kind));
    const uint32_t nameId = names_.Intern(attributes.name);
    Building key(*this, CreateNode(map_, kind, names_.Text(nameId)), nameId);
    if (attributes.standard) key->SetNameSpace(Standard);
    key.Add(Synthesised(Elem::p1212Parser, rom));
    ForEachElement(n, [&](const pugi::xml_node& c, Elem id) { key.AddChild(c, id); });
    key.Finish();
  }

  // Each StructEntry becomes a MaskedIntReg: the StructReg's elements first,
  // then the entry's own, which override them. The shared texts are stored once.
  void LoadStructReg(const pugi::xml_node& n) {
    std::vector<XmlElem> shared;
    ForEachElement(n, [&](const pugi::xml_node& c, Elem child) {
      if (child == Elem::StructEntry) return;
      if (child == Elem::IntSwissKnife)
        shared.push_back(
            Synthesised(Elem::pAddress, LoadEmbeddedKnife(c, "StructReg", structKnives_++)));
      else
        shared.push_back(MakeElem(c, child, props_.size()));
    });
    ForEachElement(n, [&](const pugi::xml_node& c, Elem child) {
      if (child != Elem::StructEntry) return;
      const NodeAttributes attributes = AttributesOf(c, "StructEntry");
      const uint32_t nameId = names_.Intern(attributes.name);
      Building entry(*this, arena_.New<MaskedIntRegNode>(&map_, names_.Text(nameId)), nameId);
      if (attributes.standard) entry->SetNameSpace(Standard);
      for (const XmlElem& e : shared) entry.Add(e);
      ForEachElement(c, [&](const pugi::xml_node& k, Elem id) { entry.AddChild(k, id); });
      entry.Finish();
    });
  }

  NodeMap& map_;
  Arena& arena_;
  NameTable& names_;
  std::vector<Property> props_;  // properties of the nodes being built, innermost last
  std::string scratch_;
  int structKnives_ = 0;
  std::vector<Planned> plan_;
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
      doc.load_buffer(data, size, kXmlParseOptions, pugi::encoding_auto);
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
