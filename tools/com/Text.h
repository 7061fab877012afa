// UTF-16 and UTF-8, for messages and command lines of the Windows tools: the shell's own conversion.
#pragma once

#include "win/WideText.h"

namespace rx9400::tools {

using win::narrow;
using win::widen;

}  // namespace rx9400::tools
