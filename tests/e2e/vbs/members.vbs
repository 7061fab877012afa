' Calls every member of the query and instrument classes by name, as the executive's scripts do:
' with variables (passed by reference as Variants) and with literals, an array by reference, the
' optional argument left out and given, and property writes. Any COM error is reported, and so is a
' result of the wrong type; the exit code is 1 after any failure.
'
'   cscript //nologo members.vbs [scan]
'
' "scan" also calls ScanAndConnectToDetector, which opens dialogs: run it under rx9400-automate
' (dismiss-all), which closes them.
Option Explicit
On Error Resume Next

Dim failures, calls, scan
failures = 0: calls = 0
scan = WScript.Arguments.Count > 0
If scan Then scan = (WScript.Arguments(0) = "scan")

' Every call is checked where it is made: Checked NAME, CALL, TYPE. A call that raises skips its own
' statement (On Error Resume Next), so the error is found by the next check and named after the last
' call that succeeded; Done catches one raised by the last call.
Dim lastCall
lastCall = "the start"
Sub Checked(name, answer, answerType)
  calls = calls + 1
  If Err.Number <> 0 Then
    WScript.Echo "FAIL the call after " & lastCall & ": error &H" & Hex(Err.Number) & " " & Err.Description
    failures = failures + 1
    Err.Clear
  End If
  lastCall = name
  If answerType >= 0 Then Expect name, VarType(answer) = answerType, "VarType " & VarType(answer) & ", expected " & answerType
End Sub

' A call without an answer to check.
Sub Check(name)
  Checked name, Empty, -1
End Sub

' Reports a wrong result.
Sub Expect(name, condition, what)
  If Not condition Then
    WScript.Echo "FAIL " & name & ": " & what
    failures = failures + 1
  End If
End Sub

' The error trap itself must see errors, or every check below would pass unseen.
Dim missing
Set missing = CreateObject("TamsaRX9400VTI.NoSuchClass")
Expect "error trap", Err.Number <> 0, "creating an unknown ProgID raised no error"
Err.Clear

Dim q, v, store
Set q = CreateObject("TamsaRX9400VTI.CRX9400Query"): Check "CreateObject TamsaRX9400VTI.CRX9400Query"
Set v = CreateObject("TamsaRX9400VTI.CRX9400VTI"): Check "CreateObject TamsaRX9400VTI.CRX9400VTI"
Set store = CreateObject("TamsaRX9400VTI.CStoreDetectorType"): Check "CreateObject TamsaRX9400VTI.CStoreDetectorType"
If failures > 0 Then WScript.Quit 1

' A name that is not a member is an error (438), so a misspelt member would be seen.
Dim result
result = v.NoSuchMember
Expect "unknown member", Err.Number = 438, "error &H" & Hex(Err.Number) & " instead of 438"
Err.Clear

' --- CRX9400Query ---
q.RegisterApp: Check "RegisterApp"
If scan Then q.ScanAndConnectToDetector: Check "ScanAndConnectToDetector"
Checked "IsDetectorConnected", q.IsDetectorConnected, vbBoolean
q.SendDetectorType 0: Check "SendDetectorType literal"
Dim detectorType
detectorType = 0
q.SendDetectorType detectorType: Check "SendDetectorType variable"
q.ResetTheDetectors: Check "ResetTheDetectors"
result = q.IsDetectorConnected
Checked "IsDetectorConnected after ResetTheDetectors", result, vbBoolean
Expect "IsDetectorConnected after ResetTheDetectors", result = False, "True"

' --- CRX9400VTI ---
' Members without arguments that answer a value, with the type of the answer (-1: any).
Checked "pChargingStatus", v.pChargingStatus, vbBoolean
Checked "pPercentageCharge", v.pPercentageCharge, vbByte
Checked "pResolution", v.pResolution, vbSingle
Checked "pGetExposureTime", v.pGetExposureTime, vbDouble
Checked "pGetExposurekVp", v.pGetExposurekVp, vbDouble
Checked "CheckDataStatus", v.CheckDataStatus, vbBoolean
Checked "GetNumberOfTargetFilters", v.GetNumberOfTargetFilters, vbByte
Checked "GetDefaultTargetFilterName", v.GetDefaultTargetFilterName, vbString
Checked "pSerialNumber", v.pSerialNumber, vbString
Checked "pFirmWareVersion", v.pFirmWareVersion, vbString
Checked "IsDetectorConnected", v.IsDetectorConnected, vbBoolean
Checked "pMeasurementStatus", v.pMeasurementStatus, vbBoolean
Checked "CheckDetectorStatus", v.CheckDetectorStatus, vbBoolean
Checked "CheckConnectionStatus", v.CheckConnectionStatus, vbBoolean
Checked "GetDetectorType", v.GetDetectorType, vbString
Checked "GetIonChambers", v.GetIonChambers, -1
Checked "GetIonChamberInfo", v.GetIonChamberInfo, vbByte
Checked "CongiureDoseDetector", v.CongiureDoseDetector, -1
Checked "ShowDosimeterMode", v.ShowDosimeterMode, vbBoolean
Checked "DisplayIonChamber", v.DisplayIonChamber, -1
Checked "GetIonChamberName", v.GetIonChamberName, vbString
Checked "GetCalFactor", v.GetCalFactor, vbString
Checked "GetCalConst", v.GetCalConst, vbString
Checked "mAsExposureFinish", v.mAsExposureFinish, vbBoolean
Checked "DetectorExposureFinish", v.DetectorExposureFinish, vbBoolean

