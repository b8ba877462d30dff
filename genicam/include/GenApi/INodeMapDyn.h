// Loading descriptions into a node map.
#pragma once

#include <cstddef>

#include <GenApi/INodeMap.h>

namespace GenApi {

struct GENAPI_DECL INodeMapDyn : virtual public INodeMap {
  virtual void ClearAllNodes() = 0;
  virtual void LoadXMLFromFile(const GenICam::gcstring& FileName) = 0;
  virtual void LoadXMLFromString(const GenICam::gcstring& XMLData) = 0;
  virtual void LoadXMLFromZIPFile(const GenICam::gcstring& ZipFileName) = 0;
  virtual void LoadXMLFromZIPData(const void* zipData, size_t zipSize) = 0;
  virtual void GetSupportedSchemaVersions(GenICam::gcstring_vector& SchemaVersions) const = 0;
  ~INodeMapDyn() override;
};

}  // namespace GenApi
