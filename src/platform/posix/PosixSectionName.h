// The POSIX shared-memory object behind a named section. POSIX objects are seen machine-wide, so the
// name carries the process id: the stand-in library and the plug-in, running natively in one process,
// meet under it, while test processes running side by side never see each other's sections.
#pragma once

#include <unistd.h>

#include <string>

namespace rx9400 {

inline std::string posixSectionPath(const std::string& name) {
  return "/" + name + "." + std::to_string(getpid());
}

}  // namespace rx9400
