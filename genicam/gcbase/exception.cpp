// The GenICam exception family: description, origin and the composed what() text.
#include <string>

#include "GenICam/GCException.h"

namespace GenICam {

namespace {
std::string OrEmpty(const char* text) {
  return text != nullptr ? std::string(text) : std::string();
}
}  // namespace

GenericException::GenericException(const char* description, const char* sourceFileName,
                                   unsigned int sourceLine)
    : GenericException(description, sourceFileName, sourceLine, nullptr, nullptr,
                       "GenericException") {}

GenericException::GenericException(const char* description, const char* sourceFileName,
                                   unsigned int sourceLine, const char* exceptionType)
    : GenericException(description, sourceFileName, sourceLine, nullptr, nullptr, exceptionType) {}

GenericException::GenericException(const char* description, const char* sourceFileName,
                                   unsigned int sourceLine, const char* nodeName,
                                   const char* callingMethod)
    : GenericException(description, sourceFileName, sourceLine, nodeName, callingMethod,
                       "GenericException") {}

GenericException::GenericException(const char* description, const char* sourceFileName,
                                   unsigned int sourceLine, const char* nodeName,
                                   const char* callingMethod, const char* exceptionType)
    : description_(OrEmpty(description)),
      sourceFileName_(OrEmpty(sourceFileName)),
      sourceLine_(sourceLine),
      nodeName_(OrEmpty(nodeName)),
      callingMethod_(OrEmpty(callingMethod)),
      exceptionType_(OrEmpty(exceptionType)) {
  ComposeMessage();
}

GenericException::GenericException(const GenericException& other) = default;
GenericException& GenericException::operator=(const GenericException& other) = default;
GenericException::~GenericException() noexcept = default;

void GenericException::ComposeMessage() {
  message_ = description_ + " : " + exceptionType_ + " thrown";
  if (!nodeName_.empty()) {
    message_ +=
        " in node '" + nodeName_ + "' while calling '" + nodeName_ + "." + callingMethod_ + "()'";
  }
  message_ += " (file '" + sourceFileName_ + "', line " + std::to_string(sourceLine_) + ")";
}

const char* GenericException::GetDescription() const noexcept { return description_.c_str(); }
const char* GenericException::GetSourceFileName() const noexcept { return sourceFileName_.c_str(); }
unsigned int GenericException::GetSourceLine() const noexcept { return sourceLine_; }
const char* GenericException::GetNodeName() const noexcept { return nodeName_.c_str(); }
const char* GenericException::GetCallingMethod() const noexcept { return callingMethod_.c_str(); }
const char* GenericException::GetExceptionType() const noexcept { return exceptionType_.c_str(); }
const char* GenericException::what() const noexcept { return message_.c_str(); }

#define GCBASE_DEFINE_EXCEPTION(Name)                                                      \
  Name::Name(const char* description, const char* sourceFileName, unsigned int sourceLine) \
      : GenericException(description, sourceFileName, sourceLine, #Name) {}                \
  Name::Name(const char* description, const char* sourceFileName, unsigned int sourceLine, \
             const char* nodeName, const char* callingMethod)                              \
      : GenericException(description, sourceFileName, sourceLine, nodeName, callingMethod, \
                         #Name) {}                                                         \
  Name::Name(const Name& other) = default;                                                 \
  Name& Name::operator=(const Name& other) = default;                                      \
  Name::~Name() noexcept = default

GCBASE_DEFINE_EXCEPTION(BadAllocException);
GCBASE_DEFINE_EXCEPTION(InvalidArgumentException);
GCBASE_DEFINE_EXCEPTION(OutOfRangeException);
GCBASE_DEFINE_EXCEPTION(PropertyException);
GCBASE_DEFINE_EXCEPTION(RuntimeException);
GCBASE_DEFINE_EXCEPTION(LogicalErrorException);
GCBASE_DEFINE_EXCEPTION(AccessException);
GCBASE_DEFINE_EXCEPTION(TimeoutException);
GCBASE_DEFINE_EXCEPTION(DynamicCastException);

}  // namespace GenICam
