// Shared libraries on POSIX systems through dlopen/dlsym (the native build and its tests).
#include <dlfcn.h>

#include <string>

#include "platform/DynamicLibrary.h"

namespace rx9400 {
namespace {

class PosixDynamicLibrary final : public DynamicLibrary {
 public:
  explicit PosixDynamicLibrary(void* handle) : handle_(handle) {}
  ~PosixDynamicLibrary() override { dlclose(handle_); }
  PosixDynamicLibrary(const PosixDynamicLibrary&) = delete;
  PosixDynamicLibrary& operator=(const PosixDynamicLibrary&) = delete;

  void* findSymbol(const char* name) const override { return dlsym(handle_, name); }

 private:
  void* handle_;
};

std::unique_ptr<DynamicLibrary> open(const std::string& path, std::string& error) {
  void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) {
    const char* reason = dlerror();
    error = reason != nullptr ? reason : "cannot open " + path;
    return nullptr;
  }
  return std::make_unique<PosixDynamicLibrary>(handle);
}

std::string ownFolder() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&ownFolder), &info) == 0 || info.dli_fname == nullptr) return {};
  std::string path = info.dli_fname;
  const auto slash = path.find_last_of('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

}  // namespace

std::unique_ptr<DynamicLibrary> openDynamicLibraryAt(const std::string& path, std::string& error) {
  return open(path, error);
}

std::unique_ptr<DynamicLibrary> openDynamicLibrary(const std::string& fileName, std::string& error) {
  const std::string folder = ownFolder();
  if (!folder.empty()) {
    if (auto library = open(folder + fileName, error)) return library;
  }
  return open(fileName, error);
}

}  // namespace rx9400
