// A serial port a client registers with CCLPort: the ISerial operations plus opening, closing
// and turning a Camera Link status into an exception.
#ifndef CLPROTOCOL_ISERIALADAPTER_H
#define CLPROTOCOL_ISERIALADAPTER_H

#include <CLProtocol/ISerial.h>

#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif

namespace CLProtocol {

struct CLPROTOCOL_DECL ISerialAdapter : public ISerial {
  // Opens the port.
  virtual CLINT32 SerialInit(void) = 0;
  // Closes the port.
  virtual void SerialClose(void) = 0;
  // Throws a GenICam exception when ErrorCode is an error.
  virtual void CheckError(CLINT32 ErrorCode) = 0;
};

}  // namespace CLProtocol

#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

#endif  // CLPROTOCOL_ISERIALADAPTER_H
