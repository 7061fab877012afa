// The plug-in's process-wide state, shared by the query class, the instrument class and the dialogs.
//
// One query object and one instrument object created by the same executive see the same detectors
// through this state. It starts empty at load; ResetTheDetectors puts each detector list back to a
// single empty slot.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "core/IonChamberTable.h"
#include "device/EnumsStructs.h"

namespace rx9400 {

#pragma pack(push, 1)
/// Which warnings have been shown for one detector, and whether it sleeps or is shut down.
/// Six 16-bit Booleans (True = -1), one record per slot of the detector table.
struct DetectorAlertState {
  VBBool lowBatteryShown;
  VBBool veryLowBatteryShown;
  VBBool connectionLostShown;
  VBBool unused;    ///< kept for the record's layout; nothing reads it
  VBBool sleeping;  ///< the plug-in has put the detector to sleep (its sleep notice is on screen)
  VBBool shutDown;  ///< the plug-in has shut the detector down
};
#pragma pack(pop)
static_assert(sizeof(DetectorAlertState) == 12);
static_assert(offsetof(DetectorAlertState, connectionLostShown) == 4);
static_assert(offsetof(DetectorAlertState, sleeping) == 8);
static_assert(offsetof(DetectorAlertState, shutDown) == 10);

/// The state every class and dialog of the plug-in shares.
///
/// The detector table, the detector kinds and the alert list always have the same length: slot i of
/// each describes the same detector. A slot whose identifier is below 1 is empty and skipped by every
/// walk of the table.
struct SharedState {
  std::vector<DetectorInfo> detectors;      ///< the detectors chosen and connected
  std::vector<std::int32_t> detectorKinds;  ///< the type code (1 to 5) of each slot
  std::vector<DetectorAlertState> alerts;   ///< the warnings shown for each slot

  bool charging = false;                   ///< True while the battery charges
  std::uint8_t chargePercent = 0;          ///< last charge in percent while not charging
  bool measurementEnabled = false;         ///< set and cleared by EnableMeasurements and the supervision
  std::int32_t requestedDetectorType = 0;  ///< the kind the executive asked for (SendDetectorType); 0 any
  MeasurementSettings settings{};          ///< sent to the all-in-one detectors by ChangeSettings
  std::string currentMode;                 ///< the executive's mode text ("FLUORO", "RADIO", ...)
  std::string currentSettings;             ///< the executive's settings text ("AUTO", "MANUAL", ...)
  bool dosimeterSettingsLocked = false;    ///< the ADCF and unit records are left alone while set
  bool preferSecondDoseUnit = false;       ///< a dosimeter dose unit out of range becomes 2, not 1

  IonChamberTable ionChambers;  ///< the dosimeter's chambers and cal factors, and the choice

  /// Each detector list back to one empty slot (identifier 0).
  void resetDetectors();
  /// Replaces the detector table by the connected detectors and their type codes (the lists must be
  /// of the same length); every alert starts cleared.
  void setConnectedDetectors(std::vector<DetectorInfo> connected, std::vector<std::int32_t> kinds);
  /// The number of slots of the detector table.
  std::size_t slotCount() const { return detectors.size(); }
  /// The identifier of a slot, 0 for a slot past the end.
  std::int32_t identifierAt(std::size_t slot) const;
  /// The type code of a slot, 0 for a slot past the end.
  std::int32_t kindAt(std::size_t slot) const;
  /// Empties a slot: the detector leaves every later walk of the table.
  void removeDetector(std::size_t slot);
  /// The identifiers of the connected dosimeters (type 3 or 5, identifier at least 1), in slot order.
  std::vector<std::int32_t> dosimeterIdentifiers() const;
  /// The first of them, 0 when no dosimeter is connected.
  std::int32_t firstDosimeter() const;
};

}  // namespace rx9400
