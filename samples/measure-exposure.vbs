' Connects the detectors, measures one exposure and prints every value that each detector's event
' carries: the all-in-one detector's DataReady, the dosimeter's TestSWDataReady, the mAs meter's
' TestmAsDataReady. The values come only as events, so the instrument is created with an event prefix.
'
'   rx9400-scripthost measure-exposure.vbs        (or, on Windows: cscript //nologo measure-exposure.vbs)
'
' The plug-in's scan dialog, its connect dialog (tick the detectors, press Connect) and, for a detector
' overdue for calibration or with an invalid target/filter, its calibration report (OK) are answered by
' the person at the bench.
Option Explicit

Dim query, instrument, lastReport
Set query = WScript.CreateObject("TamsaRX9400VTI.CRX9400Query")
Set instrument = WScript.CreateObject("TamsaRX9400VTI.CRX9400VTI", "Instrument_")

' --- The events: every argument is a text, already formatted ("*" marks a value to look at, OL and UL
' are over and under range, an empty text a value this mode does not measure).
Sub Instrument_DataReady(sKvpAvg, sKvpMax, sKvpPpv, sDose, sDoseRate, sExposureTime2, sExposedPulses, _
                         sPulseRate, sPulseWidth, sHVL)
  WScript.Echo "All-in-one detector (DataReady)"
  Show "kVp average (kV)", sKvpAvg
  Show "kVp maximum (kV)", sKvpMax
  Show "kVp practical peak (kV)", sKvpPpv
  Show "Dose (pDoseUnits)", sDose
  Show "Dose rate (pDoseRateUnits)", sDoseRate
  Show "Exposure time (ms)", sExposureTime2
  Show "Exposed pulses", sExposedPulses
  Show "Pulse rate", sPulseRate
  Show "Pulse width", sPulseWidth
  Show "HVL", sHVL
End Sub

Sub Instrument_TestSWDataReady(sTemp, sPressure, sADCF, sLeakageCurrent, sDose, sDoseRate, sBiasVoltage)
  WScript.Echo "Dosimeter (TestSWDataReady)"
  Show "Temperature", sTemp
  Show "Pressure", sPressure
  Show "ADCF", sADCF
  Show "Leakage current", sLeakageCurrent
  Show "Dose", sDose
  Show "Dose rate", sDoseRate
  Show "Bias voltage (V)", sBiasVoltage
End Sub

Sub Instrument_TestmAsDataReady(smA, smAs, smAsPulse, sDosemAs)
  WScript.Echo "mAs meter (TestmAsDataReady)"
  Show "mA", smA
  Show "mAs", smAs
  Show "mAs pulses", smAsPulse
  Show "Dose per mAs", sDosemAs
End Sub

Sub Instrument_EnableStopButton(fVal)
  WScript.Echo "Exposure started (stop button " & fVal & ")"
End Sub

Sub Show(label, value)
  lastReport = Timer
  If value = "" Then value = "-"
  WScript.Echo "  " & Left(label & Space(30), 30) & value
End Sub

' --- The procedure ---
query.RegisterApp
query.ScanAndConnectToDetector
If Not query.IsDetectorConnected Then
  WScript.Echo "No detector was connected."
  WScript.Quit 2
End If
WScript.Echo "Connected: serial numbers " & instrument.pSerialNumber & ", firmware " & instrument.pFirmWareVersion

' The mode, the units and the setup are properties; the Change members send them to the detectors.
instrument.pCurrentMode = "RADIO"
instrument.pCurrentSettings = "MANUAL"
instrument.pDoseUnits = 1
instrument.pDoseRateUnits = 1
instrument.pTimeUnit = 1
instrument.ChangeDetectorMode
instrument.ChangeDetectorSetup
instrument.ChangeSettings
instrument.ResetTheFlags
instrument.InitTimer
instrument.EnableMeasurements True

' One call of CheckDataStatus is one look at every detector, raising the events of those that have
' measured; it is True once the exposure is finished. Another kind of detector connected may report in
' the polls after that: the procedure polls on until none has reported for a second.
Dim pass, finished
finished = False
For pass = 1 To 2000
  If instrument.CheckDataStatus Then finished = True
  If finished And Timer - lastReport > 1 Then Exit For
  WScript.Sleep 10
Next
instrument.EnableMeasurements False
If Not finished Then
  WScript.Echo "No exposure was measured."
  WScript.Quit 3
End If
WScript.Echo "Exposure measured in " & pass & " polls: kVp " & instrument.pGetExposurekVp & _
  ", exposure time " & instrument.pGetExposureTime
instrument.ResetTheFlags
query.CloseApp
