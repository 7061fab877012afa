' Configures the dosimeter for a test step: reads its ion chambers and their cal factors, compares the
' settings stored in the dosimeter with the procedure's own (its custom setup), sends the chosen
' chamber's settings and prints the chamber, cal factor and cal constant the dose is measured with.
'
'   rx9400-scripthost configure-dosimeter.vbs     (on Windows: cscript //nologo configure-dosimeter.vbs)
'
' When the settings differ the plug-in asks: OK writes the procedure's settings into the dosimeter,
' Cancel keeps the dosimeter's and hands them back in the same variables. A dosimeter without a chamber
' opens the ion chamber setup dialog.
Option Explicit

Dim query, instrument
Set query = WScript.CreateObject("TamsaRX9400VTI.CRX9400Query")
Set instrument = WScript.CreateObject("TamsaRX9400VTI.CRX9400VTI", "Instrument_")

query.RegisterApp
query.ScanAndConnectToDetector
If Not query.IsDetectorConnected Then
  WScript.Echo "No detector was connected."
  WScript.Quit 2
End If
WScript.Echo "Connected: " & instrument.pDetectorName(0) & "(type " & instrument.GetDetectorType & ")"
instrument.pCurrentMode = "RADIO"

' The chambers stored in the dosimeter, each with its cal factors.
Dim chambers, i
WScript.Echo "Ion chambers read: " & instrument.GetIonChamberInfo
chambers = instrument.GetIonChambers
If IsArray(chambers) Then
  For i = 0 To UBound(chambers)
    WScript.Echo "  chamber " & i & ": " & chambers(i)
  Next
End If

' The procedure's setup, passed by reference: every variable of its type (Single, Byte, Long).
Dim lADCF, lSetTemperature, lSetPressure, rSetTemperature, rSetPressure, lRefTeperature, lMode, bAutoReset
Dim lDoseUnit, lDoseRateUnit, lFrameRate, lTempUnit, lPresUnit, rOffPres, rOffTemp, differed
lADCF = 1: lSetTemperature = 0: lSetPressure = 0: rSetTemperature = CSng(22): rSetPressure = CSng(760)
lRefTeperature = 20: lMode = 2: bAutoReset = CByte(1): lFrameRate = 0: lTempUnit = 1: lPresUnit = 2
lDoseUnit = 2: lDoseRateUnit = 1   ' dose unit 2, where the dosimeter may hold another
rOffPres = CSng(0): rOffTemp = CSng(0)
differed = instrument.SendCompareData(lADCF, lSetTemperature, lSetPressure, rSetTemperature, rSetPressure, _
  lRefTeperature, lMode, bAutoReset, lDoseUnit, lDoseRateUnit, lFrameRate, lTempUnit, lPresUnit, rOffPres, rOffTemp)
WScript.Echo "Settings differed: " & differed & "; dose unit now " & lDoseUnit & ", dose-rate unit " & _
  lDoseRateUnit & ", mode " & lMode

' The chamber and cal factor chosen in the dosimeter; their ADCF and unit are sent to it.
Dim chosen
chosen = instrument.CongiureDoseDetector
If IsArray(chosen) Then WScript.Echo "Configured: chamber " & chosen(0) & ", cal factor " & chosen(1)
instrument.ShowDosimeterIonChamber
WScript.Echo "Report: ion chamber " & instrument.GetIonChamberName & ", cal factor " & instrument.GetCalFactor & _
  ", cal constant " & instrument.GetCalConst
query.CloseApp
