// A loaded shared library and the way to open one: the seam between the device boundary and the OS.
#pragma once

#include <memory>
#include <string>

namespace rx9400 {

/// A shared library held open at least for the lifetime of this object (on Windows, until the process
/// ends: a library with threads of its own is never freed).
class DynamicLibrary {
 public:
  virtual ~DynamicLibrary() = default;
  /// The address of the export `name`, or nullptr when the library has no such export.
  virtual void* findSymbol(const char* name) const = 0;
};

/// Opens the library file `fileName`: first in the folder of the module that contains this code (the
/// plug-in's own folder), then through the system's normal search. Returns nullptr when neither
/// works, with the system's reason in `error`.
std::unique_ptr<DynamicLibrary> openDynamicLibrary(const std::string& fileName, std::string& error);

/// Opens exactly the file at `path` (no search). Returns nullptr with the reason in `error`.
std::unique_ptr<DynamicLibrary> openDynamicLibraryAt(const std::string& path, std::string& error);

}  // namespace rx9400
