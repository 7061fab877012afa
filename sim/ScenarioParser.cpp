// Reading a scenario from JSON. Every object is read strictly: a field the format does not know is an
// error (so that a misspelt fault does not silently do nothing); fields whose name starts with "_" are
// comments and are skipped.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <set>
#include <utility>

#include <nlohmann/json.hpp>

#include "Scenario.h"
#include "Waveforms.h"

namespace rx9400::sim {

namespace {

using Json = nlohmann::json;

[[noreturn]] void fail(const std::string& path, const std::string& what) {
  throw ScenarioError((path.empty() ? std::string("scenario") : path) + ": " + what);
}

std::string childPath(const std::string& path, const std::string& key) {
  return path.empty() ? key : path + "." + key;
}

std::string itemPath(const std::string& path, std::size_t index) {
  return path + "[" + std::to_string(index) + "]";
}

std::int64_t integerOf(const Json& json, const std::string& path, std::int64_t min, std::int64_t max) {
  std::int64_t value = 0;
  if (json.is_number_integer()) {
    value = json.get<std::int64_t>();
  } else if (json.is_number_float()) {
    const double number = json.get<double>();
    if (std::trunc(number) != number || std::abs(number) > 9e15) fail(path, "expected a whole number");
    value = static_cast<std::int64_t>(number);
  } else {
    fail(path, "expected a whole number");
  }
  if (value < min || value > max) {
    fail(path, "must lie in " + std::to_string(min) + " to " + std::to_string(max));
  }
  return value;
}

double numberOf(const Json& json, const std::string& path) {
  if (!json.is_number()) fail(path, "expected a number");
  return json.get<double>();
}

/// One JSON object, read field by field.
class Fields {
 public:
  Fields(const Json& json, std::string path) : json_(json), path_(std::move(path)) {
    if (!json_.is_object()) fail(path_, "expected an object");
  }

  const std::string& path() const { return path_; }
  std::string pathOf(const char* key) const { return childPath(path_, key); }

  /// The field's value, or nullptr when it is absent or null.
  const Json* find(const char* key) {
    used_.insert(key);
    const auto it = json_.find(key);
    if (it == json_.end() || it->is_null()) return nullptr;
    return &*it;
  }
  const Json& require(const char* key) {
    const Json* value = find(key);
    if (value == nullptr) fail(pathOf(key), "is required");
    return *value;
  }

  std::int64_t integer(const char* key, std::int64_t fallback, std::int64_t min, std::int64_t max) {
    const Json* value = find(key);
    return value == nullptr ? fallback : integerOf(*value, pathOf(key), min, max);
  }
  std::int32_t int32(const char* key, std::int64_t fallback,
                     std::int64_t min = std::numeric_limits<std::int32_t>::min(),
                     std::int64_t max = std::numeric_limits<std::int32_t>::max()) {
    return static_cast<std::int32_t>(integer(key, fallback, min, max));
  }
  std::int16_t int16(const char* key, std::int64_t fallback, std::int64_t min = -32768,
                     std::int64_t max = 32767) {
    return static_cast<std::int16_t>(integer(key, fallback, min, max));
  }
  std::uint8_t byte(const char* key, std::int64_t fallback, std::int64_t max = 255) {
    return static_cast<std::uint8_t>(integer(key, fallback, 0, max));
  }
  std::int32_t count(const char* key, std::int64_t fallback) { return int32(key, fallback, 0, 1000000); }
  double number(const char* key, double fallback) {
    const Json* value = find(key);
    return value == nullptr ? fallback : numberOf(*value, pathOf(key));
  }
  float single(const char* key, double fallback) { return static_cast<float>(number(key, fallback)); }
  bool flag(const char* key, bool fallback) {
    const Json* value = find(key);
    if (value == nullptr) return fallback;
    if (!value->is_boolean()) fail(pathOf(key), "expected true or false");
    return value->get<bool>();
  }
  std::string text(const char* key, const std::string& fallback, std::size_t maxLength = 4096) {
    const Json* value = find(key);
    if (value == nullptr) return fallback;
    if (!value->is_string()) fail(pathOf(key), "expected a text");
    std::string result = value->get<std::string>();
    if (result.size() > maxLength)
      fail(pathOf(key), "longer than " + std::to_string(maxLength) + " characters");
    return result;
  }
  /// One of `choices`, returned as its index.
  std::size_t choice(const char* key, std::size_t fallback, std::initializer_list<const char*> choices) {
    const Json* value = find(key);
    if (value == nullptr) return fallback;
    const std::string chosen = value->is_string() ? value->get<std::string>() : std::string();
    std::size_t index = 0;
    std::string names;
    for (const char* name : choices) {
      if (chosen == name) return index;
      names += (index++ == 0 ? "\"" : ", \"") + std::string(name) + "\"";
    }
    fail(pathOf(key), "expected one of " + names);
  }
  /// The field as an array (empty when absent).
  const Json& array(const char* key) {
    static const Json empty = Json::array();
    const Json* value = find(key);
    if (value == nullptr) return empty;
    if (!value->is_array()) fail(pathOf(key), "expected an array");
    return *value;
  }

