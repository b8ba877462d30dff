// Nodes by element kind.
#pragma once

#include "XmlElem.h"

namespace GenApi {
namespace impl {

class NodeImpl;
class NodeMap;

// A node of the kind of a node element, named name, built in the map's
// arena; null for any other element.
NodeImpl* CreateNode(NodeMap& map, Elem kind, const char* name);

}  // namespace impl
}  // namespace GenApi
