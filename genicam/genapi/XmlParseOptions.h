// pugixml's options for reading a description: its defaults (CDATA, entity
// references, line ends and white space in attributes normalised), and the
// first run of character data kept in its element rather than in a node of
// its own. The GenApi benchmark parses with the same options.
#pragma once

#include <pugixml.hpp>

namespace GenApi {
namespace impl {

constexpr unsigned int kXmlParseOptions = pugi::parse_default | pugi::parse_embed_pcdata;

}  // namespace impl
}  // namespace GenApi
