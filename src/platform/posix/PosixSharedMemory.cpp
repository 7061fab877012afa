// Shared-memory sections as POSIX shared-memory objects of this process (the native build and its tests).
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/SharedMemory.h"
#include "platform/posix/PosixSectionName.h"

namespace rx9400 {
namespace {

class PosixView final : public SharedView {
 public:
  PosixView(void* address, std::size_t bytes) : address_(address), bytes_(bytes) {}
  ~PosixView() override { munmap(address_, bytes_); }
  PosixView(const PosixView&) = delete;
  PosixView& operator=(const PosixView&) = delete;
  const void* data() const override { return address_; }

 private:
  void* address_;
  std::size_t bytes_;
};

class PosixSection final : public SharedSection {
 public:
  explicit PosixSection(int fd) : fd_(fd) {}
  ~PosixSection() override { close(fd_); }
  PosixSection(const PosixSection&) = delete;
  PosixSection& operator=(const PosixSection&) = delete;

  std::unique_ptr<SharedView> map(std::size_t bytes) override {
    // A view past the object's end would fault on the first read beyond it: refuse it, as a file
    // mapping refuses a view larger than its section.
    struct stat info {};
    if (bytes == 0 || fstat(fd_, &info) != 0 || static_cast<std::size_t>(info.st_size) < bytes)
      return nullptr;
    void* address = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, fd_, 0);
    if (address == MAP_FAILED) return nullptr;
    return std::make_unique<PosixView>(address, bytes);
  }

 private:
  int fd_;
};

class PosixSharedMemory final : public SharedMemory {
 public:
  std::unique_ptr<SharedSection> open(const std::string& name) override {
    const int fd = shm_open(posixSectionPath(name).c_str(), O_RDWR, 0);
    if (fd < 0) return nullptr;
    return std::make_unique<PosixSection>(fd);
  }
};

}  // namespace

SharedMemory& systemSharedMemory() {
  static PosixSharedMemory memory;
  return memory;
}

}  // namespace rx9400
