#include "SessionFormat.h"

#include <algorithm>
#include <cstdio>

#include "device/EnumsStructs.h"

namespace rx9400::session {
namespace {

struct Rule {
  std::string_view name;
  std::vector<PointerShape> pointers;
  bool poll = false;
  SectionRead section = SectionRead::None;
};

constexpr bool kFilled = true;
constexpr bool kRead = false;
constexpr int kName = static_cast<int>(kChamberNameLength);

/// The exports whose pointer arguments are not a single input record, the status polls and the section
/// reads. Argument positions count from 0.
const std::vector<Rule>& rules() {
  static const std::vector<Rule> table = {
      {"MBGetScanCompleteStatus", {}, true},
      {"MBGetDetectorInfoOfType", {{1, kFilled, Count::OfType}}},
      {"MBConnectToDetectors", {{0, kFilled, Count::Argument, 2}, {1, kFilled, Count::Argument, 2}}},
      {"MBGetUSBStatus", {}, true},
      {"MBGetZigBeeStatus", {}, true},
      {"MBGetDetectorStatus", {{0, kFilled}}, true},
      {"MBGetBatteryStatus", {{0, kFilled}}, true},
      {"MBGetAllInvalidTargetFilters", {{1, kFilled, Count::Pointee, 2}, {2, kFilled}}},
      {"MBGetValidTargetFilters", {{1, kFilled, Count::Pointee, 2}, {2, kFilled}}},
      {"MBGetDefaultTargetFilter", {{1, kFilled}}},
      {"MBGetMeasuredData", {{0, kFilled}}},
      {"MBGetDosimeterMeasuredData", {{0, kFilled}}},
      {"MBGetmAsMeasuredData", {{0, kFilled}}},
      {"MBGetWaveformAvailabilityStatus", {}, true, SectionRead::Waveform},
      {"MBGetmAsNumberOfDataPoints", {{1, kFilled}}},
      {"MBGetmAsWaveFormDataPoints", {{4, kFilled, Count::Argument, 3}}},
      {"MBGetADCF", {{1, kFilled}}},
      {"MBGetDosimeterMode", {{1, kFilled}}},
      {"MBGetDosimeterUnit", {{1, kFilled}}},
      {"MBGetTempPressureOffset", {{1, kFilled}}},
      {"MBGetChamberFileInfo", {}, false, SectionRead::ChamberFile},
      {"MBGetIonChamberCalFactor", {{1, kFilled}}},
      {"MBAddNewIonChamber", {{1, kRead, Count::Fixed, kName}}},
      {"MBAddNewCalFactor", {{2, kFilled}}},
      {"MBEditIonChamber", {{2, kRead, Count::Fixed, kName}}},
      {"MBEditCalfactor", {{2, kFilled}}},
      {"MBGetDetectorInfo", {{1, kFilled}}},
      {"MBGetDetectorInfoOfAll", {{0, kFilled, Count::Pointee, 1}, {1, kFilled}}},
      {"MBGetDetectorPOSTStatusOfAll", {{0, kFilled, Count::Result}}},
      {"MBGetDetectorStatusOfAll", {{0, kFilled, Count::Result}}, true},
      {"MBGetMeasurementStatus", {}, true},
      {"MBGetCalibrationData", {{1, kFilled, Count::Argument, 2}}},
      {"MBGetChannelData", {{1, kFilled, Count::Argument, 2}}},
      {"MBGetOffsetData", {{1, kFilled, Count::Argument, 2}}},
      {"MBUploadTargetFilter", {{1, kRead, Count::Argument, 2}}},
      {"MBGetUploadStatus", {}, true},
      {"MBSendByteArray", {{1, kRead, Count::Argument, 2}}},
      {"MBSendReceiveByteArray",
       {{1, kRead, Count::Argument, 2}, {3, kFilled, Count::Pointee, 4}, {4, kFilled}}},
      {"MBGetZigBeeRSSI", {}, true},
      {"MBGetmAsCalConstant", {{1, kFilled}}},
      {"MBGetmAsCalDate", {{1, kFilled}}},
      {"MBGetmAsDiagData", {{1, kFilled, Count::Argument, 2}}},
      {"MBSetmAsCalibrationSettings", {{1, kRead, Count::Argument, 2}}},
      {"MBGetmAsWaveformAvailabilityStatus", {}, true},
  };
  return table;
}

std::vector<std::string_view> namesOf(std::string_view list) {
  std::vector<std::string_view> names;
  list = list.substr(1, list.size() - 2);  // the parentheses
  while (!list.empty()) {
    const std::size_t comma = list.find(',');
    std::string_view name = list.substr(0, comma);
    while (!name.empty() && name.front() == ' ') name.remove_prefix(1);
    names.push_back(name);
    if (comma == std::string_view::npos) break;
    list.remove_prefix(comma + 1);
  }
  return names;
}

std::vector<ExportShape> build() {
  struct Listed {
    std::string_view name;
    std::string_view arguments;
  };
  static constexpr Listed listed[] = {
#define MB_FUNCTION(Result, Name, Parameters, Arguments) {#Name, #Arguments},
#include "device/MBFunctionList.h"
  };
  std::vector<ExportShape> shapes;
  for (const Listed& entry : listed) {
    ExportShape shape;
    shape.name = entry.name;
    shape.arguments = namesOf(entry.arguments);
    const auto id = std::find(shape.arguments.begin(), shape.arguments.end(), "id");
    if (id != shape.arguments.end()) shape.idArgument = static_cast<int>(id - shape.arguments.begin());
    for (const Rule& rule : rules()) {
      if (rule.name != entry.name) continue;
      shape.pointers = rule.pointers;
      shape.poll = rule.poll;
      shape.section = rule.section;
    }
    shapes.push_back(std::move(shape));
  }
  return shapes;
}

}  // namespace

PointerShape ExportShape::pointer(int argument) const {
  for (const PointerShape& shape : pointers) {
    if (shape.argument == argument) return shape;
  }
  return PointerShape{argument, false, Count::One, 0};
}

const std::vector<ExportShape>& exportShapes() {
  static const std::vector<ExportShape> shapes = build();
  return shapes;
}

const ExportShape* shapeOf(std::string_view name) {
  for (const ExportShape& shape : exportShapes()) {
    if (shape.name == name) return &shape;
  }
  return nullptr;
}

std::size_t elementCount(const PointerShape& shape, const std::vector<std::int64_t>& values,
                         std::int64_t result, std::int64_t before, std::int64_t after, std::int64_t ofType) {
  std::int64_t count = 1;
  switch (shape.count) {
    case Count::One:
      break;
    case Count::Argument:
      count = static_cast<std::size_t>(shape.from) < values.size()
                  ? values[static_cast<std::size_t>(shape.from)]
                  : 0;
      break;
    case Count::Pointee:
      count = before > 0 ? std::min(after, before) : std::min<std::int64_t>(after, 255);
      break;
    case Count::Result:
      count = std::min<std::int64_t>(result, 255);
      break;
    case Count::Fixed:
      count = shape.from;
      break;
    case Count::OfType:
      count = ofType;
      break;
  }
  return static_cast<std::size_t>(std::max<std::int64_t>(count, 0));
}

void appendHex(std::string& out, const void* data, std::size_t size) {
  static constexpr char kDigits[] = "0123456789abcdef";
  const auto* bytes = static_cast<const std::uint8_t*>(data);
  const std::size_t start = out.size();
  out.resize(start + 2 * size);
  char* to = out.data() + start;
  for (std::size_t i = 0; i < size; ++i) {
    *to++ = kDigits[bytes[i] >> 4];
    *to++ = kDigits[bytes[i] & 0xF];
  }
}

bool parseHex(std::string_view hex, std::string& bytes) {
  if (hex.size() % 2 != 0) return false;
  const auto digit = [](char c) -> int {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
  };
  bytes.resize(hex.size() / 2);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const int high = digit(hex[2 * i]);
    const int low = digit(hex[2 * i + 1]);
    if (high < 0 || low < 0) return false;
    bytes[i] = static_cast<char>(high << 4 | low);
  }
  return true;
}

std::string sectionName(std::int32_t id) {
  char name[32];
  std::snprintf(name, sizeof name, "MB_%08lld", static_cast<long long>(id));
  return name;
}

}  // namespace rx9400::session
