' Calls every member of the query and instrument classes by name, as the executive's scripts do:
' with variables (passed by reference as Variants) and with literals, an array by reference, the
' optional argument left out and given, and property writes. Any COM error is reported with the
' member's name, and so is a result of the wrong type; the exit code is 1 after any failure.
'
'   cscript //nologo members.vbs [scan]
'
' "scan" also calls ScanAndConnectToDetector, which opens dialogs: run it under rx9400-automate
' (dismiss-all), which closes them.
Option Explicit
On Error Resume Next

Dim failures, calls, scan
failures = 0
calls = 0
scan = WScript.Arguments.Count > 0
If scan Then scan = (WScript.Arguments(0) = "scan")

' Reports the error of the call just made, if there is one.
Sub Check(name)
  calls = calls + 1
  If Err.Number <> 0 Then
    WScript.Echo "FAIL " & name & ": error &H" & Hex(Err.Number) & " " & Err.Description
    failures = failures + 1
    Err.Clear
  End If
End Sub

' Reports the error of the call just made and checks the type of its answer (-1: any type).
Sub Checked(name, answer, answerType)
  Dim failed
  failed = Err.Number <> 0
  Check name
  If answerType >= 0 And Not failed Then
    Expect name, VarType(answer) = answerType, "VarType " & VarType(answer) & ", expected " & answerType
  End If
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
Set q = CreateObject("TamsaRX9400VTI.CRX9400Query")
Check "CreateObject TamsaRX9400VTI.CRX9400Query"
Set v = CreateObject("TamsaRX9400VTI.CRX9400VTI")
Check "CreateObject TamsaRX9400VTI.CRX9400VTI"
Set store = CreateObject("TamsaRX9400VTI.CStoreDetectorType")
Check "CreateObject TamsaRX9400VTI.CStoreDetectorType"
If failures > 0 Then WScript.Quit 1

' A name that is not a member is an error (438), so a misspelt member would be seen.
Dim result
result = v.NoSuchMember
Expect "unknown member", Err.Number = 438, "error &H" & Hex(Err.Number) & " instead of 438"
Err.Clear
result = store.NoSuchMember
Expect "unknown member of CStoreDetectorType", Err.Number = 438, "error &H" & Hex(Err.Number) & " instead of 438"
Err.Clear

' --- CRX9400Query ---
q.RegisterApp
Check "RegisterApp"
If scan Then
  q.ScanAndConnectToDetector
  Check "ScanAndConnectToDetector"
End If
result = q.IsDetectorConnected
Check "IsDetectorConnected"
Expect "IsDetectorConnected", VarType(result) = vbBoolean, "VarType " & VarType(result)
q.SendDetectorType 0
Check "SendDetectorType literal"
Dim detectorType
detectorType = 0
q.SendDetectorType detectorType
Check "SendDetectorType variable"
q.ResetTheDetectors
Check "ResetTheDetectors"
result = q.IsDetectorConnected
Check "IsDetectorConnected after ResetTheDetectors"
Expect "IsDetectorConnected after ResetTheDetectors", result = False, "True"

' --- CRX9400VTI ---
' Members without arguments that answer a value, with the type of the answer (-1: any).
result = v.pChargingStatus
Checked "pChargingStatus", result, vbBoolean
result = v.pPercentageCharge
Checked "pPercentageCharge", result, vbByte
result = v.pResolution
Checked "pResolution", result, vbSingle
result = v.pGetExposureTime
Checked "pGetExposureTime", result, vbDouble
result = v.pGetExposurekVp
Checked "pGetExposurekVp", result, vbDouble
result = v.CheckDataStatus
Checked "CheckDataStatus", result, vbBoolean
result = v.GetNumberOfTargetFilters
Checked "GetNumberOfTargetFilters", result, vbByte
result = v.GetDefaultTargetFilterName
Checked "GetDefaultTargetFilterName", result, vbString
result = v.pSerialNumber
Checked "pSerialNumber", result, vbString
result = v.pFirmWareVersion
Checked "pFirmWareVersion", result, vbString
result = v.IsDetectorConnected
Checked "IsDetectorConnected", result, vbBoolean
result = v.pMeasurementStatus
Checked "pMeasurementStatus", result, vbBoolean
result = v.CheckDetectorStatus
Checked "CheckDetectorStatus", result, vbBoolean
result = v.CheckConnectionStatus
Checked "CheckConnectionStatus", result, vbBoolean
result = v.GetDetectorType
Checked "GetDetectorType", result, vbString
result = v.GetIonChambers
Checked "GetIonChambers", result, -1
result = v.GetIonChamberInfo
Checked "GetIonChamberInfo", result, vbByte
result = v.CongiureDoseDetector
Checked "CongiureDoseDetector", result, -1
result = v.ShowDosimeterMode
Checked "ShowDosimeterMode", result, vbBoolean
result = v.DisplayIonChamber
Checked "DisplayIonChamber", result, -1
result = v.GetIonChamberName
Checked "GetIonChamberName", result, vbString
result = v.GetCalFactor
Checked "GetCalFactor", result, vbString
result = v.GetCalConst
Checked "GetCalConst", result, vbString
result = v.mAsExposureFinish
Checked "mAsExposureFinish", result, vbBoolean
result = v.DetectorExposureFinish
Checked "DetectorExposureFinish", result, vbBoolean

