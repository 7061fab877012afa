// Reading the fields of a scenario's JSON objects. Every object is read strictly: Fields::finish fails on
// a field that was never asked for, except those whose name starts with "_" (comments).
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "Scenario.h"
#include "Waveforms.h"

namespace rx9400::sim::parsing {

using Json = nlohmann::json;

/// Throws the ScenarioError "path: what".
[[noreturn]] void fail(const std::string& path, const std::string& what);
std::string childPath(const std::string& path, const std::string& key);
std::string itemPath(const std::string& path, std::size_t index);
std::int64_t integerOf(const Json& json, const std::string& path, std::int64_t min, std::int64_t max);
double numberOf(const Json& json, const std::string& path);

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

void copyName(char* target, std::size_t width, const std::string& name);
std::string nameText(const Json& json, const std::string& path, std::size_t maxLength);
Measured measured(Fields& fields, const char* key, Measured fallback);
FaultWindow window(Fields& fields, const char* key, std::uint8_t* percent = nullptr,
                   std::int64_t defaultPercent = 0);
CalDate date(Fields& fields, const char* key, CalDate fallback);
/// A version written [major, minor].
void version(Fields& fields, const char* key, std::uint8_t& major, std::uint8_t& minor);
std::int32_t roundedLevel(double value);
/// A waveform: a list of samples, or the shape of a synthetic trace (`shape` gives the defaults).
std::vector<std::int32_t> waveform(Fields& fields, TraceShape shape, const char* levelKey, double levelScale);

}  // namespace rx9400::sim::parsing
