// Each export of the device library hidden in turn: every member still returns, with its normal result
// and calls where it does not call that export, and otherwise with its normal result or its default
// (what it gives without any device library at all).
//
// The members each export affects are listed in docs/missing-exports.md, which this test checks; it
// writes the file anew when RX9400_UPDATE_DOCS is set.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "World.h"

namespace rx9400::reliability {
namespace {

using testing::Simulator;

constexpr const char* kExports[] = {
#define MB_FUNCTION(Result, Name, Parameters, Arguments) #Name,
#include "device/MBFunctionList.h"
};

/// The simulator with one export hidden: a library of an older or broken installation.
class LibraryWithout final : public DynamicLibrary {
 public:
  LibraryWithout(std::unique_ptr<DynamicLibrary> inner, std::string hidden)
      : inner_(std::move(inner)), hidden_(std::move(hidden)) {}
  void* findSymbol(const char* name) const override {
    return hidden_ == name ? nullptr : inner_->findSymbol(name);
  }

 private:
  std::unique_ptr<DynamicLibrary> inner_;
  std::string hidden_;
};

MBdllFunctions simulatorWithout(const std::string& hidden) {
  return MBdllFunctions("TamsaMBDll", [hidden](std::string& error) -> std::unique_ptr<DynamicLibrary> {
    auto simulator = openDynamicLibraryAt(RX9400_SIMULATOR_PATH, error);
    if (simulator == nullptr) return nullptr;
    return std::make_unique<LibraryWithout>(std::move(simulator), hidden);
  });
}

struct Outcome {
  std::string result;
  std::vector<std::string> calls;
  bool operator==(const Outcome&) const = default;
  bool called(const std::string& name) const {
    for (const std::string& line : calls) {
      if (line.rfind(name + "(", 0) == 0) return true;
    }
    return false;
  }
};

/// One member on a fresh plug-in over `library`, once the rig's detectors have been connected and armed
/// straight through the simulator and have measured one exposure each, the next one's data waiting.
Outcome run(Simulator& simulator, MBdllFunctions library, const Member& member) {
  simulator.load(rigScenario());
  MBdllFunctions& direct = simulator.library();
  const testing::ConnectedDetectors connected = testing::connectAllDetectors(direct);
  std::vector<bool> read(connected.found.size() * 2, false);  // per slot: its exposure, its mAs exposure
  for (const DetectorInfo& info : connected.found) direct.MBEnableMeasurement(info.identifier);
  for (int pass = 0; pass < 10; ++pass) {
    for (std::size_t slot = 0; slot < connected.found.size(); ++slot) {
      const std::int32_t id = connected.found[slot].identifier;
      const std::int32_t kind = connected.kinds[slot];
      if (direct.MBGetDetectorStatus(id).dataAvailable != 0 && !read[2 * slot]) {
        read[2 * slot] = true;
        if (kind == 3 || kind == 5) {
          direct.MBGetDosimeterMeasuredData(id);
        } else {
          direct.MBGetMeasuredData(id);
        }
      }
      if ((kind == 2 || kind == 4 || kind == 5) && !read[2 * slot + 1])
        read[2 * slot + 1] = direct.MBGetmAsMeasuredData(id).dataAvailable != 0;
    }
  }
  World world(std::move(library));
  // In the connect dialog's order: the all-in-one detector (found last, type 4) before the dosimeter.
  world.context.state.setConnectedDetectors({connected.found.rbegin(), connected.found.rend()},
                                            {connected.kinds.rbegin(), connected.kinds.rend()});
  world.instrument.pCurrentMode("RADIO");
  world.platform.dialogs.connect->scripts.push_back(connectEveryRow);
  simulator.clearCalls();
  Outcome outcome;
  try {
    Subjects subjects = world.subjects();
    outcome.result = member.call(subjects);
  } catch (const std::exception& error) {
    ADD_FAILURE() << member.name << " threw: " << error.what();
  }
  outcome.calls = simulator.calls();
  return outcome;
}

std::string tableText(const std::map<std::string, std::vector<std::string>>& affected) {
  std::ostringstream text;
  text
      << "# Members affected by a missing export\n\n"
         "What changes when the device library lacks one export: the members of the query class and of the\n"
         "instrument whose result or whose calls into the library change, each export hidden in turn. Every\n"
         "member still returns; where it needed the missing export it gives its default result (False, 0 or\n"
         "empty, as without any device library). The members are called as `tests/reliability/Members.cpp`\n"
         "lists them, after the detectors of the rig's scenario (`tests/reliability/World.h`) were "
         "connected\n"
         "and armed and had measured one exposure each, the next one's data waiting.\n\n"
         "Generated and checked by `MissingExports.EveryMemberReturnsItsNormalResultOrItsDefault`\n"
         "(`tests/reliability/MissingExportsTest.cpp`; `RX9400_UPDATE_DOCS=1` writes it anew).\n\n"
         "| Export | Members affected |\n|---|---|\n";
  std::string unaffected;
  for (const char* name : kExports) {
    const auto found = affected.find(name);
    if (found == affected.end()) {
      unaffected += std::string(unaffected.empty() ? "" : ", ") + "`" + name + "`";
      continue;
    }
    text << "| `" << name << "` |";
    for (std::size_t i = 0; i < found->second.size(); ++i) text << (i == 0 ? " " : ", ") << found->second[i];
    text << " |\n";
  }
  text << "\nNo member changes without any one of these: " << unaffected << ".\n";
  return text.str();
}

TEST(MissingExports, EveryMemberReturnsItsNormalResultOrItsDefault) {
  unsetenv("TAMSA_SIM_CHAOS");  // the sweep compares exact answers
  Simulator simulator;
  const auto list = members();
  std::vector<Outcome> normal;
  std::vector<Outcome> fallback;
  for (const Member& member : list) {
    normal.push_back(run(simulator, MBdllFunctions::forLibraryAt(RX9400_SIMULATOR_PATH), member));
    fallback.push_back(run(simulator, MBdllFunctions::forLibraryAt("/nonexistent/libTamsaMBDll.so"), member));
  }
  std::map<std::string, std::vector<std::string>> affected;
  for (const char* name : kExports) {
    for (std::size_t i = 0; i < list.size(); ++i) {
      const Outcome outcome = run(simulator, simulatorWithout(name), list[i]);
      if (outcome == normal[i]) continue;
      affected[name].push_back(list[i].name);
      EXPECT_TRUE(normal[i].called(name))
          << list[i].name << " changed without " << name << ", which it never calls";
      EXPECT_TRUE(outcome.result == normal[i].result || outcome.result == fallback[i].result)
          << list[i].name << " without " << name << " gave \"" << outcome.result
          << "\", neither its result \"" << normal[i].result << "\" nor its default \"" << fallback[i].result
          << "\"";
    }
  }

  const std::string path = std::string(RX9400_SOURCE_DIR) + "/docs/missing-exports.md";
  const std::string generated = tableText(affected);
  if (std::getenv("RX9400_UPDATE_DOCS") != nullptr) {
    std::ofstream(path, std::ios::binary) << generated;
    return;
  }
  std::ifstream file(path, std::ios::binary);
  std::ostringstream committed;
  committed << file.rdbuf();
  EXPECT_TRUE(committed.str() == generated)
      << path << " is out of date: run this test with RX9400_UPDATE_DOCS=1";
}

}  // namespace
}  // namespace rx9400::reliability
