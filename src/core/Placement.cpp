// The executive's dialog-placement setting and window placement.
#include "core/Placement.h"

namespace rx9400 {

bool topmostRequired(Registry& registry) noexcept {
  try {
    const auto key = registry.openLocalMachineKey(kExecutiveSettingsKey);
    if (!key) return false;
    const auto info = registry.queryValueInfo(*key, kTestGuideSettingsValue);
    if (!info || info->type != Registry::kDwordType) return false;
    const auto value = registry.queryDword(*key, kTestGuideSettingsValue);
    return value && (*value == 4 || *value > 8);
  } catch (...) {
    return false;
  }
}

void makeTopmost(WindowSystem& windows, WindowHandle dialog) noexcept {
  try {
    if (const auto rect = windows.windowRect(dialog)) {
      windows.makeTopmost(dialog, rect->left, rect->top, rect->right - rect->left, rect->bottom - rect->top);
    }
  } catch (...) {
  }
}

void centreCursorOn(WindowSystem& windows, WindowHandle window) noexcept {
  try {
    if (const auto rect = windows.windowRect(window)) {
      windows.setCursorPosition(rect->left + (rect->right - rect->left) / 2,
                                rect->top + (rect->bottom - rect->top) / 2);
    }
  } catch (...) {
  }
}

}  // namespace rx9400
