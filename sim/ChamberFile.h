// The dosimeter's ion-chamber file as the library publishes it for GetIonChamberInfo.
//
// One-byte text, every field followed by a TAB: the chamber count; then per chamber its number, name
// and cal-factor count; then per cal factor its number, name, unit code and cal constant (printf
// "%.7G" with "." as decimal point). The library puts one zero byte after the text.
//
//   2\t1\tIC-A\t1\t1\tCF1\t1\t1.2345E+09\t2\tIC-B\t...
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Scenario.h"

namespace rx9400::sim {

std::string chamberFileText(const std::vector<ChamberEntry>& chambers);

/// A cal constant as the chamber file writes it: "%.7G", "." as decimal point, exponent of at least two
/// digits, whatever the C library's locale or exponent width.
std::string formatCalConstant(float constant);

/// The text of a fixed-width one-byte name field: up to `width` bytes, ending early at a zero byte.
std::string nameFromBytes(const char* bytes, std::size_t width);

}  // namespace rx9400::sim
