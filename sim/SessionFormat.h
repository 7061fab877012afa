// The session file that the recorder writes and the simulator replays (format in README.md), and what
// both must know of every export: which argument names the detector, which pointer arguments the
// library fills and how many elements, which calls are status polls and after which the plug-in reads a
// shared-memory section.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace rx9400::session {

inline constexpr const char* kFormatName = "TamsaMBDll session";
inline constexpr int kFormatVersion = 1;

/// How many elements a pointer argument holds.
enum class Count : std::uint8_t {
  One,       ///< one element
  Argument,  ///< the value of the by-value argument `from`
  Pointee,   ///< the 32-bit count the argument `from` points at after the call, never more than before it
  Result,    ///< the call's result
  Fixed,     ///< exactly `from` elements
  OfType,    ///< the last MBGetNumberOfDetectors answer for the type code in argument 0
};

struct PointerShape {
  int argument = -1;
  bool filled = false;  ///< the library writes it (an output, or an input it may change)
  Count count = Count::One;
  int from = 0;
};

/// After which calls the plug-in reads the detector's section, and how many bytes.
enum class SectionRead : std::uint8_t {
  None,
  ChamberFile,  ///< MBGetChamberFileInfo: the result's number of bytes, when positive
  Waveform,     ///< MBGetWaveformAvailabilityStatus: 4 bytes per point of the last MBSetWaveformParameters
};

struct ExportShape {
  std::string_view name;
  std::vector<std::string_view> arguments;  ///< the parameters' names, from the export list
  int idArgument = -1;                      ///< the argument naming the detector, if any
  std::vector<PointerShape> pointers;       ///< the pointer arguments with a rule; any other is one input
  bool poll = false;  ///< a status query: an extra one in a replay repeats the last recorded answer
  SectionRead section = SectionRead::None;

  /// The rule of pointer argument `argument` (one input element when the table names none).
  PointerShape pointer(int argument) const;
};

/// Every export, in the order of the export list.
const std::vector<ExportShape>& exportShapes();
/// The shape of the export `name`, or nullptr.
const ExportShape* shapeOf(std::string_view name);

/// The elements a pointer argument holds after a call, by its rule. `values` are the call's by-value
/// arguments (pointers as 0), `before` the count a Pointee argument held before the call, `ofType` the
/// last number of detectors of the type asked for. Never negative.
std::size_t elementCount(const PointerShape& shape, const std::vector<std::int64_t>& values,
                         std::int64_t result, std::int64_t before, std::int64_t after, std::int64_t ofType);

/// Appends lower-case hexadecimal digits of `size` bytes.
void appendHex(std::string& out, const void* data, std::size_t size);
/// The bytes of a hexadecimal text; false for an odd length or a character that is not a digit.
bool parseHex(std::string_view hex, std::string& bytes);

/// "MB_" and the identifier, zero-padded to eight digits.
std::string sectionName(std::int32_t id);

}  // namespace rx9400::session
