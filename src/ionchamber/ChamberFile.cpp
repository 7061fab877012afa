// The dosimeter's chamber file.
#include "ionchamber/ChamberFile.h"

#include <cmath>
#include <optional>
#include <stdexcept>

#include "core/IonChamberTable.h"
#include "core/NumberText.h"

namespace rx9400 {

namespace {

/// The fields of the text, one at a time; a last field without its TAB still counts.
class Fields {
 public:
  explicit Fields(std::string_view bytes) : text_(bytes.substr(0, bytes.find('\0'))) {}
  std::optional<std::string_view> next() {
    if (position_ >= text_.size()) return std::nullopt;
    const std::size_t tab = text_.find('\t', position_);
    const std::size_t end = tab == std::string_view::npos ? text_.size() : tab;
    const std::string_view field = text_.substr(position_, end - position_);
    position_ = end + 1;
    return field;
  }
  bool done() const { return position_ >= text_.size(); }

 private:
  std::string_view text_;
  std::size_t position_ = 0;
};

/// True when the platform's parse reads the whole text as its number: blanks anywhere, a sign, digits
/// with one "." or ",", and an exponent with digits.
bool wholyANumber(std::string_view text) {
  std::string compact;
  for (const char c : text) {
    if (c != ' ' && c != '\n') compact.push_back(c == ',' ? '.' : c);
  }
  std::size_t i = 0;
  const auto digits = [&] {
    const std::size_t start = i;
    while (i < compact.size() && compact[i] >= '0' && compact[i] <= '9') ++i;
    return i - start;
  };
  if (i < compact.size() && (compact[i] == '+' || compact[i] == '-')) ++i;
  std::size_t mantissa = digits();
  if (i < compact.size() && compact[i] == '.') ++i, mantissa += digits();
  if (mantissa == 0) return false;
  if (i < compact.size() && std::string_view("eEdD").find(compact[i]) != std::string_view::npos) {
    ++i;
    if (i < compact.size() && (compact[i] == '+' || compact[i] == '-')) ++i;
    if (digits() == 0) return false;
  }
  return i == compact.size();
}

/// A number field as Val_OS reads it (nothing when the field is missing or the number overflows); a
/// field read only in part is named.
std::optional<double> number(std::optional<std::string_view> field, const std::string& what,
                             std::vector<std::string>& problems) {
  if (!field) return std::nullopt;
  if (!wholyANumber(*field)) problems.push_back(what + ": a number text read only up to what is no number");
  try {
    return valOS(*field);
  } catch (const std::out_of_range&) {
    return std::nullopt;
  }
}

/// A whole number field: Val_OS's number rounded half to even, when it lies in low to high.
std::optional<long> wholeNumber(std::optional<std::string_view> field, long low, long high,
                                const std::string& what, std::vector<std::string>& problems) {
  const std::optional<double> value = number(field, what, problems);
  if (!value) return std::nullopt;
  const double rounded = std::nearbyint(*value);
  if (!(rounded >= static_cast<double>(low) && rounded <= static_cast<double>(high))) return std::nullopt;
  return static_cast<long>(rounded);
}

std::optional<float> calConstant(std::optional<std::string_view> field, const std::string& what,
                                 std::vector<std::string>& problems) {
  const std::optional<double> value = number(field, what, problems);
  if (!value || !std::isfinite(*value) || std::fabs(*value) > 3.4028234e38) return std::nullopt;
  return static_cast<float>(*value);
}

/// A name into its field: control and non-ASCII bytes become "?", and it is cut to the field.
void readName(std::string_view field, char (&name)[kChamberNameLength], const std::string& what,
              std::vector<std::string>& problems) {
  std::string text(field.substr(0, kChamberNameLength));
  bool replaced = false;
  for (char& c : text) {
    const auto code = static_cast<unsigned char>(c);
    if (code < 0x20 || code >= 0x7F) c = '?', replaced = true;
  }
  if (field.size() > kChamberNameLength) problems.push_back(what + ": name cut to 15 bytes");
  if (replaced) problems.push_back(what + ": name bytes outside ASCII shown as ?");
  setName(name, text);
}

}  // namespace

ChamberFile readChamberFile(std::string_view bytes) {
  ChamberFile file;
  auto& problems = file.problems;
  Fields fields(bytes);
  const auto count = wholeNumber(fields.next(), 0, 32767, "the chamber count", problems);
  if (!count) {
    problems.push_back("the chamber count is missing or out of range: nothing read");
    return file;
  }
  for (long c = 1; c <= *count; ++c) {
    const std::string what = "chamber " + std::to_string(c);
    const auto numberField = fields.next();
    const auto nameField = fields.next();
    const auto factors = wholeNumber(fields.next(), 0, 32767, what, problems);
    if (!factors || !nameField) {
      problems.push_back(what + ": the file ends or loses its order here; the rest is dropped");
      return file;
    }
    IonChamber chamber{};
    const auto number = wholeNumber(numberField, 1, 32767, what, problems);
    chamber.number = static_cast<std::int16_t>(number.value_or(0));
    readName(*nameField, chamber.name, what, problems);
    for (long f = 1; f <= *factors; ++f) {
      const std::string factorWhat = what + ", cal factor " + std::to_string(f);
      if (fields.done()) {
        problems.push_back(factorWhat + ": the file ends here");
        break;
      }
      const auto factorNumber = wholeNumber(fields.next(), 1, 32767, factorWhat, problems);
      const auto factorName = fields.next();
      const auto unit = wholeNumber(fields.next(), -2147483648L, 2147483647L, factorWhat, problems);
      const auto constant = calConstant(fields.next(), factorWhat, problems);
      if (!factorNumber || !factorName || !unit || !constant) {
        problems.push_back(factorWhat + ": a field is missing or not a number; dropped");
        continue;
      }
      if (chamber.calFactorCount == kMaxCalFactors) {
        problems.push_back(factorWhat + ": more than 10 cal factors; dropped");
        continue;
      }
      CalFactor& slot = chamber.calFactors[chamber.calFactorCount++];
      slot.number = static_cast<std::int16_t>(*factorNumber);
      slot.unitCode = static_cast<std::int32_t>(*unit);
      slot.calConstant = *constant;
      readName(*factorName, slot.name, factorWhat, problems);
    }
    if (!number) {
      problems.push_back(what + ": its number is not a chamber number; dropped");
    } else if (file.chambers.size() == kMaxChambersRead) {
      problems.push_back(what + ": more than 10 chambers; dropped");
    } else {
      file.chambers.push_back(chamber);
    }
  }
  if (!fields.done()) problems.push_back("fields after the last chamber ignored");
  return file;
}

}  // namespace rx9400
