// Every public member of the query class and of the instrument, each with one call that passes typical
// arguments: the one list that the reliability sweeps and the soak run walk.
//
// A call answers what the member gave back as text (its result, and what it wrote into the arguments it
// takes by reference), so that two runs of one member can be compared; a member that gives nothing back
// answers "". Members that open dialogs show them through the context's dialog factory: with scripted
// views that are given no script they cancel or close at once.
#pragma once

#include <span>
#include <string>

#include "instrument/Instrument.h"
#include "session/QuerySession.h"

namespace rx9400::reliability {

/// The objects the members run on: one executive's query session and instrument over one context.
struct Subjects {
  QuerySession& session;
  Instrument& instrument;
};

struct Member {
  const char* name;  ///< the member's name; property writes end in "=", the query class's begin "Query."
  std::string (*call)(Subjects&);
};

/// Every member, the query class's first.
std::span<const Member> members();

/// A Variant result as text: empty, the number, the text, or the list's texts each followed by "|".
std::string textOf(const AutomationValue& value);

}  // namespace rx9400::reliability
