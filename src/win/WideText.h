// Text between UTF-16 and the bytes of a code page (UTF-8 unless another is named), for the Windows
// shell and the Windows tools.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace rx9400::win {

inline std::wstring widen(std::string_view text, UINT codePage = CP_UTF8) {
  if (text.empty()) return {};
  const int size = MultiByteToWideChar(codePage, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
  std::wstring result(static_cast<std::size_t>(size), L'\0');
  MultiByteToWideChar(codePage, 0, text.data(), static_cast<int>(text.size()), result.data(), size);
  return result;
}

inline std::string narrow(std::wstring_view text, UINT codePage = CP_UTF8) {
  if (text.empty()) return {};
  const int size = WideCharToMultiByte(codePage, 0, text.data(), static_cast<int>(text.size()), nullptr, 0,
                                       nullptr, nullptr);
  std::string result(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(codePage, 0, text.data(), static_cast<int>(text.size()), result.data(), size, nullptr,
                      nullptr);
  return result;
}

}  // namespace rx9400::win
