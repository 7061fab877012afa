// The exports of the device library TamsaMBDll, each once, with its exact C signature.
//
// Include this file after defining MB_FUNCTION(Result, Name, Parameters, Arguments); it expands the macro
// once per export and undefines it again. Arguments repeats the parameters' names in parentheses, so that
// a definition can forward its call (`return real.Name Arguments;`). The function table, the loader, the
// simulator's own prototypes and the recorder's exports are all generated from this list, so a signature
// is written in exactly one place. A parameter naming a detector is always called `id`.
//
// The library uses the standard Windows calling convention (callee cleans the stack); Booleans passed
// by value are 32 bits with True = -1 (MBBool); records, arrays and variables the library writes are
// passed by pointer. Types come from EnumsStructs.h.
//
// clang-format off
// Session, scanning and connection
MB_FUNCTION(std::int32_t, MBRegisterApplication, (std::int32_t application), (application))
MB_FUNCTION(std::int32_t, MBCloseApplication, (), ())
MB_FUNCTION(std::int32_t, MBScanForDetectors, (), ())
MB_FUNCTION(std::int32_t, MBGetScanCompleteStatus, (), ())
MB_FUNCTION(std::uint8_t, MBGetNumberOfDetectors, (std::int32_t typeCode), (typeCode))
MB_FUNCTION(std::int32_t, MBGetDetectorInfoOfType, (std::int32_t typeCode, DetectorInfo* first), (typeCode, first))
MB_FUNCTION(std::int16_t, MBConnectToDetectors, (std::int32_t* identifiers, std::uint8_t* typeCodes, std::uint8_t count), (identifiers, typeCodes, count))
MB_FUNCTION(std::int32_t, MBStopScanningAndReset, (), ())
MB_FUNCTION(std::int16_t, MBGetUSBStatus, (), ())
MB_FUNCTION(std::int16_t, MBGetZigBeeStatus, (), ())
// Detector state
MB_FUNCTION(std::int32_t, MBGetDetectorStatus, (DetectorStatus* status, std::int32_t id), (status, id))
MB_FUNCTION(std::int32_t, MBGetBatteryStatus, (BatteryStatus* battery, std::int32_t id, std::int32_t flags), (battery, id, flags))
MB_FUNCTION(std::int32_t, MBGetNumberOfInvalidTargetFilters, (std::int32_t id), (id))
MB_FUNCTION(std::int32_t, MBGetAllInvalidTargetFilters, (std::int32_t id, TargetFilterName* first, std::int32_t* count), (id, first, count))
MB_FUNCTION(std::int32_t, MBGetNumberOfValidTargetFilters, (std::int32_t id, std::int32_t flags), (id, flags))
MB_FUNCTION(std::int32_t, MBGetValidTargetFilters, (std::int32_t id, TargetFilterName* first, std::int32_t* count), (id, first, count))
MB_FUNCTION(std::int32_t, MBGetDefaultTargetFilter, (std::int32_t id, TargetFilterName* name), (id, name))
// Measurement control and data
MB_FUNCTION(std::int32_t, MBEnableMeasurement, (std::int32_t id), (id))
MB_FUNCTION(std::int32_t, MBDisableMeasurement, (std::int32_t id), (id))
MB_FUNCTION(std::int32_t, MBSetPowerMode, (std::int32_t id, std::int32_t powerMode), (id, powerMode))
MB_FUNCTION(std::int32_t, MBSetDetectorMode, (std::int32_t id, std::int32_t detectorMode), (id, detectorMode))
MB_FUNCTION(std::int32_t, MBSetSetup, (std::int32_t id, std::int32_t setup), (id, setup))
MB_FUNCTION(std::int32_t, MBSetMeasurementSettings, (std::int32_t id, MeasurementSettings* settings), (id, settings))
MB_FUNCTION(std::int32_t, MBGetMeasuredData, (AioMeasuredData* data, std::int32_t id, std::int32_t reserved), (data, id, reserved))
MB_FUNCTION(std::int32_t, MBGetDosimeterMeasuredData, (DoseMeasuredData* data, std::int32_t id, std::int32_t reserved), (data, id, reserved))
MB_FUNCTION(std::int32_t, MBGetmAsMeasuredData, (MasMeasuredData* data, std::int32_t id, std::int32_t reserved), (data, id, reserved))
// Waveforms
MB_FUNCTION(std::int32_t, MBPauseUpdateThread, (), ())
MB_FUNCTION(std::int32_t, MBResumeUpdateThread, (), ())
MB_FUNCTION(std::int32_t, MBSetWaveformParameters, (std::int32_t id, WaveformParameters* parameters, std::int32_t reserved), (id, parameters, reserved))
MB_FUNCTION(std::int32_t, MBGetNumberOfDataPoints, (std::int32_t id, std::int32_t reserved), (id, reserved))
MB_FUNCTION(std::int16_t, MBGetWaveformAvailabilityStatus, (std::int32_t id), (id))
MB_FUNCTION(std::int32_t, MBStartWFDownload, (std::int32_t id, std::uint8_t start), (id, start))
MB_FUNCTION(std::int32_t, MBGetmAsNumberOfDataPoints, (std::int32_t id, std::int32_t* span), (id, span))
MB_FUNCTION(std::int32_t, MBGetmAsWaveFormDataPoints, (std::int32_t id, std::int32_t firstPoint, std::uint8_t step, std::uint8_t count,
             std::int32_t* first), (id, firstPoint, step, count, first))
