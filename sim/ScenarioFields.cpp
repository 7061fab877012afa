#include "ScenarioFields.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace rx9400::sim::parsing {

namespace {

bool isLeapYear(int year) {
  return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

std::vector<std::int32_t> sampleList(const Json& json, const std::string& path) {
  if (json.size() > static_cast<std::size_t>(kMaxWaveformPoints)) {
    fail(path, "more than " + std::to_string(kMaxWaveformPoints) + " samples");
  }
  std::vector<std::int32_t> samples;
  samples.reserve(json.size());
  for (std::size_t i = 0; i < json.size(); ++i) {
    samples.push_back(static_cast<std::int32_t>(integerOf(json[i], itemPath(path, i),
                                                          std::numeric_limits<std::int32_t>::min(),
                                                          std::numeric_limits<std::int32_t>::max())));
  }
  return samples;
}

}  // namespace

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

FaultWindow window(Fields& fields, const char* key, std::uint8_t* percent, std::int64_t defaultPercent) {
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
    shape.points = inner.int32("points", shape.points, 0, kMaxWaveformPoints);
    shape.rampPoints = inner.int32("rampPoints", shape.points / 20, 0, kMaxWaveformPoints);
    shape.fallPoints = inner.int32("fallPoints", shape.points / 15, 0, kMaxWaveformPoints);
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

}  // namespace rx9400::sim::parsing
