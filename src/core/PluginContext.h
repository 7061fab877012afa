// Everything the plug-in's classes and dialogs share in one process: the detector state, the one way
// to the device library, and the operating system's services.
#pragma once

#include <utility>

#include "core/Catalogue.h"
#include "core/SharedState.h"
#include "core/Trace.h"
#include "device/MBdllFunctions.h"
#include "platform/Clock.h"
#include "platform/DatePickerControl.h"
#include "platform/LanguageService.h"
#include "platform/MessageBoxes.h"
#include "platform/NoticeBoxes.h"
#include "platform/Registry.h"
#include "platform/SharedMemory.h"
#include "platform/Sound.h"
#include "platform/TraceSink.h"
#include "platform/WindowSystem.h"

namespace rx9400 {

class DialogFactory;

/// The operating system as the plug-in reaches it; each service outlives the context.
struct PlatformServices {
  LanguageService& language;
  TraceSink& traceSink;
  Registry& registry;
  WindowSystem& windows;
  DatePickerControl& datePicker;
  Sound& sound;
  MessageBoxes& messageBoxes;
  EventPump& eventPump;
  DialogFactory& dialogs;
  Clock& clock;
  Locale& locale;
  NoticeBoxes& noticeBoxes;
  SharedMemory& sharedMemory;
};

struct PluginContext {
  PluginContext(MBdllFunctions deviceLibrary, PlatformServices platform)
      : library(std::move(deviceLibrary)),
        services(platform),
        catalogue(platform.language),
        trace(platform.traceSink) {}

  SharedState state;
  MBdllFunctions library;
  PlatformServices services;
  Catalogue catalogue;
  TraceChannel trace;
};

}  // namespace rx9400
