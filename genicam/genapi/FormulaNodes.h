// SwissKnife, IntSwissKnife, Converter and IntConverter.
#pragma once

#include "FloatBase.h"
#include "FormulaSupport.h"
#include "IntegerBase.h"

namespace GenApi {
namespace impl {

class IntSwissKnifeNode : public IntegerBase {
 public:
  IntSwissKnifeNode(NodeMap* map, const char* name)
      : IntegerBase(map, name, Elem::IntSwissKnife) {}
  bool ParseSpecific(const XmlElem& e) override;
  void CollectLinks(LinkSink& sink) override;
  void FinishLoad() override;
  int64_t GetInt(bool verify, bool ignoreCache) override;
  EAccessMode NaturalAccessMode() const override { return vars_.Mode(); }

 private:
  FormulaVariables vars_;
  const char* text_ = nullptr;
  FormulaProgram program_;
};

class SwissKnifeNode : public FloatBase {
 public:
  SwissKnifeNode(NodeMap* map, const char* name) : FloatBase(map, name, Elem::SwissKnife) {}
  bool ParseSpecific(const XmlElem& e) override;
  void CollectLinks(LinkSink& sink) override;
  void FinishLoad() override;
  double GetFloat(bool verify, bool ignoreCache) override;
  void SetFloat(double, bool) override { ThrowNotWritable("SetValue"); }
  EAccessMode NaturalAccessMode() const override { return vars_.Mode(); }

 private:
  FormulaVariables vars_;
  const char* text_ = nullptr;
  FormulaProgram program_;
};

// Shared part of the converters: pValue, FormulaTo (FROM) and FormulaFrom (TO).
struct ConverterParts {
  bool Parse(const XmlElem& e, NodeImpl* owner);
  void CollectLinks(NodeImpl* owner, LinkSink& sink, uint16_t kinds);
  void Compile(const NodeImpl* owner, bool integer);
  EAccessMode Mode() const;

  FormulaVariables vars;
  const char* toText = nullptr;
  const char* fromText = nullptr;
  FormulaProgram to, from;
  Ref pValue;
  ESlope slope = Automatic;
};

class ConverterNode : public FloatBase {
 public:
  ConverterNode(NodeMap* map, const char* name) : FloatBase(map, name, Elem::Converter) {}
  bool ParseSpecific(const XmlElem& e) override;
  void CollectLinks(LinkSink& sink) override;
  void FinishLoad() override { parts_.Compile(this, false); }
  double GetFloat(bool verify, bool ignoreCache) override;
  void SetFloat(double value, bool verify) override;
  double FloatMin() override;
  double FloatMax() override;
  std::string Unit() override;
  EAccessMode NaturalAccessMode() const override { return parts_.Mode(); }

 private:
  void Bounds(double& lo, double& hi);
  ConverterParts parts_;
};

class IntConverterNode : public IntegerBase {
 public:
  IntConverterNode(NodeMap* map, const char* name)
      : IntegerBase(map, name, Elem::IntConverter) {}
  bool ParseSpecific(const XmlElem& e) override;
  void CollectLinks(LinkSink& sink) override;
  void FinishLoad() override { parts_.Compile(this, true); }
  int64_t GetInt(bool verify, bool ignoreCache) override;
  void SetInt(int64_t value, bool verify) override;
  int64_t IntMin() override;
  int64_t IntMax() override;
  std::string Unit() override;
  EAccessMode NaturalAccessMode() const override { return parts_.Mode(); }

 private:
  void Bounds(int64_t& lo, int64_t& hi);
  ConverterParts parts_;
};

}  // namespace impl
}  // namespace GenApi
