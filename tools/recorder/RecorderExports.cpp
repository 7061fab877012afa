// The recorder's exports, one per entry of the export list, and its start when it is loaded.
//
// The real library is loaded when the recorder is: TAMSA_RECORDER_LIBRARY, else TamsaMBDll.real.dll
// (natively libTamsaMBDll.real.so) beside the recorder. Without it the recorder is as good as no
// library: on Windows it refuses to load (DllMain answers FALSE), so the plug-in meets a library that
// cannot be loaded; natively, where a library cannot refuse, every export resolves to nothing, so the
// plug-in meets a library without exports.
#include <cstdlib>
#include <string>

#include "Recorder.h"

#ifdef _WIN32
#include <windows.h>
#define RECORDER_API
#else
#include <dlfcn.h>
#define RECORDER_API __attribute__((visibility("default")))
#endif

namespace rx9400::recorder {
namespace {

#ifdef _WIN32
constexpr const char* kRealLibraryName = "TamsaMBDll.real.dll";
constexpr const char* kSessionFileName = "TamsaMBDll.session.jsonl";
#else
constexpr const char* kRealLibraryName = "libTamsaMBDll.real.so";
constexpr const char* kSessionFileName = "TamsaMBDll.session.jsonl";
#endif

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

/// The recorder's own folder, with its trailing separator.
std::string ownFolder() {
#ifdef _WIN32
  HMODULE self = nullptr;
  GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<LPCSTR>(&ownFolder), &self);
  char path[MAX_PATH] = {};
  GetModuleFileNameA(self, path, MAX_PATH);
  std::string folder = path;
  return folder.substr(0, folder.find_last_of("\\/") + 1);
#else
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&ownFolder), &info) == 0 || info.dli_fname == nullptr) return {};
  std::string folder = info.dli_fname;
  return folder.substr(0, folder.find_last_of('/') + 1);
#endif
}

std::string temporaryFolder() {
#ifdef _WIN32
  char path[MAX_PATH] = {};
  return GetTempPathA(MAX_PATH, path) != 0 ? path : "";
#else
  const std::string folder = environment("TMPDIR");
  return (folder.empty() ? "/tmp" : folder) + "/";
#endif
}

/// Loads the real library and starts the session; false when there is no real library.
bool start() {
  Recorder& r = recorder();
  std::string library = environment("TAMSA_RECORDER_LIBRARY");
  if (library.empty()) library = ownFolder() + kRealLibraryName;
  if (!r.loadLibrary(library)) return false;
  Settings settings;
  settings.file = environment("TAMSA_RECORDER_FILE");
  const std::string limit = environment("TAMSA_RECORDER_MAX_BYTES");
  if (!limit.empty()) settings.maxBytes = static_cast<std::size_t>(std::strtoull(limit.c_str(), nullptr, 10));
  if (settings.file.empty()) {
    // Beside the recorder, or where temporary files go when its folder is not writable.
    settings.file = ownFolder() + kSessionFileName;
    if (std::FILE* probe = std::fopen(settings.file.c_str(), "ab")) {
      std::fclose(probe);
    } else {
      settings.file = temporaryFolder() + kSessionFileName;
    }
  }
  r.startSession(settings);
  return true;
}

enum class Index : std::size_t {
#define MB_FUNCTION(Result, Name, Parameters, Arguments) Name,
#include "device/MBFunctionList.h"
};

}  // namespace

#ifdef _WIN32

}  // namespace rx9400::recorder

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) return rx9400::recorder::start() ? TRUE : FALSE;
  return TRUE;
}

namespace rx9400 {
using recorder::Index;
extern "C" {
#define MB_FUNCTION(Result, Name, Parameters, Arguments)                                   \
  RECORDER_API Result MB_STDCALL Name Parameters {                                         \
    const auto& real = recorder::recorder().real();                                        \
    return recorder::call<Result>(static_cast<std::size_t>(Index::Name), [&]() -> Result { \
      return real.Name ? real.Name Arguments : Result{};                                   \
    }) Arguments;                                                                          \
  }
#include "device/MBFunctionList.h"
}
}  // namespace rx9400

#else

namespace {
const bool started = start();
}

}  // namespace rx9400::recorder

namespace rx9400 {
using recorder::Index;

// Each export is resolved when it is looked up: to its forwarding function when the real library was
// loaded and has that export, to nothing otherwise.
#define MB_FUNCTION(Result, Name, Parameters, Arguments)                                               \
  namespace recorder {                                                                                 \
  Result forward##Name Parameters {                                                                    \
    const auto& real = recorder().real();                                                              \
    return call<Result>(static_cast<std::size_t>(Index::Name),                                         \
                        [&]() -> Result { return real.Name Arguments; }) Arguments;                    \
  }                                                                                                    \
  }                                                                                                    \
  extern "C" decltype(&recorder::forward##Name) resolve##Name() {                                      \
    return recorder::started && recorder::recorder().real().Name != nullptr ? &recorder::forward##Name \
                                                                            : nullptr;                 \
  }                                                                                                    \
  extern "C" RECORDER_API Result Name Parameters __attribute__((ifunc("resolve" #Name)));
#include "device/MBFunctionList.h"

}  // namespace rx9400

#endif
