// The named shared-memory section through which the library hands waveforms and the ion-chamber file
// to the plug-in.
//
// On Windows a paging-file mapping (CreateFileMappingA) that this object keeps open; natively a POSIX
// shared-memory object "/" + name, unlinked when this object goes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace rx9400::sim {

class SharedSection {
 public:
  /// "MB_" followed by the identifier, zero-padded to eight digits (never cut): MB_00004711.
  static std::string nameFor(std::int32_t identifier);

  /// Creates the section `name` holding `size` bytes from `data`. Returns nullptr and the system's
  /// reason in `error` when the system refuses.
  static std::unique_ptr<SharedSection> create(const std::string& name, const void* data, std::size_t size,
                                               std::string& error);

  SharedSection(const SharedSection&) = delete;
  SharedSection& operator=(const SharedSection&) = delete;
  ~SharedSection();

  const std::string& name() const { return name_; }

 private:
  explicit SharedSection(std::string name) : name_(std::move(name)) {}

  std::string name_;
  void* handle_ = nullptr;  // the mapping's handle on Windows
};

}  // namespace rx9400::sim