' Members without arguments or answer.
v.InitTimer
Check "InitTimer"
v.DetectorWakeUp
Check "DetectorWakeUp"
v.UpdateDefaultTargetFilterInSettings
Check "UpdateDefaultTargetFilterInSettings"
v.ChangeAllsettings
Check "ChangeAllsettings"
v.ChangeDetectorSetup
Check "ChangeDetectorSetup"
v.ChangeDetectorMode
Check "ChangeDetectorMode"
v.ChangeSettings
Check "ChangeSettings"
v.CloseWindow
Check "CloseWindow"
v.CheckSleepStatus
Check "CheckSleepStatus"
v.ShowDosimeterIonChamber
Check "ShowDosimeterIonChamber"
v.ResetTheFlags
Check "ResetTheFlags"

' Property writes, each with a literal and with a variable.
Dim text, number, flag
v.pCurrentMode = "RAD"
Check "pCurrentMode = literal"
text = "FLUORO"
v.pCurrentMode = text
Check "pCurrentMode = variable"
v.pCurrentSettings = ""
Check "pCurrentSettings = literal"
v.pCurrentSettings = text
Check "pCurrentSettings = variable"
v.pDoseUnits = 1
Check "pDoseUnits = literal"
number = 2
v.pDoseUnits = number
Check "pDoseUnits = variable"
v.pDoseRateUnits = 1
Check "pDoseRateUnits = literal"
v.pDoseRateUnits = number
Check "pDoseRateUnits = variable"
v.pFluoroType = 0
Check "pFluoroType = literal"
v.pFluoroType = number
Check "pFluoroType = variable"
v.pTimeUnit = 1
Check "pTimeUnit = literal"
v.pTimeUnit = number
Check "pTimeUnit = variable"
v.pPercentKV = 0
Check "pPercentKV = literal"
v.pPercentKV = number
Check "pPercentKV = variable"
v.pDelay = 250
Check "pDelay = literal"
number = -5
v.pDelay = number
Check "pDelay = variable"
v.pIncludeDelay = True
Check "pIncludeDelay = literal"
flag = False
v.pIncludeDelay = flag
Check "pIncludeDelay = variable"
v.pTargetFilter = "W/Al"
Check "pTargetFilter = literal"
text = "W/Rh"
v.pTargetFilter = text
Check "pTargetFilter = s"
Expect "pTargetFilter = s", text = "W/Rh", "the variable changed to """ & text & """"

' Members with arguments: literals first, then variables.
result = v.CheckDetectorPowerStatus(600, 1800)
Check "CheckDetectorPowerStatus literals"
Dim sleepTime, shutDownTime
sleepTime = 600
shutDownTime = 1800
result = v.CheckDetectorPowerStatus(sleepTime, shutDownTime)
Check "CheckDetectorPowerStatus variables"
Expect "CheckDetectorPowerStatus", VarType(result) = vbBoolean, "VarType " & VarType(result)

result = v.GetWaveformInSecs(0, 1.5, 100)
Check "GetWaveformInSecs without lValue"
Expect "GetWaveformInSecs", VarType(result) = vbString, "VarType " & VarType(result)
result = v.GetWaveformInSecs(0, 1.5, 100, 1)
Check "GetWaveformInSecs with lValue"
Dim rMin, rMax, dataPoints, lValue
rMin = 0
rMax = 1.5
dataPoints = 100
lValue = 1
result = v.GetWaveformInSecs(rMin, rMax, dataPoints)
Check "GetWaveformInSecs variables without lValue"
result = v.GetWaveformInSecs(rMin, rMax, dataPoints, lValue)
Check "GetWaveformInSecs variables with lValue"
result = v.GetWaveformInMilliSec(0, 1500, 100)
Check "GetWaveformInMilliSec literals"
rMax = 1500
result = v.GetWaveformInMilliSec(rMin, rMax, dataPoints)
Check "GetWaveformInMilliSec variables"
Expect "GetWaveformInMilliSec", VarType(result) = vbString, "VarType " & VarType(result)

v.EnableMeasurements True
Check "EnableMeasurements literal"
flag = False
v.EnableMeasurements flag
Check "EnableMeasurements variable"
v.SetMasInputtype True
Check "SetMasInputtype literal"
v.SetMasInputtype flag
Check "SetMasInputtype variable"

Dim filters(4), filterCount
v.GetValidTargetFilters filters, 5
Check "GetValidTargetFilters array, literal"
filterCount = 5
v.GetValidTargetFilters filters, filterCount
Check "GetValidTargetFilters array, variable"
Expect "GetValidTargetFilters", UBound(filters) = 4, "the array now ends at " & UBound(filters)
v.GetValidTargetFilters Array("Mo/Mo", "W/Rh"), 2
Check "GetValidTargetFilters array literal"

result = v.Val_OS("12.5")
Check "Val_OS literal"
Expect "Val_OS", VarType(result) = vbDouble, "VarType " & VarType(result)
Dim numberText
numberText = "12.5"
result = v.Val_OS(numberText)
Check "Val_OS variable"
Expect "Val_OS", IsNumeric(result), "not a number"

result = v.pDetectorName(0)
Check "pDetectorName literal"
Dim detectorIndex
detectorIndex = 0
result = v.pDetectorName(detectorIndex)
Check "pDetectorName variable"
Expect "pDetectorName", VarType(result) = vbString, "VarType " & VarType(result)

result = v.SendCompareData(1, 22, 760, 22.5, 760.5, 20, 2, 1, 1, 1, 0, 1, 2, 0, 0)
Check "SendCompareData literals"
Dim lADCF, lSetTemperature, lSetPressure, rSetTemperature, rSetPressure, lRefTeperature, lMode, bAutoReset
Dim lDoseUnit, lDoseRateUnit, lFrameRate, lTempUnit, lPresUnit, rOffPres, rOffTemp
lADCF = 1
lSetTemperature = 22
lSetPressure = 760
rSetTemperature = 22.5
rSetPressure = 760.5
lRefTeperature = 20
lMode = 2
bAutoReset = 1
lDoseUnit = 1
lDoseRateUnit = 1
lFrameRate = 0
lTempUnit = 1
lPresUnit = 2
rOffPres = 0
rOffTemp = 0
result = v.SendCompareData(lADCF, lSetTemperature, lSetPressure, rSetTemperature, rSetPressure, lRefTeperature, _
  lMode, bAutoReset, lDoseUnit, lDoseRateUnit, lFrameRate, lTempUnit, lPresUnit, rOffPres, rOffTemp)
Check "SendCompareData variables"
Expect "SendCompareData", VarType(result) = vbBoolean, "VarType " & VarType(result)
Dim compared
For Each compared In Array(lADCF, lSetTemperature, lSetPressure, rSetTemperature, rSetPressure, lRefTeperature, _
    lMode, bAutoReset, lDoseUnit, lDoseRateUnit, lFrameRate, lTempUnit, lPresUnit, rOffPres, rOffTemp)
  Expect "SendCompareData", IsNumeric(compared) And Not IsEmpty(compared), "a variable came back without a number"
Next

q.CloseApp
Check "CloseApp"

WScript.Echo "members: " & calls & " calls, " & failures & " failures"
If failures > 0 Then WScript.Quit 1
