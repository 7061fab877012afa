#include "CallLog.h"

#include <cstdlib>
#include <utility>

#include "ChamberFile.h"

namespace rx9400::sim {

namespace {

/// The in-memory log keeps at most this many lines (a download of 10^7 mAs points with its status polls
/// writes about 385000); a longer session drops its oldest half.
constexpr std::size_t kMaxLines = 1000000;

template <typename T>
std::string listText(const T* values, std::size_t count) {
  if (values == nullptr) return "null";
  std::string text = "[";
  for (std::size_t i = 0; i < count; ++i) {
    if (i > 0) text += ',';
    text += std::to_string(static_cast<long long>(values[i]));
  }
  return text + "]";
}

}  // namespace

CallLog::CallLog() {
  const char* path = std::getenv("TAMSA_SIM_LOG");
  if (path != nullptr && *path != '\0') file_ = std::fopen(path, "a");
}

CallLog::~CallLog() {
  if (file_ != nullptr) std::fclose(file_);
}

void CallLog::append(const std::string& line) {
  if (file_ != nullptr) {
    std::fputs(line.c_str(), file_);
    std::fputc('\n', file_);
    std::fflush(file_);
  }
  if (lines_ >= kMaxLines) {
    std::size_t cut = 0;
    for (std::size_t n = 0; n < kMaxLines / 2; ++n) cut = text_.find('\n', cut) + 1;
    text_.erase(0, cut);
    lines_ -= kMaxLines / 2;
    text_ += "! older lines dropped\n";
    ++lines_;
  }
  text_ += line;
  text_ += '\n';
  ++lines_;
}

std::string formatArg(const IntList& list) {
  return listText(list.values, list.count);
}

std::string formatArg(const ByteList& list) {
  return listText(list.values, list.count);
}

std::string formatArg(const NameArg& name) {
  if (name.bytes == nullptr) return "null";
  std::string text = "\"";
  for (char c : nameFromBytes(name.bytes, name.width)) {
    const auto code = static_cast<unsigned char>(c);
    text += (code < 0x20 || code == '"' || code == '\\' || code >= 0x7F) ? '?' : c;
  }
  return text + "\"";
}

std::string formatArg(const WaveArg& wave) {
  if (wave.parameters == nullptr) return "null";
  std::string text = "{";
  text += std::to_string(wave.parameters->startPoint);
  text += ',';
  text += std::to_string(wave.parameters->numberOfPoints);
  text += ',';
  text += std::to_string(wave.parameters->step);
  text += '}';
  return text;
}

}  // namespace rx9400::sim
