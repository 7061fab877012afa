// The instrument's events, raised on every sink advised on the instrument's connection point.
#pragma once

#include "core/InstrumentEvents.h"
#include "win/ConnectionPoint.h"

namespace rx9400::win {

class EventSource final : public InstrumentEvents {
 public:
  explicit EventSource(ConnectionPoint& connectionPoint) : connectionPoint_(connectionPoint) {}

  void IncrementWaveCount() override;
  void ZeroingmAs(bool fVal) override;
  void AddWakeUpButton(bool fWakeUp) override;
  void EnableStopButton(bool fVal) override;
  void DataReady(std::string& sKvpAvg, std::string& sKvpMax, std::string& sKvpPpv, std::string& sDose,
                 std::string& sDoseRate, std::string& sExposureTime2, std::string& sExposedPulses,
                 std::string& sPulseRate, std::string& sPulseWidth, std::string& sHVL) override;
  void CheckExposureWaveform(std::uint8_t eWFType) override;
  void DisplayErrorMsg(const std::string& sErrorMsg, const std::string& sCaption, bool fDisplay) override;
  void DisplaySensorResetMsg(bool fDisplay) override;
  void TestSWDataReady(const std::string& sTemp, const std::string& sPressure, const std::string& sADCF,
                       const std::string& sLeakageCurrent, const std::string& sDose,
                       const std::string& sDoseRate, const std::string& sBiasVoltage) override;
  void TestmAsDataReady(const std::string& smA, const std::string& smAs, const std::string& smAsPulse,
                        const std::string& sDosemAs) override;

 private:
  ConnectionPoint& connectionPoint_;
};

}  // namespace rx9400::win
