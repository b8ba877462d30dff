/* Camera Link protocol driver interface: the C API every CLProtocol driver library exports.
 * Shared by driver libraries (which define the clp* functions) and by CLProtocol::CCLPort (which
 * loads a driver at run time and calls them through function pointers). */
#ifndef CLPROTOCOL_CLPROTOCOL_H
#define CLPROTOCOL_CLPROTOCOL_H

#include <stdarg.h>
#include <stdint.h>

/* ---- Basic types ---------------------------------------------------------------------------- */
#ifndef _CL_hSerRef_DEFINED_
#define _CL_hSerRef_DEFINED_
typedef void* hSerRef;
#endif
#ifndef _CL_INT32_DEFINED_
#define _CL_INT32_DEFINED_
typedef int CLINT32;
#endif
#ifndef _CL_UINT32_DEFINED_
#define _CL_UINT32_DEFINED_
typedef unsigned int CLUINT32;
#endif
#ifndef _CL_INT64_DEFINED_
#define _CL_INT64_DEFINED_
typedef int64_t CLINT64;
#endif
#ifndef _CL_UINT16_DEFINED_
#define _CL_UINT16_DEFINED_
typedef unsigned short UINT16;
#endif
#ifndef _CL_INT8_DEFINED_
#define _CL_INT8_DEFINED_
typedef char CLINT8;
#endif
#ifndef _CL_BOOL8_DEFINED_
#define _CL_BOOL8_DEFINED_
typedef char BOOL8;
#endif

/* Camera Link serial library versions (reported by clGetPortInfo). */
#define CL_DLL_VERSION_NO_VERSION 1
#define CL_DLL_VERSION_1_0 2
#define CL_DLL_VERSION_1_1 3
#define CL_DLL_VERSION_2_0 4
#define CL_DLL_VERSION_2_1 5

/* ---- Linkage, export and calling convention ------------------------------------------------- */
#ifdef __cplusplus
#define USER_EXTERN_C extern "C"
#define USER_EXTERN_C_START extern "C" {
#define USER_EXTERN_C_END }
#else
#define USER_EXTERN_C
#define USER_EXTERN_C_START
#define USER_EXTERN_C_END
#endif

#if defined(_WIN32)
#ifdef CLPROTOCOL_EXPORTS
#define CLPROTOCOLEXPORT USER_EXTERN_C __declspec(dllexport)
#define CLPROTOCOL_DECL __declspec(dllexport)
#else
#define CLPROTOCOLEXPORT USER_EXTERN_C __declspec(dllimport)
#define CLPROTOCOL_DECL __declspec(dllimport)
#endif
#else
#define CLPROTOCOLEXPORT USER_EXTERN_C __attribute__((visibility("default")))
#define CLPROTOCOL_DECL __attribute__((visibility("default")))
#endif

#ifndef CLPROTOCOL
#if defined(_WIN32)
#define CLPROTOCOL __cdecl
#elif defined(__x86_64) || defined(__arm__) || defined(__aarch64__) || defined(VXWORKS)
#define CLPROTOCOL
#else
#define CLPROTOCOL __attribute__((cdecl))
#endif
#endif

/* ---- Camera Link serial status codes -------------------------------------------------------- */
#define CL_ERR_NO_ERR 0
#define CL_ERR_BUFFER_TOO_SMALL -10001
#define CL_ERR_MANU_DOES_NOT_EXIST -10002
#define CL_ERR_PORT_IN_USE -10003
#define CL_ERR_UNABLE_TO_OPEN_PORT -10003
#define CL_ERR_TIMEOUT -10004
#define CL_ERR_INVALID_INDEX -10005
#define CL_ERR_INVALID_REFERENCE -10006
#define CL_ERR_ERROR_NOT_FOUND -10007
#define CL_ERR_BAUD_RATE_NOT_SUPPORTED -10008
#define CL_ERR_OUT_OF_MEMORY -10009
#define CL_ERR_REGISTRY_KEY_NOT_FOUND -10010
#define CL_ERR_INVALID_PTR -10011
#define CL_ERR_IN_USE -10012
#define CL_ERR_UNABLE_TO_LOAD_DLL -10098
#define CL_ERR_FUNCTION_NOT_FOUND -10099

/* ---- CLProtocol status codes ---------------------------------------------------------------- */
#define CL_ERR_PENDING_WRITE 20101 /* positive: the write is still running, not an error */
#define CL_ERR_INVALID_DEVICEID -20100
#define CL_ERR_NO_DEVICE_FOUND -20101
#define CL_ERR_NO_XMLDESCRIPTION_FOUND -20102
#define CL_ERR_INVALID_COOKIE -20103
#define CL_ERR_GET_LAST_ERROR -20104
#define CL_ERR_PARAM_NOT_SUPPORTED -20105
#define CL_ERR_PARAM_READ_ONLY -20106
#define CL_ERR_PARAM_DATA_SIZE -20107
#define CL_ERR_PARAM_DATA_VALUE -20108

