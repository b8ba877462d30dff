// NodeMap: owns the nodes of one description, its lock, the ports and the
// write transactions that collect invalidations and callbacks.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include <GenApi/GenApi.h>

#include "Arena.h"
#include "NameTable.h"
#include "Node.h"

namespace GenApi {
namespace impl {

class FormulaCache;

struct DeviceInfoData {
  std::string modelName, vendorName, toolTip, standardNameSpace = "None";
  std::string productGuid, versionGuid;
  Version_t schema{1, 1, 0};
  Version_t device{0, 0, 0};
};

class NodeMap : public INodeMapDyn, public IDestroy, public IDeviceInfo {
 public:
  explicit NodeMap(const std::string& deviceName);
  ~NodeMap() override;

  // ---- INodeMap ----
  void GetNodes(NodeList_t& Nodes) const override;
  INode* GetNode(const GenICam::gcstring& Name) const override;
  void InvalidateNodes() const override;
  bool Connect(IPort* pPort, const GenICam::gcstring& PortName) const override;
  bool Connect(IPort* pPort) const override;
  GenICam::gcstring GetDeviceName() override { return deviceName_.c_str(); }
  void Poll(int64_t ElapsedTime) override;
  CLock& GetLock() const override { return lock_; }
  uint64_t GetNumNodes() const override { return nodes_.size(); }

  // ---- INodeMapDyn ----
  void ClearAllNodes() override;
  void LoadXMLFromFile(const GenICam::gcstring& FileName) override;
  void LoadXMLFromString(const GenICam::gcstring& XMLData) override;
  void LoadXMLFromZIPFile(const GenICam::gcstring& ZipFileName) override;
  void LoadXMLFromZIPData(const void* zipData, size_t zipSize) override;
  void GetSupportedSchemaVersions(GenICam::gcstring_vector& SchemaVersions) const override;

  // ---- IDestroy ----
  void Destroy() override;

  // ---- IDeviceInfo ----
  GenICam::gcstring GetModelName() override { return info_.modelName.c_str(); }
  GenICam::gcstring GetVendorName() override { return info_.vendorName.c_str(); }
  GenICam::gcstring GetToolTip() override { return info_.toolTip.c_str(); }
  GenICam::gcstring GetStandardNameSpace() override { return info_.standardNameSpace.c_str(); }
  void GetGenApiVersion(Version_t& Version, uint16_t& Build) override;
  void GetSchemaVersion(Version_t& Version) override { Version = info_.schema; }
  void GetDeviceVersion(Version_t& Version) override { Version = info_.device; }
  GenICam::gcstring GetProductGuid() override { return info_.productGuid.c_str(); }
  GenICam::gcstring GetVersionGuid() override { return info_.versionGuid.c_str(); }

  // ---- used by the loader ----
  // Takes a node built in Memory(); its name must not be taken yet.
  void AddNode(NodeImpl* node, uint32_t nameId);
  NodeImpl* Find(std::string_view name) const { return names_.FindNode(name); }
  DeviceInfoData& Info() { return info_; }
  void LoadText(const char* data, size_t size);
  void Link();  // second pass: resolve pointers and compute dependencies
  Arena& Memory() { return arena_; }
  NameTable& Names() { return names_; }
  // Shared compilations while a description loads; null otherwise.
  FormulaCache* GetFormulaCache() const { return formulaCache_; }
  void SetFormulaCache(FormulaCache* cache) { formulaCache_ = cache; }

  // ---- used by nodes ----
  // Runs a write: collects every node written, then invalidates dependents
  // and fires callbacks (inside the lock, then outside).
  template <class F>
  void RunWrite(NodeImpl* top, F&& write);
  void NoteWritten(NodeImpl* node);
  // Invalidates a node and its dependents and fires their callbacks.
  void InvalidateFrom(NodeImpl* node);
  // Recursion guard for pointer chains.
  void EnterCall(const NodeImpl* node);
  void LeaveCall() { --callDepth_; }

 private:
  void BeginWrite();
  void EndWrite(bool success, std::vector<NodeImpl*>& toFire);
  static void Fire(const std::vector<NodeImpl*>& nodes, ECallbackType phase);
  void Clear();

  std::string deviceName_;
  mutable CLock lock_;
  // Declared before the nodes: the nodes live in the arena and their names in the table.
  Arena arena_;
  NameTable names_{arena_};
  std::vector<NodeImpl*> nodes_;
  FormulaCache* formulaCache_ = nullptr;
  DeviceInfoData info_;
  int writeDepth_ = 0;
  std::vector<NodeImpl*> written_;
  int callDepth_ = 0;
};

template <class F>
void NodeMap::RunWrite(NodeImpl* top, F&& write) {
  std::vector<NodeImpl*> toFire;
  {
    AutoLock guard(lock_);
    BeginWrite();
    NoteWritten(top);
    try {
      write();
    } catch (...) {
      EndWrite(false, toFire);
      throw;
    }
    EndWrite(true, toFire);
    Fire(toFire, cbPostInsideLock);
  }
  Fire(toFire, cbPostOutsideLock);
}

// RAII form of EnterCall/LeaveCall.
class CallGuard {
 public:
  explicit CallGuard(const NodeImpl* node) : map_(node->Map()) { map_->EnterCall(node); }
  ~CallGuard() { map_->LeaveCall(); }
  CallGuard(const CallGuard&) = delete;
  CallGuard& operator=(const CallGuard&) = delete;

 private:
  NodeMap* map_;
};

}  // namespace impl
}  // namespace GenApi
