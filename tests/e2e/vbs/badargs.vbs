' Arguments a script passes by mistake: empty and 64 KiB texts, values of the wrong type, arguments
' left out or one too many, numbers that overflow the parameter. Each call may fail only with an
' error of the dispatch layer (type mismatch, wrong number of arguments, argument not optional,
' overflow, invalid argument), never with an exception of the member, and a wrong type, a missing
' argument, an overflow and a text for a number must fail; the instrument still works afterwards.
' Prints the cases tried and refused per kind; the exit code is 1 after any failure.
'
'   cscript //nologo badargs.vbs
'
' Members may open message boxes: run it under rx9400-automate (dismiss-all), which closes them.
Option Explicit
On Error Resume Next

Dim q, v, big, filters(3), result, failures, kinds(5), refusals(5), names, kind
names = Array("empty text", "64 KiB text", "wrong type", "missing argument", "one too many", "overflow")
failures = 0
For kind = 0 To 5: kinds(kind) = 0: refusals(kind) = 0: Next
big = String(65536, "7")

Set q = CreateObject("TamsaRX9400VTI.CRX9400Query")
Set v = CreateObject("TamsaRX9400VTI.CRX9400VTI")
If Err.Number <> 0 Then WScript.Echo "FAIL the classes cannot be created": WScript.Quit 1
q.RegisterApp

' Called right after each statement: its error, if any, must be one the dispatch layer gives. Refused
' also fails a call that raised none.
Sub Tried(kindNumber, what)
  kinds(kindNumber) = kinds(kindNumber) + 1
  Dim code
  code = Err.Number
  If code <> 0 Then refusals(kindNumber) = refusals(kindNumber) + 1
  If code <> 0 And Not Refusal(code) Then
    WScript.Echo "FAIL " & what & ": error &H" & Hex(code) & " " & Err.Description
    failures = failures + 1
  End If
  Err.Clear
End Sub
Sub Refused(kindNumber, what)
  If Err.Number = 0 Then
    WScript.Echo "FAIL " & what & ": no error"
    failures = failures + 1
  End If
  Tried kindNumber, what
End Sub

' The dispatch layer's refusals, as script engines report them: their own numbers (13, or &H800A000D)
' or the HRESULT itself. DISP_E_EXCEPTION (a member's exception) is not among them.
Function Refusal(code)
  Dim number
  number = code
  If (code And &HFFFF0000) = &H800A0000 Then number = code And &HFFFF&
  Select Case number
    Case 5, 6, 13, 94, 448, 449, 450, &H80020004, &H80020005, &H8002000A, &H8002000E, &H80070057, &H80004003
      Refusal = True
    Case Else
      Refusal = False
  End Select
End Function

' Empty texts.
v.pCurrentMode = "": Tried 0, "pCurrentMode = """""
v.pCurrentSettings = "": Tried 0, "pCurrentSettings = """""
v.pTargetFilter = "": Tried 0, "pTargetFilter = """""
result = v.Val_OS(""): Tried 0, "Val_OS("""")"
result = v.pDetectorName(""): Refused 0, "pDetectorName("""")"
result = v.GetWaveformInSecs("", "", "", ""): Refused 0, "GetWaveformInSecs("""", ...)"
q.SendDetectorType "": Refused 0, "SendDetectorType """""

' 64 KiB texts.
v.pCurrentMode = big: Tried 1, "pCurrentMode = big"
v.pCurrentSettings = big: Tried 1, "pCurrentSettings = big"
v.pTargetFilter = big: Tried 1, "pTargetFilter = big"
result = v.Val_OS(big): Tried 1, "Val_OS(big)"
result = v.pDetectorName(big): Tried 1, "pDetectorName(big)"
v.pDelay = big: Refused 1, "pDelay = big"
result = v.GetWaveformInMilliSec(0, big, 100): Tried 1, "GetWaveformInMilliSec(0, big, 100)"

' Values of the wrong type.
v.pDelay = "abc": Refused 2, "pDelay = ""abc"""
v.pDoseUnits = v: Refused 2, "pDoseUnits = the instrument"
v.EnableMeasurements Array(1, 2): Refused 2, "EnableMeasurements Array"
result = v.GetWaveformInMilliSec(Null, 1, 1): Refused 2, "GetWaveformInMilliSec(Null, ...)"
v.GetValidTargetFilters 5, 4: Refused 2, "GetValidTargetFilters 5 for the array"
result = v.CheckDetectorPowerStatus("soon", Array()): Refused 2, "CheckDetectorPowerStatus(""soon"", Array())"
result = v.SendCompareData("a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "l", "m", "n", "o"): _
  Refused 2, "SendCompareData of words"
v.SetMasInputtype Null: Refused 2, "SetMasInputtype Null"

' Arguments left out.
result = v.GetWaveformInSecs(0, 1): Refused 3, "GetWaveformInSecs(0, 1)"
result = v.CheckDetectorPowerStatus(1): Refused 3, "CheckDetectorPowerStatus(1)"
result = v.pDetectorName(): Refused 3, "pDetectorName()"
result = v.Val_OS(): Refused 3, "Val_OS()"
q.SendDetectorType: Refused 3, "SendDetectorType"
result = v.SendCompareData(1, 2, 3): Refused 3, "SendCompareData(1, 2, 3)"
v.GetValidTargetFilters filters: Refused 3, "GetValidTargetFilters without the count"

' One argument too many.
v.InitTimer 1: Tried 4, "InitTimer 1"
result = v.CheckDataStatus(1): Tried 4, "CheckDataStatus(1)"
q.RegisterApp 1: Tried 4, "RegisterApp 1"
result = v.GetWaveformInSecs(0, 1, 100, 1, 5): Tried 4, "GetWaveformInSecs with five arguments"
result = v.pDetectorName(0, 1): Tried 4, "pDetectorName(0, 1)"

' Numbers the parameter cannot hold.
v.pDoseUnits = 300: Refused 5, "pDoseUnits = 300"
v.pDelay = 40000: Refused 5, "pDelay = 40000"
result = v.pDetectorName(1E+300): Refused 5, "pDetectorName(1E+300)"
q.SendDetectorType 3E+10: Refused 5, "SendDetectorType 3E+10"
result = v.GetWaveformInSecs(-1E+300, 1E+300, 2147483647, -2147483648): Refused 5, "GetWaveformInSecs(ends)"

' Still in working order.
result = v.Val_OS("12.5")
If Err.Number <> 0 Or result <> 12.5 Then
  WScript.Echo "FAIL Val_OS(""12.5"") after the bad calls: " & result & " (error &H" & Hex(Err.Number) & ")"
  failures = failures + 1
End If
Err.Clear
q.CloseApp

Dim line, total
line = "badargs:": total = 0
For kind = 0 To 5
  line = line & " " & names(kind) & " " & kinds(kind) & " (" & refusals(kind) & " refused)" & IIf(kind < 5, ",", "")
  total = total + kinds(kind)
Next
WScript.Echo line & "; " & total & " calls, " & failures & " failures"
If failures > 0 Then WScript.Quit 1

Function IIf(condition, yes, no)
  If condition Then IIf = yes Else IIf = no
End Function
