// Port: the node through which registers reach the device.
#pragma once

#include "Node.h"

namespace GenApi {
namespace impl {

class PortNode : public NodeImpl, public virtual IPort {
 public:
  PortNode(NodeMap* map, const char* name) : NodeImpl(map, name, Elem::Port) {}

  bool ParseSpecific(const XmlElem& e) override;
  void CollectLinks(LinkSink& sink) override;
  void Attach(IPort* port) { port_ = port; }
  bool IsAttached() const { return port_ != nullptr; }

  void Read(void* pBuffer, int64_t Address, int64_t Length) override;
  void Write(const void* pBuffer, int64_t Address, int64_t Length) override;
  EAccessMode NaturalAccessMode() const override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIPort; }
  bool IsFeature() const override { return false; }

 private:
  void CheckBuffer(const void* buffer, int64_t length, const char* method) const;

  IPort* port_ = nullptr;
  bool swapEndianess_ = false;
  Ref pChunkID_;
};

}  // namespace impl
}  // namespace GenApi
