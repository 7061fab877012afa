// One executive's plug-in over a device library, with every platform service faked: the query session
// and the instrument the member list runs on.
#pragma once

#include <unistd.h>

#include <cstdint>
#include <string>
#include <utility>

#include "Members.h"
#include "fakes/InstrumentFakes.h"
#include "fakes/PlatformFakes.h"

namespace rx9400::reliability {

/// The two detectors' identifiers, this process's own: sweeps running side by side publish their
/// shared sections under different names.
inline std::int32_t rigAio() {
  static const std::int32_t id = 5000000 + static_cast<std::int32_t>(getpid() % 400000) * 2;
  return id;
}
inline std::int32_t rigDose() {
  return rigAio() + 1;
}

/// Two detectors whose exposures repeat: an all-in-one detector with mAs meter (rigAio, type 4) with an
/// invalid target/filter combination, and a dosimeter (rigDose, type 3) with two ion chambers. `extra`
/// holds further top-level fields, each followed by a comma.
inline std::string rigScenario(const std::string& extra = {}) {
  return "{" + extra + R"(
    "scan": {"pollsUntilComplete": 1},
    "detectors": [
      {"identifier": )" +
         std::to_string(rigAio()) + R"(, "typeCode": 4, "serialNumber": 94001207, "repeatExposures": true,
       "targetFilters": {"valid": ["W/Al", "W/Cu", "Mo/Mo"], "invalid": ["Rh/Rh"]}, "exposures": [{}],
       "mas": {"repeatExposures": true, "exposures": [{"span": 100}]}},
      {"identifier": )" +
         std::to_string(rigDose()) +
         R"(, "typeCode": 3, "serialNumber": 94001208, "repeatExposures": true, "exposures": [{}],
       "dosimeter": {"chambers": [{"name": "IC-A 6cc", "calFactors": [{"name": "RQR5", "constant": 1.2345e9}]},
                                  {"name": "IC-B 180cc", "calFactors": [{"name": "RQR8", "constant": 2.5e8}]}]}}]})";
}

/// A connect dialog script: every row the dialog lists ticked, then Connect.
inline void connectEveryRow(ConnectDialog& dialog, testing::ScriptedConnectView& view) {
  view.ticks.assign(view.rows.size(), true);
  dialog.connectClicked();
}

struct World {
  explicit World(MBdllFunctions library)
      : context(std::move(library), platform.services()), session(context), instrument(context, events) {}
  Subjects subjects() { return {session, instrument}; }

  testing::TestPlatform platform;
  testing::RecordingEvents events;
  PluginContext context;
  QuerySession session;
  Instrument instrument;
};

}  // namespace rx9400::reliability
