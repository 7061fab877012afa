#include "Recorder.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstring>
#include <ctime>

#ifdef _WIN32
#include <process.h>
#include <windows.h>
#else
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/PosixSectionName.h"
#endif

namespace rx9400::recorder {
namespace {

std::int64_t nowMicros() {
  return std::chrono::duration_cast<std::chrono::microseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

void appendNumber(std::string& out, std::int64_t value) {
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  out.append(digits, end);
}

void appendJsonText(std::string& out, const std::string& text) {
  out += '"';
  for (const char c : text) {
    if (c == '"' || c == '\\') out += '\\';
    if (static_cast<unsigned char>(c) < 0x20) {
      out += '?';
      continue;
    }
    out += c;
  }
  out += '"';
}

std::string utcNow() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
#ifdef _WIN32
  gmtime_s(&parts, &now);
#else
  gmtime_r(&now, &parts);
#endif
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
  return text;
}

int processId() {
#ifdef _WIN32
  return _getpid();
#else
  return static_cast<int>(getpid());
#endif
}

void* openLibrary(const std::string& path) {
#ifdef _WIN32
  return LoadLibraryA(path.c_str());
#else
  return dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
#endif
}

void* findSymbol(void* handle, const char* name) {
#ifdef _WIN32
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle), name));
#else
  return dlsym(handle, name);
#endif
}

}  // namespace

Recorder& recorder() {
  static Recorder instance;
  return instance;
}

