// What a CCLPort holds and the steps its members share.
#pragma once

#include <CLProtocol/CLPort.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "DriverLibrary.h"
#include "XmlIdList.h"

namespace CLProtocol {

struct CCLPort::Impl {
  mutable std::recursive_mutex mutex;
  std::shared_ptr<DriverLibrary> driver;
  ISerialAdapter* serial = nullptr;
  std::string portID;
  CLUINT32 cookie = 0;
  std::string deviceID;  // full
  std::string shortDeviceID;
  CLUINT32 timeout = 500;
  std::string lastWriteWarning;

  void RequireConnected(const char* what) const;
  // Manufacturer#Family#Model of the connected device.
  std::string ModelTemplate() const;

  // XML IDs of the driver and of the files in its location that fit the device and whose schema
  // this GenApi reads, best first.
  std::vector<XmlIdEntry> CollectXmlIds();
  // The description of an XML ID (empty: the best); empty when there is none. Served from the
  // description cache when the device's manifest still names the cached file; a download runs
  // at the fastest common rate when `useMaxBaudrate`, the rate restored afterwards.
  std::string Description(const std::string& xmlID, bool useMaxBaudrate);

  CLUINT32 GetParam32(CLP_PARAMS param, const char* what);
  void SetBaudRate(CLUINT32 rate);

 private:
  class RateBoost;
  std::string Download(const std::string& xmlID);
  std::string Sha1Of(const std::string& xmlID);
};

}  // namespace CLProtocol
