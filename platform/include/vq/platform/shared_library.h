// Loading shared libraries and finding their symbols.
#ifndef VQ_PLATFORM_SHARED_LIBRARY_H
#define VQ_PLATFORM_SHARED_LIBRARY_H

#include <string>

namespace vq::platform {

// An open shared library; closing happens when the object goes away. Move-only.
class SharedLibrary {
 public:
  SharedLibrary() noexcept = default;
  SharedLibrary(SharedLibrary&& other) noexcept;
  SharedLibrary& operator=(SharedLibrary&& other) noexcept;
  SharedLibrary(const SharedLibrary&) = delete;
  SharedLibrary& operator=(const SharedLibrary&) = delete;
  ~SharedLibrary();

  // Opens a library by path or by file name. A bare file name (no '/') is first
  // looked for in the library directory (SetLibraryDirectory), then through the
  // system search. On failure the result is not open and *error (when given)
  // holds the loader's text.
  static SharedLibrary Open(const std::string& pathOrName, std::string* error = nullptr);

  bool IsOpen() const { return handle_ != nullptr; }
  explicit operator bool() const { return IsOpen(); }

  // The address of a symbol, or null with the loader's text in *error.
  void* FindSymbol(const char* name, std::string* error = nullptr) const;

  // FindSymbol cast to a function pointer type, e.g. FindFunction<int (*)(int)>("f").
  template <typename Function>
  Function FindFunction(const char* name, std::string* error = nullptr) const {
    return reinterpret_cast<Function>(FindSymbol(name, error));
  }

  // The path or name the library was opened with (after the directory look-up).
  const std::string& Path() const { return path_; }

  void Close();

 private:
  SharedLibrary(void* handle, std::string path) noexcept;

  void* handle_ = nullptr;
  std::string path_;
};

// Process-wide directory consulted first for bare file names; empty clears it.
void SetLibraryDirectory(const std::string& directory);
std::string GetLibraryDirectory();

// Full path of the executable or shared library that contains `address` (for
// instance the address of a function of the caller's library); empty if unknown.
std::string GetModulePath(const void* address);

// Full path of the running program; empty if unknown.
std::string GetExecutablePath();

// The directory part of a path ("/a/b/c.so" gives "/a/b"; "c.so" gives ".").
std::string DirectoryOf(const std::string& path);

}  // namespace vq::platform

#endif  // VQ_PLATFORM_SHARED_LIBRARY_H
