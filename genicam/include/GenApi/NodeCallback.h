// Callbacks fired when a node changes.
#pragma once

#include <type_traits>

#include <GenApi/INode.h>

namespace GenApi {

class GENAPI_DECL CNodeCallback {
 public:
  CNodeCallback(INode* pNode, ECallbackType CallbackType)
      : m_pNode(pNode), m_CallbackType(CallbackType) {}
  virtual ~CNodeCallback();
  virtual void operator()(ECallbackType CallbackType) const = 0;
  virtual void Destroy() = 0;
  INode* GetNode() { return m_pNode; }

 protected:
  INode* m_pNode;
  ECallbackType m_CallbackType;
};

// Calls a free function or functor taking INode*.
template <class Function>
class Function_NodeCallback : public CNodeCallback {
 public:
  Function_NodeCallback(INode* pNode, const Function& function, ECallbackType CallbackType)
      : CNodeCallback(pNode, CallbackType), m_pFunction(function) {}
  void operator()(ECallbackType CallbackType) const override {
    if (CallbackType != m_CallbackType) return;
    if constexpr (std::is_pointer<Function>::value) {
      if (!m_pFunction) return;
    }
    m_pFunction(m_pNode);
  }
  void Destroy() override { delete this; }

 private:
  const Function m_pFunction;
};

// Calls a member function of a client object taking INode*.
template <class Client, class Member>
class Member_NodeCallback : public CNodeCallback {
 public:
  typedef void (Client::*PMEMBERFUNC)(INode*);
  Member_NodeCallback(INode* pNode, Client& client, Member member, ECallbackType CallbackType)
      : CNodeCallback(pNode, CallbackType), m_Client(client), m_pMemberFunc(member) {}
  void operator()(ECallbackType CallbackType) const override {
    if (m_pMemberFunc && CallbackType == m_CallbackType) (m_Client.*m_pMemberFunc)(m_pNode);
  }
  void Destroy() override { delete this; }

 private:
  Client& m_Client;
  PMEMBERFUNC m_pMemberFunc;
};

template <class Function>
CNodeCallback* make_NodeCallback(INode* node, Function function, ECallbackType CallbackType) {
  return new Function_NodeCallback<Function>(node, function, CallbackType);
}

template <class Client, class Member>
CNodeCallback* make_NodeCallback(INode* node, Client& client, Member member,
                                 ECallbackType CallbackType) {
  return new Member_NodeCallback<Client, Member>(node, client, member, CallbackType);
}

template <class Function>
CallbackHandleType Register(INode* node, Function function,
                            ECallbackType CallbackType = cbPostInsideLock) {
  return node->RegisterCallback(make_NodeCallback(node, function, CallbackType));
}

template <class Client, class Member>
CallbackHandleType Register(INode* node, Client& client, Member member,
                            ECallbackType CallbackType = cbPostInsideLock) {
  return node->RegisterCallback(make_NodeCallback(node, client, member, CallbackType));
}

// Removes a callback by its handle wherever it was registered; false for an unknown handle.
GENAPI_DECL bool Deregister(CallbackHandleType hCallback);

}  // namespace GenApi
