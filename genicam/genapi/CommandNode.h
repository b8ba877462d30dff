// Command: writes CommandValue to its target; done when the target no longer
// reads back CommandValue.
#pragma once

#include "Node.h"
#include "ValueSource.h"

namespace GenApi {
namespace impl {

class CommandNode : public NodeImpl, public virtual ICommand {
 public:
  CommandNode(NodeMap* map, const char* name) : NodeImpl(map, name, Elem::Command) {}

  bool ParseSpecific(const XmlElem& e) override;
  void CollectLinks(LinkSink& sink) override;
  void FinishLoad() override;

  INode* GetNode() override { return this; }
  GenICam::gcstring ToString(bool Verify = false, bool IgnoreCache = false) override;
  void FromString(const GenICam::gcstring& ValueStr, bool Verify = true) override;
  bool IsValueCacheValid() const override { return false; }
  void Execute(bool Verify = true) override;
  bool IsDone(bool Verify = true) override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfICommand; }

  int64_t GetInt(bool verify, bool ignoreCache) override;
  void SetInt(int64_t value, bool verify) override;
  EAccessMode NaturalAccessMode() const override;
  bool PollActive() override { return busy_; }

 private:
  int64_t CommandValue();
  bool DoneLocked();

  ValueSource source_;
  int64_t value_ = 0;
  int64_t commandValue_ = 1;
  bool hasCommandValue_ = false;
  Ref pCommandValue_;
  bool busy_ = false;
};

}  // namespace impl
}  // namespace GenApi
