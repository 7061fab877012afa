// The events the instrument raises towards the executive. The COM class fans each call out to every
// advised sink; native tests record them. Texts are UTF-8.
#pragma once

#include <cstdint>
#include <string>

namespace rx9400 {

class InstrumentEvents {
 public:
  virtual ~InstrumentEvents() = default;

  virtual void IncrementWaveCount() = 0;
  virtual void ZeroingmAs(bool fVal) = 0;
  virtual void AddWakeUpButton(bool fWakeUp) = 0;
  virtual void EnableStopButton(bool fVal) = 0;
  /// The ten texts are passed by reference: a sink may change them, and the instrument goes on with
  /// what the sinks left.
  virtual void DataReady(std::string& sKvpAvg, std::string& sKvpMax, std::string& sKvpPpv, std::string& sDose,
                         std::string& sDoseRate, std::string& sExposureTime2, std::string& sExposedPulses,
                         std::string& sPulseRate, std::string& sPulseWidth, std::string& sHVL) = 0;
  /// 1 the all-in-one waveform, 3 the mAs waveform.
  virtual void CheckExposureWaveform(std::uint8_t eWFType) = 0;
  virtual void DisplayErrorMsg(const std::string& sErrorMsg, const std::string& sCaption, bool fDisplay) = 0;
  virtual void DisplaySensorResetMsg(bool fDisplay) = 0;
  virtual void TestSWDataReady(const std::string& sTemp, const std::string& sPressure,
                               const std::string& sADCF, const std::string& sLeakageCurrent,
                               const std::string& sDose, const std::string& sDoseRate,
                               const std::string& sBiasVoltage) = 0;
  virtual void TestmAsDataReady(const std::string& smA, const std::string& smAs, const std::string& smAsPulse,
                                const std::string& sDosemAs) = 0;
};

}  // namespace rx9400
