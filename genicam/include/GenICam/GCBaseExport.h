// Export attribute of the GCBase shared library.
#ifndef GENICAM_GCBASEEXPORT_H
#define GENICAM_GCBASEEXPORT_H

#if defined(_WIN32)
#if defined(GCBASE_EXPORTS)
#define GCBASE_API __declspec(dllexport)
#else
#define GCBASE_API __declspec(dllimport)
#endif
#else
#define GCBASE_API __attribute__((visibility("default")))
#endif

// Lets the compiler check printf-style arguments of the exception macros.
#if defined(__GNUC__) || defined(__clang__)
#define GCBASE_PRINTF_FORMAT(fmtIndex, firstArg) __attribute__((format(printf, fmtIndex, firstArg)))
#else
#define GCBASE_PRINTF_FORMAT(fmtIndex, firstArg)
#endif

#endif  // GENICAM_GCBASEEXPORT_H