/* ---- Baud-rate bits ------------------------------------------------------------------------- */
#define CL_BAUDRATE_9600 0x01u
#define CL_BAUDRATE_19200 0x02u
#define CL_BAUDRATE_38400 0x04u
#define CL_BAUDRATE_57600 0x08u
#define CL_BAUDRATE_115200 0x10u
#define CL_BAUDRATE_230400 0x20u
#define CL_BAUDRATE_460800 0x40u
#define CL_BAUDRATE_921600 0x80u
#define CL_BAUDRATE_AUTOMAX 0x40000000u

/* ---- Parameters and logging ----------------------------------------------------------------- */
/* Positive parameters are library-wide (no cookie); negative ones belong to a connection. */
typedef enum CLP_PARAMS {
  CLP_LOG_LEVEL = 1,
  CLP_LOG_CALLBACK = 2,
  CLP_STOP_PROBE_DEVICE = 3,
  CLP_DEVICE_BAUDERATE = -1,
  CLP_DEVICE_SUPPORTED_BAUDERATES = -2
} CLP_PARAMS;

typedef enum CLP_LOG_LEVEL_VALUE {
  CLP_LOG_FATAL = 0,
  CLP_LOG_ALERT = 100,
  CLP_LOG_CRIT = 200,
  CLP_LOG_ERROR = 300,
  CLP_LOG_WARN = 400,
  CLP_LOG_NOTICE = 500,
  CLP_LOG_INFO = 600,
  CLP_LOG_DEBUG = 700,
  CLP_LOG_NOTSET = 800
} CLP_LOG_LEVEL_VALUE;

typedef void(CLPROTOCOL* clp_logger_t)(CLINT32 level, const char* stringFormat, va_list argptr);

#define CLP_LOG_CALLBACK_ID 0xeb6e1ca9u
USER_EXTERN_C_START
typedef struct clpLogCallback_t {
  CLUINT32 id; /* must be CLP_LOG_CALLBACK_ID */
  clp_logger_t logger;
} clpLogCallback_t;
USER_EXTERN_C_END

/* The serial link handed to a driver. A C++ abstract class (see ISerial.h). */
#ifdef __cplusplus
class ISerial;
#else
typedef struct ISerial ISerial;
#endif

#ifdef __cplusplus
#define CLP_DEFAULT_ARG(value) = value
#else
#define CLP_DEFAULT_ARG(value)
#endif

/* ---- Driver functions (interface version 1.2) ----------------------------------------------- */
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpInitLib(clp_logger_t logger, CLP_LOG_LEVEL_VALUE logLevel);
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpCloseLib(void);
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpGetShortDeviceIDTemplates(CLINT8* pShortDeviceTemplates,
                                                                 CLUINT32* pBufferSize);
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpProbeDevice(ISerial* pSerial,
                                                   const CLINT8* pDeviceIDTemplate,
                                                   CLINT8* pDeviceID, CLUINT32* pBufferSize,
                                                   CLUINT32* pCookie, const CLUINT32 TimeOut);
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpGetXMLIDs(ISerial* pSerial, const CLUINT32 Cookie,
                                                 CLINT8* pXMLIDs, CLUINT32* pBufferSize,
                                                 const CLUINT32 TimeOut);
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpGetXMLDescription(ISerial* pSerial, const CLUINT32 Cookie,
                                                         const CLINT8* pXMLID, CLINT8* pXMLBuffer,
                                                         CLUINT32* pBufferSize,
                                                         const CLUINT32 TimeOut);
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpReadRegister(ISerial* pSerial, const CLUINT32 Cookie,
                                                    const CLINT64 Address, CLINT8* pBuffer,
                                                    const CLINT64 BufferSize,
                                                    const CLUINT32 TimeOut);
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpWriteRegister(ISerial* pSerial, const CLUINT32 Cookie,
                                                     const CLINT64 Address, const CLINT8* pBuffer,
                                                     const CLINT64 BufferSize,
                                                     const CLUINT32 TimeOut);
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpContinueWriteRegister(ISerial* pSerial,
                                                             const CLUINT32 Cookie,
                                                             const BOOL8 ContinueWaiting,
                                                             const CLUINT32 TimeOut);
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpGetErrorText(CLINT32 errorCode, CLINT8* errorText,
                                                    CLUINT32* errorTextSize,
                                                    const CLUINT32 Cookie CLP_DEFAULT_ARG(0));
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpDisconnect(const CLUINT32 Cookie);
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpGetCLProtocolVersion(CLUINT32* pVersionMajor,
                                                            CLUINT32* pVersionMinor);
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpGetParam(ISerial* pSerial, CLP_PARAMS param,
                                                const CLUINT32 Cookie, CLINT8* pBuffer,
                                                const CLINT64 BufferSize, const CLUINT32 TimeOut);
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpSetParam(ISerial* pSerial, CLP_PARAMS param,
                                                const CLUINT32 Cookie, const CLINT8* pBuffer,
                                                const CLINT64 BufferSize, const CLUINT32 TimeOut);
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpIsParamSupported(CLP_PARAMS param);
CLPROTOCOLEXPORT CLINT32 CLPROTOCOL clpGetEventData(const CLUINT32 Cookie, CLINT8* pBuffer,
                                                    CLUINT32* pBufferSize);

#endif /* CLPROTOCOL_CLPROTOCOL_H */
