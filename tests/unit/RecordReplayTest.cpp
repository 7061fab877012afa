// A test procedure recorded through the recorder, with the simulator as the real library, and replayed by
// the simulator from the session file: the plug-in must see the same events, texts and waveforms.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "../../sim/SessionFormat.h"
#include "fakes/InstrumentFakes.h"

namespace rx9400 {
namespace {

namespace fs = std::filesystem;
using testing::RecordingEvents;
using testing::TestPlatform;

/// Sets an environment variable for the lifetime of this object.
struct ScopedEnv {
  ScopedEnv(const char* name, const std::string& value) : name_(name) { setenv(name, value.c_str(), 1); }
  ~ScopedEnv() { unsetenv(name_); }
  const char* name_;
};

/// What the plug-in showed of one run of the procedure.
struct Outcome {
  std::vector<std::string> events, dataReady, testSw, testMas;
  std::string kvTrace, masTrace;
  int chambers = 0;
  std::string chamber;
  bool operator==(const Outcome&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Outcome& o) {
  for (const std::string& event : o.events) out << event << "\n";
  return out << "kV " << o.kvTrace.substr(0, 60) << "\nmA " << o.masTrace.substr(0, 60) << "\nchambers "
             << o.chambers << " " << o.chamber;
}

/// Connect, settings, polls until the exposures are measured, both waveform downloads and the chamber
/// file, as a test procedure does, over the device library at `path`.
Outcome runProcedure(const std::string& path, std::int32_t aio) {
  TestPlatform platform;
  RecordingEvents events;
  PluginContext context(MBdllFunctions::forLibraryAt(path), platform.services());
  Instrument instrument(context, events);
  Outcome outcome;
  // A member that meets a library error ends there, as behind the automation shell's error trap.
  const auto step = [&](auto&& member) {
    try {
      member();
      return true;
    } catch (const DeviceLibraryError&) {
      events.events.push_back("DeviceLibraryError");
      return false;
    }
  };
  testing::ConnectedDetectors connected;
  if (!step([&] { connected = testing::connectAllDetectors(context.library); })) {
    // The table the connect dialog would have left, so that the members still try the library.
    connected.found = {DetectorInfo{}, DetectorInfo{}};
    connected.found[0].identifier = aio;
    connected.found[1].identifier = aio + 1;
    connected.kinds = {4, 3};
  }
  context.state.setConnectedDetectors(connected.found, connected.kinds);
  step([&] {
    instrument.pCurrentMode("RADIO");
    instrument.pDoseUnits(1);
    instrument.pTimeUnit(1);
    instrument.ChangeDetectorMode();
    instrument.ChangeSettings();
    instrument.EnableMeasurements(true);
  });
  bool finished = false;
  for (int poll = 0; poll < 40 && !finished && step([&] { finished = instrument.CheckDataStatus(); });
       ++poll) {
  }
  // The waveform members answer for the last detector of the table: the all-in-one one alone.
  for (std::size_t i = 0; i < connected.found.size(); ++i) {
    if (connected.found[i].identifier == aio) context.state.setConnectedDetectors({connected.found[i]}, {4});
  }
  step([&] { outcome.kvTrace = instrument.GetWaveformInMilliSec(0, 100, 1000000); });
  step([&] { outcome.masTrace = instrument.GetWaveformInSecs(0, 1, 1000000, 2); });
  context.state.setConnectedDetectors(connected.found, connected.kinds);
  step([&] { outcome.chambers = instrument.GetIonChamberInfo(); });
  step([&] { outcome.chamber = instrument.GetIonChamberName(); });
  step([&] { context.library.MBCloseApplication(); });
  outcome.events.insert(outcome.events.end(), events.events.begin(), events.events.end());
  outcome.dataReady = events.dataReady;
  outcome.testSw = events.testSw;
  outcome.testMas = events.testMas;
  return outcome;
}

std::vector<std::string> linesOf(const std::string& path) {
  std::ifstream file(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

class RecordReplay : public ::testing::Test {
 protected:
  void SetUp() override {
    folder_ = fs::temp_directory_path() / ("rx9400-replay-" + std::to_string(getpid()) + "-" +
                                           ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::remove_all(folder_);
    fs::create_directories(folder_);
    std::string error;
    control_ = openDynamicLibraryAt(RX9400_SIMULATOR_PATH, error);
    // The default scenario with identifiers of this process alone: tests side by side use other sections.
    std::string scenario = text("SimGetDefaultScenario");
    for (const auto& [from, to] : {std::pair{"4711", aio()}, std::pair{"4712", aio() + 1}}) {
      for (auto at = scenario.find(from); at != std::string::npos; at = scenario.find(from, at + 1)) {
        scenario.replace(at, 4, std::to_string(to));
      }
    }
    ASSERT_EQ(export_<decltype(&SimLoadScenarioText)>("SimLoadScenarioText")(scenario.c_str()), kSimOk);
  }
  void TearDown() override {
    unsetenv("TAMSA_SIM_REPLAY");
    export_<decltype(&SimLoadScenarioText)>("SimLoadScenarioText")(nullptr);
    fs::remove_all(folder_);
  }

  static std::int32_t aio() { return 6000000 + static_cast<std::int32_t>(getpid() % 900000) * 2; }

  /// A fresh copy of the recorder: one loaded with this test's environment. Each copy has a folder of
  /// its own: a library still mapped must never be overwritten.
  std::string recorder(const std::string& name = "libTamsaMBDll.so") {
    const fs::path folder = folder_ / ("recorder-" + std::to_string(++copies_));
    fs::create_directories(folder);
    fs::copy_file(RX9400_RECORDER_PATH, folder / name);
    return (folder / name).string();
  }
  /// Runs the procedure through the recorder (the simulator behind it) into `session`.
  Outcome record(const std::string& session) {
    ScopedEnv library("TAMSA_RECORDER_LIBRARY", RX9400_SIMULATOR_PATH);
    ScopedEnv file("TAMSA_RECORDER_FILE", session);
    return runProcedure(recorder(), aio());
  }
  /// Runs the procedure against the simulator replaying `session`.
  Outcome replay(const std::string& session) {
    setenv("TAMSA_SIM_REPLAY", session.c_str(), 1);
    export_<decltype(&SimReset)>("SimReset")();
    return runProcedure(RX9400_SIMULATOR_PATH, aio());
  }
  std::vector<std::string> notes() {
    std::istringstream log(text("SimGetCallLog"));
    std::vector<std::string> found;
    for (std::string line; std::getline(log, line);) {
      if (line.rfind("! replay", 0) == 0) found.push_back(line);
    }
    return found;
  }
  std::string path(const std::string& name) const { return (folder_ / name).string(); }

 private:
  template <typename F>
  F export_(const char* name) {
    return reinterpret_cast<F>(control_->findSymbol(name));
  }
  std::string text(const char* name) {
    const auto read = export_<std::int32_t (*)(char*, std::int32_t)>(name);
    std::string buffer(static_cast<std::size_t>(read(nullptr, 0)), '\0');
    read(buffer.data(), static_cast<std::int32_t>(buffer.size()));
    return buffer.c_str();
  }

  fs::path folder_;
  int copies_ = 0;
  std::unique_ptr<DynamicLibrary> control_;
};

TEST_F(RecordReplay, TheReplayedSessionShowsWhatTheRecordedOneShowed) {
  const Outcome direct = runProcedure(RX9400_SIMULATOR_PATH, aio());
  ASSERT_FALSE(direct.dataReady.empty());
  ASSERT_FALSE(direct.testMas.empty());
  ASSERT_NE(direct.kvTrace.find(','), std::string::npos);
  ASSERT_NE(direct.masTrace.find(','), std::string::npos);
  ASSERT_EQ(direct.chambers, 2);

  const std::string session = path("session.jsonl");
  EXPECT_EQ(record(session), direct) << "the recorder changed what the plug-in saw";
  EXPECT_EQ(replay(session), direct);
  EXPECT_EQ(notes(), std::vector<std::string>{}) << "every call had its recorded answer";
}

TEST_F(RecordReplay, ACutOffSessionReplaysUpToTheCutAndThenSaysWhere) {
  const std::string session = path("session.jsonl");
  const Outcome recorded = record(session);
  std::vector<std::string> lines = linesOf(session);
  std::size_t cut = 0;
  while (cut < lines.size() && lines[cut].find("\"MBGetMeasuredData\"") == std::string::npos) ++cut;
  ASSERT_LT(cut, lines.size());
  std::ofstream(session, std::ios::trunc) << [&] {
    std::string kept;
    for (std::size_t i = 0; i < cut; ++i) kept += lines[i] + "\n";
    return kept + lines[cut].substr(0, lines[cut].size() / 2);
  }();

  const Outcome replayed = replay(session);
  const std::size_t measured = static_cast<std::size_t>(
      std::find(recorded.events.begin(), recorded.events.end(), "DataReady") - recorded.events.begin());
  ASSERT_GE(replayed.events.size(), measured);
  EXPECT_EQ(std::vector<std::string>(replayed.events.begin(), replayed.events.begin() + measured),
            std::vector<std::string>(recorded.events.begin(), recorded.events.begin() + measured));
  EXPECT_NE(replayed.dataReady, recorded.dataReady) << "the measured data were not in the recording";
  const std::vector<std::string> found = notes();
  ASSERT_GE(found.size(), 2u);
  const std::string line = std::to_string(cut + 1);
  EXPECT_NE(found[0].find(session + " line " + line + " is cut off"), std::string::npos) << found[0];
  EXPECT_NE(found[1].find("no recorded answer for MBGetMeasuredData of detector " + std::to_string(aio())),
            std::string::npos)
      << found[1];
  EXPECT_NE(found[1].find("cut off at line " + line), std::string::npos) << found[1];
}

TEST_F(RecordReplay, TheRecordersOwnTroublesChangeNothingForThePlugIn) {
  const Outcome direct = runProcedure(RX9400_SIMULATOR_PATH, aio());
  const struct {
    const char* name;
    std::string file;
    const char* maxBytes;
  } cases[] = {
      {"a folder that does not exist", path("missing/session.jsonl"), ""},
      {"a full disk", "/dev/full", ""},
      {"a file that rotates", path("rotating.jsonl"), "30000"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ScopedEnv limit("TAMSA_RECORDER_MAX_BYTES", c.maxBytes);
    EXPECT_EQ(record(c.file), direct);
  }
  // The rotated file and the current one each begin with a header and hold whole lines.
  for (const std::string& file : {path("rotating.jsonl"), path("rotating.jsonl.1")}) {
    const std::vector<std::string> lines = linesOf(file);
    ASSERT_FALSE(lines.empty()) << file;
    EXPECT_EQ(lines[0].rfind("{\"format\":\"TamsaMBDll session\",\"version\":1,", 0), 0u) << file;
    EXPECT_EQ(lines.back().back(), '}') << file;
    EXPECT_LE(fs::file_size(file), 30000u + 20000u)
        << "a line over the limit still goes whole into a fresh file";
  }
}

TEST_F(RecordReplay, ARecorderWithoutItsRealLibraryIsNoLibraryForThePlugIn) {
  const Outcome missing = runProcedure("/nonexistent/libTamsaMBDll.so", aio());
  ScopedEnv library("TAMSA_RECORDER_LIBRARY", "/nonexistent/libTamsaMBDll.so");
  ScopedEnv file("TAMSA_RECORDER_FILE", path("session.jsonl"));
  const std::string shim = recorder();
  MBdllFunctions functions = MBdllFunctions::forLibraryAt(shim);
  EXPECT_THROW(functions.MBRegisterApplication(1), DeviceLibraryError);
  EXPECT_EQ(functions.missingExports().size(), kMBFunctionCount) << "no export reaches a library";

  EXPECT_EQ(runProcedure(shim, aio()), missing);
  EXPECT_FALSE(fs::exists(path("session.jsonl"))) << "nothing to record";
}

}  // namespace
}  // namespace rx9400
