// The executive's dialog-placement setting, topmost dialogs, and the pointer on a dialog's control.
#pragma once

#include "platform/Registry.h"
#include "platform/WindowSystem.h"

namespace rx9400 {

/// The registry key and value of the executive's setting.
inline constexpr const char* kExecutiveSettingsKey = "Software\\Brume\\tamsa\\Executive\\System";
inline constexpr const char* kTestGuideSettingsValue = "Test guide settings";

/// True when the executive asks for topmost dialogs: its setting is a 32-bit number equal to 4 or
/// greater than 8. A missing key or value, a value of another type, or a failing query answer False.
/// The setting is read afresh on every call; the key is left open.
bool topmostRequired(Registry& registry) noexcept;

/// Puts the dialog into the topmost band where it stands, without activating it.
void makeTopmost(WindowSystem& windows, WindowHandle dialog) noexcept;

/// Moves the mouse pointer to the centre of a window (each half truncated towards zero).
void centreCursorOn(WindowSystem& windows, WindowHandle window) noexcept;

}  // namespace rx9400
