#include "SharedSection.h"

#include <cstring>
#include <string>

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include "platform/posix/PosixSectionName.h"
#endif

namespace rx9400::sim {

std::string SharedSection::nameFor(std::int32_t identifier) {
  const std::int64_t value = identifier;
  std::string digits = std::to_string(value < 0 ? -value : value);
  if (digits.size() < 8) digits.insert(0, 8 - digits.size(), '0');
  return std::string("MB_") + (value < 0 ? "-" : "") + digits;
}

std::unique_ptr<SharedSection> SharedSection::create(const std::string& name, const void* data,
                                                     std::size_t size, std::string& error) {
  return create(
      name, size, [&](std::uint8_t* view) { std::memcpy(view, data, size); }, error);
}

#ifdef _WIN32

std::unique_ptr<SharedSection> SharedSection::create(const std::string& name, std::size_t size,
                                                     const Fill& fill, std::string& error) {
  const std::uint64_t length = size == 0 ? 1 : size;
  HANDLE handle =
      CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, static_cast<DWORD>(length >> 32),
                         static_cast<DWORD>(length & 0xFFFFFFFFu), name.c_str());
  if (handle == nullptr) {
    error = "CreateFileMappingA failed with error " + std::to_string(GetLastError());
    return nullptr;
  }
  void* view = MapViewOfFile(handle, FILE_MAP_ALL_ACCESS, 0, 0, size);
  if (view == nullptr) {
    // An older section of the same name, still held open by a reader, may be smaller than this one.
    error = "MapViewOfFile failed with error " + std::to_string(GetLastError());
    CloseHandle(handle);
    return nullptr;
  }
  if (size > 0) fill(static_cast<std::uint8_t*>(view));
  UnmapViewOfFile(view);
  std::unique_ptr<SharedSection> section(new SharedSection(name));
  section->handle_ = handle;
  return section;
}

SharedSection::~SharedSection() {
  if (handle_ != nullptr) CloseHandle(static_cast<HANDLE>(handle_));
}

#else

namespace {

std::string systemError(const char* what) {
  return std::string(what) + " failed: " + std::strerror(errno);
}

}  // namespace

std::unique_ptr<SharedSection> SharedSection::create(const std::string& name, std::size_t size,
                                                     const Fill& fill, std::string& error) {
  const std::string path = posixSectionPath(name);
  shm_unlink(path.c_str());  // a stale object of an earlier run
  const int fd = shm_open(path.c_str(), O_CREAT | O_RDWR | O_TRUNC, 0600);
  if (fd < 0) {
    error = systemError("shm_open");
    return nullptr;
  }
  std::unique_ptr<SharedSection> section(new SharedSection(name));  // unlinks on every path below
  if (ftruncate(fd, static_cast<off_t>(size)) != 0) {
    error = systemError("ftruncate");
    close(fd);
    return nullptr;
  }
  if (size > 0) {
    void* view = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    if (view == MAP_FAILED) {
      error = systemError("mmap");
      close(fd);
      return nullptr;
    }
    fill(static_cast<std::uint8_t*>(view));
    munmap(view, size);
  }
  close(fd);
  return section;
}

SharedSection::~SharedSection() {
  shm_unlink(posixSectionPath(name_).c_str());
}

#endif

}  // namespace rx9400::sim
