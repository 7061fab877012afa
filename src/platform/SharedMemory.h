// Named shared-memory sections that another module of the process (the device library) creates and
// the plug-in only opens, maps and reads.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace rx9400 {

/// A mapped view of a section; unmapped when this object goes.
class SharedView {
 public:
  virtual ~SharedView() = default;
  /// The first byte of the view; the view holds at least the bytes it was mapped with.
  virtual const void* data() const = 0;
};

/// An open section; closed when this object goes (views first: destroy them before their section).
class SharedSection {
 public:
  virtual ~SharedSection() = default;
  /// Maps the first `bytes` bytes for reading and writing. nullptr when the system refuses, and also
  /// when the section holds fewer bytes than asked: a view never reaches past what was published.
  virtual std::unique_ptr<SharedView> map(std::size_t bytes) = 0;
};

class SharedMemory {
 public:
  virtual ~SharedMemory() = default;
  /// Opens the section `name` (one-byte characters) with full access; nullptr when there is none.
  virtual std::unique_ptr<SharedSection> open(const std::string& name) = 0;
};

/// The system's shared memory: file mappings on Windows, POSIX shared-memory objects "/" + name
/// elsewhere.
SharedMemory& systemSharedMemory();

}  // namespace rx9400
