// Device IDs and templates of the Camera Link protocol layer:
//   full:  DriverDirectory#DriverFileName#Manufacturer#Family#Model#Version#SerialNumber
//   short: Manufacturer#Family#Model#Version#SerialNumber (the part a driver knows)
// Templates are the same texts cut from the right, keeping at least the manufacturer.
#ifndef CLPROTOCOL_DEVICEID_H
#define CLPROTOCOL_DEVICEID_H

#include <CLProtocol/CLProtocol.h>
#include <GenICam.h>

namespace CLProtocol {

enum EDeviceIDIndex {
  didDriverDirectory = 0,
  didDriverFileName = 1,
  didCameraManufacturer = 2,
  didCameraFamily = 3,
  didCameraModel = 4,
  didCameraVersion = 5,
  didCameraSerialNumber = 6
};

class CLPROTOCOL_DECL CDeviceID {
 public:
  CDeviceID();
  CDeviceID(const CDeviceID& other);
  CDeviceID& operator=(const CDeviceID& other);
  ~CDeviceID();

  // Splits a full ID or template, or a short one (then the driver fields stay empty). Returns
  // false, leaving the object empty, for text that is neither. Tokens are accepted as long as
  // they hold identifier characters; HasIdentifierTokens tells whether they follow the rule.
  bool FromString(const GenICam::gcstring& DeviceID);

  // The full ID (the short one when no driver is named); environment references $(NAME) in
  // the directory are expanded when asked.
  GenICam::gcstring GetDeviceID(bool ReplaceEnvironmentVariables = true) const;
  GenICam::gcstring GetShortDeviceID() const;
  // Directory and file name joined with '/'; empty when the ID names no directory (never a
  // bare file name, which a loader would look up on its search path).
  GenICam::gcstring GetDriverPath(bool ReplaceEnvironmentVariables = true) const;

  GenICam::gcstring GetDriverDirectory(bool ReplaceEnvironmentVariables = true) const;
  GenICam::gcstring GetDriverFileName() const;
  GenICam::gcstring GetCameraManufacturer() const;
  GenICam::gcstring GetCameraFamily() const;
  GenICam::gcstring GetCameraModel() const;
  GenICam::gcstring GetCameraVersion() const;
  GenICam::gcstring GetCameraSerialNumber() const;

  // True when the text was a full ID or template (names a driver).
  bool HasDriver() const;
  // True when every camera token present is a C identifier (not empty, not starting with a
  // digit), the rule device IDs and templates must follow to be probed or connected.
  bool HasIdentifierTokens() const;
  // Number of short tokens present (1 for "Manufacturer" up to 5).
  size_t GetNumShortTokens() const;

  static const char* GetTokenSeparator();

 private:
  GenICam::gcstring Token(EDeviceIDIndex index) const;

  GenICam::gcstring_vector m_DeviceIDTokens;  // always 7 entries once parsed
  size_t m_NumTokens;                          // tokens given, driver fields included
  bool m_HasDriver;
};

// Expands $(NAME) references with the environment (unset names expand to nothing).
CLPROTOCOL_DECL GenICam::gcstring ReplaceEnvironmentVariables(const GenICam::gcstring& text);

}  // namespace CLProtocol

#endif  // CLPROTOCOL_DEVICEID_H
