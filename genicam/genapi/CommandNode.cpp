// Command node.
#include "CommandNode.h"

#include "NodeMap.h"

namespace GenApi {
namespace impl {

bool CommandNode::ParseSpecific(const XmlElem& e) {
  if (source_.Parse(e, this, map_->Names(), Memory())) return true;
  switch (e.id) {
    case Elem::CommandValue:
      commandValue_ = ParseInt(name_, e);
      hasCommandValue_ = true;
      return true;
    case Elem::pCommandValue: SetRef(pCommandValue_, e); return true;
    default: return false;
  }
}

void CommandNode::CollectLinks(LinkSink& sink) {
  NodeImpl::CollectLinks(sink);
  source_.CollectLinks(this, sink, kPolyInteger);
  sink.Link(this, pCommandValue_, LinkClass::Reading, Elem::pCommandValue, kPolyInteger);
}

void CommandNode::FinishLoad() {
  if (source_.hasValue) value_ = ParseInt(name_, "Value", source_.valueText);
}

int64_t CommandNode::CommandValue() {
  if (!pCommandValue_.node()) return commandValue_;
  if (!IsReadable(pCommandValue_.node()->AccessModeLocked()))
    throw ACCESS_EXCEPTION_NODE(name_, "Execute")(
        "Node '%s' : the command value is not readable", name_);
  return ReadInt(this, pCommandValue_.node(), false);
}

EAccessMode CommandNode::NaturalAccessMode() const {
  EAccessMode mode = const_cast<ValueSource&>(source_).Mode(this);
  if (pCommandValue_.node()) {
    const EAccessMode cv = pCommandValue_.node()->AccessModeLocked();
    if (cv == NI) return NI;
    if (cv == NA) mode = Combine(mode, NA);
  }
  return mode;
}

int64_t CommandNode::GetInt(bool, bool ignoreCache) {
  const char* constant = nullptr;
  NodeImpl* n = source_.Current(this, ignoreCache, &constant);
  return n ? ReadInt(this, n, ignoreCache) : value_;
}

void CommandNode::SetInt(int64_t value, bool verify) {
  if (!source_.WriteInt(this, value, verify)) value_ = value;
}

void CommandNode::Execute(bool verify) {
  map_->RunWrite(this, [&] {
    if (verify) CheckWritable("Execute");
    SetInt(CommandValue(), verify);
    busy_ = source_.pValue.node() != nullptr;
  });
}

bool CommandNode::DoneLocked() {
  const EAccessMode mode = AccessModeLocked();
  if (mode == WO || !source_.pValue.node()) return true;
  if (!IsReadable(mode)) return true;
  return ReadInt(this, source_.pValue.node(), true) != CommandValue();
}

bool CommandNode::IsDone(bool verify) {
  bool done = true;
  bool finished = false;
  {
    AutoLock guard(map_->GetLock());
    if (verify && AccessModeLocked() == NI)
      throw ACCESS_EXCEPTION_NODE(name_, "IsDone")("Node is not implemented.");
    done = DoneLocked();
    finished = done && busy_;
    if (done) busy_ = false;
  }
  // A command seen finishing changes what its target reads back.
  if (finished && source_.pValue.node()) source_.pValue.node()->InvalidateNode();
  return done;
}

GenICam::gcstring CommandNode::ToString(bool, bool) { return IsDone(false) ? "0" : "1"; }

void CommandNode::FromString(const GenICam::gcstring& valueStr, bool verify) {
  const std::string s(valueStr.c_str());
  if (s == "1" || s == "true" || s == "True" || s == "TRUE") {
    Execute(verify);
    return;
  }
  throw INVALID_ARGUMENT_EXCEPTION_NODE(name_, "FromString")(
      "Node '%s' : cannot execute with the value '%s'", name_, valueStr.c_str());
}

}  // namespace impl
}  // namespace GenApi
