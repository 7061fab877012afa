#include "Replay.h"

#include <algorithm>
#include <cstring>
#include <fstream>

#include <nlohmann/json.hpp>

#include "SessionFormat.h"

namespace rx9400::sim {
namespace {

using nlohmann::json;

std::string where(const std::string& path, std::size_t line) {
  return path + " line " + std::to_string(line);
}

bool isHeader(const json& value) {
  return value.is_object() && value.contains("format");
}

}  // namespace

std::unique_ptr<Replay> Replay::load(const std::string& path, CallLog& log, std::string& error) {
  std::unique_ptr<Replay> replay(new Replay(path));
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    error = "TAMSA_SIM_REPLAY " + path + ": cannot open";
    log.note(error);
    return replay;
  }
  std::string text;
  std::size_t number = 0;
  while (std::getline(file, text)) {
    ++number;
    if (!text.empty() && text.back() == '\r') text.pop_back();
    if (text.empty()) continue;
    const json value = json::parse(text, nullptr, false);
    if (number == 1) {
      if (!isHeader(value) || value.value("format", "") != session::kFormatName ||
          value.value("version", 0) != session::kFormatVersion) {
        error = "TAMSA_SIM_REPLAY " + path + ": not a session file of version " +
                std::to_string(session::kFormatVersion);
        log.note(error);
        return replay;
      }
      continue;
    }
    if (isHeader(value)) continue;  // a later session of the file goes on where the last one ended
    Call call;
    call.line = number;
    const session::ExportShape* shape = nullptr;
    bool valid = !value.is_discarded() && value.is_object() && value.contains("f") &&
                 value["f"].is_string() && value.contains("a") && value["a"].is_array() &&
                 value.contains("r") && value["r"].is_number_integer();
    if (valid) {
      call.name = value["f"].get<std::string>();
      shape = session::shapeOf(call.name);
      valid = shape != nullptr && value["a"].size() == shape->arguments.size();
    }
    for (std::size_t i = 0; valid && i < value["a"].size(); ++i) {
      const json& argument = value["a"][i];
      std::string bytes;
      if (argument.is_number_integer()) {
        call.values.push_back(argument.get<std::int64_t>());
        call.bytes.emplace_back();
      } else if (argument.is_null()) {
        call.values.push_back(0);
        call.bytes.emplace_back();
      } else if (argument.is_string() && session::parseHex(argument.get<std::string>(), bytes)) {
        call.values.push_back(0);
        call.bytes.emplace_back(std::move(bytes));
      } else {
        valid = false;
      }
    }
    if (valid && value.contains("s")) {
      std::string bytes;
      call.hasSection = true;
      if (value["s"].is_string() && session::parseHex(value["s"].get<std::string>(), bytes)) {
        call.section = std::move(bytes);
      } else if (!value["s"].is_null()) {
        valid = false;
      }
    }
    if (!valid) {
      replay->cutAt_ = number;
      log.note("replay: " + where(path, number) + " is cut off or not a call: replaying the lines before it");
      break;
    }
    call.result = value["r"].get<std::int64_t>();
    const std::int64_t id =
        shape->idArgument >= 0 ? call.values[static_cast<std::size_t>(shape->idArgument)] : 0;
    replay->queues_[{call.name, id}].calls.push_back(replay->calls_.size());
    replay->calls_.push_back(std::move(call));
  }
  return replay;
}

