// The GenICam exception family and the macros that throw its members.
//
//   throw RUNTIME_EXCEPTION("Node '%s' : %s", name, reason);
//
// Each macro records __FILE__ and __LINE__ and formats its arguments printf-style
// (the compiler checks them; pass gcstring as .c_str()). A text that is not a
// literal goes through "%s". To rebuild an exception at a known origin, construct
// it directly, e.g. RuntimeException(description, file, line), or use
// GENICAM_EXCEPTION_AT(RuntimeException, file, line)("...", ...).
#ifndef GENICAM_GCEXCEPTION_H
#define GENICAM_GCEXCEPTION_H

#include <cstdarg>
#include <exception>
#include <string>

#include "GenICam/GCBaseExport.h"
#include "GenICam/GCString.h"

namespace GenICam {

// what() reads
//   "<description> : <Type> thrown (file '<file>', line <n>)"
// or, when a node is named,
//   "<description> : <Type> thrown in node '<node>' while calling '<node>.<method>()'
//    (file '<file>', line <n>)".
// Null texts are taken as empty.
class GCBASE_API GenericException : public std::exception {
 public:
  GenericException(const char* description, const char* sourceFileName, unsigned int sourceLine);
  GenericException(const char* description, const char* sourceFileName, unsigned int sourceLine,
                   const char* exceptionType);
  GenericException(const char* description, const char* sourceFileName, unsigned int sourceLine,
                   const char* nodeName, const char* callingMethod);
  GenericException(const char* description, const char* sourceFileName, unsigned int sourceLine,
                   const char* nodeName, const char* callingMethod, const char* exceptionType);
  GenericException(const GenericException& other);
  GenericException& operator=(const GenericException& other);
  ~GenericException() noexcept override;

  const char* GetDescription() const noexcept;
  const char* GetSourceFileName() const noexcept;
  unsigned int GetSourceLine() const noexcept;
  const char* GetNodeName() const noexcept;       // empty when no node is named
  const char* GetCallingMethod() const noexcept;  // empty when no node is named
  const char* GetExceptionType() const noexcept;  // e.g. "RuntimeException"
  const char* what() const noexcept override;

 private:
  void ComposeMessage();

  std::string description_;
  std::string sourceFileName_;
  unsigned int sourceLine_;
  std::string nodeName_;
  std::string callingMethod_;
  std::string exceptionType_;
  std::string message_;
};

#define GCBASE_DECLARE_EXCEPTION(Name)                                                  \
  class GCBASE_API Name : public GenericException {                                     \
   public:                                                                              \
    Name(const char* description, const char* sourceFileName, unsigned int sourceLine); \
    Name(const char* description, const char* sourceFileName, unsigned int sourceLine,  \
         const char* nodeName, const char* callingMethod);                              \
    Name(const Name& other);                                                            \
    Name& operator=(const Name& other);                                                 \
    ~Name() noexcept override;                                                          \
  }

GCBASE_DECLARE_EXCEPTION(BadAllocException);
GCBASE_DECLARE_EXCEPTION(InvalidArgumentException);
GCBASE_DECLARE_EXCEPTION(OutOfRangeException);
GCBASE_DECLARE_EXCEPTION(PropertyException);
GCBASE_DECLARE_EXCEPTION(RuntimeException);
GCBASE_DECLARE_EXCEPTION(LogicalErrorException);
GCBASE_DECLARE_EXCEPTION(AccessException);
GCBASE_DECLARE_EXCEPTION(TimeoutException);
GCBASE_DECLARE_EXCEPTION(DynamicCastException);

#undef GCBASE_DECLARE_EXCEPTION

// printf-style formatting into a string of any length. Null format gives "".
GCBASE_API std::string FormatString(const char* format, ...) GCBASE_PRINTF_FORMAT(1, 2);
GCBASE_API std::string FormatStringV(const char* format, va_list arguments);

// Builds an exception of type E at a recorded origin from a printf-style text.
// Used through the *_EXCEPTION macros below.
template <typename E>
class ExceptionReporter {
 public:
  ExceptionReporter(const char* sourceFileName, unsigned int sourceLine)
      : file_(sourceFileName), line_(sourceLine), node_(nullptr), method_(nullptr) {}
  ExceptionReporter(const char* sourceFileName, unsigned int sourceLine, const char* nodeName,
                    const char* callingMethod)
      : file_(sourceFileName), line_(sourceLine), node_(nodeName), method_(callingMethod) {}

