// Nodes by element kind, built in the node map's arena.
#include "NodeFactory.h"

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

}  // namespace impl
}  // namespace GenApi
