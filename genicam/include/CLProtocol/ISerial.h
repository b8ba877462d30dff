// The serial link a CLProtocol driver talks through: four operations with the semantics of the
// Camera Link serial functions. Deliberately without a destructor or any further slot, so the
// table layout stays the same for every client and driver.
#ifndef CLPROTOCOL_ISERIAL_H
#define CLPROTOCOL_ISERIAL_H

#include <CLProtocol/CLProtocol.h>

#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif

class CLPROTOCOL_DECL ISerial {
 public:
  // Reads exactly *bufferSize bytes or fails (nothing copied) after serialTimeOut milliseconds.
  virtual CLINT32 CLPROTOCOL clSerialRead(CLINT8* buffer, CLUINT32* bufferSize,
                                          CLUINT32 serialTimeOut) = 0;
  // Writes *bufferSize bytes; on return *bufferSize holds the bytes sent.
  virtual CLINT32 CLPROTOCOL clSerialWrite(CLINT8* buffer, CLUINT32* bufferSize,
                                           CLUINT32 serialTimeOut) = 0;
  // Bit mask of CL_BAUDRATE_* values the port supports.
  virtual CLINT32 CLPROTOCOL clGetSupportedBaudRates(CLUINT32* baudRates) = 0;
  // Switches the port to one CL_BAUDRATE_* value.
  virtual CLINT32 CLPROTOCOL clSetBaudRate(CLUINT32 baudRate) = 0;
};

#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

#endif  // CLPROTOCOL_ISERIAL_H
