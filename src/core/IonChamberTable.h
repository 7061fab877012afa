// The dosimeter's ion chambers and their cal factors, as the instrument reads them and the ion chamber
// dialogs show and change them. The records are the device library's own; the table only keeps them.
//
// The count, not the length of the record list, says how many chambers there are: a chamber whose
// first cal factor the dosimeter refused stays behind the count and is overwritten by the next one
// added.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "device/EnumsStructs.h"

namespace rx9400 {

struct PluginContext;

/// Runs one step of a dialog handler; a failing step (an index outside the table, a failing library
/// call) is skipped and the handler goes on with the next one.
template <typename Step>
void skipOnFailure(Step&& step) noexcept {
  try {
    step();
  } catch (...) {
  }
}

/// The catalogue literal of a cal constant's unit by its unit code, with its leading blank; any code
/// outside 1 to 4 gives the R/C text.
std::string_view unitLiteral(std::int32_t unitCode);

/// A cal constant as the dialogs and the instrument show it: scientific text with the catalogue's
/// exponent letter, then the unit text by unit code.
std::string calConstantLabel(PluginContext& context, const CalFactor& calFactor);

/// The chamber's cal factors in use: its count of them, at most ten.
std::span<CalFactor> usedCalFactors(IonChamber& chamber);
std::span<const CalFactor> usedCalFactors(const IonChamber& chamber);

/// The text of a chamber's or a cal factor's fixed-length name.
std::string nameOf(const IonChamber& chamber);
std::string nameOf(const CalFactor& calFactor);
/// Writes a name into a fixed-length field: cut to the field, zero-filled behind.
void setName(char (&field)[kChamberNameLength], std::string_view name);
/// The name as the device library takes it.
std::array<char, kChamberNameLength> nameBytes(std::string_view name);

struct IonChamberTable {
  std::vector<IonChamber> records;     ///< lower bound 0; may hold records past the count
  std::uint8_t count = 0;              ///< the number of chambers
  std::int16_t selectedChamber = 0;    ///< chamber number handed to the dosimeter; 0 = none
  std::int16_t selectedCalFactor = 0;  ///< cal factor number handed to the dosimeter; 0 = none
  std::string selectedChamberName;     ///< the chamber list's text chosen at Continue
  bool noIonChamber = false;           ///< the user chose "No Ion Chamber"
  bool readOnly = false;               ///< the dialogs only let the user choose

  /// The chambers in use: the count, or fewer when the record list is shorter.
  std::size_t size() const;
  /// The chamber at an index below size(); throws std::out_of_range otherwise.
  IonChamber& at(std::size_t index);
  const IonChamber& at(std::size_t index) const;
  /// The cal factor at a slot below the chamber's count; throws std::out_of_range otherwise.
  CalFactor& calFactorAt(std::size_t chamber, std::size_t slot);
  const CalFactor& calFactorAt(std::size_t chamber, std::size_t slot) const;
  /// The cal constant's label of a chamber's cal factor; empty when there is no such cal factor.
  std::string calConstantText(PluginContext& context, int chamber, int slot) const;
  /// The index of the chamber with this number, if one of the chambers in use has it.
  std::optional<std::size_t> indexOfNumber(std::int16_t number) const;

  /// True when a chamber other than `except` is named exactly so.
  bool chamberNameTaken(std::string_view name, std::optional<std::size_t> except = {}) const;
  /// True when a cal factor of the chamber other than slot `except` is named exactly so.
  bool calFactorNameTaken(std::size_t chamber, std::string_view name,
                          std::optional<std::size_t> except = {}) const;

  /// Adds a chamber behind the others (a cleared record with this name and number); the count grows.
  /// Returns its index.
  std::size_t appendChamber(std::string_view name, std::int16_t number);
  /// Takes the last chamber back out of the count; its record stays behind it.
  void dropLastChamber();
  /// The slot the chamber's next cal factor goes into (its count); throws std::out_of_range when all
  /// ten are used. The slot keeps what it held.
  CalFactor& nextCalFactorSlot(std::size_t chamber);

  /// Removes the ticked chambers and, from the others, the ticked cal factors; later records and slots
  /// move down and the counts fall. Freed records and slots are cleared.
  void removeMarked();
  /// Every chamber and cal factor unticked.
  void clearMarks();
};

}  // namespace rx9400
