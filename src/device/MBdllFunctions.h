// The typed wrapper over the device library TamsaMBDll: the only code that calls into it.
//
// The library is opened on the first call, not before, so creating a class of the plug-in talks to no
// detector. Each typed method copies the records the library fills into values of its own at once.
// A library that cannot be loaded, or an export it lacks, surfaces as DeviceLibraryError from the
// method that needed it; the calling member's error trap turns that into the member's default result.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "device/EnumsStructs.h"
#include "device/MBFunctionTable.h"
#include "platform/DynamicLibrary.h"

namespace rx9400 {

/// The file name of the device library on Windows.
inline constexpr const char* kDeviceLibraryFileName = "TamsaMBDll.dll";

/// Why a call into the device library could not be made.
class DeviceLibraryError : public std::runtime_error {
 public:
  enum class Kind {
    LibraryMissing,  ///< the library file could not be loaded
    ExportMissing,   ///< the library has no export of the needed name
  };

  DeviceLibraryError(Kind kind, std::string subject, const std::string& detail);

  Kind kind() const { return kind_; }
  /// The library file (LibraryMissing) or the export name (ExportMissing).
  const std::string& subject() const { return subject_; }

 private:
  Kind kind_;
  std::string subject_;
};

/// A chamber or cal factor name as the library takes it: 15 one-byte characters, zero-filled.
using ChamberName = std::array<char, kChamberNameLength>;

class MBdllFunctions {
 public:
  /// Opens the library; called on first use and again after a failed attempt. Returns nullptr with
  /// the reason in its argument when the library cannot be loaded.
  using Opener = std::function<std::unique_ptr<DynamicLibrary>(std::string& error)>;

  /// `libraryName` names the library in errors; `opener` loads it.
  MBdllFunctions(std::string libraryName, Opener opener);
  /// The library `TamsaMBDll.dll` (natively `libTamsaMBDll.so`), searched for beside the plug-in
  /// first and then where the system looks.
  static MBdllFunctions forInstalledLibrary();
  /// The library at exactly `path`.
  static MBdllFunctions forLibraryAt(const std::string& path);

  MBdllFunctions(MBdllFunctions&&) noexcept;
  MBdllFunctions& operator=(MBdllFunctions&&) noexcept;
  ~MBdllFunctions();

  /// Loads the library now if it is not loaded yet; throws DeviceLibraryError when it cannot be.
  void load();
  bool isLoaded() const { return library_ != nullptr; }
  /// The exports the loaded library lacks, by name (empty when complete or not loaded).
  std::vector<std::string> missingExports() const;

  // Session, scanning and connection.
  std::int32_t MBRegisterApplication(std::int32_t application);
  std::int32_t MBCloseApplication();
  std::int32_t MBScanForDetectors();
  std::int32_t MBGetScanCompleteStatus();
  std::uint8_t MBGetNumberOfDetectors(std::int32_t typeCode);
  /// The records of the `count` detectors of one type that the last scan found.
  std::vector<DetectorInfo> MBGetDetectorInfoOfType(std::int32_t typeCode, std::size_t count);
  /// Connects the detectors in one call: as many as the shorter array holds, at most 255. What the
  /// library writes back into the arrays is copied into them.
  std::int16_t MBConnectToDetectors(std::vector<std::int32_t>& identifiers,
                                    std::vector<std::uint8_t>& typeCodes);
  std::int32_t MBStopScanningAndReset();
  std::int16_t MBGetUSBStatus();
  std::int16_t MBGetZigBeeStatus();

  // Detector state.
  DetectorStatus MBGetDetectorStatus(std::int32_t id);
  /// The battery record (the library is asked with its flags argument -1).
  BatteryStatus MBGetBatteryStatus(std::int32_t id);
  std::int32_t MBGetNumberOfInvalidTargetFilters(std::int32_t id);
  /// Up to `capacity` names (at most 255); as many as the library says it wrote.
  std::vector<TargetFilterName> MBGetAllInvalidTargetFilters(std::int32_t id, std::int32_t capacity);
  /// The count of valid target/filter combinations (the library is asked with -1).
  std::int32_t MBGetNumberOfValidTargetFilters(std::int32_t id);
  std::vector<TargetFilterName> MBGetValidTargetFilters(std::int32_t id, std::int32_t capacity);
  TargetFilterName MBGetDefaultTargetFilter(std::int32_t id);

