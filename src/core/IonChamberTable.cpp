// The dosimeter's ion chambers and cal factors.
#include "core/IonChamberTable.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "core/CatalogueLiterals.h"
#include "core/NumberText.h"
#include "core/PluginContext.h"
#include "core/Text.h"

namespace rx9400 {

std::string_view unitLiteral(std::int32_t unitCode) {
  switch (unitCode) {
    case 2:
      return catalogue::kUnitRnCSpaced;
    case 3:
      return catalogue::kUnitGyCSpaced;
    case 4:
      return catalogue::kUnitGynCSpaced;
    default:
      return catalogue::kUnitRCSpaced;
  }
}

std::string calConstantLabel(PluginContext& context, const CalFactor& calFactor) {
  return scientificText(calFactor.calConstant, context.catalogue.text(catalogue::kExponentLetter),
                        context.services.locale.decimalSeparator()) +
         context.catalogue.text(unitLiteral(calFactor.unitCode));
}

std::span<CalFactor> usedCalFactors(IonChamber& chamber) {
  return {chamber.calFactors, std::min<std::size_t>(chamber.calFactorCount, kMaxCalFactors)};
}

std::span<const CalFactor> usedCalFactors(const IonChamber& chamber) {
  return {chamber.calFactors, std::min<std::size_t>(chamber.calFactorCount, kMaxCalFactors)};
}

std::string nameOf(const IonChamber& chamber) {
  return textOfFixedBytes(chamber.name, kChamberNameLength);
}

std::string nameOf(const CalFactor& calFactor) {
  return textOfFixedBytes(calFactor.name, kChamberNameLength);
}

void setName(char (&field)[kChamberNameLength], std::string_view name) {
  const std::string bytes = fixedLengthBytes(name, kChamberNameLength);
  std::memcpy(field, bytes.data(), kChamberNameLength);
}

std::array<char, kChamberNameLength> nameBytes(std::string_view name) {
  const std::string field = fixedLengthBytes(name, kChamberNameLength);
  std::array<char, kChamberNameLength> bytes{};
  std::copy(field.begin(), field.end(), bytes.begin());
  return bytes;
}

std::size_t IonChamberTable::size() const {
  return std::min<std::size_t>(count, records.size());
}

IonChamber& IonChamberTable::at(std::size_t index) {
  if (index >= size()) throw std::out_of_range("no ion chamber at this index");
  return records[index];
}

const IonChamber& IonChamberTable::at(std::size_t index) const {
  if (index >= size()) throw std::out_of_range("no ion chamber at this index");
  return records[index];
}

CalFactor& IonChamberTable::calFactorAt(std::size_t chamber, std::size_t slot) {
  return const_cast<CalFactor&>(std::as_const(*this).calFactorAt(chamber, slot));
}

const CalFactor& IonChamberTable::calFactorAt(std::size_t chamber, std::size_t slot) const {
  const auto used = usedCalFactors(at(chamber));
  if (slot >= used.size()) throw std::out_of_range("no cal factor in this slot");
  return used[slot];
}

std::string IonChamberTable::calConstantText(PluginContext& context, int chamber, int slot) const {
  if (chamber < 0 || slot < 0 || static_cast<std::size_t>(chamber) >= size() ||
      static_cast<std::size_t>(slot) >= usedCalFactors(records[static_cast<std::size_t>(chamber)]).size()) {
    return {};
  }
  return calConstantLabel(context,
                          calFactorAt(static_cast<std::size_t>(chamber), static_cast<std::size_t>(slot)));
}

std::optional<std::size_t> IonChamberTable::indexOfNumber(std::int16_t number) const {
  for (std::size_t i = 0; i < size(); ++i) {
    if (records[i].number != 0 && records[i].number == number) return i;
  }
  return std::nullopt;
}

bool IonChamberTable::chamberNameTaken(std::string_view name, std::optional<std::size_t> except) const {
  for (std::size_t i = 0; i < size(); ++i) {
    if (i != except && nameOf(records[i]) == name) return true;
  }
  return false;
}

bool IonChamberTable::calFactorNameTaken(std::size_t chamber, std::string_view name,
                                         std::optional<std::size_t> except) const {
  const auto used = usedCalFactors(at(chamber));
  for (std::size_t slot = 0; slot < used.size(); ++slot) {
    if (slot != except && nameOf(used[slot]) == name) return true;
  }
  return false;
}

std::size_t IonChamberTable::appendChamber(std::string_view name, std::int16_t number) {
  if (count == 255) throw std::length_error("the ion chamber count is full");
  const std::size_t index = count;
  records.resize(index + 1);
  records[index] = IonChamber{};
  setName(records[index].name, name);
  records[index].number = number;
  ++count;
  return index;
}

void IonChamberTable::dropLastChamber() {
  if (count > 0) --count;
}

CalFactor& IonChamberTable::nextCalFactorSlot(std::size_t chamber) {
  IonChamber& record = at(chamber);
  if (record.calFactorCount >= kMaxCalFactors) throw std::out_of_range("all ten cal factors are used");
  return record.calFactors[record.calFactorCount];
}

void IonChamberTable::removeMarked() {
  std::vector<IonChamber> kept;
  for (std::size_t i = 0; i < size(); ++i) {
    if (records[i].mark == 1) continue;
    IonChamber chamber = records[i];
    std::size_t used = 0;
    for (const CalFactor& calFactor : usedCalFactors(records[i])) {
      if (calFactor.mark != 1) chamber.calFactors[used++] = calFactor;
    }
    std::fill(std::begin(chamber.calFactors) + used, std::end(chamber.calFactors), CalFactor{});
    chamber.calFactorCount = static_cast<std::uint8_t>(used);
    kept.push_back(chamber);
  }
  records = std::move(kept);
  count = static_cast<std::uint8_t>(records.size());
}

void IonChamberTable::clearMarks() {
  for (IonChamber& chamber : records) {
    chamber.mark = 0;
    for (CalFactor& calFactor : chamber.calFactors) calFactor.mark = 0;
  }
}

}  // namespace rx9400
