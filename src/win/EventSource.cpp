// Core events turned into IDispatch calls on the advised sinks.
#include "win/EventSource.h"

#include <array>
#include <initializer_list>
#include <vector>

#include "win/ComSupport.h"

namespace rx9400::win {
namespace {

// The event DISPIDs of the instrument's event interface.
enum EventId : DISPID {
  kIncrementWaveCount = 1,
  kZeroingmAs,
  kAddWakeUpButton,
  kEnableStopButton,
  kDataReady,
  kCheckExposureWaveform,
  kDisplayErrorMsg,
  kDisplaySensorResetMsg,
  kTestSWDataReady,
  kTestmAsDataReady,
};

/// Arguments of one event, in the order of its parameters; owns the strings it holds.
class EventArguments {
 public:
  EventArguments() = default;
  EventArguments(const EventArguments&) = delete;
  EventArguments& operator=(const EventArguments&) = delete;
  ~EventArguments() {
    for (VARIANT& argument : arguments_) VariantClear(&argument);
  }

  EventArguments& boolean(bool value) {
    VARIANT& argument = add();
    V_VT(&argument) = VT_BOOL;
    V_BOOL(&argument) = toVariantBool(value);
    return *this;
  }
  EventArguments& byte(std::uint8_t value) {
    VARIANT& argument = add();
    V_VT(&argument) = VT_UI1;
    V_UI1(&argument) = value;
    return *this;
  }
  EventArguments& text(const std::string& value) {
    VARIANT& argument = add();
    V_VT(&argument) = VT_BSTR;
    V_BSTR(&argument) = toBstr(value);
    return *this;
  }

  /// Fires the event; DISPPARAMS take the arguments last to first.
  void fire(ConnectionPoint& connectionPoint, DISPID id) {
    std::vector<VARIANT> reversed(arguments_.rbegin(), arguments_.rend());
    DISPPARAMS parameters{reversed.empty() ? nullptr : reversed.data(), nullptr,
                          static_cast<UINT>(reversed.size()), 0};
    connectionPoint.fire(id, parameters);
  }

 private:
  VARIANT& add() {
    arguments_.emplace_back();
    VariantInit(&arguments_.back());
    return arguments_.back();
  }
  std::vector<VARIANT> arguments_;
};

}  // namespace

void EventSource::IncrementWaveCount() {
  EventArguments().fire(connectionPoint_, kIncrementWaveCount);
}

void EventSource::ZeroingmAs(bool fVal) {
  EventArguments().boolean(fVal).fire(connectionPoint_, kZeroingmAs);
}

void EventSource::AddWakeUpButton(bool fWakeUp) {
  EventArguments().boolean(fWakeUp).fire(connectionPoint_, kAddWakeUpButton);
}

void EventSource::EnableStopButton(bool fVal) {
  EventArguments().boolean(fVal).fire(connectionPoint_, kEnableStopButton);
}

void EventSource::DataReady(std::string& sKvpAvg, std::string& sKvpMax, std::string& sKvpPpv,
                            std::string& sDose, std::string& sDoseRate, std::string& sExposureTime2,
                            std::string& sExposedPulses, std::string& sPulseRate, std::string& sPulseWidth,
                            std::string& sHVL) {
  std::array<std::string*, 10> texts{&sKvpAvg,        &sKvpMax,        &sKvpPpv,    &sDose,       &sDoseRate,
                                     &sExposureTime2, &sExposedPulses, &sPulseRate, &sPulseWidth, &sHVL};
  // Each text travels by reference: the sinks see one BSTR variable per parameter and may replace it.
  std::array<BSTR, 10> values{};
  for (std::size_t i = 0; i < texts.size(); ++i) values[i] = toBstr(*texts[i]);
  std::array<VARIANT, 10> arguments{};
  for (std::size_t i = 0; i < texts.size(); ++i) {
    VARIANT& argument = arguments[texts.size() - 1 - i];
    VariantInit(&argument);
    V_VT(&argument) = VT_BYREF | VT_BSTR;
    V_BSTRREF(&argument) = &values[i];
  }
  DISPPARAMS parameters{arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
  connectionPoint_.fire(kDataReady, parameters);
  for (std::size_t i = 0; i < texts.size(); ++i) {
    *texts[i] = fromBstr(values[i]);
    SysFreeString(values[i]);
  }
}

void EventSource::CheckExposureWaveform(std::uint8_t eWFType) {
  EventArguments().byte(eWFType).fire(connectionPoint_, kCheckExposureWaveform);
}

void EventSource::DisplayErrorMsg(const std::string& sErrorMsg, const std::string& sCaption, bool fDisplay) {
  EventArguments().text(sErrorMsg).text(sCaption).boolean(fDisplay).fire(connectionPoint_, kDisplayErrorMsg);
}

void EventSource::DisplaySensorResetMsg(bool fDisplay) {
  EventArguments().boolean(fDisplay).fire(connectionPoint_, kDisplaySensorResetMsg);
}

void EventSource::TestSWDataReady(const std::string& sTemp, const std::string& sPressure,
                                  const std::string& sADCF, const std::string& sLeakageCurrent,
                                  const std::string& sDose, const std::string& sDoseRate,
                                  const std::string& sBiasVoltage) {
  EventArguments()
      .text(sTemp)
      .text(sPressure)
      .text(sADCF)
      .text(sLeakageCurrent)
      .text(sDose)
      .text(sDoseRate)
      .text(sBiasVoltage)
      .fire(connectionPoint_, kTestSWDataReady);
}

void EventSource::TestmAsDataReady(const std::string& smA, const std::string& smAs,
                                   const std::string& smAsPulse, const std::string& sDosemAs) {
  EventArguments().text(smA).text(smAs).text(smAsPulse).text(sDosemAs).fire(connectionPoint_,
                                                                            kTestmAsDataReady);
}

}  // namespace rx9400::win
