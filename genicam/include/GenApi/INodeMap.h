// The node map: every node of one device description.
#pragma once

#include <GenApi/IPort.h>
#include <GenApi/INode.h>
#include <GenApi/Synch.h>

namespace GenApi {

struct GENAPI_DECL INodeMap {
  virtual void GetNodes(NodeList_t& Nodes) const = 0;
  virtual INode* GetNode(const GenICam::gcstring& Name) const = 0;
  virtual void InvalidateNodes() const = 0;
  virtual bool Connect(IPort* pPort, const GenICam::gcstring& PortName) const = 0;
  virtual bool Connect(IPort* pPort) const = 0;
  virtual GenICam::gcstring GetDeviceName() = 0;
  virtual void Poll(int64_t ElapsedTime) = 0;
  virtual CLock& GetLock() const = 0;
  virtual uint64_t GetNumNodes() const = 0;
  virtual ~INodeMap();
};

}  // namespace GenApi
