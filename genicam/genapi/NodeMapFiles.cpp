// Loading descriptions from text, files and ZIP archives; node-map creation.
#include <fstream>
#include <sstream>

#include "NodeMap.h"
#include "ZipReader.h"

namespace GenApi {
namespace impl {

namespace {
std::string ReadWholeFile(const GenICam::gcstring& fileName) {
  std::ifstream in(fileName.c_str(), std::ios::binary);
  if (!in) throw RUNTIME_EXCEPTION("Cannot open the file '%s'", fileName.c_str());
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}
}  // namespace

void NodeMap::LoadXMLFromString(const GenICam::gcstring& xml) {
  LoadText(xml.c_str(), xml.size());
}

void NodeMap::LoadXMLFromFile(const GenICam::gcstring& fileName) {
  const std::string text = ReadWholeFile(fileName);
  LoadText(text.data(), text.size());
}

void NodeMap::LoadXMLFromZIPData(const void* zipData, size_t zipSize) {
  const std::string text = ExtractDescription(zipData, zipSize);
  LoadText(text.data(), text.size());
}

void NodeMap::LoadXMLFromZIPFile(const GenICam::gcstring& zipFileName) {
  const std::string zip = ReadWholeFile(zipFileName);
  LoadXMLFromZIPData(zip.data(), zip.size());
}

}  // namespace impl

INodeMap* _InternalLoadDLL(const GenICam::gcstring& vendor, const GenICam::gcstring& model,
                           const GenICam::gcstring& deviceName) {
  if (!(vendor == "Generic") || !(model == "XMLLoader"))
    throw RUNTIME_EXCEPTION("No node-map loader for vendor '%s', model '%s'", vendor.c_str(),
                            model.c_str());
  return new impl::NodeMap(std::string(deviceName.c_str()));
}

}  // namespace GenApi