bool Recorder::loadLibrary(const std::string& libraryPath) {
  void* handle = openLibrary(libraryPath);
  if (handle == nullptr) return false;
#define MB_FUNCTION(Result, Name, Parameters, Arguments) \
  real_.Name = reinterpret_cast<decltype(real_.Name)>(findSymbol(handle, #Name));
#include "device/MBFunctionList.h"
  handle_ = handle;  // never unloaded: its update thread may run until the process ends
  libraryPath_ = libraryPath;
  return true;
}

void Recorder::startSession(const Settings& settings) {
  settings_ = settings;
  startMicros_ = nowMicros();
  line_.reserve(4096);
  recording_ = open(false);
}

bool Recorder::open(bool truncate) {
  file_ = std::fopen(settings_.file.c_str(), truncate ? "wb" : "ab");
  if (file_ == nullptr) return false;
  std::fseek(file_, 0, SEEK_END);
  written_ = static_cast<std::size_t>(std::max<long>(std::ftell(file_), 0));
  std::string header = "{\"format\":\"";
  header += session::kFormatName;
  header += "\",\"version\":";
  appendNumber(header, session::kFormatVersion);
  header += ",\"library\":";
  appendJsonText(header, libraryPath_);
  header += ",\"started\":\"" + utcNow() + "\",\"process\":";
  appendNumber(header, processId());
  header += ",\"part\":";
  appendNumber(header, ++part_);
  header += "}\n";
  if (std::fwrite(header.data(), 1, header.size(), file_) != header.size() || std::fflush(file_) != 0) {
    std::fclose(file_);
    file_ = nullptr;
    return false;
  }
  written_ += header.size();
  return true;
}

void Recorder::stop() {
  recording_ = false;
  if (file_ != nullptr) std::fclose(file_);
  file_ = nullptr;
}

void Recorder::put(const std::string& line) {
  if (file_ == nullptr) return;
  if (written_ + line.size() > settings_.maxBytes && written_ > 0) {
    // The full file becomes FILE.1 (an older one goes) and the session goes on in a fresh FILE.
    std::fclose(file_);
    file_ = nullptr;
    const std::string older = settings_.file + ".1";
    std::remove(older.c_str());
    if (std::rename(settings_.file.c_str(), older.c_str()) != 0 || !open(true)) {
      stop();
      return;
    }
  }
  if (std::fwrite(line.data(), 1, line.size(), file_) != line.size() || std::fflush(file_) != 0) {
    stop();
    return;
  }
  written_ += line.size();
}

void Recorder::write(std::size_t index, Argument* arguments, std::size_t count, std::int64_t result) {
  const session::ExportShape& shape = session::exportShapes()[index];
  std::string& line = line_;
  line.clear();
  line += "{\"t\":";
  appendNumber(line, nowMicros() - startMicros_);
  line += ",\"f\":\"";
  line += shape.name;
  line += "\",\"a\":[";
  std::vector<std::int64_t>& values = values_;
  values.assign(count, 0);
  for (std::size_t i = 0; i < count; ++i) values[i] = arguments[i].value;
  for (std::size_t i = 0; i < count; ++i) {
    if (i > 0) line += ',';
    const Argument& argument = arguments[i];
    if (argument.elementSize == 0) {
      appendNumber(line, argument.value);
    } else if (argument.pointer == nullptr) {
      line += "null";
    } else {
      const session::PointerShape pointer = shape.pointer(static_cast<int>(i));
      const std::int64_t after =
          pointer.count == session::Count::Pointee && arguments[pointer.from].pointer != nullptr
              ? *static_cast<const std::int32_t*>(arguments[pointer.from].pointer)
              : 0;
      const auto type = detectorsOfType_.find(count > 0 ? arguments[0].value : 0);
      const std::size_t elements = session::elementCount(pointer, values, result, argument.before, after,
                                                         type != detectorsOfType_.end() ? type->second : 0);
      line += '"';
      session::appendHex(line, argument.pointer, elements * argument.elementSize);
      line += '"';
    }
  }
  line += "],\"r\":";
  appendNumber(line, result);
  if (shape.name == "MBGetNumberOfDetectors" && count == 1) detectorsOfType_[arguments[0].value] = result;
  if (shape.name == "MBSetWaveformParameters" && arguments[1].pointer != nullptr) {
    std::int32_t points = 0;
    std::memcpy(&points, static_cast<const char*>(arguments[1].pointer) + 4, sizeof points);
    waveformPoints_[arguments[0].value] = points;
  }
  if (shape.section == session::SectionRead::ChamberFile && result > 0) {
    appendSection(static_cast<std::int32_t>(arguments[0].value), static_cast<std::size_t>(result));
  } else if (shape.section == session::SectionRead::Waveform && result != 0) {
    const auto points = waveformPoints_.find(arguments[0].value);
    const std::int64_t n = points != waveformPoints_.end() ? points->second : 0;
    appendSection(static_cast<std::int32_t>(arguments[0].value), static_cast<std::size_t>(n > 0 ? n * 4 : 0));
  }
  line += "}\n";
  put(line);
}

void Recorder::appendSection(std::int32_t id, std::size_t bytes) {
  line_ += ",\"s\":";
  const std::optional<std::string> section = readSection(session::sectionName(id), bytes);
  if (!section) {
    line_ += "null";
    return;
  }
  line_ += '"';
  session::appendHex(line_, section->data(), section->size());
  line_ += '"';
}

#ifdef _WIN32

std::optional<std::string> readSection(const std::string& name, std::size_t bytes) {
  HANDLE mapping = OpenFileMappingA(FILE_MAP_READ, FALSE, name.c_str());
  if (mapping == nullptr) return std::nullopt;
  std::optional<std::string> content;
  if (const void* view = MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0)) {
    MEMORY_BASIC_INFORMATION region{};
    VirtualQuery(view, &region, sizeof region);
    content.emplace(static_cast<const char*>(view), std::min<std::size_t>(bytes, region.RegionSize));
    UnmapViewOfFile(view);
  }
  CloseHandle(mapping);
  return content;
}

#else

std::optional<std::string> readSection(const std::string& name, std::size_t bytes) {
  const int fd = shm_open(posixSectionPath(name).c_str(), O_RDONLY, 0);
  if (fd < 0) return std::nullopt;
  struct stat info {};
  std::optional<std::string> content;
  if (fstat(fd, &info) == 0) {
    const std::size_t size = std::min<std::size_t>(bytes, static_cast<std::size_t>(info.st_size));
    content.emplace();
    if (size > 0) {
      void* view = mmap(nullptr, size, PROT_READ, MAP_SHARED, fd, 0);
      if (view != MAP_FAILED) {
        content->assign(static_cast<const char*>(view), size);
        munmap(view, size);
      }
    }
  }
  close(fd);
  return content;
}

#endif

}  // namespace rx9400::recorder
