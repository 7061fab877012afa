#include "ChamberFile.h"

#include <cstdio>

namespace rx9400::sim {

namespace {

/// TAB separates the fields: a name must not carry one into the file.
std::string fieldText(const std::string& name) {
  std::string text = name;
  for (char& c : text) {
    if (c == '\t') c = ' ';
  }
  return text;
}

}  // namespace

std::string formatCalConstant(float constant) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.7G", static_cast<double>(constant));
  std::string text = buffer;
  for (char& c : text) {
    if (c == ',') c = '.';
  }
  // Some C libraries write three exponent digits: keep two unless more are needed.
  const std::size_t e = text.find('E');
  if (e != std::string::npos && e + 2 < text.size()) {
    std::size_t digits = e + 2;  // after the sign
    while (text.size() - digits > 2 && text[digits] == '0') text.erase(digits, 1);
  }
  return text;
}

std::string nameFromBytes(const char* bytes, std::size_t width) {
  std::string name;
  if (bytes == nullptr) return name;
  for (std::size_t i = 0; i < width && bytes[i] != '\0'; ++i) name.push_back(bytes[i]);
  return name;
}

std::string chamberFileText(const std::vector<ChamberEntry>& chambers) {
  std::string text = std::to_string(chambers.size()) + '\t';
  for (const ChamberEntry& chamber : chambers) {
    text += std::to_string(chamber.number) + '\t' + fieldText(chamber.name) + '\t' +
            std::to_string(chamber.calFactors.size()) + '\t';
    for (const CalFactorEntry& factor : chamber.calFactors) {
      text += std::to_string(factor.number) + '\t' + fieldText(factor.name) + '\t' +
              std::to_string(factor.unitCode) + '\t' + formatCalConstant(factor.constant) + '\t';
    }
  }
  return text;
}

}  // namespace rx9400::sim
