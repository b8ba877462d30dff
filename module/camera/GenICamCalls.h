// The one place the module reaches the GenICam libraries from: GCBase for texts
// and exceptions, GenApi for node maps and typed features, CLProtocol for the
// protocol port and serial adapters. Module code includes this header, never the
// libraries' headers directly, so what the module relies on stays in one list.
//
// What the module uses:
//   GCBase     GenICam::gcstring, GenICam::gcstring_vector, GenICam::GenericException
//              (GetDescription, GetSourceFileName, GetSourceLine) and its derived family.
//   GenApi     CNodeMapRef (_LoadXMLFromString, _Connect, _GetNode, _Ptr), IDestroy,
//              IDeviceInfo, INode (names, description, tool tip, visibility, children,
//              InvalidateNode, RegisterCallback), IBase::GetAccessMode, ICategory::GetFeatures,
//              IValue::GetNode, IRegister::GetAddress, IInteger, IFloat, IBoolean, IString,
//              IEnumeration, IEnumEntry, ICommand, Member_NodeCallback, node_vector,
//              value_vector.
//   CLProtocol CCLPort (RegisterSerial, UnRegisterSerials, GetDeviceIDTemplates, ProbeDevice,
//              Connect, GetXML, GetDeviceID; the port as GenApi::IPort and as ISerial),
//              CDeviceID (FromString and the field accessors), ISerial, ISerialAdapter.
#pragma once

#include <CLProtocol/CLPort.h>
#include <CLProtocol/DeviceID.h>
#include <CLProtocol/ISerialAdapter.h>
#include <GenApi/GenApi.h>
#include <GenICam.h>

namespace vq {

// Run-time interface query on a node: the node viewed as T, or null.
template <typename T>
T* NodeAs(GenApi::INode* node) {
  return node == nullptr ? nullptr : dynamic_cast<T*>(node);
}

}  // namespace vq
