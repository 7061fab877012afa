// Every text the plug-in shows: a catalogue literal is a five-digit key, "::" and the default English
// text, blanks at either end included. The executive's language component turns a literal into the text
// to show; the plug-in never shows a literal itself. A key may carry two texts (a dialog caption and a
// text set by code); each is kept as it is.
#pragma once

#include <string_view>

namespace rx9400::catalogue {

/// The section every lookup names.
inline constexpr std::string_view kSection = "RX9400";

// clang-format off
inline constexpr std::string_view kExponentLetter                           = "25246::E";
inline constexpr std::string_view kDisplayNameAio                           = "25703::RX 9400WD ";
inline constexpr std::string_view kDisplayNameDose                          = "25704::Kalmet ";
inline constexpr std::string_view kDisplayNameMas                           = "25705::mAs ";
inline constexpr std::string_view kDisplayNameAioMas                        = "25706::RX 9400WD mAs ";
inline constexpr std::string_view kDisplayNameDoseMas                       = "25707::Kalmet mAs ";
inline constexpr std::string_view kDisplayNamePtb                           = "25708::PTB ";
inline constexpr std::string_view kCalibrationDate                          = "22403::Calibration Date: ";
inline constexpr std::string_view kCalibrationDueDate                       = "22404::Calibration Due Date: ";
inline constexpr std::string_view kSuggestionTurnOn                         = "22410::1) Please turn on the detector.";
inline constexpr std::string_view kSuggestionBringInRange                   = "22411::2) Bring the detector within range.";
inline constexpr std::string_view kNoDetectorFound                          = "22453::No Detector Found";
inline constexpr std::string_view kCalibrationError                         = "22459::Calibration Error";
inline constexpr std::string_view kCalibrationOverdue                       = "22460::detector calibration over due.";
inline constexpr std::string_view kTargetFilter                             = "22461::Target/Filter: ";
inline constexpr std::string_view kInvalid                                  = "22462::Invalid";
inline constexpr std::string_view kEstablishConnection                      = "22401::Establish Connection";
inline constexpr std::string_view kSWVersion                                = "22405::SW Version: ";
inline constexpr std::string_view kSWVersionCaption                         = "22405::SW Version: 01.01.01";
inline constexpr std::string_view kHWVersion                                = "22406::HW Version: ";
inline constexpr std::string_view kHWVersionCaption                         = "22406::HW Version: 01.01.01";
inline constexpr std::string_view kConnect                                  = "22407::Connect";
inline constexpr std::string_view kCancel                                   = "22408::Cancel";
inline constexpr std::string_view kSuggestionsCaption                       = "22409::Suggestions :";
inline constexpr std::string_view kSuggestionsCaptionBlank                  = "22409::Suggestions : ";
inline constexpr std::string_view kSuggestionTurnOnCaption                  = "22410::1) Turn on the detector";
inline constexpr std::string_view kSuggestionBringInRangeCaption            = "22411::2) Bring the detector within range";
inline constexpr std::string_view kStop                                     = "22412::Stop";
inline constexpr std::string_view kScanning                                 = "22413::Scanning...";
inline constexpr std::string_view kZeroError                                = "22414::Zero Error";
inline constexpr std::string_view kDetectorZeroErrorCaption                 = "22415:: Detector Zero Error.";
inline constexpr std::string_view kZeroErrorRetryCaption                    = "22416::1) Click on Retry to check error status again.";
inline constexpr std::string_view kZeroErrorConnectCaption                  = "22417::2) Click on Connect to turnoff zero error Detector and initiate scanning";
inline constexpr std::string_view kRetry                                    = "22418::Retry";
inline constexpr std::string_view kSelfTestFailed                           = "22455:: detector self test failed. Please select different detector.";
inline constexpr std::string_view kSelfTestError                            = "22456::Self Test Error";
inline constexpr std::string_view kUnableToConnect                          = "22457::Unable to connect the detector. Please try again.";
inline constexpr std::string_view kConnectionError                          = "22458::Connection Error";
inline constexpr std::string_view kNone                                     = "22463::None";
inline constexpr std::string_view kCalDate                                  = "23184::Cal Date: ";
inline constexpr std::string_view kCalDateCaption                           = "23184::Cal Date: 12/12/2008";
inline constexpr std::string_view kCalDueDateCaption                        = "23184::Cal Due Date: 12/12/2009";
inline constexpr std::string_view kCalDueDate                               = "23185::Cal Due Date: ";
inline constexpr std::string_view kKalmetWord                               = "25606::Kalmet";
inline constexpr std::string_view kRX9400Word                               = "25607::RX9400";
inline constexpr std::string_view kPlugInResponse                           = "25629::Tamsa RX9400 Plug-In Response";
inline constexpr std::string_view kNoDetectorSelected                       = "25700::No detector selected, please select a detector to proceed.";
inline constexpr std::string_view kSelectDetectorsCaption                   = "25701::Select Detector(s)";
inline constexpr std::string_view kSelectDetector                           = "25702::Select Detector";
inline constexpr std::string_view kDetectorDoesNotSupport                   = "25709::The selected detector does not support %%1.";
inline constexpr std::string_view kOL                                       = "22420::OL";
inline constexpr std::string_view kUL                                       = "22421::UL";
inline constexpr std::string_view kFLUORO                                   = "22464::FLUORO";
inline constexpr std::string_view kRADIO                                    = "22465::RADIO";
inline constexpr std::string_view kMAMMO                                    = "22466::MAMMO";
inline constexpr std::string_view kDENTAL                                   = "22467::DENTAL";
inline constexpr std::string_view kAUTO                                     = "22469::AUTO";
inline constexpr std::string_view kMANUAL                                   = "22470::MANUAL";
inline constexpr std::string_view kDEFAULT                                  = "22471::DEFAULT";
inline constexpr std::string_view kPower                                    = "25215::Power";
inline constexpr std::string_view kDose                                     = "25216::Dose";
inline constexpr std::string_view kRate                                     = "25217::Rate";
inline constexpr std::string_view kLowRate                                  = "25218::Low Rate";
inline constexpr std::string_view kDetectorZeroError                        = "22415::Detector Zero Error";
inline constexpr std::string_view kConnectionLost                           = "22444::Connection Lost";
inline constexpr std::string_view kConnectionLostWithTheDetector            = "22445::Connection lost with the detector : ";
inline constexpr std::string_view kScanAgain                                = "22446::Please scan for detector and reestablish the connection.";
inline constexpr std::string_view kOK                                       = "22447::OK";
inline constexpr std::string_view kVeryLowBattery                           = "22448::Very Low Battery";
inline constexpr std::string_view kLowBatteryDetector                       = "22449::Low battery detector : ";
inline constexpr std::string_view kShuttingDownSoon                         = "22450::Detector is shutting down in 2 minutes.";
inline constexpr std::string_view kLowBattery                               = "22451::Low Battery";
inline constexpr std::string_view kTemperature                              = "25210::Temperature / ";
inline constexpr std::string_view kPressure                                 = "25211::Pressure / ";
inline constexpr std::string_view kSensorError                              = "25212::Sensor Error. ";
inline constexpr std::string_view kBiasVoltageError                         = "25213::Bias voltage error, please restart the system...";
inline constexpr std::string_view kError                                    = "25214::Error";
inline constexpr std::string_view kDetectorSleep                            = "22425::Detector Sleep";
inline constexpr std::string_view kDetectorInSleepMode                      = "22426::Detector in Sleep Mode";
inline constexpr std::string_view kSleepChoice                              = "22427::Press Wake Up to wakeup the detector or Cancel to remain in sleep mode.";
inline constexpr std::string_view kWakeUp                                   = "22428::Wake Up";
inline constexpr std::string_view kDetectorIsShutdown                       = "22430::Detector is shutdown. Please restart the detector.";
inline constexpr std::string_view kDetectorShutdown                         = "22431::Detector Shutdown";
inline constexpr std::string_view kErrorInMapViewFile                       = "22432::Error in map view file.";
inline constexpr std::string_view kMapViewFileError                         = "22433::Map View File Error";
inline constexpr std::string_view kErrorInOpenFileMapping                   = "22434::Error in open file mapping.";
inline constexpr std::string_view kOpenFileMappingError                     = "22435::Open File Mapping Error";
inline constexpr std::string_view kNoDataPointsFoundToDownload              = "22436::No data points found to download.";
inline constexpr std::string_view kNoDataPoints                             = "22437::No Data Points";
inline constexpr std::string_view kExposureEndTimeNotPositive               = "22438::Exposure end time should be greater than 0.";
inline constexpr std::string_view kInvalidExposureEndTime                   = "22439::Invalid Exposure End Time";
inline constexpr std::string_view kDataPointsNotPositive                    = "22440::Invalid number of data points to download.";
inline constexpr std::string_view kInvalidNumberOfDataPoints                = "22441::Invalid Number Of Data Points";
inline constexpr std::string_view kIsNotAValidSerialNumber                  = "22442:: is not a valid serial number.";
inline constexpr std::string_view kInvalidSerialNumber                      = "22443::Invalid Serial Number";
inline constexpr std::string_view kErrorInReadingChamberInformation         = "25203::Error in reading chamber information.";
inline constexpr std::string_view kNoDataPointsFoundToRead                  = "25204::No data points found to read.";
inline constexpr std::string_view kReadError                                = "25205::Read Error";
inline constexpr std::string_view kNoData                                   = "25206::No Data";
inline constexpr std::string_view kNoIonChambersConfigured                  = "25207::No Ion Chambers are selected / configured in this detector.";
inline constexpr std::string_view kICNotification                           = "25208::IC Notification";
inline constexpr std::string_view kAddIonChamberDetails                     = "25209::Click OK to add Ion Chamber details.";
inline constexpr std::string_view kUnitRCSpaced                             = "25221:: R/C";
inline constexpr std::string_view kUnitRnCSpaced                            = "25222:: R/nC";
inline constexpr std::string_view kUnitGyCSpaced                            = "25223:: Gy/C";
inline constexpr std::string_view kUnitGynCSpaced                           = "25224:: Gy/nC";
inline constexpr std::string_view kSettingsDiffer                           = "25258::The settings stored in the Kalmet detector and the settings in Custom setup are different.";
inline constexpr std::string_view kSettingsDifferChoice                     = "25259::Click Cancel to retain the settings of the Kalmet detector or Click OK to overwrite settings.";
inline constexpr std::string_view kNew                                      = "25226::New";
inline constexpr std::string_view kMaximumIonChambers                       = "25237:: Ion Chambers can be supported. Please delete any one Ion Chamber to add new one.";
inline constexpr std::string_view kMaximumCalFactors                        = "25238:: Calibration Factors can be supported. Please delete any one Calibration Factor to add new one.";
inline constexpr std::string_view kNewIonChamber                            = "25248::New Ion Chamber";
inline constexpr std::string_view kMaximum                                  = "25249::Maximum ";
inline constexpr std::string_view kNoIonChamber                             = "25250::No Ion Chamber";
inline constexpr std::string_view kEditIonChamber                           = "25256::Edit Ion Chamber";
inline constexpr std::string_view kNewCalFactor                             = "25257::New Cal Factor";
inline constexpr std::string_view kIonChamberSetup                          = "25270::Ion Chamber Setup";
inline constexpr std::string_view kIonChambers                              = "25271::Ion Chambers";
inline constexpr std::string_view kCalFactors                               = "25272::Cal Factors";
inline constexpr std::string_view kEditCaption                              = "25273::&Edit";
inline constexpr std::string_view kDeleteCaption                            = "25274::&Delete";
inline constexpr std::string_view kContinueCaption                          = "25275::&Continue";
inline constexpr std::string_view kCancelCaption                            = "25276::C&ancel";
inline constexpr std::string_view kEditorExponentLetter                     = "25220::E";
inline constexpr std::string_view kPleaseEnterIonChamberName                = "25225::Please enter Ion Chamber name.";
inline constexpr std::string_view kPleaseEnterCalFactorName                 = "25227::Please enter Cal Factor name.";
inline constexpr std::string_view kPleaseEnterCalConstantMantisaPart        = "25228::Please enter Cal Constant mantisa part.";
inline constexpr std::string_view kPleaseEnterValueGreaterThan0             = "25229::Please enter value greater than 0.";
inline constexpr std::string_view kPleaseEnterExponentInBetween             = "25230::Please enter exponent in between ";
inline constexpr std::string_view kPleaseEnterCalConstantExponentPart       = "25231::Please enter Cal Constant exponent part.";
inline constexpr std::string_view kTo                                       = "25232:: to ";
inline constexpr std::string_view kIonChamberNameExists                     = "25235::Ion Chamber name already exists, please enter different name.";
inline constexpr std::string_view kCalFactorNameExists                      = "25236::Cal Factor name already exists, please enter different name.";
inline constexpr std::string_view kUnitRC                                   = "25239::R/C";
inline constexpr std::string_view kUnitRnC                                  = "25240::R/nC";
inline constexpr std::string_view kUnitGyC                                  = "25241::Gy/C";
inline constexpr std::string_view kUnitGynC                                 = "25242::Gy/nC";
inline constexpr std::string_view kNewIC                                    = "25243::New IC";
inline constexpr std::string_view kNewCF                                    = "25244::New CF";
inline constexpr std::string_view kEditIC                                   = "25245::Edit IC";
inline constexpr std::string_view kNewCalFactorIsAddedSuccessfully          = "25251::New Cal Factor is added successfully.";
inline constexpr std::string_view kNewIonChamberIsAddedSuccessfully         = "25252::New Ion Chamber is added successfully.";
inline constexpr std::string_view kUnableToAddNewCalFactor                  = "25253::Unable to add new Cal Factor.";
inline constexpr std::string_view kUnableToAddNewIonChamber                 = "25254::Unable to add new Ion Chamber.";
inline constexpr std::string_view kEditCF                                   = "25255::Edit CF";
inline constexpr std::string_view kEditCalConstant                          = "25277::Edit Cal Constant";
inline constexpr std::string_view kIonChamber                               = "25278::Ion Chamber";
inline constexpr std::string_view kCalFactor                                = "25279::Cal Factor";
inline constexpr std::string_view kCalConstant                              = "25280::Cal Constant";
inline constexpr std::string_view kExponentCaption                          = "25281::e";
inline constexpr std::string_view kOKCaption                                = "25282::&OK";
inline constexpr std::string_view kIonChamberNameCannotBe                   = "25284::Ion Chamber name cannot be ";
inline constexpr std::string_view kEnterDifferentName                       = "25285::. Please enter different name.";
inline constexpr std::string_view kCalFactorNameCannotBe                    = "25286::Cal Factor name cannot be ";
inline constexpr std::string_view kDelete                                   = "25219::Delete";
inline constexpr std::string_view kSelectSomethingToDelete                  = "25233::Please select an Ion Chamber or Calibration Factor to delete.";
inline constexpr std::string_view kConfirmDelete                            = "25234::Do you want to delete all selected Ion Chambers and its Cal Factors?";
inline constexpr std::string_view kDeleteIonChamber                         = "25283::Delete Ion Chamber";
inline constexpr std::string_view kDeletingSelectedIonChambersAndCalFactors = "25283::Deleting selected Ion Chambers and Cal Factors. Please wait...";
// The plug-in's own text where the dosimeter dialogs have no detector to address.
inline constexpr std::string_view kNoDosimeterConnected                     = "25290::No dosimeter is connected. Please connect a Kalmet detector and try again.";
inline constexpr std::string_view kRX9400WDOld                              = "22402::RX 9400WD(";
inline constexpr std::string_view kSuggestionsOld                           = "22409::Suggestions:";
inline constexpr std::string_view kZeroErrorRetryOld                        = "22416::1) Click on Retry to check error status.";
inline constexpr std::string_view kZeroErrorConnectOld                      = "22417::2) Click on Connect to turnoff zero error detector and initiate scanning.";
inline constexpr std::string_view kNoIonChamberOld                          = "25247::No Ion Chamber";
// clang-format on

/// The whole catalogue, in the order above.
inline constexpr std::string_view kAll[] = {
    kExponentLetter,
    kDisplayNameAio,
    kDisplayNameDose,
    kDisplayNameMas,
    kDisplayNameAioMas,
    kDisplayNameDoseMas,
    kDisplayNamePtb,
    kCalibrationDate,
    kCalibrationDueDate,
    kSuggestionTurnOn,
    kSuggestionBringInRange,
    kNoDetectorFound,
    kCalibrationError,
    kCalibrationOverdue,
    kTargetFilter,
    kInvalid,
    kEstablishConnection,
    kSWVersion,
    kSWVersionCaption,
    kHWVersion,
    kHWVersionCaption,
    kConnect,
    kCancel,
    kSuggestionsCaption,
    kSuggestionsCaptionBlank,
    kSuggestionTurnOnCaption,
    kSuggestionBringInRangeCaption,
    kStop,
    kScanning,
    kZeroError,
    kDetectorZeroErrorCaption,
    kZeroErrorRetryCaption,
    kZeroErrorConnectCaption,
    kRetry,
    kSelfTestFailed,
    kSelfTestError,
    kUnableToConnect,
    kConnectionError,
    kNone,
    kCalDate,
    kCalDateCaption,
    kCalDueDateCaption,
    kCalDueDate,
    kKalmetWord,
    kRX9400Word,
    kPlugInResponse,
    kNoDetectorSelected,
    kSelectDetectorsCaption,
    kSelectDetector,
    kDetectorDoesNotSupport,
    kOL,
    kUL,
    kFLUORO,
    kRADIO,
    kMAMMO,
    kDENTAL,
    kAUTO,
    kMANUAL,
    kDEFAULT,
    kPower,
    kDose,
    kRate,
    kLowRate,
    kDetectorZeroError,
    kConnectionLost,
    kConnectionLostWithTheDetector,
    kScanAgain,
    kOK,
    kVeryLowBattery,
    kLowBatteryDetector,
    kShuttingDownSoon,
    kLowBattery,
    kTemperature,
    kPressure,
    kSensorError,
    kBiasVoltageError,
    kError,
    kDetectorSleep,
    kDetectorInSleepMode,
    kSleepChoice,
    kWakeUp,
    kDetectorIsShutdown,
    kDetectorShutdown,
    kErrorInMapViewFile,
    kMapViewFileError,
    kErrorInOpenFileMapping,
    kOpenFileMappingError,
    kNoDataPointsFoundToDownload,
    kNoDataPoints,
    kExposureEndTimeNotPositive,
    kInvalidExposureEndTime,
    kDataPointsNotPositive,
    kInvalidNumberOfDataPoints,
    kIsNotAValidSerialNumber,
    kInvalidSerialNumber,
    kErrorInReadingChamberInformation,
    kNoDataPointsFoundToRead,
    kReadError,
    kNoData,
    kNoIonChambersConfigured,
    kICNotification,
    kAddIonChamberDetails,
    kUnitRCSpaced,
    kUnitRnCSpaced,
    kUnitGyCSpaced,
    kUnitGynCSpaced,
    kSettingsDiffer,
    kSettingsDifferChoice,
    kNew,
    kMaximumIonChambers,
    kMaximumCalFactors,
    kNewIonChamber,
    kMaximum,
    kNoIonChamber,
    kEditIonChamber,
    kNewCalFactor,
    kIonChamberSetup,
    kIonChambers,
    kCalFactors,
    kEditCaption,
    kDeleteCaption,
    kContinueCaption,
    kCancelCaption,
    kEditorExponentLetter,
    kPleaseEnterIonChamberName,
    kPleaseEnterCalFactorName,
    kPleaseEnterCalConstantMantisaPart,
    kPleaseEnterValueGreaterThan0,
    kPleaseEnterExponentInBetween,
    kPleaseEnterCalConstantExponentPart,
    kTo,
    kIonChamberNameExists,
    kCalFactorNameExists,
    kUnitRC,
    kUnitRnC,
    kUnitGyC,
    kUnitGynC,
    kNewIC,
    kNewCF,
    kEditIC,
    kNewCalFactorIsAddedSuccessfully,
    kNewIonChamberIsAddedSuccessfully,
    kUnableToAddNewCalFactor,
    kUnableToAddNewIonChamber,
    kEditCF,
    kEditCalConstant,
    kIonChamber,
    kCalFactor,
    kCalConstant,
    kExponentCaption,
    kOKCaption,
    kIonChamberNameCannotBe,
    kEnterDifferentName,
    kCalFactorNameCannotBe,
    kDelete,
    kSelectSomethingToDelete,
    kConfirmDelete,
    kDeleteIonChamber,
    kDeletingSelectedIonChambersAndCalFactors,
    kNoDosimeterConnected,
    kRX9400WDOld,
    kSuggestionsOld,
    kZeroErrorRetryOld,
    kZeroErrorConnectOld,
    kNoIonChamberOld,
};

}  // namespace rx9400::catalogue