// Dosimeter configuration
MB_FUNCTION(std::int32_t, MBGetADCF, (std::int32_t id, AdcfSettings* adcf), (id, adcf))
MB_FUNCTION(std::int32_t, MBSetADCF, (std::int32_t id, AdcfSettings* adcf), (id, adcf))
MB_FUNCTION(std::int32_t, MBGetDosimeterMode, (std::int32_t id, DosimeterMode* mode), (id, mode))
MB_FUNCTION(std::int32_t, MBSetDosimeterMode, (std::int32_t id, DosimeterMode* mode), (id, mode))
MB_FUNCTION(std::int32_t, MBGetDosimeterUnit, (std::int32_t id, DosimeterUnit* unit), (id, unit))
MB_FUNCTION(std::int32_t, MBSetDosimeterUnit, (std::int32_t id, DosimeterUnit* unit), (id, unit))
MB_FUNCTION(std::int32_t, MBGetTempPressureOffset, (std::int32_t id, TempPressureOffset* offset), (id, offset))
MB_FUNCTION(std::int32_t, MBSetTempPressureOffset, (std::int32_t id, TempPressureOffset* offset), (id, offset))
MB_FUNCTION(std::int32_t, MBGetNoOfIonChambers, (std::int32_t id), (id))
MB_FUNCTION(std::int16_t, MBGetChamberFileInfo, (std::int32_t id), (id))
MB_FUNCTION(std::int32_t, MBGetIonChamberCalFactor, (std::int32_t id, IonChamberSelection* selection), (id, selection))
MB_FUNCTION(std::int32_t, MBSetIonChamberCalFactor, (std::int32_t id, std::int16_t chamber, std::int16_t calFactor), (id, chamber, calFactor))
MB_FUNCTION(std::int16_t, MBAddNewIonChamber, (std::int32_t id, char* name), (id, name))
MB_FUNCTION(std::int16_t, MBAddNewCalFactor, (std::int32_t id, std::int16_t chamber, CalFactor* calFactor), (id, chamber, calFactor))
MB_FUNCTION(std::int16_t, MBEditIonChamber, (std::int32_t id, std::int16_t chamber, char* name), (id, chamber, name))
MB_FUNCTION(std::int16_t, MBEditCalfactor, (std::int32_t id, std::int16_t chamber, CalFactor* calFactor), (id, chamber, calFactor))
MB_FUNCTION(std::int32_t, MBDeleteIonChamber, (std::int32_t id, std::int16_t chamber), (id, chamber))
MB_FUNCTION(std::int32_t, MBDeleteCalfactor, (std::int32_t id, std::int16_t chamber, std::uint8_t calFactor), (id, chamber, calFactor))
MB_FUNCTION(std::int32_t, MBDeleteAllIonChambers, (std::int32_t id), (id))
// mAs meter
MB_FUNCTION(std::int32_t, MBSetmAsInput, (std::int32_t id, std::int32_t inputType), (id, inputType))
// Declared for completeness of the boundary; the plug-in calls none of these.
MB_FUNCTION(std::int32_t, MBGetDetectorInfo, (std::int32_t id, DetectorInfo* info), (id, info))
MB_FUNCTION(std::int32_t, MBGetDetectorInfoOfAll, (DetectorInfo* first, std::int32_t* count), (first, count))
MB_FUNCTION(std::int32_t, MBGetDetectorPOSTStatus, (std::int32_t id), (id))
MB_FUNCTION(std::int32_t, MBGetDetectorPOSTStatusOfAll, (std::int32_t* first), (first))
MB_FUNCTION(std::int32_t, MBGetDetectorStatusOfAll, (DetectorStatus* first), (first))
MB_FUNCTION(std::int32_t, MBEnableMeasurementToAll, (), ())
MB_FUNCTION(std::int32_t, MBDisableMeasurementToAll, (), ())
MB_FUNCTION(std::int32_t, MBGetMeasurementStatus, (std::int32_t id), (id))
MB_FUNCTION(std::int32_t, MBSetMeasurementSettingsToAll, (MeasurementSettings* settings), (settings))
MB_FUNCTION(std::int32_t, MBSetDetectorModeToAll, (std::int32_t detectorMode), (detectorMode))
MB_FUNCTION(std::int32_t, MBSetSetupToAll, (std::int32_t setup), (setup))
MB_FUNCTION(std::int32_t, MBSetPowerModeToAll, (std::int32_t powerMode), (powerMode))
MB_FUNCTION(std::int32_t, MBSetDetectorGainForAllChannel, (std::int32_t id, std::int32_t gain), (id, gain))
MB_FUNCTION(std::int32_t, MBSetDetectorGainForAllChannelOfAll, (std::int32_t gain), (gain))
MB_FUNCTION(std::int32_t, MBGetCalibrationData, (std::int32_t id, std::uint8_t* first, std::int32_t size), (id, first, size))
MB_FUNCTION(std::int32_t, MBGetChannelData, (std::int32_t id, std::int32_t* first, std::int32_t count), (id, first, count))
MB_FUNCTION(std::int32_t, MBGetOffsetData, (std::int32_t id, std::int32_t* first, std::int32_t count), (id, first, count))
MB_FUNCTION(std::int32_t, MBSetHardwareVersion, (std::int32_t id, std::uint8_t major, std::uint8_t minor), (id, major, minor))
MB_FUNCTION(std::int32_t, MBSetSerialNumber, (std::int32_t id, std::int32_t serialNumber), (id, serialNumber))
MB_FUNCTION(std::int32_t, MBUploadTargetFilter, (std::int32_t id, TargetFilterName* first, std::int32_t count), (id, first, count))
MB_FUNCTION(std::int32_t, MBGetUploadStatus, (std::int32_t id), (id))
MB_FUNCTION(std::int32_t, MBSendByteArray, (std::int32_t id, std::uint8_t* first, std::int32_t count), (id, first, count))
MB_FUNCTION(std::int32_t, MBSendReceiveByteArray, (std::int32_t id, std::uint8_t* sent, std::int32_t sentCount, std::uint8_t* received,
             std::int32_t* receivedCount), (id, sent, sentCount, received, receivedCount))
