' A test step that configures the dosimeter as a test procedure does: connects it, reads its ion
' chambers, compares its settings with the custom setup (the question is answered from outside), and
' prints the chamber and cal factor the dose is measured with, as a report would. Exit code 1 on a COM
' error.
'
'   rx9400-automate --run="cscript //nologo dosimeter.vbs" window "Establish Connection" tick 0 \
'       click Connect gone messagebox click Cancel
Option Explicit
On Error Resume Next

Dim q, v, chambers, i, differed
Set q = CreateObject("TamsaRX9400VTI.CRX9400Query")
Set v = CreateObject("TamsaRX9400VTI.CRX9400VTI")
q.ScanAndConnectToDetector
v.pCurrentMode = "RADIO"

WScript.Echo "chambers read: " & v.GetIonChamberInfo
chambers = v.GetIonChambers
For i = 0 To UBound(chambers)
  WScript.Echo "chamber " & i & ": " & chambers(i)
Next

' The custom setup asks for dose unit 2; the dosimeter has 1. Cancel keeps the dosimeter's.
Dim lADCF, lSetTemperature, lSetPressure, rSetTemperature, rSetPressure, lRefTeperature, lMode, bAutoReset
Dim lDoseUnit, lDoseRateUnit, lFrameRate, lTempUnit, lPresUnit, rOffPres, rOffTemp
lADCF = 1: lSetTemperature = 0: lSetPressure = 0: rSetTemperature = CSng(22): rSetPressure = CSng(760)
lRefTeperature = 20: lMode = 2: bAutoReset = CByte(1): lDoseUnit = 2: lDoseRateUnit = 1: lFrameRate = 0
lTempUnit = 1: lPresUnit = 2: rOffPres = CSng(0): rOffTemp = CSng(0)
differed = v.SendCompareData(lADCF, lSetTemperature, lSetPressure, rSetTemperature, rSetPressure, _
  lRefTeperature, lMode, bAutoReset, lDoseUnit, lDoseRateUnit, lFrameRate, lTempUnit, lPresUnit, rOffPres, rOffTemp)
WScript.Echo "settings differed: " & differed & "; dose unit kept: " & lDoseUnit

Dim chosen
chosen = v.CongiureDoseDetector
WScript.Echo "configured: " & chosen(0) & " / " & chosen(1)
WScript.Echo "report: ion chamber " & v.GetIonChamberName & ", cal factor " & v.GetCalFactor & _
  ", cal constant " & v.GetCalConst

If Err.Number <> 0 Then
  WScript.Echo "FAIL error &H" & Hex(Err.Number) & " " & Err.Description
  WScript.Quit 1
End If
WScript.Quit 0
