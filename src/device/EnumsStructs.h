// Records exchanged with the device library TamsaMBDll, byte for byte as the library lays them out.
//
// Every record is packed to one byte and spelled out field by field, reserved bytes included, so that
// the same header serves the plug-in and the detector simulator. Offsets and sizes are checked at
// compile time below; a record that drifts by one byte does not build.
//
// Where a field is only reserved by the plug-in's callers, the name given here is the library's own
// meaning of it (used by the simulator and the connect dialog); the plug-in's measuring code never
// reads those fields.
#pragma once

#include <cstddef>
#include <cstdint>

namespace rx9400 {

/// A Boolean as the library stores it inside records: 16 bits, True = -1, False = 0.
using VBBool = std::int16_t;
/// A Boolean as the library takes it by value: 32 bits, True = -1, False = 0.
using MBBool = std::int32_t;

inline constexpr VBBool kVBTrue = -1;
inline constexpr VBBool kVBFalse = 0;
inline constexpr MBBool kMBTrue = -1;
inline constexpr MBBool kMBFalse = 0;

/// Connection state in DetectorStatus::connectionState.
inline constexpr std::int32_t kConnected = 1;
inline constexpr std::int32_t kConnectionLost = 2;
/// DetectorStatus::measurementState of a detector with a zero error.
inline constexpr std::int32_t kMeasurementZeroError = 7;
/// MasMeasuredData::meterState while the mAs meter zeroes itself.
inline constexpr std::int32_t kMasZeroing = 8;
/// BatteryStatus::batteryState values.
inline constexpr std::int32_t kBatteryLow = 2;
inline constexpr std::int32_t kBatteryVeryLow = 3;
/// Power modes for MBSetPowerMode.
inline constexpr std::int32_t kPowerSleep = 1;
inline constexpr std::int32_t kPowerWake = 2;
inline constexpr std::int32_t kPowerShutDown = 3;
/// Detector modes for MBSetDetectorMode (the library's codes, not the catalogue order).
inline constexpr std::int32_t kModeRadio = 1;
inline constexpr std::int32_t kModeMammo = 2;
inline constexpr std::int32_t kModeFluoro = 3;
inline constexpr std::int32_t kModeDental = 4;
/// Status of one measured value.
inline constexpr std::int32_t kValueValid = 1;
inline constexpr std::int32_t kValueOverRange = 3;
inline constexpr std::int32_t kValueUnderRange = 5;
/// Dosimeter sensor state meaning "error".
inline constexpr std::int32_t kSensorError = 7;

/// Length of a target/filter name and of an ion chamber or cal factor name, in one-byte characters.
inline constexpr std::size_t kTargetFilterNameLength = 16;
inline constexpr std::size_t kChamberNameLength = 15;
inline constexpr std::size_t kMaxCalFactors = 10;

#pragma pack(push, 1)

/// A calendar date as the detector stores it.
struct CalDate {
  std::uint8_t day;
  std::uint8_t month;
  std::int16_t year;
};

/// One detector as the library describes it (MBGetDetectorInfoOfType fills an array of these).
struct DetectorInfo {
  std::int32_t typeCode;            ///< the detector's own type code (1 to 5)
  std::int16_t linkKind;            ///< 1 USB, 2 ZigBee radio
  std::int16_t selfTestResult;      ///< power-on self test: 0 passed, any other value is a failure code
  std::uint8_t secondVersionMinor;  ///< second firmware version number (bootloader), minor part
  std::uint8_t secondVersionMajor;
  std::uint8_t firstVersionMinor;  ///< first firmware version number (application), minor part
  std::uint8_t firstVersionMajor;
  std::int32_t radioAddress;  ///< short address on the radio link
  std::int32_t identifier;    ///< handed out by the library; below 1 means an empty slot
  std::int32_t serialNumber;
  CalDate calibrationDate;
  CalDate calibrationDueDate;
  std::uint8_t boardVersionMinor;  ///< hardware version of the main board
  std::uint8_t boardVersionMajor;
  std::uint8_t radioVersionMinor;  ///< hardware version of the radio module
  std::uint8_t radioVersionMajor;
  char modelName[16];  ///< zero-filled one-byte characters
  std::uint8_t reserved[4];
};

/// Battery state of one detector (MBGetBatteryStatus, and inside DetectorStatus).
struct BatteryStatus {
  std::int32_t batteryState;   ///< 2 low, 3 very low, other values normal
  std::int32_t chargingState;  ///< non-zero while charging (1 = charging from the charger)
  std::int32_t voltageMillivolts;
  std::uint8_t chargePercent;  ///< 0 to 100
  std::uint8_t reserved[3];
};

/// The library's copy of one detector's state (MBGetDetectorStatus).
struct DetectorStatus {
  std::int32_t connectionState;  ///< 1 connected, 2 connection lost
  BatteryStatus battery;
  std::int32_t measurementState;  ///< 7 zero error
  std::int32_t powerMode;         ///< last power mode set (1 sleep, 2 awake, 3 shut down)
  VBBool exposureStarted;
  VBBool dataAvailable;
  VBBool fluoroRunning;
  std::int16_t signalStrength;  ///< radio link quality, 0 to 100
  std::int32_t exposureCount;   ///< exposures seen since connection
};

/// Measured data of the all-in-one detector (MBGetMeasuredData).
struct AioMeasuredData {
  std::int32_t doseStatus;
  std::int32_t doseRateStatus;
  std::int32_t exposureTimeStatus;
  std::int32_t pulsesStatus;
  std::int32_t kvpAverageStatus;
  std::int32_t kvpMaximumStatus;
  std::int32_t kvpPpvStatus;
  std::int32_t pulseRateStatus;
  std::int32_t pulseWidthStatus;
  std::int32_t hvlStatus;
  std::int32_t dose;          ///< raw, scaled by mode and dose unit
  std::int32_t doseRate;      ///< raw
  std::int32_t exposureTime;  ///< tenths
  std::int16_t pulses;
  std::int16_t kvpAverage;  ///< tenths of kV
  std::int16_t kvpMaximum;
  std::int16_t kvpPpv;
  std::int16_t pulseRate;   ///< tenths
  std::int16_t pulseWidth;  ///< tenths
  std::uint8_t hvl;         ///< hundredths of mm in MAMMO mode, tenths otherwise
  std::uint8_t padding[3];
};

/// Measured data of the mAs meter (MBGetmAsMeasuredData).
struct MasMeasuredData {
  std::int32_t exposureNumber;  ///< counts the meter's exposures
  std::int32_t meterState;      ///< 8 zeroing in progress
  std::int32_t mAStatus;
  std::int32_t mAsStatus;
  std::int32_t pulsesStatus;
  float mA;
  float mAs;
  float pulses;
  VBBool waveformAvailable;
  std::int16_t inputType;  ///< 1 or 2, as set by MBSetmAsInput
  VBBool exposureStarted;
  VBBool dataAvailable;
};

/// Measured data of the dosimeter (MBGetDosimeterMeasuredData).
struct DoseMeasuredData {
  std::int32_t temperatureState;  ///< 7 sensor error
  std::int32_t pressureState;     ///< 7 sensor error
  std::int32_t biasVoltageState;  ///< 7 bias voltage error
  std::int32_t doseStatus;
  std::int32_t doseRateStatus;
  std::int32_t leakageStatus;
  float temperature;     ///< degrees Celsius
  float pressure;        ///< mmHg
  float adcf;            ///< air density correction factor
  float leakageCurrent;  ///< amperes
  float dose;
  float doseRate;
  float biasVoltage;  ///< volts
  VBBool exposureStarted;
  VBBool dataAvailable;
  VBBool integrating;    ///< charge still being collected; values are not final while set
  VBBool exposureEnded;  ///< the exposure is complete
  VBBool autoResetDone;  ///< the electrometer reset itself after the exposure
  VBBool sensorReset;    ///< the sensor asks to be reset by the user
  std::int32_t exposureNumber;
  std::int32_t frameRate;
  float accumulatedDose;
  float peakDoseRate;
  float exposureTime;  ///< seconds
  std::uint8_t reserved[32];
};

/// Measurement settings of the all-in-one detector (MBSetMeasurementSettings).
struct MeasurementSettings {
  std::int32_t doseUnit;      ///< 1 or 2
  std::int32_t doseRateUnit;  ///< 1 to 4
  std::int32_t fluoroType;    ///< 1 or 2
  std::int32_t timeUnit;      ///< 1 or 2
  std::int16_t delay;
  VBBool includeDelay;
  std::uint8_t percentKV;
  char targetFilter[kTargetFilterNameLength];  ///< one-byte characters, zero-filled
  std::uint8_t reserved[15];                   ///< cleared before every send
};

/// One target/filter combination name, as the target/filter functions exchange them.
struct TargetFilterName {
  char name[kTargetFilterNameLength];  ///< zero-filled one-byte characters
};

/// The stretch of the recorded waveform the library is to publish (MBSetWaveformParameters).
struct WaveformParameters {
  std::int32_t startPoint;
  std::int32_t numberOfPoints;
  std::int16_t step;
  std::uint8_t reserved[2];
};

/// Air density correction of the dosimeter (MBGetADCF / MBSetADCF).
struct AdcfSettings {
  std::int32_t mode;               ///< 1 measured correction, 2 fixed (set) values
  std::uint8_t useSetTemperature;  ///< companion byte of the mode
  std::uint8_t useSetPressure;     ///< companion byte of the mode
  std::uint8_t reserved[2];
  float setPressure;           ///< mmHg, 522 to 795
  float defaultPressure;       ///< mmHg, 522 to 795
  float setTemperature;        ///< degrees Celsius, 0 to 50
  float defaultTemperature;    ///< degrees Celsius, 0 to 50
  float referenceTemperature;  ///< 20 or 22 degrees Celsius
};

/// Dosimeter measuring mode (MBGetDosimeterMode / MBSetDosimeterMode).
struct DosimeterMode {
  std::int32_t mode;       ///< 1 power, 2 dose, 3 rate, 4 low rate
  std::uint8_t autoReset;  ///< 0 or 1
  std::uint8_t reserved[3];
};

/// Dosimeter display units (MBGetDosimeterUnit / MBSetDosimeterUnit).
struct DosimeterUnit {
  std::int32_t doseUnit;         ///< 1 to 3
  std::int32_t doseRateUnit;     ///< 1 to 5
  std::int32_t temperatureUnit;  ///< 1 Celsius, 2 Fahrenheit, 3 Kelvin
  std::int32_t pressureUnit;     ///< 1 inHg, 2 mmHg, 3 hPa, 4 mbar, 5 psi-like, 6 kg/cm2-like
  std::int16_t frameRate;        ///< 0 to 1200
  std::uint8_t reserved[2];
};

/// Offsets the dosimeter adds to its pressure and temperature sensors.
struct TempPressureOffset {
  float pressureOffset;
  float temperatureOffset;
};

/// One calibration factor of an ion chamber.
struct CalFactor {
  std::int32_t unitCode;  ///< 1 R/C, 2 R/nC, 3 Gy/C, 4 Gy/nC
  float calConstant;
  std::int16_t number;  ///< the library's number of the factor; 0 = empty slot
  char name[kChamberNameLength];
  std::uint8_t mark;  ///< tick mark of the deletion dialog: 1 ticked
  std::uint8_t reserved[2];
};

/// One ion chamber with its calibration factors.
struct IonChamber {
  std::uint8_t mark;  ///< tick mark of the deletion dialog: 1 ticked
  char name[kChamberNameLength];
  std::int16_t number;  ///< the library's number of the chamber; 0 = empty slot
  std::uint8_t calFactorCount;
  std::uint8_t reserved1;
  CalFactor calFactors[kMaxCalFactors];
  std::uint8_t reserved2[4];
};

/// The chamber and cal factor the dosimeter measures with (MBGetIonChamberCalFactor).
struct IonChamberSelection {
  std::int16_t chamberNumber;
  std::int16_t calFactorNumber;
};

#pragma pack(pop)

// The layout checks. Offsets the plug-in reads are listed in full.
static_assert(sizeof(CalDate) == 4);

static_assert(sizeof(DetectorInfo) == 56);
static_assert(offsetof(DetectorInfo, secondVersionMinor) == 8);
static_assert(offsetof(DetectorInfo, secondVersionMajor) == 9);
static_assert(offsetof(DetectorInfo, firstVersionMinor) == 10);
static_assert(offsetof(DetectorInfo, firstVersionMajor) == 11);
static_assert(offsetof(DetectorInfo, identifier) == 16);
static_assert(offsetof(DetectorInfo, serialNumber) == 20);
static_assert(offsetof(DetectorInfo, calibrationDate) == 24);
static_assert(offsetof(DetectorInfo, calibrationDueDate) == 28);
static_assert(offsetof(DetectorInfo, boardVersionMinor) == 32);
static_assert(offsetof(DetectorInfo, modelName) == 36);

static_assert(sizeof(BatteryStatus) == 16);
static_assert(offsetof(BatteryStatus, batteryState) == 0);
static_assert(offsetof(BatteryStatus, chargingState) == 4);
static_assert(offsetof(BatteryStatus, chargePercent) == 12);

static_assert(sizeof(DetectorStatus) == 40);
static_assert(offsetof(DetectorStatus, connectionState) == 0);
static_assert(offsetof(DetectorStatus, battery) == 4);
static_assert(offsetof(DetectorStatus, battery) + offsetof(BatteryStatus, chargingState) == 8);
static_assert(offsetof(DetectorStatus, battery) + offsetof(BatteryStatus, chargePercent) == 16);
static_assert(offsetof(DetectorStatus, measurementState) == 20);
static_assert(offsetof(DetectorStatus, exposureStarted) == 28);
static_assert(offsetof(DetectorStatus, dataAvailable) == 30);
static_assert(offsetof(DetectorStatus, fluoroRunning) == 32);

static_assert(sizeof(AioMeasuredData) == 68);
static_assert(offsetof(AioMeasuredData, doseStatus) == 0);
static_assert(offsetof(AioMeasuredData, kvpAverageStatus) == 16);
static_assert(offsetof(AioMeasuredData, hvlStatus) == 36);
static_assert(offsetof(AioMeasuredData, dose) == 40);
static_assert(offsetof(AioMeasuredData, doseRate) == 44);
static_assert(offsetof(AioMeasuredData, exposureTime) == 48);
static_assert(offsetof(AioMeasuredData, pulses) == 52);
static_assert(offsetof(AioMeasuredData, kvpAverage) == 54);
static_assert(offsetof(AioMeasuredData, kvpMaximum) == 56);
static_assert(offsetof(AioMeasuredData, kvpPpv) == 58);
static_assert(offsetof(AioMeasuredData, pulseRate) == 60);
static_assert(offsetof(AioMeasuredData, pulseWidth) == 62);
static_assert(offsetof(AioMeasuredData, hvl) == 64);

static_assert(sizeof(MasMeasuredData) == 40);
static_assert(offsetof(MasMeasuredData, meterState) == 4);
static_assert(offsetof(MasMeasuredData, mAStatus) == 8);
static_assert(offsetof(MasMeasuredData, mAsStatus) == 12);
static_assert(offsetof(MasMeasuredData, pulsesStatus) == 16);
static_assert(offsetof(MasMeasuredData, mA) == 20);
static_assert(offsetof(MasMeasuredData, mAs) == 24);
static_assert(offsetof(MasMeasuredData, pulses) == 28);
static_assert(offsetof(MasMeasuredData, waveformAvailable) == 32);
static_assert(offsetof(MasMeasuredData, inputType) == 34);
static_assert(offsetof(MasMeasuredData, exposureStarted) == 36);
static_assert(offsetof(MasMeasuredData, dataAvailable) == 38);

static_assert(sizeof(DoseMeasuredData) == 116);
static_assert(offsetof(DoseMeasuredData, temperature) == 24);
static_assert(offsetof(DoseMeasuredData, biasVoltage) == 48);
static_assert(offsetof(DoseMeasuredData, exposureStarted) == 52);
static_assert(offsetof(DoseMeasuredData, sensorReset) == 62);
static_assert(offsetof(DoseMeasuredData, exposureNumber) == 64);
static_assert(offsetof(DoseMeasuredData, reserved) == 84);

static_assert(sizeof(MeasurementSettings) == 52);
static_assert(offsetof(MeasurementSettings, doseUnit) == 0);
static_assert(offsetof(MeasurementSettings, doseRateUnit) == 4);
static_assert(offsetof(MeasurementSettings, fluoroType) == 8);
static_assert(offsetof(MeasurementSettings, timeUnit) == 12);
static_assert(offsetof(MeasurementSettings, delay) == 16);
static_assert(offsetof(MeasurementSettings, includeDelay) == 18);
static_assert(offsetof(MeasurementSettings, percentKV) == 20);
static_assert(offsetof(MeasurementSettings, targetFilter) == 21);
static_assert(offsetof(MeasurementSettings, reserved) == 37);

static_assert(sizeof(TargetFilterName) == 16);

static_assert(sizeof(WaveformParameters) == 12);
static_assert(offsetof(WaveformParameters, startPoint) == 0);
static_assert(offsetof(WaveformParameters, numberOfPoints) == 4);
static_assert(offsetof(WaveformParameters, step) == 8);

static_assert(sizeof(AdcfSettings) == 28);
static_assert(offsetof(AdcfSettings, setPressure) == 8);
static_assert(offsetof(AdcfSettings, referenceTemperature) == 24);
static_assert(sizeof(DosimeterMode) == 8);
static_assert(sizeof(DosimeterUnit) == 20);
static_assert(offsetof(DosimeterUnit, frameRate) == 16);
static_assert(sizeof(TempPressureOffset) == 8);

static_assert(sizeof(CalFactor) == 28);
static_assert(offsetof(CalFactor, calConstant) == 4);
static_assert(offsetof(CalFactor, number) == 8);
static_assert(offsetof(CalFactor, name) == 10);
static_assert(offsetof(CalFactor, mark) == 25);

static_assert(sizeof(IonChamber) == 304);
static_assert(offsetof(IonChamber, mark) == 0);
static_assert(offsetof(IonChamber, name) == 1);
static_assert(offsetof(IonChamber, number) == 16);
static_assert(offsetof(IonChamber, calFactorCount) == 18);
static_assert(offsetof(IonChamber, calFactors) == 20);
static_assert(sizeof(IonChamberSelection) == 4);

}  // namespace rx9400
