// A node of the node map: names, presentation, access, links and callbacks.
#pragma once

#include <GenApi/Container.h>
#include <GenApi/IBase.h>

namespace GenApi {

struct INodeMap;
class CNodeCallback;

struct GENAPI_DECL INode : virtual public IBase {
  virtual GenICam::gcstring GetName(bool FullQualified = false) const = 0;
  virtual ENameSpace GetNameSpace() const = 0;
  virtual EVisibility GetVisibility() const = 0;
  virtual void InvalidateNode() = 0;
  virtual bool IsCachable() const = 0;
  virtual EYesNo IsAccessModeCacheable() const = 0;
  virtual ECachingMode GetCachingMode() const = 0;
  virtual int64_t GetPollingTime() const = 0;
  virtual GenICam::gcstring GetToolTip() const = 0;
  virtual GenICam::gcstring GetDescription() const = 0;
  virtual GenICam::gcstring GetDisplayName() const = 0;
  virtual GenICam::gcstring GetDeviceName() const = 0;
  virtual void GetChildren(NodeList_t& Children, ELinkType LinkType = ctReadingChildren) const = 0;
  virtual void GetParents(NodeList_t& Parents) const = 0;
  virtual CallbackHandleType RegisterCallback(CNodeCallback* pCallback) = 0;
  virtual bool DeregisterCallback(CallbackHandleType hCallback) = 0;
  virtual INodeMap* GetNodeMap() const = 0;
  virtual GenICam::gcstring GetEventID() const = 0;
  virtual bool IsStreamable() const = 0;
  virtual void GetPropertyNames(GenICam::gcstring_vector& PropertyNames) const = 0;
  virtual bool GetProperty(const GenICam::gcstring& PropertyName, GenICam::gcstring& ValueStr,
                           GenICam::gcstring& AttributeStr) = 0;
  virtual void ImposeAccessMode(EAccessMode ImposedAccessMode) = 0;
  virtual void ImposeVisibility(EVisibility ImposedVisibility) = 0;
  virtual INode* GetAlias() const = 0;
  virtual INode* GetCastAlias() const = 0;
  virtual GenICam::gcstring GetDocuURL() const = 0;
  virtual bool IsDeprecated() const = 0;
  virtual EInterfaceType GetPrincipalInterfaceType() const = 0;
  virtual bool IsFeature() const = 0;
  ~INode() override;
};

}  // namespace GenApi
