// CNodeMapRef: owner of one node map created from a description.
#pragma once

#include <cstddef>

#include <GenApi/IDestroy.h>
#include <GenApi/INodeMapDyn.h>

namespace GenApi {

// Creates an empty node map; the only known loader is Vendor "Generic", Model "XMLLoader".
GENAPI_DECL INodeMap* _InternalLoadDLL(const GenICam::gcstring& Vendor,
                                       const GenICam::gcstring& Model,
                                       const GenICam::gcstring& DeviceName);

inline INodeMapDyn* CastToINodeMapDyn(INodeMap* pNodeMap) {
  INodeMapDyn* p = dynamic_cast<INodeMapDyn*>(pNodeMap);
  if (!p) throw LOGICAL_ERROR_EXCEPTION("Unexpected type in dynamic cast");
  return p;
}

inline IDestroy* CastToIDestroy(INodeMap* pNodeMap) {
  IDestroy* p = dynamic_cast<IDestroy*>(pNodeMap);
  if (!p) throw LOGICAL_ERROR_EXCEPTION("Unexpected type in dynamic cast");
  return p;
}

// Parameters of the generic loader: no camera-specific members to bind.
class CGeneric_XMLLoaderParams {
 protected:
  virtual void _Initialize(INodeMap*) {}

 public:
  virtual ~CGeneric_XMLLoaderParams() = default;
  static GenICam::gcstring _GetVendorName() { return "Generic"; }
  static GenICam::gcstring _GetModelName() { return "XMLLoader"; }
};

template <class TCameraParams>
class CNodeMapRefT : public TCameraParams {
 public:
  explicit CNodeMapRefT(const GenICam::gcstring& DeviceName = "Device")
      : _Ptr(nullptr), _Loaded(false), _DeviceName(DeviceName) {}
  ~CNodeMapRefT() override { _Destroy(); }
  CNodeMapRefT(const CNodeMapRefT&) = delete;
  CNodeMapRefT& operator=(const CNodeMapRefT&) = delete;

  void _Destroy() {
    if (_Ptr) CastToIDestroy(_Ptr)->Destroy();
    _Ptr = nullptr;
    _Loaded = false;
  }

  void _LoadDLL() {
    if (_Loaded) throw RUNTIME_EXCEPTION("DLL already loaded");
    _Ptr = _InternalLoadDLL(TCameraParams::_GetVendorName(), TCameraParams::_GetModelName(),
                            _DeviceName);
    _Loaded = true;
  }

  void _LoadXMLFromFile(const GenICam::gcstring& FileName) {
    _LoadDLL();
    CastToINodeMapDyn(_Ptr)->LoadXMLFromFile(FileName);
    this->_Initialize(_Ptr);
  }
  void _LoadXMLFromString(const GenICam::gcstring& XMLData) {
    _LoadDLL();
    CastToINodeMapDyn(_Ptr)->LoadXMLFromString(XMLData);
    this->_Initialize(_Ptr);
  }
  void _LoadXMLFromZIPFile(const GenICam::gcstring& ZipFileName) {
    _LoadDLL();
    CastToINodeMapDyn(_Ptr)->LoadXMLFromZIPFile(ZipFileName);
    this->_Initialize(_Ptr);
  }
  void _LoadXMLFromZIPData(const void* zipData, size_t zipSize) {
    _LoadDLL();
    CastToINodeMapDyn(_Ptr)->LoadXMLFromZIPData(zipData, zipSize);
    this->_Initialize(_Ptr);
  }

  void _GetSupportedSchemaVersions(GenICam::gcstring_vector& SchemaVersions) const {
    CastToINodeMapDyn(Checked())->GetSupportedSchemaVersions(SchemaVersions);
  }
  GenICam::gcstring _GetDeviceName() const { return Checked()->GetDeviceName(); }
  void _Poll(int64_t ElapsedTime) { Checked()->Poll(ElapsedTime); }
  void _GetNodes(NodeList_t& Nodes) const { Checked()->GetNodes(Nodes); }
  INode* _GetNode(const GenICam::gcstring& key) const { return Checked()->GetNode(key); }
  void _InvalidateNodes() const { Checked()->InvalidateNodes(); }
  bool _Connect(IPort* pPort, const GenICam::gcstring& PortName) const {
    return Checked()->Connect(pPort, PortName);
  }
  bool _Connect(IPort* pPort) const { return Checked()->Connect(pPort); }

  INodeMap* _Ptr;

 private:
  INodeMap* Checked() const {
    if (!_Ptr) throw ACCESS_EXCEPTION("Feature not present (reference not valid)");
    return _Ptr;
  }
  bool _Loaded;
  GenICam::gcstring _DeviceName;
};

class CNodeMapRef : public CNodeMapRefT<CGeneric_XMLLoaderParams> {
 public:
  explicit CNodeMapRef(const GenICam::gcstring& DeviceName = "Device")
      : CNodeMapRefT<CGeneric_XMLLoaderParams>(DeviceName) {}
};

}  // namespace GenApi
