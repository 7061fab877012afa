// Reading a scenario from JSON. Every object is read strictly: a field the format does not know is an
// error (so that a misspelt fault does not silently do nothing); fields whose name starts with "_" are
// comments and are skipped.
#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "ScenarioFields.h"

namespace rx9400::sim {

namespace {

using namespace parsing;

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
  f.sectionShortBy = fields.int32("sectionShortBy", 0, 0, kMaxWaveformPoints);
  f.masLinkLossAfterBlocks = fields.count("masLinkLossAfterBlocks", 0);
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
  if (const Json* chaos = fields.find("chaos")) {
    Fields f(*chaos, "chaos");
    scenario.chaos.enabled = true;
    scenario.chaos.seed =
        static_cast<std::uint64_t>(f.integer("seed", 1, 0, std::numeric_limits<std::int64_t>::max()));
    scenario.chaos.rate = f.number("rate", scenario.chaos.rate);
    if (!(scenario.chaos.rate >= 0 && scenario.chaos.rate <= 1)) fail(f.pathOf("rate"), "expected 0 to 1");
    scenario.chaos.delayMicroseconds = f.int32("delayMicroseconds", 0, 0, 1000000);
    scenario.chaos.vanishCalls = f.int32("vanishCalls", scenario.chaos.vanishCalls, 1, 1000000);
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
