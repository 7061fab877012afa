// The connect dialog (FConnect): lists the detectors the scan found, shows the chosen one's
// calibration dates and versions, and connects the ticked detectors into the shared detector table.
//
// In detail: any combination of detectors may be ticked together; the
// dialog stays open after a refusal or a failed connection so that the user can choose again; a
// detector requested through SendDetectorType refuses every ticked detector that lacks that kind
// (see offersKind); the self-test result and the calibration dates come from each detector's
// information record.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/DialogView.h"
#include "core/PluginContext.h"

namespace rx9400 {

class ConnectDialog;

/// One row of the detector list.
struct DetectorRow {
  std::string kind;          ///< "AIO", "DOSE", "MAS", "AIO+MAS" or "DOSE+MAS"
  std::string serialNumber;  ///< decimal
};

/// The texts of the detail labels for the chosen row.
struct DetectorDetails {
  std::string serialNumber;
  std::string calibrationDate;
  std::string calibrationDueDate;
  std::string softwareVersion;
  std::string hardwareVersion;
};

class ConnectDialogView : public DialogView {
 public:
  virtual void attach(ConnectDialog& presenter) = 0;
  virtual void setRows(const std::vector<DetectorRow>& rows) = 0;
  /// The rows whose check box is ticked, by index.
  virtual std::vector<bool> tickedRows() = 0;
  virtual void setDetails(const DetectorDetails& details) = 0;
  /// The link states of the USB adaptor and the ZigBee radio (non-zero: up).
  virtual void setRadioStates(int usb, int zigBee) = 0;
};

/// True when a detector of `typeCode` offers the kind `requested` (1 AIO, 2 mAs meter, 3 dosimeter,
/// 4 and 5 exactly those combinations); a request of 0 accepts every detector.
bool offersKind(std::int32_t typeCode, std::int32_t requested);

class ConnectDialog {
 public:
  ConnectDialog(PluginContext& context, ConnectDialogView& view);

  // Members the query class uses.
  /// Forgets the types handed in for the previous scan.
  void InitTheDetectorArray();
  /// Hands in one detector of this type (called once per detector found).
  void DetectorName(std::int32_t typeCode);
  /// The number of detectors of the type handed in last.
  void pbyteNoOfDetector(std::uint8_t count);
  /// Restricts the choice to detectors offering this kind (SendDetectorType); kept for the process.
  void ConfigDetectorName(std::int32_t requestedType) {
    context_.state.requestedDetectorType = requestedType;
  }
  /// Shows the dialog modally, in the topmost band when asked.
  void showModal(bool topmost);
  /// True after a connection succeeded in the last showing.
  bool connected() const { return connected_; }

  // Handlers, called by the view.
  void load();
  void activated();
  /// A row was chosen; -1 for no row.
  void rowSelected(int row);
  void connectClicked();
  void cancelClicked();

  /// The detectors listed, in list order, with their type codes.
  const std::vector<DetectorInfo>& listedDetectors() const { return detectors_; }

 private:
  struct TypeRequest {
    std::int32_t typeCode;
    int detectors;  ///< how many were handed in
  };
  bool refuse(const std::vector<std::size_t>& ticked);

  PluginContext& context_;
  ConnectDialogView& view_;
  std::vector<TypeRequest> types_;
  std::vector<DetectorInfo> detectors_;
  std::vector<std::int32_t> detectorTypes_;
  bool connected_ = false;
  bool topmost_ = false;
};

}  // namespace rx9400