  // Measurement control and data.
  std::int32_t MBEnableMeasurement(std::int32_t id);
  std::int32_t MBDisableMeasurement(std::int32_t id);
  std::int32_t MBSetPowerMode(std::int32_t id, std::int32_t powerMode);
  std::int32_t MBSetDetectorMode(std::int32_t id, std::int32_t detectorMode);
  std::int32_t MBSetSetup(std::int32_t id, std::int32_t setup);
  /// Passes the caller's record itself, as the library expects.
  std::int32_t MBSetMeasurementSettings(std::int32_t id, MeasurementSettings& settings);
  AioMeasuredData MBGetMeasuredData(std::int32_t id);
  DoseMeasuredData MBGetDosimeterMeasuredData(std::int32_t id);
  MasMeasuredData MBGetmAsMeasuredData(std::int32_t id);

  // Waveforms.
  std::int32_t MBPauseUpdateThread();
  std::int32_t MBResumeUpdateThread();
  std::int32_t MBSetWaveformParameters(std::int32_t id, WaveformParameters& parameters);
  std::int32_t MBGetNumberOfDataPoints(std::int32_t id);
  std::int16_t MBGetWaveformAvailabilityStatus(std::int32_t id);
  std::int32_t MBStartWFDownload(std::int32_t id, std::uint8_t start);
  /// The number of mAs waveform points; `span` receives the library's span.
  std::int32_t MBGetmAsNumberOfDataPoints(std::int32_t id, std::int32_t& span);
  /// Fills all of `points` (at most 255) with the points first, first + step, ...
  std::int32_t MBGetmAsWaveFormDataPoints(std::int32_t id, std::int32_t firstPoint, std::uint8_t step,
                                          std::span<std::int32_t> points);

  // Dosimeter configuration.
  AdcfSettings MBGetADCF(std::int32_t id);
  std::int32_t MBSetADCF(std::int32_t id, AdcfSettings& adcf);
  DosimeterMode MBGetDosimeterMode(std::int32_t id);
  std::int32_t MBSetDosimeterMode(std::int32_t id, DosimeterMode& mode);
  DosimeterUnit MBGetDosimeterUnit(std::int32_t id);
  std::int32_t MBSetDosimeterUnit(std::int32_t id, DosimeterUnit& unit);
  TempPressureOffset MBGetTempPressureOffset(std::int32_t id);
  std::int32_t MBSetTempPressureOffset(std::int32_t id, TempPressureOffset& offset);
  std::int32_t MBGetNoOfIonChambers(std::int32_t id);
  std::int16_t MBGetChamberFileInfo(std::int32_t id);
  IonChamberSelection MBGetIonChamberCalFactor(std::int32_t id);
  std::int32_t MBSetIonChamberCalFactor(std::int32_t id, std::int16_t chamber, std::int16_t calFactor);
  /// The new chamber's number; below 1 when the library refused.
  std::int16_t MBAddNewIonChamber(std::int32_t id, const ChamberName& name);
  /// The new cal factor's number; below 1 when the library refused.
  std::int16_t MBAddNewCalFactor(std::int32_t id, std::int16_t chamber, CalFactor& calFactor);
  std::int16_t MBEditIonChamber(std::int32_t id, std::int16_t chamber, const ChamberName& name);
  std::int16_t MBEditCalfactor(std::int32_t id, std::int16_t chamber, CalFactor& calFactor);
  std::int32_t MBDeleteIonChamber(std::int32_t id, std::int16_t chamber);
  std::int32_t MBDeleteCalfactor(std::int32_t id, std::int16_t chamber, std::uint8_t calFactor);
  std::int32_t MBDeleteAllIonChambers(std::int32_t id);

  // mAs meter.
  std::int32_t MBSetmAsInput(std::int32_t id, std::int32_t inputType);

 private:
  const MBFunctionTable& table();

  std::string libraryName_;
  Opener opener_;
  std::unique_ptr<DynamicLibrary> library_;
  MBFunctionTable table_{};
};

}  // namespace rx9400
