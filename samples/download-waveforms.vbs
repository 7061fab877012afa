' Measures one exposure of the all-in-one detector with its mAs meter and saves both of its waveforms
' as CSV files: the kV trace (GetWaveformInMilliSec) and the mAs meter's tube current
' (GetWaveformInSecs with kind 2), each as "time in ms,value" lines.
'
'   rx9400-scripthost download-waveforms.vbs [FOLDER]     (on Windows: cscript //nologo download-waveforms.vbs [FOLDER])
'
' The files are kV-waveform.csv and mA-waveform.csv in FOLDER (the current folder when none is given).
' Connect the all-in-one detector alone: the waveform members answer for the last detector connected.
Option Explicit

Dim query, instrument, folder, files
Set query = WScript.CreateObject("TamsaRX9400VTI.CRX9400Query")
Set instrument = WScript.CreateObject("TamsaRX9400VTI.CRX9400VTI", "Instrument_")
Set files = CreateObject("Scripting.FileSystemObject")
folder = "."
If WScript.Arguments.Count > 0 Then folder = WScript.Arguments(0)

' The detector announces each waveform of the finished exposure: 1 the kV trace, 3 the mAs meter's.
Dim kvAnnounced, maAnnounced
Sub Instrument_CheckExposureWaveform(eWFType)
  WScript.Echo "Waveform announced: kind " & eWFType
  If eWFType = 1 Then kvAnnounced = True
  If eWFType = 3 Then maAnnounced = True
End Sub

' Writes a waveform text as "ms,value" lines. The values are separated by commas and written with a
' decimal point whatever the locale; the mAs meter's text begins with a comma. pResolution is the
' number of values per millisecond of the download just made.
Sub Save(text, name, unit)
  Dim values, out, i, n, resolution
  If Left(text, 1) = "," Then text = Mid(text, 2)
  If text = "" Then
    WScript.Echo name & ": no values"
    Exit Sub
  End If
  values = Split(text, ",")
  resolution = instrument.pResolution
  Set out = files.CreateTextFile(files.BuildPath(folder, name), True)
  out.WriteLine "ms," & unit
  For i = 0 To UBound(values)
    out.WriteLine Replace(CStr(Int(i / resolution * 10000 + 0.5) / 10000), ",", ".") & "," & values(i)
  Next
  out.Close
  n = UBound(values) + 1
  WScript.Echo name & ": " & n & " values over " & Int(n / resolution * 10 + 0.5) / 10 & " ms, first " & values(0) & _
    ", peak " & Peak(values) & " " & unit
End Sub

Function Peak(values)
  Dim i, v
  Peak = CDbl(instrument.Val_OS(values(0)))
  For i = 1 To UBound(values)
    v = CDbl(instrument.Val_OS(values(i)))
    If v > Peak Then Peak = v
  Next
End Function

query.RegisterApp
query.ScanAndConnectToDetector
If Not query.IsDetectorConnected Then
  WScript.Echo "No detector was connected."
  WScript.Quit 2
End If
instrument.pCurrentMode = "RADIO"
instrument.pDoseUnits = 1
instrument.ChangeDetectorMode
instrument.ChangeSettings
instrument.ResetTheFlags
instrument.InitTimer
instrument.EnableMeasurements True
Dim pass
For pass = 1 To 1000
  ' The waveforms are announced within the poll that finishes the exposure.
  If instrument.CheckDataStatus Then Exit For
  WScript.Sleep 10
Next
instrument.EnableMeasurements False

' The whole exposure, from 0 to its end, at most 2000 values each (the library thins longer traces).
Dim endTime
endTime = instrument.pGetExposureTime
WScript.Echo "Exposure time " & endTime & " ms"
If kvAnnounced Then Save instrument.GetWaveformInMilliSec(0, endTime, 2000), "kV-waveform.csv", "kV"
If maAnnounced Then Save instrument.GetWaveformInSecs(0, endTime, 2000, 2), "mA-waveform.csv", "mA"
instrument.ResetTheFlags
query.CloseApp
