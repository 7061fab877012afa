// Shared-memory sections as named file mappings, opened with full access.
#include <windows.h>

#include "platform/SharedMemory.h"

namespace rx9400 {
namespace {

constexpr DWORD kFullAccess = 0xF001F;  // FILE_MAP_ALL_ACCESS

class Win32View final : public SharedView {
 public:
  explicit Win32View(void* address) : address_(address) {}
  ~Win32View() override { UnmapViewOfFile(address_); }
  Win32View(const Win32View&) = delete;
  Win32View& operator=(const Win32View&) = delete;
  const void* data() const override { return address_; }

 private:
  void* address_;
};

class Win32Section final : public SharedSection {
 public:
  explicit Win32Section(HANDLE handle) : handle_(handle) {}
  ~Win32Section() override { CloseHandle(handle_); }
  Win32Section(const Win32Section&) = delete;
  Win32Section& operator=(const Win32Section&) = delete;

  std::unique_ptr<SharedView> map(std::size_t bytes) override {
    // The system refuses a view larger than the section, so a view never reaches past it.
    void* address = bytes == 0 ? nullptr : MapViewOfFile(handle_, kFullAccess, 0, 0, bytes);
    if (address == nullptr) return nullptr;
    return std::make_unique<Win32View>(address);
  }

 private:
  HANDLE handle_;
};

class Win32SharedMemory final : public SharedMemory {
 public:
  std::unique_ptr<SharedSection> open(const std::string& name) override {
    HANDLE handle = OpenFileMappingA(kFullAccess, FALSE, name.c_str());
    if (handle == nullptr) return nullptr;
    return std::make_unique<Win32Section>(handle);
  }
};

}  // namespace

SharedMemory& systemSharedMemory() {
  static Win32SharedMemory memory;
  return memory;
}

}  // namespace rx9400
