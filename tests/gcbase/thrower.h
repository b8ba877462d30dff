// Test library that throws GenICam exceptions from another shared object.
#ifndef VQ_TESTS_GCBASE_THROWER_H
#define VQ_TESTS_GCBASE_THROWER_H

#include <GenICam.h>

#define GCBASE_TEST_API __attribute__((visibility("default")))

// Throws the exception named by `type` (e.g. "TimeoutException") with `text`
// as its description and ThrowerLine() as its source line.
GCBASE_TEST_API void ThrowFromLibrary(const char* type, const char* text);
GCBASE_TEST_API unsigned int ThrowerLine();
// Returns a gcstring and a gcstring_vector built inside the library.
GCBASE_TEST_API GenICam::gcstring JoinInLibrary(const GenICam::gcstring_vector& parts);

#endif  // VQ_TESTS_GCBASE_THROWER_H
