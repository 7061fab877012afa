// Read access to the registry of the local machine.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace rx9400 {

class Registry {
 public:
  using Key = std::uintptr_t;
  struct ValueInfo {
    std::uint32_t type;  ///< 4 is a 32-bit number (REG_DWORD)
    std::uint32_t size;
  };
  static constexpr std::uint32_t kDwordType = 4;

  virtual ~Registry() = default;
  /// Opens a key below HKEY_LOCAL_MACHINE; no value when no key handle comes back. The key stays open.
  virtual std::optional<Key> openLocalMachineKey(std::string_view subKey) = 0;
  /// The type and size of a value, asked without a data buffer; no value when the query fails.
  virtual std::optional<ValueInfo> queryValueInfo(Key key, std::string_view name) = 0;
  /// The 32 bits of a value; no value when the query fails.
  virtual std::optional<std::int32_t> queryDword(Key key, std::string_view name) = 0;
};

}  // namespace rx9400
