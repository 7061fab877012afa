// The typed wrapper over the device library's function table.
#include "device/MBdllFunctions.h"

#include <algorithm>
#include <utility>

namespace rx9400 {
namespace {

#if defined(_WIN32)
constexpr const char* kPlatformLibraryFileName = kDeviceLibraryFileName;
#else
constexpr const char* kPlatformLibraryFileName = "libTamsaMBDll.so";
#endif

template <typename Function>
Function resolved(Function function, const char* name) {
  if (function == nullptr) {
    throw DeviceLibraryError(DeviceLibraryError::Kind::ExportMissing, name,
                             "the device library has no export");
  }
  return function;
}

/// A capacity the library may fill, never negative and never zero (the library gets an element to
/// point at even when it is asked for none).
std::size_t bufferLength(std::int32_t capacity) {
  return static_cast<std::size_t>(std::max(capacity, 1));
}

}  // namespace

// Calls the export `Name` of the loaded library, or throws the reason it cannot.
#define MB_CALL(Name, ...) resolved(table().Name, #Name)(__VA_ARGS__)

DeviceLibraryError::DeviceLibraryError(Kind kind, std::string subject, const std::string& detail)
    : std::runtime_error(detail + ": " + subject), kind_(kind), subject_(std::move(subject)) {}

MBdllFunctions::MBdllFunctions(std::string libraryName, Opener opener)
    : libraryName_(std::move(libraryName)), opener_(std::move(opener)) {}

MBdllFunctions MBdllFunctions::forInstalledLibrary() {
  return MBdllFunctions(kPlatformLibraryFileName, [](std::string& error) {
    return openDynamicLibrary(kPlatformLibraryFileName, error);
  });
}

MBdllFunctions MBdllFunctions::forLibraryAt(const std::string& path) {
  return MBdllFunctions(path, [path](std::string& error) { return openDynamicLibraryAt(path, error); });
}

MBdllFunctions::MBdllFunctions(MBdllFunctions&&) noexcept = default;
MBdllFunctions& MBdllFunctions::operator=(MBdllFunctions&&) noexcept = default;
MBdllFunctions::~MBdllFunctions() = default;

void MBdllFunctions::load() {
  table();
}

const MBFunctionTable& MBdllFunctions::table() {
  if (library_ != nullptr) return table_;
  std::string reason;
  std::unique_ptr<DynamicLibrary> library = opener_ ? opener_(reason) : nullptr;
  if (library == nullptr) {
    throw DeviceLibraryError(DeviceLibraryError::Kind::LibraryMissing, libraryName_,
                             "the device library could not be loaded (" + reason + ")");
  }
  MBFunctionTable filled{};
#define MB_FUNCTION(Result, Name, Parameters, Arguments) \
  filled.Name = reinterpret_cast<decltype(filled.Name)>(library->findSymbol(#Name));
#include "device/MBFunctionList.h"
  table_ = filled;
  library_ = std::move(library);
  return table_;
}

std::vector<std::string> MBdllFunctions::missingExports() const {
  std::vector<std::string> missing;
  if (library_ == nullptr) return missing;
#define MB_FUNCTION(Result, Name, Parameters, Arguments) \
  if (table_.Name == nullptr) missing.emplace_back(#Name);
#include "device/MBFunctionList.h"
  return missing;
}

// Session, scanning and connection.

std::int32_t MBdllFunctions::MBRegisterApplication(std::int32_t application) {
  return MB_CALL(MBRegisterApplication, application);
}

std::int32_t MBdllFunctions::MBCloseApplication() {
  return MB_CALL(MBCloseApplication);
}

std::int32_t MBdllFunctions::MBScanForDetectors() {
  return MB_CALL(MBScanForDetectors);
}

std::int32_t MBdllFunctions::MBGetScanCompleteStatus() {
  return MB_CALL(MBGetScanCompleteStatus);
}

std::uint8_t MBdllFunctions::MBGetNumberOfDetectors(std::int32_t typeCode) {
  return MB_CALL(MBGetNumberOfDetectors, typeCode);
}

std::vector<DetectorInfo> MBdllFunctions::MBGetDetectorInfoOfType(std::int32_t typeCode, std::size_t count) {
  std::vector<DetectorInfo> records(std::max<std::size_t>(count, 1), DetectorInfo{});
  MB_CALL(MBGetDetectorInfoOfType, typeCode, records.data());
  records.resize(count);
  return records;
}

std::int16_t MBdllFunctions::MBConnectToDetectors(std::vector<std::int32_t>& identifiers,
                                                  std::vector<std::uint8_t>& typeCodes) {
  const std::size_t count = std::min<std::size_t>({identifiers.size(), typeCodes.size(), 255});
  // Buffers of their own, so that the library has an element to point at even for an empty choice.
  std::vector<std::int32_t> identifierBuffer(identifiers.begin(), identifiers.begin() + count);
  std::vector<std::uint8_t> typeBuffer(typeCodes.begin(), typeCodes.begin() + count);
  identifierBuffer.resize(std::max<std::size_t>(count, 1));
  typeBuffer.resize(std::max<std::size_t>(count, 1));
  const std::int16_t result = MB_CALL(MBConnectToDetectors, identifierBuffer.data(), typeBuffer.data(),
                                      static_cast<std::uint8_t>(count));
  std::copy_n(identifierBuffer.begin(), count, identifiers.begin());
  std::copy_n(typeBuffer.begin(), count, typeCodes.begin());
  return result;
}

std::int32_t MBdllFunctions::MBStopScanningAndReset() {
  return MB_CALL(MBStopScanningAndReset);
}

std::int16_t MBdllFunctions::MBGetUSBStatus() {
  return MB_CALL(MBGetUSBStatus);
}

std::int16_t MBdllFunctions::MBGetZigBeeStatus() {
  return MB_CALL(MBGetZigBeeStatus);
}

// Detector state.

DetectorStatus MBdllFunctions::MBGetDetectorStatus(std::int32_t id) {
  DetectorStatus status{};
  MB_CALL(MBGetDetectorStatus, &status, id);
  return status;
}

BatteryStatus MBdllFunctions::MBGetBatteryStatus(std::int32_t id) {
  BatteryStatus battery{};
  MB_CALL(MBGetBatteryStatus, &battery, id, -1);
  return battery;
}

std::int32_t MBdllFunctions::MBGetNumberOfInvalidTargetFilters(std::int32_t id) {
  return MB_CALL(MBGetNumberOfInvalidTargetFilters, id);
}

namespace {

/// The most target/filter names one call asks for: the executive counts them in a byte. A larger count
/// from the library is not taken as room to allocate.
constexpr std::int32_t kMaxTargetFilterNames = 255;

/// Keeps the names the library says it wrote, never more than it was given room for.
std::vector<TargetFilterName> keepWritten(std::vector<TargetFilterName> names, std::int32_t capacity,
                                          std::int32_t written) {
  names.resize(static_cast<std::size_t>(std::clamp(written, 0, std::max(capacity, 0))));
  return names;
}

}  // namespace

std::vector<TargetFilterName> MBdllFunctions::MBGetAllInvalidTargetFilters(std::int32_t id,
                                                                           std::int32_t capacity) {
  capacity = std::min(capacity, kMaxTargetFilterNames);
  std::vector<TargetFilterName> names(bufferLength(capacity), TargetFilterName{});
  std::int32_t count = std::max(capacity, 0);
  MB_CALL(MBGetAllInvalidTargetFilters, id, names.data(), &count);
  return keepWritten(std::move(names), capacity, count);
}

std::int32_t MBdllFunctions::MBGetNumberOfValidTargetFilters(std::int32_t id) {
  return MB_CALL(MBGetNumberOfValidTargetFilters, id, -1);
}

std::vector<TargetFilterName> MBdllFunctions::MBGetValidTargetFilters(std::int32_t id,
                                                                      std::int32_t capacity) {
  capacity = std::min(capacity, kMaxTargetFilterNames);
  std::vector<TargetFilterName> names(bufferLength(capacity), TargetFilterName{});
  std::int32_t count = std::max(capacity, 0);
  MB_CALL(MBGetValidTargetFilters, id, names.data(), &count);
  return keepWritten(std::move(names), capacity, count);
}

TargetFilterName MBdllFunctions::MBGetDefaultTargetFilter(std::int32_t id) {
  TargetFilterName name{};
  MB_CALL(MBGetDefaultTargetFilter, id, &name);
  return name;
}

// Measurement control and data.

std::int32_t MBdllFunctions::MBEnableMeasurement(std::int32_t id) {
  return MB_CALL(MBEnableMeasurement, id);
}

std::int32_t MBdllFunctions::MBDisableMeasurement(std::int32_t id) {
  return MB_CALL(MBDisableMeasurement, id);
}

std::int32_t MBdllFunctions::MBSetPowerMode(std::int32_t id, std::int32_t powerMode) {
  return MB_CALL(MBSetPowerMode, id, powerMode);
}

std::int32_t MBdllFunctions::MBSetDetectorMode(std::int32_t id, std::int32_t detectorMode) {
  return MB_CALL(MBSetDetectorMode, id, detectorMode);
}

std::int32_t MBdllFunctions::MBSetSetup(std::int32_t id, std::int32_t setup) {
  return MB_CALL(MBSetSetup, id, setup);
}

std::int32_t MBdllFunctions::MBSetMeasurementSettings(std::int32_t id, MeasurementSettings& settings) {
  return MB_CALL(MBSetMeasurementSettings, id, &settings);
}

AioMeasuredData MBdllFunctions::MBGetMeasuredData(std::int32_t id) {
  AioMeasuredData data{};
  MB_CALL(MBGetMeasuredData, &data, id, 0);
  return data;
}

DoseMeasuredData MBdllFunctions::MBGetDosimeterMeasuredData(std::int32_t id) {
  DoseMeasuredData data{};
  MB_CALL(MBGetDosimeterMeasuredData, &data, id, 0);
  return data;
}

MasMeasuredData MBdllFunctions::MBGetmAsMeasuredData(std::int32_t id) {
  MasMeasuredData data{};
  MB_CALL(MBGetmAsMeasuredData, &data, id, 0);
  return data;
}

// Waveforms.

std::int32_t MBdllFunctions::MBPauseUpdateThread() {
  return MB_CALL(MBPauseUpdateThread);
}

std::int32_t MBdllFunctions::MBResumeUpdateThread() {
  return MB_CALL(MBResumeUpdateThread);
}

std::int32_t MBdllFunctions::MBSetWaveformParameters(std::int32_t id, WaveformParameters& parameters) {
  return MB_CALL(MBSetWaveformParameters, id, &parameters, 0);
}

std::int32_t MBdllFunctions::MBGetNumberOfDataPoints(std::int32_t id) {
  return MB_CALL(MBGetNumberOfDataPoints, id, 0);
}

std::int16_t MBdllFunctions::MBGetWaveformAvailabilityStatus(std::int32_t id) {
  return MB_CALL(MBGetWaveformAvailabilityStatus, id);
}

std::int32_t MBdllFunctions::MBStartWFDownload(std::int32_t id, std::uint8_t start) {
  return MB_CALL(MBStartWFDownload, id, start);
}

std::int32_t MBdllFunctions::MBGetmAsNumberOfDataPoints(std::int32_t id, std::int32_t& span) {
  return MB_CALL(MBGetmAsNumberOfDataPoints, id, &span);
}

std::int32_t MBdllFunctions::MBGetmAsWaveFormDataPoints(std::int32_t id, std::int32_t firstPoint,
                                                        std::uint8_t step, std::span<std::int32_t> points) {
  if (points.empty()) return 0;
  const auto count = static_cast<std::uint8_t>(std::min<std::size_t>(points.size(), 255));
  return MB_CALL(MBGetmAsWaveFormDataPoints, id, firstPoint, step, count, points.data());
}

// Dosimeter configuration.

AdcfSettings MBdllFunctions::MBGetADCF(std::int32_t id) {
  AdcfSettings adcf{};
  MB_CALL(MBGetADCF, id, &adcf);
  return adcf;
}

std::int32_t MBdllFunctions::MBSetADCF(std::int32_t id, AdcfSettings& adcf) {
  return MB_CALL(MBSetADCF, id, &adcf);
}

DosimeterMode MBdllFunctions::MBGetDosimeterMode(std::int32_t id) {
  DosimeterMode mode{};
  MB_CALL(MBGetDosimeterMode, id, &mode);
  return mode;
}

std::int32_t MBdllFunctions::MBSetDosimeterMode(std::int32_t id, DosimeterMode& mode) {
  return MB_CALL(MBSetDosimeterMode, id, &mode);
}

DosimeterUnit MBdllFunctions::MBGetDosimeterUnit(std::int32_t id) {
  DosimeterUnit unit{};
  MB_CALL(MBGetDosimeterUnit, id, &unit);
  return unit;
}

std::int32_t MBdllFunctions::MBSetDosimeterUnit(std::int32_t id, DosimeterUnit& unit) {
  return MB_CALL(MBSetDosimeterUnit, id, &unit);
}

TempPressureOffset MBdllFunctions::MBGetTempPressureOffset(std::int32_t id) {
  TempPressureOffset offset{};
  MB_CALL(MBGetTempPressureOffset, id, &offset);
  return offset;
}

std::int32_t MBdllFunctions::MBSetTempPressureOffset(std::int32_t id, TempPressureOffset& offset) {
  return MB_CALL(MBSetTempPressureOffset, id, &offset);
}

std::int32_t MBdllFunctions::MBGetNoOfIonChambers(std::int32_t id) {
  return MB_CALL(MBGetNoOfIonChambers, id);
}

std::int16_t MBdllFunctions::MBGetChamberFileInfo(std::int32_t id) {
  return MB_CALL(MBGetChamberFileInfo, id);
}

IonChamberSelection MBdllFunctions::MBGetIonChamberCalFactor(std::int32_t id) {
  IonChamberSelection selection{};
  MB_CALL(MBGetIonChamberCalFactor, id, &selection);
  return selection;
}

std::int32_t MBdllFunctions::MBSetIonChamberCalFactor(std::int32_t id, std::int16_t chamber,
                                                      std::int16_t calFactor) {
  return MB_CALL(MBSetIonChamberCalFactor, id, chamber, calFactor);
}

namespace {

/// The name in a buffer one byte longer than the library reads, so that a library which takes it
/// for a terminated string stops inside the buffer.
std::array<char, kChamberNameLength + 1> terminatedName(const ChamberName& name) {
  std::array<char, kChamberNameLength + 1> buffer{};
  std::copy(name.begin(), name.end(), buffer.begin());
  return buffer;
}

}  // namespace

std::int16_t MBdllFunctions::MBAddNewIonChamber(std::int32_t id, const ChamberName& name) {
  auto buffer = terminatedName(name);
  return MB_CALL(MBAddNewIonChamber, id, buffer.data());
}

std::int16_t MBdllFunctions::MBAddNewCalFactor(std::int32_t id, std::int16_t chamber, CalFactor& calFactor) {
  return MB_CALL(MBAddNewCalFactor, id, chamber, &calFactor);
}

std::int16_t MBdllFunctions::MBEditIonChamber(std::int32_t id, std::int16_t chamber,
                                              const ChamberName& name) {
  auto buffer = terminatedName(name);
  return MB_CALL(MBEditIonChamber, id, chamber, buffer.data());
}

std::int16_t MBdllFunctions::MBEditCalfactor(std::int32_t id, std::int16_t chamber, CalFactor& calFactor) {
  return MB_CALL(MBEditCalfactor, id, chamber, &calFactor);
}

std::int32_t MBdllFunctions::MBDeleteIonChamber(std::int32_t id, std::int16_t chamber) {
  return MB_CALL(MBDeleteIonChamber, id, chamber);
}

std::int32_t MBdllFunctions::MBDeleteCalfactor(std::int32_t id, std::int16_t chamber,
                                               std::uint8_t calFactor) {
  return MB_CALL(MBDeleteCalfactor, id, chamber, calFactor);
}

std::int32_t MBdllFunctions::MBDeleteAllIonChambers(std::int32_t id) {
  return MB_CALL(MBDeleteAllIonChambers, id);
}

// mAs meter.

std::int32_t MBdllFunctions::MBSetmAsInput(std::int32_t id, std::int32_t inputType) {
  return MB_CALL(MBSetmAsInput, id, inputType);
}

}  // namespace rx9400
