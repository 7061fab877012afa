// The named shared-memory section through which the library hands waveforms and the ion-chamber file
// to the plug-in.
//
// On Windows a paging-file mapping (CreateFileMappingA) that this object keeps open; natively a POSIX
// shared-memory object "/" + name, unlinked when this object goes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace rx9400::sim {

class SharedSection {
 public:
  /// "MB_" followed by the identifier, zero-padded to eight digits (never cut): MB_00004711.
  static std::string nameFor(std::int32_t identifier);

  /// Writes the `size` bytes of a new section through a view of it (called only when size > 0).
  using Fill = std::function<void(std::uint8_t* view)>;

  /// Creates the section `name` of exactly `size` bytes and fills it in place, so that a large waveform
  /// is written once, with no copy in between. Returns nullptr and the system's reason in `error` when
  /// the system refuses.
  static std::unique_ptr<SharedSection> create(const std::string& name, std::size_t size, const Fill& fill,
                                               std::string& error);
  /// The same, holding `size` bytes copied from `data`.
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
