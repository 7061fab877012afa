// The instrument: construction. Settings are in Settings.cpp, exposure polling in Polling.cpp, waveforms
// in Waveforms.cpp, power and link supervision in Supervision.cpp, the dosimeter's configuration and
// ion chambers in Dosimeter.cpp.
#include "instrument/Instrument.h"

namespace rx9400 {

Instrument::Instrument(PluginContext& context, InstrumentEvents& events)
    : context_(context), events_(events) {}

}  // namespace rx9400
