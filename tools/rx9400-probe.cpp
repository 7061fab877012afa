// rx9400-probe: opens the device library through the plug-in's own wrapper, scans for detectors and
// lists what it finds. Service engineers use it to check a detector installation without the
// executive; the test suite uses it to check the library's exports and the Windows loader.
//
//   rx9400-probe [--library PATH] [--check-exports] [--max-polls N]
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "core/DetectorType.h"
#include "device/MBdllFunctions.h"

namespace {

using rx9400::DetectorInfo;
using rx9400::MBdllFunctions;

std::string dateText(const rx9400::CalDate& date) {
  char text[16];
  std::snprintf(text, sizeof(text), "%02u/%02u/%04d", static_cast<unsigned>(date.day),
                static_cast<unsigned>(date.month), static_cast<int>(date.year));
  return text;
}

std::string versionText(const DetectorInfo& info) {
  char text[32];
  std::snprintf(text, sizeof(text), "%u.%u - %u.%u", static_cast<unsigned>(info.firstVersionMajor),
                static_cast<unsigned>(info.firstVersionMinor), static_cast<unsigned>(info.secondVersionMajor),
                static_cast<unsigned>(info.secondVersionMinor));
  return text;
}

int checkExports(MBdllFunctions& library) {
  library.load();
  const auto missing = library.missingExports();
  for (const auto& name : missing) std::printf("missing export: %s\n", name.c_str());
  std::printf("%zu of %zu exports present\n", rx9400::kMBFunctionCount - missing.size(),
              rx9400::kMBFunctionCount);
  return missing.empty() ? 0 : 1;
}

int listDetectors(MBdllFunctions& library, int maxPolls) {
  library.MBRegisterApplication(1);
  library.MBScanForDetectors();
  int polls = 1;
  while (library.MBGetScanCompleteStatus() == 1) {
    if (++polls > maxPolls) {
      std::printf("The scan did not complete after %d polls.\n", maxPolls);
      library.MBStopScanningAndReset();
      library.MBCloseApplication();
      return 2;
    }
  }
  std::printf("Scan complete after %d status polls. USB adaptor %d, ZigBee radio %d.\n\n", polls,
              library.MBGetUSBStatus(), library.MBGetZigBeeStatus());

  std::vector<DetectorInfo> found;
  std::vector<std::int32_t> kinds;
  for (const std::int32_t typeCode : {1, 3, 2, 5, 4}) {
    const std::uint8_t count = library.MBGetNumberOfDetectors(typeCode);
    for (const auto& info : library.MBGetDetectorInfoOfType(typeCode, count)) {
      found.push_back(info);
      kinds.push_back(typeCode);
    }
  }
  if (found.empty()) {
    std::printf("No Detector Found\n");
    library.MBCloseApplication();
    return 1;
  }

  std::printf("%-9s %10s %8s %-13s %-10s %-10s %-9s %s\n", "Kind", "Identifier", "Serial", "Firmware",
              "Cal date", "Due date", "Self test", "Battery");
  for (std::size_t i = 0; i < found.size(); ++i) {
    const DetectorInfo& info = found[i];
    std::vector<std::int32_t> identifiers{info.identifier};
    std::vector<std::uint8_t> types{static_cast<std::uint8_t>(kinds[i])};
    std::string battery = "not connected";
    if (library.MBConnectToDetectors(identifiers, types) != 0) {
      const auto status = library.MBGetBatteryStatus(info.identifier);
      battery = std::to_string(status.chargePercent) + "%" + (status.chargingState != 0 ? " charging" : "");
    }
    std::printf("%-9s %10d %8d %-13s %-10s %-10s %-9s %s\n", rx9400::detectorKindWord(kinds[i]).c_str(),
                info.identifier, info.serialNumber, versionText(info).c_str(),
                dateText(info.calibrationDate).c_str(), dateText(info.calibrationDueDate).c_str(),
                info.selfTestResult == 0 ? "passed" : "FAILED", battery.c_str());
  }
  library.MBCloseApplication();
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  std::string libraryPath;
  bool exportsOnly = false;
  int maxPolls = 1000;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--library") == 0 && i + 1 < argc) {
      libraryPath = argv[++i];
    } else if (std::strcmp(argv[i], "--check-exports") == 0) {
      exportsOnly = true;
    } else if (std::strcmp(argv[i], "--max-polls") == 0 && i + 1 < argc) {
      maxPolls = std::atoi(argv[++i]);
    } else {
      std::fprintf(stderr, "usage: rx9400-probe [--library PATH] [--check-exports] [--max-polls N]\n");
      return 64;
    }
  }
  MBdllFunctions library =
      libraryPath.empty() ? MBdllFunctions::forInstalledLibrary() : MBdllFunctions::forLibraryAt(libraryPath);
  try {
    return exportsOnly ? checkExports(library) : listDetectors(library, maxPolls);
  } catch (const rx9400::DeviceLibraryError& error) {
    std::fprintf(stderr, "rx9400-probe: %s\n", error.what());
    return 3;
  }
}
