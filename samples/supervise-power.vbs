' Supervises the detectors between exposures, as a test procedure does while it waits for the next
' one: their link, their battery and their sleep. An idle detector is put to sleep after SLEEP_AFTER
' ms and shut down after SHUT_DOWN_AFTER ms; the plug-in's sleep box offers Wake Up and Cancel, and
' after Cancel the procedure wakes the detector itself (DetectorWakeUp), as the executive's Wake Up
' button does. Low battery and a lost link show the plug-in's notice boxes (OK).
'
'   rx9400-scripthost supervise-power.vbs      (on Windows: cscript //nologo supervise-power.vbs)
Option Explicit
Const SLEEP_AFTER = 3000
Const SHUT_DOWN_AFTER = 600000
Const WATCH_FOR = 30000

Dim query, instrument
Set query = WScript.CreateObject("TamsaRX9400VTI.CRX9400Query")
Set instrument = WScript.CreateObject("TamsaRX9400VTI.CRX9400VTI", "Instrument_")

' AddWakeUpButton(True) asks the executive to offer its Wake Up button, False to take it away. Within
' CheckSleepStatus it answers whether a detector sleeps.
Dim askingSleep, sleeping, wakeOffered
Sub Instrument_AddWakeUpButton(fWakeUp)
  If askingSleep Then
    sleeping = fWakeUp
  Else
    wakeOffered = fWakeUp
    WScript.Echo "Wake Up button " & IIfText(fWakeUp, "offered", "withdrawn")
  End If
End Sub

Function IIfText(condition, yes, no)
  If condition Then IIfText = yes Else IIfText = no
End Function

query.RegisterApp
query.ScanAndConnectToDetector
If Not query.IsDetectorConnected Then
  WScript.Echo "No detector was connected."
  WScript.Quit 2
End If
WScript.Echo "Connected: serial numbers " & instrument.pSerialNumber

' The idle time counts from InitTimer, and from every exposure, download and wake-up after it.
instrument.InitTimer
Dim started, battery, lastBattery, linked, awake, sawSleep
started = Timer
lastBattery = ""
sawSleep = False
Do While (Timer - started) * 1000 < WATCH_FOR
  ' CheckConnectionStatus reads every detector's status; CheckDetectorStatus then warns of low battery
  ' and lost links from what it read, and updates pChargingStatus and pPercentageCharge.
  linked = instrument.CheckConnectionStatus
  instrument.CheckDetectorStatus
  battery = IIfText(instrument.pChargingStatus, "charging", instrument.pPercentageCharge & " %")
  If battery <> lastBattery Then WScript.Echo "Battery: " & battery & IIfText(linked, "", ", link lost")
  lastBattery = battery
  awake = instrument.CheckDetectorPowerStatus(SLEEP_AFTER, SHUT_DOWN_AFTER)
  If Not awake Then
    WScript.Echo "The detector was shut down."
    Exit Do
  End If
  askingSleep = True: sleeping = False
  instrument.CheckSleepStatus
  askingSleep = False
  If sleeping And Not sawSleep Then WScript.Echo "The detector sleeps."
  If sawSleep And Not sleeping Then
    WScript.Echo "The detector is awake again."
    Exit Do
  End If
  sawSleep = sawSleep Or sleeping
  If sleeping And wakeOffered Then
    WScript.Echo "Waking the detector (DetectorWakeUp)."
    instrument.DetectorWakeUp
    wakeOffered = False
  End If
  WScript.Sleep 250
Loop
instrument.CloseWindow
query.CloseApp