std::int64_t Replay::answer(std::string_view name, std::int64_t failure, CallLog& log,
                            std::vector<ReplayArg>& args) {
  const session::ExportShape* shape = session::shapeOf(name);
  if (shape == nullptr) return failure;
  const std::int64_t id = shape->idArgument >= 0 && static_cast<std::size_t>(shape->idArgument) < args.size()
                              ? args[static_cast<std::size_t>(shape->idArgument)].value
                              : 0;
  const auto queue = queues_.find({std::string(name), id});
  const Call* recorded = nullptr;
  bool fresh = false;
  if (queue != queues_.end() && queue->second.next < queue->second.calls.size()) {
    recorded = &calls_[queue->second.calls[queue->second.next++]];
    fresh = true;
  } else if (queue != queues_.end() && shape->poll && !queue->second.calls.empty()) {
    recorded = &calls_[queue->second.calls.back()];  // an extra status poll
  }
  if (recorded == nullptr) {
    std::string note = "replay: no recorded answer for " + std::string(name);
    if (shape->idArgument >= 0) note += " of detector " + std::to_string(id);
    note += " after " + where(path_, lastLine_);
    if (cutAt_ != 0) note += " (the recording is cut off at line " + std::to_string(cutAt_) + ")";
    log.note(note);
    clearOutputs(name, args);
    return failure;
  }
  if (fresh) lastLine_ = recorded->line;
  fill(*recorded, args);
  if (name == "MBGetNumberOfDetectors" && !args.empty()) detectorsOfType_[args[0].value] = recorded->result;
  if (fresh && recorded->hasSection) publish(static_cast<std::int32_t>(id), recorded->section, log);
  if (name == "MBCloseApplication") sections_.clear();
  return recorded->result;
}

namespace {

/// The bytes an output argument of this call has room for.
std::size_t capacityOf(const session::ExportShape& shape, std::size_t index,
                       const std::vector<ReplayArg>& args, std::int64_t ofType, std::size_t recorded) {
  const session::PointerShape pointer = shape.pointer(static_cast<int>(index));
  std::vector<std::int64_t> values;
  for (const ReplayArg& arg : args) values.push_back(arg.value);
  std::int64_t before = 0;
  if (pointer.count == session::Count::Pointee && static_cast<std::size_t>(pointer.from) < args.size() &&
      args[static_cast<std::size_t>(pointer.from)].pointer != nullptr) {
    std::int32_t count = 0;
    std::memcpy(&count, args[static_cast<std::size_t>(pointer.from)].pointer, sizeof count);
    before = count;
    if (before <= 0) return recorded;
  }
  if (pointer.count == session::Count::Result) return recorded;
  return session::elementCount(pointer, values, 0, before, before, ofType) * args[index].elementSize;
}

}  // namespace

void Replay::fill(const Call& recorded, std::vector<ReplayArg>& args) const {
  const session::ExportShape& shape = *session::shapeOf(recorded.name);
  const auto type = detectorsOfType_.find(args.empty() ? 0 : args[0].value);
  const std::int64_t ofType = type != detectorsOfType_.end() ? type->second : 0;
  std::vector<std::size_t> room(args.size(), 0);  // all before any is written: a count may be among them
  for (std::size_t i = 0; i < args.size() && i < recorded.bytes.size(); ++i) {
    if (args[i].pointer == nullptr || !args[i].writable || !recorded.bytes[i]) continue;
    if (!shape.pointer(static_cast<int>(i)).filled) continue;
    room[i] = capacityOf(shape, i, args, ofType, recorded.bytes[i]->size());
  }
  for (std::size_t i = 0; i < room.size(); ++i) {
    if (room[i] == 0) continue;
    std::memcpy(args[i].pointer, recorded.bytes[i]->data(), std::min(room[i], recorded.bytes[i]->size()));
  }
}

void Replay::clearOutputs(std::string_view name, std::vector<ReplayArg>& args) const {
  const session::ExportShape& shape = *session::shapeOf(name);
  for (std::size_t i = 0; i < args.size(); ++i) {
    const session::PointerShape pointer = shape.pointer(static_cast<int>(i));
    if (args[i].pointer != nullptr && args[i].writable && pointer.filled &&
        pointer.count == session::Count::One) {
      std::memset(args[i].pointer, 0, args[i].elementSize);
    }
  }
}

void Replay::publish(std::int32_t id, const std::optional<std::string>& bytes, CallLog& log) {
  sections_.erase(id);  // the detector's earlier section goes first, as in the library
  if (!bytes) return;
  std::string error;
  auto section = SharedSection::create(SharedSection::nameFor(id), bytes->data(), bytes->size(), error);
  if (section == nullptr) {
    log.note("replay: section " + SharedSection::nameFor(id) + " refused: " + error);
    return;
  }
  sections_[id] = std::move(section);
}

}  // namespace rx9400::sim
