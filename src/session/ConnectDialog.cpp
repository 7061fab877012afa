// The connect dialog's presenter.
#include "session/ConnectDialog.h"

#include <algorithm>

#include "core/DetectorType.h"
#include "core/NumberText.h"
#include "core/Placement.h"
#include "ionchamber/DatePicker.h"

namespace rx9400 {
namespace {

std::string versionPair(std::uint8_t firstMajor, std::uint8_t firstMinor, std::uint8_t secondMajor,
                        std::uint8_t secondMinor) {
  return std::to_string(firstMajor) + "." + std::to_string(firstMinor) + "-" + std::to_string(secondMajor) +
         "." + std::to_string(secondMinor);
}

}  // namespace

bool offersKind(std::int32_t typeCode, std::int32_t requested) {
  switch (requested) {
    case 0:
      return true;
    case 1:
      return hasAioPart(typeCode);
    case 2:
      return hasMasPart(typeCode);
    case 3:
      return hasDosePart(typeCode);
    default:
      return typeCode == requested;
  }
}

ConnectDialog::ConnectDialog(PluginContext& context, ConnectDialogView& view)
    : context_(context), view_(view) {
  view_.attach(*this);
}

void ConnectDialog::InitTheDetectorArray() {
  types_.clear();
  detectors_.clear();
  detectorTypes_.clear();
}

void ConnectDialog::DetectorName(std::int32_t typeCode) {
  if (!types_.empty() && types_.back().typeCode == typeCode) {
    ++types_.back().detectors;
  } else {
    types_.push_back({typeCode, 1});
  }
}

void ConnectDialog::pbyteNoOfDetector(std::uint8_t count) {
  if (!types_.empty()) types_.back().detectors = std::max<int>(types_.back().detectors, count);
}

void ConnectDialog::showModal(bool topmost) {
  topmost_ = topmost;
  connected_ = false;
  view_.showModal();
}

void ConnectDialog::load() {
  connected_ = false;
  localise(view_, context_.catalogue, catalogue::kEstablishConnection);
  if (topmost_) makeTopmost(context_.services.windows, view_.window());
  detectors_.clear();
  detectorTypes_.clear();
  std::vector<DetectorRow> rows;
  try {
    for (const TypeRequest& type : types_) {
      for (const DetectorInfo& info : context_.library.MBGetDetectorInfoOfType(
               type.typeCode, static_cast<std::size_t>(type.detectors))) {
        detectors_.push_back(info);
        detectorTypes_.push_back(type.typeCode);
        rows.push_back({detectorKindWord(type.typeCode), std::to_string(info.serialNumber)});
      }
    }
    view_.setRadioStates(context_.library.MBGetUSBStatus(), context_.library.MBGetZigBeeStatus());
  } catch (...) {
  }
  view_.setRows(rows);
  rowSelected(rows.empty() ? -1 : 0);
}

void ConnectDialog::activated() {
  centreCursorOn(context_.services.windows, view_.focusedControl());
}

void ConnectDialog::rowSelected(int row) {
  try {
    const std::string none = context_.catalogue.text(catalogue::kNone);
    if (row < 0 || static_cast<std::size_t>(row) >= detectors_.size()) {
      view_.setDetails({none, context_.catalogue.text(catalogue::kCalDate) + none,
                        context_.catalogue.text(catalogue::kCalDueDate) + none,
                        context_.catalogue.text(catalogue::kSWVersion) + none,
                        context_.catalogue.text(catalogue::kHWVersion) + none});
      return;
    }
    const DetectorInfo& info = detectors_[static_cast<std::size_t>(row)];
    view_.setDetails({std::to_string(info.serialNumber),
                      context_.catalogue.text(catalogue::kCalDate) +
                          detectorDateText(context_.services.datePicker, info.calibrationDate, none),
                      context_.catalogue.text(catalogue::kCalDueDate) +
                          detectorDateText(context_.services.datePicker, info.calibrationDueDate, none),
                      context_.catalogue.text(catalogue::kSWVersion) +
                          versionPair(info.firstVersionMajor, info.firstVersionMinor, info.secondVersionMajor,
                                      info.secondVersionMinor),
                      context_.catalogue.text(catalogue::kHWVersion) +
                          versionPair(info.boardVersionMajor, info.boardVersionMinor, info.radioVersionMajor,
                                      info.radioVersionMinor)});
  } catch (...) {
  }
}

bool ConnectDialog::refuse(const std::vector<std::size_t>& ticked) {
  Catalogue& catalogue = context_.catalogue;
  for (const std::size_t index : ticked) {
    const std::int32_t type = detectorTypes_[index];
    const std::int32_t requested = context_.state.requestedDetectorType;
    if (!offersKind(type, requested)) {
      const bool dosimeter = hasDosePart(requested);
      const std::string kind = catalogue.text(dosimeter ? catalogue::kKalmetWord : catalogue::kRX9400Word);
      context_.services.messageBoxes.show(catalogue.text(catalogue::kDetectorDoesNotSupport, kind),
                                          catalogue.text(catalogue::kPlugInResponse), kBoxCritical);
      return true;
    }
    if (detectors_[index].selfTestResult != 0) {
      context_.services.messageBoxes.show(
          catalogue.text(detectorDisplayNameLiteral(type)) + catalogue.text(catalogue::kSelfTestFailed),
          catalogue.text(catalogue::kSelfTestError), kBoxCritical);
      return true;
    }
  }
  return false;
}

void ConnectDialog::connectClicked() {
  try {
    Catalogue& catalogue = context_.catalogue;
    const std::vector<bool> ticks = view_.tickedRows();
    std::vector<std::size_t> ticked;
    for (std::size_t i = 0; i < ticks.size() && i < detectors_.size(); ++i) {
      if (ticks[i]) ticked.push_back(i);
    }
    if (ticked.empty()) {
      context_.services.messageBoxes.show(catalogue.text(catalogue::kNoDetectorSelected),
                                          catalogue.text(catalogue::kSelectDetector), kBoxCritical);
      return;
    }
    // Kind by kind: all-in-one detectors, then dosimeters, then mAs meters.
    std::vector<std::size_t> ordered;
    const struct {
      bool (*belongs)(std::int32_t);
      const char* line;
    } kinds[] = {{hasAioPart, "$SaveNConnectToDetectors$ - AIO Detector :: "},
                 {hasDosePart, "$SaveNConnectToDetectors$ - DOSE Detector :: "},
                 {[](std::int32_t type) { return detectorType(type) == DetectorType::Mas; },
                  "$SaveNConnectToDetectors$ - MAS Detector :: "}};
    for (const auto& kind : kinds) {
      for (const std::size_t index : ticked) {
        if (!kind.belongs(detectorTypes_[index])) continue;
        context_.trace.trace({kind.line + std::to_string(detectors_[index].identifier)});
        ordered.push_back(index);
      }
    }
    if (refuse(ordered)) return;

    std::vector<std::int32_t> identifiers;
    std::vector<std::uint8_t> types;
    for (const std::size_t index : ordered) {
      identifiers.push_back(detectors_[index].identifier);
      types.push_back(static_cast<std::uint8_t>(detectorTypes_[index]));
    }
    if (context_.library.MBConnectToDetectors(identifiers, types) == 0) {
      context_.services.messageBoxes.show(catalogue.text(catalogue::kUnableToConnect),
                                          catalogue.text(catalogue::kConnectionError), kBoxCritical);
      return;
    }
    connected_ = true;
    context_.services.sound.beep(2500, 200);
    context_.services.sound.sleep(100);
    context_.services.sound.beep(2500, 200);
    std::vector<DetectorInfo> connectedDetectors;
    std::vector<std::int32_t> connectedKinds;
    for (const std::size_t index : ordered) {
      connectedDetectors.push_back(detectors_[index]);
      connectedKinds.push_back(detectorTypes_[index]);
    }
    context_.state.setConnectedDetectors(std::move(connectedDetectors), std::move(connectedKinds));
    view_.hide();
  } catch (...) {
    // A failing library leaves the dialog open with nothing connected.
  }
}

void ConnectDialog::cancelClicked() {
  try {
    context_.library.MBStopScanningAndReset();
  } catch (...) {
  }
  connected_ = false;
  view_.hide();
}

}  // namespace rx9400
