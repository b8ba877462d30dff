// Export macro of the GenApi shared library. Every interface and exported class
// carries it so that its type information is shared across shared libraries
// (dynamic_cast and catch work between the library and its users).
#pragma once

#if defined(_WIN32)
#if defined(GENAPI_EXPORTS)
#define GENAPI_DECL __declspec(dllexport)
#else
#define GENAPI_DECL __declspec(dllimport)
#endif
#else
#define GENAPI_DECL __attribute__((visibility("default")))
#endif

#define GENAPI_DECL_ABSTRACT GENAPI_DECL

#ifndef GENAPI_NAMESPACE
#define GENAPI_NAMESPACE GenApi
#endif