' Members without arguments or answer, called as statements.
v.InitTimer: Check "InitTimer"
v.DetectorWakeUp: Check "DetectorWakeUp"
v.UpdateDefaultTargetFilterInSettings: Check "UpdateDefaultTargetFilterInSettings"
v.ChangeAllsettings: Check "ChangeAllsettings"
v.ChangeDetectorSetup: Check "ChangeDetectorSetup"
v.ChangeDetectorMode: Check "ChangeDetectorMode"
v.ChangeSettings: Check "ChangeSettings"
v.CloseWindow: Check "CloseWindow"
v.CheckSleepStatus: Check "CheckSleepStatus"
v.ShowDosimeterIonChamber: Check "ShowDosimeterIonChamber"
v.ResetTheFlags: Check "ResetTheFlags"

' Property writes: a literal, or a variable (pTargetFilter takes it by reference and leaves it alone).
Dim text, number, flag
v.pCurrentMode = "RAD": Check "pCurrentMode"
v.pCurrentSettings = "": Check "pCurrentSettings"
v.pDoseUnits = 1: Check "pDoseUnits"
v.pDoseRateUnits = 1: Check "pDoseRateUnits"
v.pFluoroType = 0: Check "pFluoroType"
v.pTimeUnit = 1: Check "pTimeUnit"
v.pPercentKV = 0: Check "pPercentKV"
number = -5
v.pDelay = number: Check "pDelay"
v.pIncludeDelay = True: Check "pIncludeDelay"
v.pTargetFilter = "W/Al": Check "pTargetFilter = literal"
text = "W/Rh"
v.pTargetFilter = text: Check "pTargetFilter = variable"
Expect "pTargetFilter = variable", text = "W/Rh", "the variable changed to """ & text & """"

' Members with arguments: each type of parameter as a literal and as a variable (GetWaveformInMilliSec
' and pDetectorName take only types that others take by variable).
Dim sleepTime, shutDownTime, rMin, rMax, dataPoints, lValue
sleepTime = 600: shutDownTime = 1800: rMin = 0: rMax = 1.5: dataPoints = 100: lValue = 1
Checked "CheckDetectorPowerStatus variables", v.CheckDetectorPowerStatus(sleepTime, shutDownTime), vbBoolean
Checked "GetWaveformInSecs without lValue", v.GetWaveformInSecs(0, 1.5, 100), vbString
Checked "GetWaveformInSecs variables with lValue", v.GetWaveformInSecs(rMin, rMax, dataPoints, lValue), vbString
Checked "GetWaveformInMilliSec literals", v.GetWaveformInMilliSec(0, 1500, 100), vbString

v.EnableMeasurements True: Check "EnableMeasurements literal"
flag = False
v.EnableMeasurements flag: Check "EnableMeasurements variable"
v.SetMasInputtype True: Check "SetMasInputtype"

Dim filters(4), filterCount
filterCount = 5
v.GetValidTargetFilters filters, 5: Check "GetValidTargetFilters array, literal"
v.GetValidTargetFilters filters, filterCount: Check "GetValidTargetFilters array, variable"
Expect "GetValidTargetFilters", UBound(filters) = 4, "the array now ends at " & UBound(filters)
v.GetValidTargetFilters Array("Mo/Mo", "W/Rh"), 2: Check "GetValidTargetFilters array literal"

Dim numberText
numberText = "12.5"
Checked "Val_OS literal", v.Val_OS("12.5"), vbDouble
Checked "Val_OS variable", v.Val_OS(numberText), vbDouble
Checked "pDetectorName literal", v.pDetectorName(0), vbString

Checked "SendCompareData literals", v.SendCompareData(1, 22, 760, 22.5, 760.5, 20, 2, 1, 1, 1, 0, 1, 2, 0, 0), vbBoolean
Dim lADCF, lSetTemperature, lSetPressure, rSetTemperature, rSetPressure, lRefTeperature, lMode, bAutoReset
Dim lDoseUnit, lDoseRateUnit, lFrameRate, lTempUnit, lPresUnit, rOffPres, rOffTemp
lADCF = 1: lSetTemperature = 22: lSetPressure = 760: rSetTemperature = 22.5: rSetPressure = 760.5
lRefTeperature = 20: lMode = 2: bAutoReset = 1: lDoseUnit = 1: lDoseRateUnit = 1: lFrameRate = 0
lTempUnit = 1: lPresUnit = 2: rOffPres = 0: rOffTemp = 0
Checked "SendCompareData variables", v.SendCompareData(lADCF, lSetTemperature, lSetPressure, rSetTemperature, _
  rSetPressure, lRefTeperature, lMode, bAutoReset, lDoseUnit, lDoseRateUnit, lFrameRate, lTempUnit, lPresUnit, _
  rOffPres, rOffTemp), vbBoolean
Dim compared
For Each compared In Array(lADCF, lSetTemperature, lSetPressure, rSetTemperature, rSetPressure, lRefTeperature, _
    lMode, bAutoReset, lDoseUnit, lDoseRateUnit, lFrameRate, lTempUnit, lPresUnit, rOffPres, rOffTemp)
  Expect "SendCompareData", IsNumeric(compared) And Not IsEmpty(compared), "a variable came back without a number"
Next

q.CloseApp: Check "CloseApp"
Check "the end"

WScript.Echo "members: " & calls & " calls, " & failures & " failures"
If failures > 0 Then WScript.Quit 1
