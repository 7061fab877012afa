// Shared libraries on Windows: LoadLibrary/GetProcAddress, looking beside this module first; a library
// once loaded stays loaded until the process ends.
#include <windows.h>

#include <string>

#include "platform/DynamicLibrary.h"

namespace rx9400 {
namespace {

/// A loaded library is never freed: the device library runs an update thread of its own, and freeing it
/// from a destructor (at the plug-in's unload, under the loader lock) would pull its code from under
/// that thread. The process's end releases it; loading it again only counts another reference.
class Win32DynamicLibrary final : public DynamicLibrary {
 public:
  explicit Win32DynamicLibrary(HMODULE module) : module_(module) {}
  ~Win32DynamicLibrary() override = default;
  Win32DynamicLibrary(const Win32DynamicLibrary&) = delete;
  Win32DynamicLibrary& operator=(const Win32DynamicLibrary&) = delete;

  void* findSymbol(const char* name) const override {
    return reinterpret_cast<void*>(GetProcAddress(module_, name));
  }

 private:
  HMODULE module_;
};

std::string lastErrorText(const std::string& what) {
  return what + " (error " + std::to_string(GetLastError()) + ")";
}

/// The folder of the module (DLL or EXE) that contains this code, with a trailing backslash.
std::string ownFolder() {
  HMODULE self = nullptr;
  if (!GetModuleHandleExA(
          GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
          reinterpret_cast<LPCSTR>(&ownFolder), &self)) {
    return {};
  }
  char path[MAX_PATH * 2] = {};
  const DWORD length = GetModuleFileNameA(self, path, static_cast<DWORD>(sizeof(path)));
  if (length == 0 || length >= sizeof(path)) return {};
  std::string folder(path, length);
  const auto slash = folder.find_last_of("\\/");
  return slash == std::string::npos ? std::string() : folder.substr(0, slash + 1);
}

std::unique_ptr<DynamicLibrary> open(const std::string& path, DWORD flags, std::string& error) {
  HMODULE module = LoadLibraryExA(path.c_str(), nullptr, flags);
  if (module == nullptr) {
    error = lastErrorText("cannot load " + path);
    return nullptr;
  }
  return std::make_unique<Win32DynamicLibrary>(module);
}

}  // namespace

std::unique_ptr<DynamicLibrary> openDynamicLibraryAt(const std::string& path, std::string& error) {
  return open(path, LOAD_WITH_ALTERED_SEARCH_PATH, error);
}

std::unique_ptr<DynamicLibrary> openDynamicLibrary(const std::string& fileName, std::string& error) {
  const std::string folder = ownFolder();
  if (!folder.empty()) {
    // A library installed beside the plug-in wins; its own dependencies are searched from there too.
    if (auto library = open(folder + fileName, LOAD_WITH_ALTERED_SEARCH_PATH, error)) return library;
  }
  return open(fileName, 0, error);
}

}  // namespace rx9400
