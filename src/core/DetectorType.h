// The detector type codes 1 to 5 and what each says of a detector: which parts it has (all-in-one
// detector, dosimeter, mAs meter), its kind word in the connect dialog's list and its display name.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "core/CatalogueLiterals.h"

namespace rx9400 {

/// Detector type codes, as the scan functions and the detector kinds list use them.
enum class DetectorType : std::int32_t {
  Aio = 1,      ///< all-in-one X-ray detector
  Mas = 2,      ///< mAs meter alone
  Dose = 3,     ///< dosimeter with external ion chambers
  AioMas = 4,   ///< all-in-one detector with mAs meter
  DoseMas = 5,  ///< dosimeter with mAs meter
};

namespace detail {
struct DetectorTypeFacts {
  bool aio;
  bool dose;
  bool mas;
  std::string_view kindWord;
  std::string_view displayNameLiteral;
};
inline constexpr DetectorTypeFacts kDetectorTypes[] = {
    {true, false, false, "AIO", catalogue::kDisplayNameAio},
    {false, false, true, "MAS", catalogue::kDisplayNameMas},
    {false, true, false, "DOSE", catalogue::kDisplayNameDose},
    {true, false, true, "AIO+MAS", catalogue::kDisplayNameAioMas},
    {false, true, true, "DOSE+MAS", catalogue::kDisplayNameDoseMas},
};
/// The facts of a type code; a code outside 1 to 5 has no part, the kind word "?" and no display name.
constexpr DetectorTypeFacts facts(std::int32_t typeCode) {
  return typeCode >= 1 && typeCode <= 5 ? kDetectorTypes[typeCode - 1]
                                        : DetectorTypeFacts{false, false, false, "?", {}};
}
}  // namespace detail

/// The type code has an all-in-one detector (1 and 4).
constexpr bool hasAioPart(std::int32_t typeCode) {
  return detail::facts(typeCode).aio;
}
/// The type code has a dosimeter (3 and 5).
constexpr bool hasDosePart(std::int32_t typeCode) {
  return detail::facts(typeCode).dose;
}
/// The type code has an mAs meter (2, 4 and 5).
constexpr bool hasMasPart(std::int32_t typeCode) {
  return detail::facts(typeCode).mas;
}
/// The kind word of the connect dialog's list: "AIO", "MAS", "DOSE", "AIO+MAS", "DOSE+MAS"; "?" else.
inline std::string detectorKindWord(std::int32_t typeCode) {
  return std::string(detail::facts(typeCode).kindWord);
}
/// The catalogue literal of a detector's display name; empty for a code outside 1 to 5.
constexpr std::string_view detectorDisplayNameLiteral(std::int32_t typeCode) {
  return detail::facts(typeCode).displayNameLiteral;
}
/// The type code as a DetectorType, for a switch over the named codes.
constexpr DetectorType detectorType(std::int32_t typeCode) {
  return static_cast<DetectorType>(typeCode);
}
/// The type two slots make together, in either order: an all-in-one detector or a dosimeter beside an
/// mAs meter; none for any other pair.
constexpr std::optional<DetectorType> pairedType(std::int32_t first, std::int32_t second) {
  const bool firstIsMas = detectorType(first) == DetectorType::Mas;
  if (!firstIsMas && detectorType(second) != DetectorType::Mas) return std::nullopt;
  switch (detectorType(firstIsMas ? second : first)) {
    case DetectorType::Aio:
      return DetectorType::AioMas;
    case DetectorType::Dose:
      return DetectorType::DoseMas;
    default:
      return std::nullopt;
  }
}

}  // namespace rx9400
