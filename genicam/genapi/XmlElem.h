// The elements a description may contain, each known by a small id, one
// element of a node as the loader hands it over, and the parsers for the
// element texts.
#pragma once

#include <GenApi/Types.h>

#include <cstdint>
#include <string_view>

#include "NameTable.h"

namespace pugi {
struct xml_node_struct;
}

namespace GenApi {
namespace impl {

class Arena;

// Every element name the engine understands: node kinds first, then the
// elements inside nodes.
#define VQ_GENAPI_NODE_ELEMENTS(X)                                                                 \
  X(Node)                                                                                          \
  X(Category) X(Integer) X(IntReg) X(MaskedIntReg) X(IntSwissKnife) X(IntConverter) X(IntKey)      \
      X(AdvFeatureLock) X(SmartFeature) X(Boolean) X(Command) X(Enumeration) X(EnumEntry) X(Float) \
          X(FloatReg) X(SwissKnife) X(Converter) X(String) X(StringReg) X(TextDesc) X(Register)    \
              X(ConfRom) X(Port) X(Group) X(StructReg) X(StructEntry)

#define VQ_GENAPI_CHILD_ELEMENTS(X)                                                               \
  X(Extension)                                                                                    \
  X(ToolTip) X(Description) X(DisplayName) X(Visibility) X(DocuURL) X(IsDeprecated) X(EventID)    \
      X(pIsImplemented) X(pIsAvailable) X(pIsLocked) X(pBlockPolling) X(ImposedAccessMode)        \
          X(pError) X(pAlias) X(pCastAlias) X(pInvalidator) X(pSelected) X(Streamable)            \
              X(PollingTime) X(Value) X(pValue) X(pValueCopy) X(pIndex) X(ValueIndexed)           \
                  X(pValueIndexed) X(ValueDefault) X(pValueDefault) X(Min) X(Max) X(Inc) X(pMin)  \
                      X(pMax) X(pInc) X(Unit) X(Representation) X(ValidValueSet) X(Address)       \
                          X(pAddress) X(Length) X(pLength) X(AccessMode) X(pPort) X(Cachable)     \
                              X(Endianess) X(Sign) X(Bit) X(LSB) X(MSB) X(FeatureID) X(Timeout)   \
                                  X(OnValue) X(OffValue) X(CommandValue) X(pCommandValue)         \
                                      X(pEnumEntry) X(NumericValue) X(Symbolic) X(IsSelfClearing) \
                                          X(pVariable) X(Constant) X(Expression) X(Formula)       \
                                              X(FormulaTo) X(FormulaFrom) X(Slope) X(IsLinear)    \
                                                  X(DisplayNotation) X(DisplayPrecision)          \
                                                      X(SwapEndianess) X(ChunkID) X(pChunkID)     \
                                                          X(CacheChunkData) X(p1212Parser) X(Key) \
                                                              X(pFeature) X(pOffset)

enum class Elem : uint8_t {
  Unknown,
#define VQ_GENAPI_ELEM_ENUM(name) name,
  VQ_GENAPI_NODE_ELEMENTS(VQ_GENAPI_ELEM_ENUM) VQ_GENAPI_CHILD_ELEMENTS(VQ_GENAPI_ELEM_ENUM)
#undef VQ_GENAPI_ELEM_ENUM
      Count
};

inline constexpr const char* kElemNames[] = {
    "",
#define VQ_GENAPI_ELEM_NAME(name) #name,
    VQ_GENAPI_NODE_ELEMENTS(VQ_GENAPI_ELEM_NAME) VQ_GENAPI_CHILD_ELEMENTS(VQ_GENAPI_ELEM_NAME)
#undef VQ_GENAPI_ELEM_NAME
};
static_assert(sizeof(kElemNames) / sizeof(kElemNames[0]) == size_t(Elem::Count),
              "one name per element id");

inline const char* ElemName(Elem id) {
  return kElemNames[size_t(id) < size_t(Elem::Count) ? size_t(id) : 0];
}

// Pointer elements (pValue, pInvalidator, p1212Parser, ...) name a node in their text.
constexpr bool IsPointerElement(Elem id) {
  const char* name = kElemNames[size_t(id)];
  if (name[0] != 'p') return false;  // "" for Unknown: nothing past the NUL is read
  return (name[1] >= 'A' && name[1] <= 'Z') || (name[1] >= '0' && name[1] <= '9');
}

// One child element of a node. Texts stay valid as long as the node map.
struct XmlElem {
  Elem id = Elem::Unknown;
  const char* name = "";  // local name, namespace prefix removed
  const char* text = "";  // trimmed text content
  uint32_t size = 0;      // its length
  const char* attr = "";  // value of the first attribute, "" when there is none
  const char* attrName = "";
  pugi::xml_node_struct* xml = nullptr;  // the element while loading, for further attributes
  Arena* arena = nullptr;
  uint32_t target = kNoTarget;  // pointer elements: the interned name of the node named

  static constexpr uint32_t kNoTarget = UINT32_MAX;
  std::string_view Text() const { return std::string_view(text, size); }
  // The interned name a pointer element's text gives.
  uint32_t Target(NameTable& names) const {
    return target != kNoTarget ? target : names.Intern(Text());
  }
  // Whether the text is exactly this.
  bool Is(std::string_view value) const {
    return size == value.size() && SameBytes(text, value.data(), value.size());
  }
  // The attribute's value, or null when absent.
  const char* Attr(const char* attributeName) const;
};

// Text parsers; each throws a PropertyException naming node and element on bad text.
int64_t ParseInt(const char* node, const char* element, std::string_view text);
// Most numbers in a description are short decimals or 0x-prefixed hex
// without sign; those are read here, everything else by ParseInt above.
inline int64_t ParseInt(const char* node, const XmlElem& e) {
  const char* p = e.text;
  uint32_t n = e.size;
  uint64_t value = 0;
  if (n >= 3 && p[0] == '0' && (p[1] == 'x' || p[1] == 'X') && n <= 17) {
    for (uint32_t i = 2; i < n; ++i) {
      const unsigned char c = static_cast<unsigned char>(p[i]);
      const unsigned d = c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10;
      if (c < '0' || d > 15 || (c > '9' && (c | 0x20) < 'a'))
        return ParseInt(node, e.name, e.Text());
      value = value << 4 | d;
    }
    return static_cast<int64_t>(value);
  }
  if (n == 0 || n > 18) return ParseInt(node, e.name, e.Text());
  for (uint32_t i = 0; i < n; ++i) {
    const unsigned d = static_cast<unsigned char>(p[i]) - unsigned('0');
    if (d > 9) return ParseInt(node, e.name, e.Text());
    value = value * 10 + d;
  }
  return static_cast<int64_t>(value);
}
double ParseDouble(const char* node, const XmlElem& e);
double ParseDouble(const char* node, const char* element, std::string_view text);
bool ParseYesNo(const XmlElem& e);
EAccessMode ParseAccessMode(const XmlElem& e, EAccessMode fallback);
EVisibility ParseVisibility(const XmlElem& e);
ECachingMode ParseCachingMode(const XmlElem& e);
ERepresentation ParseRepresentation(const XmlElem& e);
EDisplayNotation ParseDisplayNotation(const XmlElem& e);
ESlope ParseSlope(const XmlElem& e);

// Text helpers without node context; return false when the text is not a number.
bool TryParseInt(std::string_view text, int64_t& value);
bool TryParseDouble(std::string_view text, double& value);

}  // namespace impl
}  // namespace GenApi