  /// Fails on the first field that was never asked for.
  void finish() const {
    for (auto it = json_.begin(); it != json_.end(); ++it) {
      if (!it.key().empty() && it.key()[0] == '_') continue;
      if (used_.count(it.key()) == 0) fail(childPath(path_, it.key()), "unknown field");
    }
  }

 private:
  const Json& json_;
  std::string path_;
  std::set<std::string> used_;
};

void copyName(char* target, std::size_t width, const std::string& name) {
  std::memset(target, 0, width);
  std::memcpy(target, name.data(), std::min(width, name.size()));
}

std::string nameText(const Json& json, const std::string& path, std::size_t maxLength) {
  if (!json.is_string()) fail(path, "expected a text");
  std::string name = json.get<std::string>();
  if (name.size() > maxLength) fail(path, "longer than " + std::to_string(maxLength) + " characters");
  return name;
}

Measured measured(Fields& fields, const char* key, Measured fallback) {
  const Json* value = fields.find(key);
  if (value == nullptr) return fallback;
  if (value->is_number()) return {value->get<double>(), kValueValid};
  Fields inner(*value, fields.pathOf(key));
  Measured result{inner.number("value", fallback.value), inner.int32("status", kValueValid)};
  inner.finish();
  return result;
}

FaultWindow window(Fields& fields, const char* key, std::uint8_t* percent = nullptr,
                   std::int64_t defaultPercent = 0) {
  FaultWindow result;
  if (percent != nullptr) *percent = static_cast<std::uint8_t>(defaultPercent);
  const Json* value = fields.find(key);
  if (value == nullptr) return result;
  if (value->is_boolean()) {
    result.enabled = value->get<bool>();
    return result;
  }
  Fields inner(*value, fields.pathOf(key));
  result.enabled = true;
  result.fromPoll = inner.int32("fromPoll", 1, 1);
  result.polls = inner.count("polls", 0);
  if (percent != nullptr) *percent = inner.byte("percent", defaultPercent, 100);
  inner.finish();
  return result;
}

bool isLeapYear(int year) {
  return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

CalDate date(Fields& fields, const char* key, CalDate fallback) {
  const Json* value = fields.find(key);
  if (value == nullptr) return fallback;
  const std::string path = fields.pathOf(key);
  int year = 0;
  int month = 0;
  int day = 0;
  char tail = 0;
  if (!value->is_string() ||
      std::sscanf(value->get<std::string>().c_str(), "%4d-%2d-%2d%c", &year, &month, &day, &tail) != 3) {
    fail(path, "expected a date \"YYYY-MM-DD\"");
  }
  static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (year < 1900 || month < 1 || month > 12 || day < 1 ||
      day > kDays[month - 1] + (month == 2 && isLeapYear(year) ? 1 : 0)) {
    fail(path, "not a calendar date");
  }
  return {static_cast<std::uint8_t>(day), static_cast<std::uint8_t>(month), static_cast<std::int16_t>(year)};
}

/// A version written [major, minor].
void version(Fields& fields, const char* key, std::uint8_t& major, std::uint8_t& minor) {
  const Json* value = fields.find(key);
  if (value == nullptr) return;
  const std::string path = fields.pathOf(key);
  if (!value->is_array() || value->size() != 2) fail(path, "expected [major, minor]");
  major = static_cast<std::uint8_t>(integerOf((*value)[0], itemPath(path, 0), 0, 255));
  minor = static_cast<std::uint8_t>(integerOf((*value)[1], itemPath(path, 1), 0, 255));
}

std::vector<std::int32_t> sampleList(const Json& json, const std::string& path) {
  std::vector<std::int32_t> samples;
  samples.reserve(json.size());
  for (std::size_t i = 0; i < json.size(); ++i) {
    samples.push_back(static_cast<std::int32_t>(integerOf(json[i], itemPath(path, i),
                                                          std::numeric_limits<std::int32_t>::min(),
                                                          std::numeric_limits<std::int32_t>::max())));
  }
  return samples;
}

std::int32_t roundedLevel(double value) {
  return static_cast<std::int32_t>(std::clamp(std::round(value), -1e9, 1e9));
}

/// A waveform: a list of samples, or the shape of a synthetic trace (`shape` gives the defaults).
std::vector<std::int32_t> waveform(Fields& fields, TraceShape shape, const char* levelKey,
                                   double levelScale) {
  const Json* value = fields.find("waveform");
  if (value != nullptr && value->is_array()) return sampleList(*value, fields.pathOf("waveform"));
  if (value != nullptr) {
    Fields inner(*value, fields.pathOf("waveform"));
    shape.points = inner.count("points", shape.points);
    shape.rampPoints = inner.count("rampPoints", shape.points / 20);
    shape.fallPoints = inner.count("fallPoints", shape.points / 15);
    if (const Json* level = inner.find(levelKey)) {
      shape.plateau = roundedLevel(numberOf(*level, inner.pathOf(levelKey)) * levelScale);
    }
    if (const Json* ripple = inner.find("ripple")) {
      shape.ripple = roundedLevel(numberOf(*ripple, inner.pathOf("ripple")) * levelScale);
    }
    shape.ripplePeriod = inner.int32("ripplePeriod", shape.ripplePeriod, 2, 1000000);
    inner.finish();
  }
  return makeTrace(shape);
}

struct DetectorDefaults {
  std::int32_t pollsBeforeStart;
};

Exposure aioExposure(const Json& json, const std::string& path, const DetectorDefaults& defaults) {
  Fields fields(json, path);
  Exposure exposure;
  const std::size_t kind = fields.choice("kind", 0, {"radio", "mammo", "dental", "fluoro"});
  exposure.kind = kind == 3 ? ExposureKind::Fluoro : ExposureKind::Single;
  exposure.pollsBeforeStart = fields.count("pollsBeforeStart", defaults.pollsBeforeStart);
  exposure.pollsBeforeData = fields.count("pollsBeforeData", 0);
  if (exposure.kind == ExposureKind::Fluoro) {
    exposure.deliveries = fields.int32("deliveries", 3, 1, 1000000);
    exposure.pollsBetweenDeliveries = fields.count("pollsBetweenDeliveries", 2);
    exposure.runningOnLastDeliveryOnly =
        fields.choice("fluoroRunning", 0, {"throughout", "lastDelivery"}) == 1;
  }
  AioValues& v = exposure.aio;
  v.dose = measured(fields, "dose", v.dose);
  v.doseRate = measured(fields, "doseRate", v.doseRate);
  v.exposureTime = measured(fields, "exposureTime", v.exposureTime);
  v.pulses = measured(fields, "pulses", v.pulses);
  v.kvpAverage = measured(fields, "kvpAverage", v.kvpAverage);
  v.kvpMaximum = measured(fields, "kvpMaximum", v.kvpMaximum);
  v.kvpPpv = measured(fields, "kvpPpv", v.kvpPpv);
  v.pulseRate = measured(fields, "pulseRate", v.pulseRate);
  v.pulseWidth = measured(fields, "pulseWidth", v.pulseWidth);
  v.hvl = measured(fields, "hvl", v.hvl);

  TraceShape shape;
  shape.points = 3000;
  shape.rampPoints = shape.points / 20;
  shape.fallPoints = shape.points / 15;
  shape.plateau = roundedLevel(v.kvpAverage.value);
  shape.ripple = std::max(1, roundedLevel(v.kvpMaximum.value - v.kvpAverage.value));
  shape.ripplePeriod = 60;
  exposure.waveform = waveform(fields, shape, "plateau", 1.0);
  fields.finish();
  return exposure;
}

Exposure doseExposure(const Json& json, const std::string& path, const DetectorDefaults& defaults) {
  Fields fields(json, path);
  Exposure exposure;
  const std::size_t kind = fields.choice("kind", 0, {"radio", "mammo", "dental", "fluoro"});
  exposure.kind = kind == 3 ? ExposureKind::Fluoro : ExposureKind::Single;
  exposure.pollsBeforeStart = fields.count("pollsBeforeStart", defaults.pollsBeforeStart);
  exposure.pollsBeforeData = fields.count("pollsBeforeData", 0);
  if (exposure.kind == ExposureKind::Fluoro) {
    exposure.deliveries = fields.int32("deliveries", 3, 1, 1000000);
    exposure.pollsBetweenDeliveries = fields.count("pollsBetweenDeliveries", 2);
  }
  exposure.dataWhileIntegrating = fields.flag("dataWhileIntegrating", false);
  exposure.endFlag = fields.choice("endFlag", 0, {"exposureEnded", "autoResetDone"}) == 1
                         ? EndFlag::AutoResetDone
                         : EndFlag::ExposureEnded;
  DoseValues& v = exposure.dose;
  v.dose = measured(fields, "dose", v.dose);
  v.doseRate = measured(fields, "doseRate", v.doseRate);
  v.leakageCurrent = measured(fields, "leakageCurrent", v.leakageCurrent);
  v.exposureTime = fields.number("exposureTime", v.exposureTime);
  fields.finish();
  return exposure;
}

MasExposure masExposure(const Json& json, const std::string& path, const DetectorDefaults& defaults) {
  Fields fields(json, path);
  MasExposure exposure;
  exposure.pollsBeforeStart = fields.count("pollsBeforeStart", defaults.pollsBeforeStart);
  exposure.zeroingReads = fields.count("zeroingReads", 0);
  exposure.pollsBeforeData = fields.count("pollsBeforeData", 0);
  exposure.mA = measured(fields, "mA", exposure.mA);
  exposure.mAs = measured(fields, "mAs", exposure.mAs);
  exposure.pulses = measured(fields, "pulses", exposure.pulses);

  TraceShape shape;
  shape.points = 400;
  shape.rampPoints = shape.points / 20;
  shape.fallPoints = shape.points / 15;
  shape.plateau = masRawFromMilliamperes(exposure.mA.value);
  shape.ripple = shape.plateau / 100;
  shape.ripplePeriod = 40;
  exposure.waveform = waveform(fields, shape, "level", 16777216.0 / 5000.0);
  const double milliseconds = exposure.mA.value > 0.0 ? exposure.mAs.value / exposure.mA.value * 1000.0 : 0.0;
  exposure.span = fields.int32("span", milliseconds > 0.0 ? roundedLevel(milliseconds) : 0, 0);
  fields.finish();
  return exposure;
}

void masConfig(Fields& detector, MasConfig& mas) {
  const Json* json = detector.find("mas");
  if (json == nullptr) return;
  Fields fields(*json, detector.pathOf("mas"));
  mas.inputType = fields.int32("inputType", mas.inputType, 1, 2);
  mas.calConstant = fields.single("calConstant", mas.calConstant);
  mas.calDate = date(fields, "calDate", mas.calDate);
  mas.zeroingReadsOnRequest = fields.count("zeroingReadsOnRequest", mas.zeroingReadsOnRequest);
  mas.repeatExposures = fields.flag("repeatExposures", false);
  const DetectorDefaults defaults{fields.count("pollsBeforeExposure", 2)};
  const Json& exposures = fields.array("exposures");
  for (std::size_t i = 0; i < exposures.size(); ++i) {
    mas.exposures.push_back(masExposure(exposures[i], itemPath(fields.pathOf("exposures"), i), defaults));
  }
  fields.finish();
}

void chambers(Fields& fields, DosimeterConfig& dose) {
  const Json& list = fields.array("chambers");
  const std::string listPath = fields.pathOf("chambers");
  std::set<std::int16_t> chamberNumbers;
  for (std::size_t i = 0; i < list.size(); ++i) {
    Fields chamber(list[i], itemPath(listPath, i));
    ChamberEntry entry;
    entry.number = chamber.int16("number", static_cast<std::int64_t>(i) + 1, 1);
    if (!chamberNumbers.insert(entry.number).second) fail(chamber.pathOf("number"), "used twice");
    entry.name = nameText(chamber.require("name"), chamber.pathOf("name"), kChamberNameLength);
    const Json& factors = chamber.array("calFactors");
    if (factors.size() > kMaxCalFactors) fail(chamber.pathOf("calFactors"), "more than 10 cal factors");
    std::set<std::int16_t> factorNumbers;
    for (std::size_t k = 0; k < factors.size(); ++k) {
      Fields factor(factors[k], itemPath(chamber.pathOf("calFactors"), k));
      CalFactorEntry cf;
      cf.number = factor.int16("number", static_cast<std::int64_t>(k) + 1, 1);
      if (!factorNumbers.insert(cf.number).second) fail(factor.pathOf("number"), "used twice");
      cf.name = nameText(factor.require("name"), factor.pathOf("name"), kChamberNameLength);
      cf.unitCode = factor.int32("unit", 1);
      cf.constant = factor.single("constant", 1.0);
      factor.finish();
      entry.calFactors.push_back(cf);
    }
    chamber.finish();
    dose.chambers.push_back(entry);
  }
  if (static_cast<std::int32_t>(dose.chambers.size()) > dose.maxChambers)
    fail(listPath, "more than maxChambers");
}

void dosimeterConfig(Fields& detector, DosimeterConfig& dose) {
  dose.adcf = {1, 0, 0, {0, 0}, 760.0F, 760.0F, 22.0F, 22.0F, 20.0F};
  dose.mode = {2, 1, {0, 0, 0}};
  dose.unit = {1, 1, 1, 2, 0, {0, 0}};
  dose.offset = {0.0F, 0.0F};
  const Json* json = detector.find("dosimeter");
  if (json == nullptr) return;
  Fields fields(*json, detector.pathOf("dosimeter"));
  if (const Json* adcf = fields.find("adcf")) {
    Fields f(*adcf, fields.pathOf("adcf"));
    dose.adcf.mode = f.int32("mode", dose.adcf.mode);
    dose.adcf.useSetTemperature = f.byte("useSetTemperature", dose.adcf.useSetTemperature);
    dose.adcf.useSetPressure = f.byte("useSetPressure", dose.adcf.useSetPressure);
    dose.adcf.setPressure = f.single("setPressure", dose.adcf.setPressure);
    dose.adcf.defaultPressure = f.single("defaultPressure", dose.adcf.defaultPressure);
    dose.adcf.setTemperature = f.single("setTemperature", dose.adcf.setTemperature);
    dose.adcf.defaultTemperature = f.single("defaultTemperature", dose.adcf.defaultTemperature);
    dose.adcf.referenceTemperature = f.single("referenceTemperature", dose.adcf.referenceTemperature);
    f.finish();
  }
  if (const Json* mode = fields.find("mode")) {
    Fields f(*mode, fields.pathOf("mode"));
    dose.mode.mode = f.int32("mode", dose.mode.mode);
    dose.mode.autoReset = f.byte("autoReset", dose.mode.autoReset);
    f.finish();
  }
  if (const Json* unit = fields.find("unit")) {
    Fields f(*unit, fields.pathOf("unit"));
    dose.unit.doseUnit = f.int32("doseUnit", dose.unit.doseUnit);
    dose.unit.doseRateUnit = f.int32("doseRateUnit", dose.unit.doseRateUnit);
    dose.unit.temperatureUnit = f.int32("temperatureUnit", dose.unit.temperatureUnit);
    dose.unit.pressureUnit = f.int32("pressureUnit", dose.unit.pressureUnit);
    dose.unit.frameRate = f.int16("frameRate", dose.unit.frameRate);
    f.finish();
  }
  if (const Json* offset = fields.find("offset")) {
    Fields f(*offset, fields.pathOf("offset"));
    dose.offset.pressureOffset = f.single("pressure", dose.offset.pressureOffset);
    dose.offset.temperatureOffset = f.single("temperature", dose.offset.temperatureOffset);
    f.finish();
  }
  if (const Json* sensors = fields.find("sensors")) {
    Fields f(*sensors, fields.pathOf("sensors"));
    dose.sensors.temperature = f.single("temperature", dose.sensors.temperature);
    dose.sensors.pressure = f.single("pressure", dose.sensors.pressure);
    dose.sensors.adcf = f.single("adcf", dose.sensors.adcf);
    dose.sensors.biasVoltage = f.single("biasVoltage", dose.sensors.biasVoltage);
    f.finish();
  }
  dose.maxChambers = fields.int32("maxChambers", dose.maxChambers, 0, 1000);
  chambers(fields, dose);
  if (const Json* selection = fields.find("selection")) {
    Fields f(*selection, fields.pathOf("selection"));
    dose.selection.chamberNumber = f.int16("chamber", 0, 0);
    dose.selection.calFactorNumber = f.int16("calFactor", 0, 0);
    f.finish();
  } else if (!dose.chambers.empty() && !dose.chambers.front().calFactors.empty()) {
    dose.selection = {dose.chambers.front().number, dose.chambers.front().calFactors.front().number};
  }
  fields.finish();
}

void faults(Fields& detector, DetectorFaults& f) {
  const Json* json = detector.find("faults");
  if (json == nullptr) return;
  Fields fields(*json, detector.pathOf("faults"));
  f.linkLossAfterCalls = fields.count("linkLossAfterCalls", 0);
  f.zeroError = window(fields, "zeroError");
  f.lowBattery.window = window(fields, "lowBattery", &f.lowBattery.percent, 15);
  f.veryLowBattery.window = window(fields, "veryLowBattery", &f.veryLowBattery.percent, 4);
  f.charging = window(fields, "charging");
  f.temperatureError = window(fields, "temperatureError");
  f.pressureError = window(fields, "pressureError");
  f.biasError = window(fields, "biasError");
  f.sensorReset = window(fields, "sensorReset");
  f.waveformNeverAvailable = fields.flag("waveformNeverAvailable", false);
  f.sectionMissing = fields.flag("sectionMissing", false);
  f.chamberFileMissing = fields.flag("chamberFileMissing", false);
  f.addChamberRefused = fields.flag("addChamberRefused", false);
  f.addCalFactorRefused = fields.flag("addCalFactorRefused", false);
  fields.finish();
}

void targetFilters(Fields& detector, DetectorPlan& plan) {
  const Json* json = detector.find("targetFilters");
  if (json == nullptr) return;
  Fields fields(*json, detector.pathOf("targetFilters"));
  const Json& valid = fields.array("valid");
  for (std::size_t i = 0; i < valid.size(); ++i) {
    plan.validTargetFilters.push_back(
        nameText(valid[i], itemPath(fields.pathOf("valid"), i), kTargetFilterNameLength));
  }
  const Json& invalid = fields.array("invalid");
  for (std::size_t i = 0; i < invalid.size(); ++i) {
    plan.invalidTargetFilters.push_back(
        nameText(invalid[i], itemPath(fields.pathOf("invalid"), i), kTargetFilterNameLength));
  }
  plan.defaultTargetFilter = fields.text(
      "default", plan.validTargetFilters.empty() ? "" : plan.validTargetFilters[0], kTargetFilterNameLength);
  fields.finish();
}

const char* defaultModelName(std::int32_t typeCode) {
  static constexpr const char* kNames[] = {"AIO", "MAS", "DOSE", "AIO+MAS", "DOSE+MAS"};
  return kNames[typeCode - 1];
}

DetectorPlan detector(const Json& json, const std::string& path) {
  Fields fields(json, path);
  DetectorPlan plan;
  DetectorInfo& info = plan.info;
  info.identifier =
      static_cast<std::int32_t>(integerOf(fields.require("identifier"), fields.pathOf("identifier"), 1,
                                          std::numeric_limits<std::int32_t>::max()));
  info.typeCode =
      static_cast<std::int32_t>(integerOf(fields.require("typeCode"), fields.pathOf("typeCode"), 1, 5));
  info.linkKind = static_cast<std::int16_t>(fields.choice("link", 1, {"usb", "zigbee"}) + 1);
  info.selfTestResult = fields.int16("selfTestResult", 0);
  info.secondVersionMajor = 1;
  info.firstVersionMajor = 1;
  info.boardVersionMajor = 1;
  info.radioVersionMajor = 1;
  version(fields, "firmwareVersion", info.firstVersionMajor, info.firstVersionMinor);
  version(fields, "bootloaderVersion", info.secondVersionMajor, info.secondVersionMinor);
  version(fields, "boardVersion", info.boardVersionMajor, info.boardVersionMinor);
  version(fields, "radioVersion", info.radioVersionMajor, info.radioVersionMinor);
  info.radioAddress = fields.int32("radioAddress", info.identifier & 0xFFFF);
  info.serialNumber = fields.int32("serialNumber", 0);
  info.calibrationDate = date(fields, "calibrationDate", {15, 1, 2025});
  info.calibrationDueDate = date(fields, "calibrationDueDate", {15, 1, 2027});
  copyName(info.modelName, sizeof info.modelName,
           fields.text("modelName", defaultModelName(info.typeCode), sizeof info.modelName));
  plan.found = fields.flag("found", true);
  plan.signalStrength = fields.int16("signalStrength", plan.signalStrength, 0, 100);

  if (const Json* battery = fields.find("battery")) {
    Fields f(*battery, fields.pathOf("battery"));
    plan.battery.state = f.int32("state", plan.battery.state);
    plan.battery.charging = f.int32("charging", plan.battery.charging);
    plan.battery.millivolts = f.int32("millivolts", plan.battery.millivolts);
    plan.battery.percent = f.byte("percent", plan.battery.percent, 100);
    f.finish();
  }

  const auto forbid = [&](const char* key, bool allowed, const char* why) {
    if (!allowed && fields.find(key) != nullptr) fail(fields.pathOf(key), why);
  };
  forbid("targetFilters", plan.hasAio(), "only an all-in-one detector (type 1 or 4) has target filters");
  forbid("mas", plan.hasMas(), "only types 2, 4 and 5 have an mAs meter");
  forbid("dosimeter", plan.hasDosimeter(), "only types 3 and 5 are dosimeters");
  forbid("exposures", plan.hasAio() || plan.hasDosimeter(),
         "an mAs meter alone lists its exposures under \"mas\"");

  targetFilters(fields, plan);
  masConfig(fields, plan.mas);
  dosimeterConfig(fields, plan.dosimeter);
  faults(fields, plan.faults);

  plan.repeatExposures = fields.flag("repeatExposures", false);
  const DetectorDefaults defaults{fields.count("pollsBeforeExposure", 2)};
  const Json& exposures = fields.array("exposures");
  for (std::size_t i = 0; i < exposures.size(); ++i) {
    const std::string itemAt = itemPath(fields.pathOf("exposures"), i);
    plan.exposures.push_back(plan.hasAio() ? aioExposure(exposures[i], itemAt, defaults)
                                           : doseExposure(exposures[i], itemAt, defaults));
  }
  fields.finish();
  return plan;
}

}  // namespace

Scenario parseScenario(std::string_view text) {
  Json json;
  try {
    json = Json::parse(text.begin(), text.end(), nullptr, true, true);
  } catch (const Json::exception& error) {
    throw ScenarioError(std::string("not valid JSON: ") + error.what());
  }
  Fields fields(json, "");
  Scenario scenario;
  scenario.name = fields.text("name", "");
  scenario.description = fields.text("description", "");
  if (const Json* scan = fields.find("scan")) {
    Fields f(*scan, "scan");
    scenario.scanPollsUntilComplete = f.count("pollsUntilComplete", scenario.scanPollsUntilComplete);
    scenario.scanCompleteStatus = f.int32("completeStatus", scenario.scanCompleteStatus);
    if (scenario.scanCompleteStatus == 1) fail(f.pathOf("completeStatus"), "1 means \"still scanning\"");
    f.finish();
  }
  scenario.usbStatus = fields.int16("usbStatus", scenario.usbStatus);
  scenario.zigBeeStatus = fields.int16("zigBeeStatus", scenario.zigBeeStatus);
  scenario.zigBeeRssi = fields.int16("zigBeeRssi", scenario.zigBeeRssi);
  if (const Json* global = fields.find("faults")) {
    Fields f(*global, "faults");
    scenario.scanNeverCompletes = f.flag("scanNeverCompletes", false);
    scenario.connectFails = f.flag("connectFails", false);
    f.finish();
  }
  const Json& detectors = fields.require("detectors");
  if (!detectors.is_array()) fail("detectors", "expected an array");
  std::set<std::int32_t> identifiers;
  for (std::size_t i = 0; i < detectors.size(); ++i) {
    scenario.detectors.push_back(detector(detectors[i], itemPath("detectors", i)));
    if (!identifiers.insert(scenario.detectors.back().info.identifier).second) {
      fail(itemPath("detectors", i) + ".identifier", "used by another detector");
    }
  }
  fields.finish();
  return scenario;
}

}  // namespace rx9400::sim
