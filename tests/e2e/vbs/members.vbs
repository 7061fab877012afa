' Late binding as the executive's scripts do it: the classes created by ProgID and their members called
' by name with the argument kinds a script passes (variables by reference as Variants, literals, an array
' by reference, the optional argument left out and given, property writes). A COM error or a result of
' the wrong type is reported; the exit code is 1 after any failure.
'
'   cscript //nologo members.vbs [scan]      ("scan" opens the dialogs: run it under rx9400-automate)
Option Explicit
On Error Resume Next

Dim failures, calls, lastCall: failures = 0: calls = 0: lastCall = "the start"
' Checked NAME, ANSWER, TYPE: a call that raised skipped its statement, so the error is seen here and
' named after the last call that succeeded.
Sub Checked(name, answer, answerType)
  calls = calls + 1
  If Err.Number <> 0 Then
    WScript.Echo "FAIL the call after " & lastCall & ": error &H" & Hex(Err.Number) & " " & Err.Description
    failures = failures + 1
    Err.Clear
  End If
  lastCall = name
  If answerType >= 0 Then Expect name, VarType(answer) = answerType, "VarType " & VarType(answer)
End Sub
Sub Check(name): Checked name, Empty, -1: End Sub
Sub Expect(name, condition, what)
  If Not condition Then WScript.Echo "FAIL " & name & ": " & what: failures = failures + 1
End Sub

Dim q, v, result
Set q = CreateObject("TamsaRX9400VTI.CRX9400Query"): Check "CreateObject CRX9400Query"
Set v = CreateObject("TamsaRX9400VTI.CRX9400VTI"): Check "CreateObject CRX9400VTI"
If failures > 0 Then WScript.Quit 1
' A misspelt member is an error (438): the error trap sees errors.
result = v.NoSuchMember
Expect "unknown member", Err.Number = 438, "error &H" & Hex(Err.Number) & " instead of 438"
Err.Clear

q.RegisterApp: Check "RegisterApp"
If WScript.Arguments.Count > 0 Then q.ScanAndConnectToDetector: Check "ScanAndConnectToDetector"
Dim detectorType: detectorType = 0
q.SendDetectorType detectorType: Check "SendDetectorType variable"
Checked "IsDetectorConnected", q.IsDetectorConnected, vbBoolean

Checked "pResolution", v.pResolution, vbSingle
Checked "pGetExposureTime", v.pGetExposureTime, vbDouble
Checked "pSerialNumber", v.pSerialNumber, vbString
v.pCurrentMode = "RAD": Check "pCurrentMode"
Dim text, number, flag
number = -5: v.pDelay = number: Check "pDelay variable"
text = "W/Rh": v.pTargetFilter = text: Check "pTargetFilter variable"
Expect "pTargetFilter variable", text = "W/Rh", "the variable changed to """ & text & """"

Dim rMin, rMax, dataPoints, lValue: rMin = 0: rMax = 1.5: dataPoints = 100: lValue = 1
Checked "GetWaveformInSecs without lValue", v.GetWaveformInSecs(0, 1.5, 100), vbString
Checked "GetWaveformInSecs variables", v.GetWaveformInSecs(rMin, rMax, dataPoints, lValue), vbString
flag = False: v.EnableMeasurements flag: Check "EnableMeasurements variable"
Dim filters(4), filterCount: filterCount = 5
v.GetValidTargetFilters filters, filterCount: Check "GetValidTargetFilters array, variable"
Expect "GetValidTargetFilters", UBound(filters) = 4, "the array now ends at " & UBound(filters)
v.GetValidTargetFilters Array("Mo/Mo", "W/Rh"), 2: Check "GetValidTargetFilters array literal"
Checked "Val_OS literal", v.Val_OS("12.5"), vbDouble
Dim lADCF, lSetTemperature, lSetPressure, rSetTemperature, rSetPressure, lRefTeperature, lMode, bAutoReset
Dim lDoseUnit, lDoseRateUnit, lFrameRate, lTempUnit, lPresUnit, rOffPres, rOffTemp
lADCF = 1: lSetTemperature = 22: lSetPressure = 760: rSetTemperature = 22.5: rSetPressure = 760.5
lRefTeperature = 20: lMode = 2: bAutoReset = 1: lDoseUnit = 1: lDoseRateUnit = 1: lFrameRate = 0
lTempUnit = 1: lPresUnit = 2: rOffPres = 0: rOffTemp = 0
Checked "SendCompareData variables", v.SendCompareData(lADCF, lSetTemperature, lSetPressure, rSetTemperature, _
  rSetPressure, lRefTeperature, lMode, bAutoReset, lDoseUnit, lDoseRateUnit, lFrameRate, lTempUnit, lPresUnit, _
  rOffPres, rOffTemp), vbBoolean
q.CloseApp: Check "CloseApp"
Check "the end"

WScript.Echo "members: " & calls & " calls, " & failures & " failures"
If failures > 0 Then WScript.Quit 1
