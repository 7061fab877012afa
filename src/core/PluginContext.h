// Everything the plug-in's classes and dialogs share in one process: the detector state and the one
// way to the device library.
#pragma once

#include "core/SharedState.h"
#include "device/MBdllFunctions.h"

namespace rx9400 {

struct PluginContext {
  explicit PluginContext(MBdllFunctions deviceLibrary) : library(std::move(deviceLibrary)) {}

  SharedState state;
  MBdllFunctions library;
};

}  // namespace rx9400