MB_FUNCTION(std::int16_t, MBGetZigBeeRSSI, (), ())
MB_FUNCTION(std::int32_t, MBResetExposure, (std::int32_t id), (id))
MB_FUNCTION(std::int32_t, MBGetmAsInput, (std::int32_t id), (id))
MB_FUNCTION(std::int32_t, MBGetmAsCalConstant, (std::int32_t id, float* calConstant), (id, calConstant))
MB_FUNCTION(std::int32_t, MBSetmAsCalConstant, (std::int32_t id, float* calConstant), (id, calConstant))
MB_FUNCTION(std::int32_t, MBGetmAsCalDate, (std::int32_t id, CalDate* date), (id, date))
MB_FUNCTION(std::int32_t, MBSetmAsCalDate, (std::int32_t id, CalDate* date), (id, date))
MB_FUNCTION(std::int32_t, MBGetmAsDiagData, (std::int32_t id, std::int32_t* first, std::int32_t count), (id, first, count))
MB_FUNCTION(std::int32_t, MBSetmAsCalibrationSettings, (std::int32_t id, std::uint8_t* first, std::int32_t size), (id, first, size))
MB_FUNCTION(std::int32_t, MBSetmAsWaveformParameters, (std::int32_t id, WaveformParameters* parameters, std::int32_t reserved), (id, parameters, reserved))
MB_FUNCTION(std::int16_t, MBGetmAsWaveformAvailabilityStatus, (std::int32_t id), (id))
MB_FUNCTION(std::int32_t, MBSetmAsZero, (std::int32_t id), (id))
MB_FUNCTION(std::int32_t, MBEnableMASMeasurement, (std::int32_t id, MBBool enable), (id, enable))
MB_FUNCTION(std::int32_t, MBDeviceChanged, (), ())
// clang-format on

#undef MB_FUNCTION
