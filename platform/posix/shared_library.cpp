// Shared libraries through dlopen/dlsym, with a process-wide directory that is
// searched before the system's paths for bare file names.
#include "vq/platform/shared_library.h"

#include <dlfcn.h>
#include <limits.h>
#include <stdlib.h>
#include <unistd.h>

#include <mutex>
#include <utility>

namespace vq::platform {

namespace {

std::mutex& DirectoryMutex() {
  static std::mutex mutex;
  return mutex;
}

std::string& DirectoryStorage() {
  static std::string directory;
  return directory;
}

std::string LoaderError(const std::string& fallback) {
  const char* text = dlerror();
  return text != nullptr ? std::string(text) : fallback;
}

void SetError(std::string* error, const std::string& text) {
  if (error != nullptr) *error = text;
}

bool IsBareName(const std::string& name) { return name.find('/') == std::string::npos; }

bool FileExists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

// The path to hand to dlopen: the library directory's file when it exists there.
std::string ResolveLibraryPath(const std::string& pathOrName) {
  if (!IsBareName(pathOrName)) return pathOrName;
  const std::string directory = GetLibraryDirectory();
  if (directory.empty()) return pathOrName;
  std::string candidate = directory;
  if (candidate.back() != '/') candidate += '/';
  candidate += pathOrName;
  return FileExists(candidate) ? candidate : pathOrName;
}

}  // namespace

SharedLibrary::SharedLibrary(void* handle, std::string path) noexcept
    : handle_(handle), path_(std::move(path)) {}

SharedLibrary::SharedLibrary(SharedLibrary&& other) noexcept
    : handle_(std::exchange(other.handle_, nullptr)), path_(std::move(other.path_)) {}

SharedLibrary& SharedLibrary::operator=(SharedLibrary&& other) noexcept {
  if (this != &other) {
    Close();
    handle_ = std::exchange(other.handle_, nullptr);
    path_ = std::move(other.path_);
  }
  return *this;
}

SharedLibrary::~SharedLibrary() { Close(); }

SharedLibrary SharedLibrary::Open(const std::string& pathOrName, std::string* error) {
  if (pathOrName.empty() || pathOrName.find('\0') != std::string::npos) {
    SetError(error, "invalid library name '" + pathOrName + "'");
    return SharedLibrary();
  }
  const std::string path = ResolveLibraryPath(pathOrName);
  dlerror();
  void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) {
    SetError(error, LoaderError("cannot open '" + path + "'"));
    return SharedLibrary();
  }
  return SharedLibrary(handle, path);
}

void* SharedLibrary::FindSymbol(const char* name, std::string* error) const {
  if (handle_ == nullptr) {
    SetError(error, "library is not open");
    return nullptr;
  }
  if (name == nullptr || *name == '\0') {
    SetError(error, "empty symbol name");
    return nullptr;
  }
  dlerror();
  void* symbol = dlsym(handle_, name);
  if (symbol == nullptr) SetError(error, LoaderError(std::string("undefined symbol: ") + name));
  return symbol;
}

void SharedLibrary::Close() {
  if (handle_ != nullptr) dlclose(handle_);
  handle_ = nullptr;
  path_.clear();
}

void SetLibraryDirectory(const std::string& directory) {
  std::lock_guard<std::mutex> lock(DirectoryMutex());
  DirectoryStorage() = directory;
}

std::string GetLibraryDirectory() {
  std::lock_guard<std::mutex> lock(DirectoryMutex());
  return DirectoryStorage();
}

std::string GetModulePath(const void* address) {
  Dl_info info{};
  if (address == nullptr || dladdr(address, &info) == 0 || info.dli_fname == nullptr) return {};
  std::string path = info.dli_fname;
  char resolved[PATH_MAX];
  if (realpath(path.c_str(), resolved) != nullptr) return resolved;
  // The main program may be reported by its bare name.
  return path.find('/') == std::string::npos ? GetExecutablePath() : path;
}

std::string GetExecutablePath() {
  char buffer[PATH_MAX];
  const ssize_t length = readlink("/proc/self/exe", buffer, sizeof buffer - 1);
  if (length <= 0) return {};
  return std::string(buffer, static_cast<size_t>(length));
}

std::string DirectoryOf(const std::string& path) {
  const size_t slash = path.find_last_of('/');
  if (slash == std::string::npos) return ".";
  if (slash == 0) return "/";
  return path.substr(0, slash);
}

}  // namespace vq::platform