  E Report(const char* format, ...) GCBASE_PRINTF_FORMAT(2, 3) {
    va_list arguments;
    va_start(arguments, format);
    std::string description = FormatStringV(format, arguments);
    va_end(arguments);
    return Build(description.c_str());
  }
  E Report() { return Build(""); }

 private:
  E Build(const char* description) const {
    if (node_ != nullptr) return E(description, file_, line_, node_, method_);
    return E(description, file_, line_);
  }

  const char* file_;
  unsigned int line_;
  const char* node_;
  const char* method_;
};

}  // namespace GenICam

#define GENICAM_EXCEPTION_AT(Type, file, line) \
  GenICam::ExceptionReporter<GenICam::Type>((file), (line)).Report

#define GENERIC_EXCEPTION GENICAM_EXCEPTION_AT(GenericException, __FILE__, __LINE__)
#define BAD_ALLOC_EXCEPTION GENICAM_EXCEPTION_AT(BadAllocException, __FILE__, __LINE__)
#define INVALID_ARGUMENT_EXCEPTION \
  GENICAM_EXCEPTION_AT(InvalidArgumentException, __FILE__, __LINE__)
#define OUT_OF_RANGE_EXCEPTION GENICAM_EXCEPTION_AT(OutOfRangeException, __FILE__, __LINE__)
#define PROPERTY_EXCEPTION GENICAM_EXCEPTION_AT(PropertyException, __FILE__, __LINE__)
#define RUNTIME_EXCEPTION GENICAM_EXCEPTION_AT(RuntimeException, __FILE__, __LINE__)
#define LOGICAL_ERROR_EXCEPTION GENICAM_EXCEPTION_AT(LogicalErrorException, __FILE__, __LINE__)
#define ACCESS_EXCEPTION GENICAM_EXCEPTION_AT(AccessException, __FILE__, __LINE__)
#define TIMEOUT_EXCEPTION GENICAM_EXCEPTION_AT(TimeoutException, __FILE__, __LINE__)
#define DYNAMICCAST_EXCEPTION GENICAM_EXCEPTION_AT(DynamicCastException, __FILE__, __LINE__)

// Node-aware variants: the exception names the node and the method it was raised
// in, e.g. throw ACCESS_EXCEPTION_NODE(name.c_str(), "GetValue")("Node is not readable.");
#define GENICAM_EXCEPTION_NODE_AT(Type, file, line, nodeName, callingMethod) \
  GenICam::ExceptionReporter<GenICam::Type>((file), (line), (nodeName), (callingMethod)).Report
#define GENICAM_NODE_EXCEPTION_(Type, nodeName, method) \
  GENICAM_EXCEPTION_NODE_AT(Type, __FILE__, __LINE__, nodeName, method)
#define GENERIC_EXCEPTION_NODE(node, method) GENICAM_NODE_EXCEPTION_(GenericException, node, method)
#define BAD_ALLOC_EXCEPTION_NODE(node, method) \
  GENICAM_NODE_EXCEPTION_(BadAllocException, node, method)
#define INVALID_ARGUMENT_EXCEPTION_NODE(node, method) \
  GENICAM_NODE_EXCEPTION_(InvalidArgumentException, node, method)
#define OUT_OF_RANGE_EXCEPTION_NODE(node, method) \
  GENICAM_NODE_EXCEPTION_(OutOfRangeException, node, method)
#define PROPERTY_EXCEPTION_NODE(node, method) \
  GENICAM_NODE_EXCEPTION_(PropertyException, node, method)
#define RUNTIME_EXCEPTION_NODE(node, method) GENICAM_NODE_EXCEPTION_(RuntimeException, node, method)
#define LOGICAL_ERROR_EXCEPTION_NODE(node, method) \
  GENICAM_NODE_EXCEPTION_(LogicalErrorException, node, method)
#define ACCESS_EXCEPTION_NODE(node, method) GENICAM_NODE_EXCEPTION_(AccessException, node, method)
#define TIMEOUT_EXCEPTION_NODE(node, method) GENICAM_NODE_EXCEPTION_(TimeoutException, node, method)
#define DYNAMICCAST_EXCEPTION_NODE(node, method) \
  GENICAM_NODE_EXCEPTION_(DynamicCastException, node, method)

#endif  // GENICAM_GCEXCEPTION_H
