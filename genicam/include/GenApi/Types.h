// Enumerations and small value types shared by every GenApi interface.
#pragma once

#include <cstdint>
#include <vector>

#include <GenApi/GenApiDll.h>

namespace GenApi {

enum EAccessMode {
  NI = 0,
  NA = 1,
  WO = 2,
  RO = 3,
  RW = 4,
  _UndefinedAccesMode = 5,
  _CycleDetectAccesMode = 6
};

enum EVisibility { Beginner = 0, Expert = 1, Guru = 2, Invisible = 3, _UndefinedVisibility = 99 };

enum ECachingMode { NoCache = 0, WriteThrough = 1, WriteAround = 2, _UndefinedCachingMode = 3 };

enum ERepresentation {
  Linear = 0,
  Logarithmic = 1,
  Boolean = 2,
  PureNumber = 3,
  HexNumber = 4,
  IPV4Address = 5,
  MACAddress = 6,
  _UndefinedRepresentation = 7
};

enum EEndianess { BigEndian = 0, LittleEndian = 1, _UndefinedEndian = 2 };

enum ESign { Signed = 0, Unsigned = 1, _UndefinedSign = 2 };

enum ENameSpace { Custom = 0, Standard = 1, _UndefinedNameSpace = 2 };

enum EStandardNameSpace { None = 0, GEV = 1, IIDC = 2, CL = 3, USB = 4, _UndefinedStandardNameSpace = 5 };

enum EYesNo { No = 0, Yes = 1, _UndefinedYesNo = 2 };

enum ESlope { Increasing = 0, Decreasing = 1, Varying = 2, Automatic = 3, _UndefinedESlope = 4 };

enum EDisplayNotation { fnAutomatic = 0, fnFixed = 1, fnScientific = 2, _UndefinedEDisplayNotation = 3 };

enum EInterfaceType {
  intfIValue = 0,
  intfIBase = 1,
  intfIInteger = 2,
  intfIBoolean = 3,
  intfICommand = 4,
  intfIFloat = 5,
  intfIString = 6,
  intfIRegister = 7,
  intfICategory = 8,
  intfIEnumeration = 9,
  intfIEnumEntry = 10,
  intfIPort = 11
};

enum ELinkType {
  ctParentNodes = 0,
  ctReadingChildren = 1,
  ctWritingChildren = 2,
  ctInvalidatingChildren = 3,
  ctDependingNodes = 4,
  ctTerminalNodes = 5
};

enum EIncMode { noIncrement = 0, fixedIncrement = 1, listIncrement = 2 };

enum EInputDirection { idFrom = 0, idTo = 1, idNone = 2 };

enum EXMLValidation {
  xvLoad = 0x00000001L,
  xvCycles = 0x00000002L,
  xvSFNC = 0x00000004L,
  xvDefault = 0x00000000L,
  xvAll = 0xffffffffL
};

enum EGenApiSchemaVersion { v1_0 = 1, v1_1 = 2, _Undefined = -1 };

// Callback phases: inside the node map's lock, or after it was released.
enum ECallbackType { cbPostInsideLock = 1, cbPostOutsideLock = 2 };

typedef intptr_t CallbackHandleType;

struct Version_t {
  uint16_t Major;
  uint16_t Minor;
  uint16_t SubMinor;
};

typedef std::vector<int64_t> int64_autovector_t;
typedef std::vector<double> double_autovector_t;

// Visibility test: a feature is shown at level MaxVisiblity if its own level is not higher.
inline bool IsVisible(EVisibility Visibility, EVisibility MaxVisiblity) {
  return Visibility <= MaxVisiblity;
}

// Combination rules: the more restrictive of two settings wins.
GENAPI_DECL EAccessMode Combine(EAccessMode Peter, EAccessMode Paul);
GENAPI_DECL EVisibility Combine(EVisibility Peter, EVisibility Paul);
GENAPI_DECL ECachingMode Combine(ECachingMode Peter, ECachingMode Paul);

}  // namespace GenApi
