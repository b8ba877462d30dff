// CCLPort: the node map's port onto a Camera Link camera, and the serial link handed to the
// camera's protocol driver. Static members manage serial ports registered by the client and
// the drivers found in the driver locations.
#ifndef CLPROTOCOL_CLPORT_H
#define CLPROTOCOL_CLPORT_H

#include <CLProtocol/CLProtocol.h>
#include <CLProtocol/ISerial.h>
#include <CLProtocol/ISerialAdapter.h>
#include <GenApi/IPort.h>
#include <GenICam.h>

#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif

namespace CLProtocol {

// Driver status of a write the device executed but answered with a warning: CCLPort::Write
// does not throw for it and keeps the text for GetLastWriteWarning.
constexpr CLINT32 kWrittenWithWarning = -30100;

class CLPROTOCOL_DECL CCLPort : public GenApi::IPort, public ISerial {
 public:
  CCLPort();
  ~CCLPort() override;
  CCLPort(const CCLPort&) = delete;
  CCLPort& operator=(const CCLPort&) = delete;

  // ---- ports registered by the client ----
  // Registers a serial port under "Local#<PortName>" (returned). The caller keeps ownership;
  // the adapter must live until it is unregistered.
  static GenICam::gcstring RegisterSerial(const GenICam::gcstring& PortName,
                                          ISerialAdapter* pSerialAdapter);
  static void UnRegisterSerial(const GenICam::gcstring& PortID);
  static void UnRegisterSerials();
  static void GetPortIDs(GenICam::gcstring_vector& PortIDs);
  static ISerialAdapter* GetPort(const GenICam::gcstring& PortID);

  // ---- drivers ----
  // Every driver's short templates, each prefixed with "DriverDirectory#DriverFileName#".
  // Malformed templates are left out (GetDiagnostics says which driver offered them).
  static void GetDeviceIDTemplates(GenICam::gcstring_vector& DeviceIDTemplates);
  // Problems the last GetDeviceIDTemplates met, one sentence each naming the driver.
  static void GetDiagnostics(GenICam::gcstring_vector& Messages);
  // Identifies the device on a port with the template's driver; returns its full device ID.
  // Throws when the driver fails or finds no matching device. The connection the probe opened
  // is kept for a Connect with the returned ID, which then needs no second identification.
  static GenICam::gcstring ProbeDevice(const GenICam::gcstring& PortID,
                                       const GenICam::gcstring& strDeviceIDTemplate,
                                       const CLUINT32 SerialTimeout = 500);
  // Asks every driver that can to stop running probes.
  static void StopProbing(CLUINT32 toStop);
  // Unregisters every port and closes every loaded driver.
  static void Terminate();

  // ---- connection ----
  void Connect(const GenICam::gcstring& PortID, const GenICam::gcstring& strDeviceID);
  void Disconnect();
  bool IsConnected() const;
  GenICam::gcstring GetDeviceID() const;

  // XML IDs the device and the driver location offer for this device, best first.
  void GetXMLIDs(GenICam::gcstring_vector& XMLIDs);
  // The description text of an XML ID, or of the best one; empty when there is none. With
  // UseMaxBaudrate the download runs at the fastest common rate, restored afterwards.
  // Descriptions are cached in memory per port and on disk ($XDG_CACHE_HOME/vqcam, else
  // ~/.cache/vqcam), keyed by the XML ID and the SHA-1 of the device's manifest entry; a cached
  // description the device still names is returned without a download.
  GenICam::gcstring GetXML(const GenICam::gcstring& XMLID, const bool UseMaxBaudrate = true);
  GenICam::gcstring GetXML(const bool UseMaxBaudrate = true);

  void SetSerialTimeOut(CLUINT32 TimeOut);
  CLUINT32 GetSerialTimeOut() const;
  void SetDeviceBauderate(CLUINT32 BaudRate);
  CLUINT32 GetDeviceBauderate();
  CLUINT32 SupportedBaudrates();
  // Next queued device event; the driver's status code.
  CLINT32 GetEvent(void* buffer, CLUINT32* bufferSize);

  // ---- GenApi::IPort ----
  GenApi::EAccessMode GetAccessMode() const override;
  void Read(void* pBuffer, int64_t Address, int64_t Length) override;
  void Write(const void* pBuffer, int64_t Address, int64_t Length) override;
  // "(Code: -30100) <text>" when the last Write succeeded with a device warning, else empty.
  GenICam::gcstring GetLastWriteWarning() const;

  // ---- ISerial: forwarded to the connected port ----
  CLINT32 CLPROTOCOL clSerialRead(CLINT8* buffer, CLUINT32* bufferSize,
                                  CLUINT32 serialTimeOut) override;
  CLINT32 CLPROTOCOL clSerialWrite(CLINT8* buffer, CLUINT32* bufferSize,
                                   CLUINT32 serialTimeOut) override;
  CLINT32 CLPROTOCOL clGetSupportedBaudRates(CLUINT32* baudRates) override;
  CLINT32 CLPROTOCOL clSetBaudRate(CLUINT32 baudRate) override;

 private:
  struct Impl;
  Impl* m_pImpl;
};

}  // namespace CLProtocol

#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

#endif  // CLPROTOCOL_CLPORT_H
