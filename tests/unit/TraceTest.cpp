// The trace channel: the line format, the one-time search for the viewer, and failures that stay inside.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "core/Trace.h"
#include "fakes/PlatformFakes.h"

namespace rx9400 {
namespace {

using FakeSink = testing::RecordingTraceSink;

TEST(Trace, LinesAreValuesEachFollowedByATabBehindAColon) {
  const struct {
    std::string text;
    std::initializer_list<TraceValue> values;
  } cases[] = {
      {": ", {}},
      {": $CheckConnectionStatus$ - Detector Connection Status :: 1\t",
       {"$CheckConnectionStatus$ - Detector Connection Status :: 1"}},
      {": a\t7\t2.5\tTrue\t", {"a", 7, 2.5, true}},
      {": x\t1\ttwo\t\ty\t", {"x", TraceValue({std::int64_t{1}, std::string("two"), std::string()}), "y"}},
  };
  for (const auto& c : cases) EXPECT_EQ(traceText(c.values), c.text);
}

TEST(Trace, TheViewerIsSoughtOnceAndThenGetsEveryLineOrNone) {
  FakeSink late;
  late.viewerRunning = false;
  TraceChannel lateChannel(late);
  lateChannel.trace({"first"});
  late.viewerRunning = true;
  lateChannel.trace({"second"});
  EXPECT_EQ(late.searches, 1);
  EXPECT_TRUE(late.lines.empty()) << "a viewer started after the first line is never found";

  FakeSink sink;
  TraceChannel channel(sink);
  channel.trace({"one"});
  channel.trace({"two"});
  channel.traceAssert(true, "never shown");
  channel.traceAssert(false, "CheckDataStatus");
  EXPECT_EQ(sink.searches, 1);
  EXPECT_EQ(sink.lines,
            (std::vector<std::string>{": one\t", ": two\t", ": Assert Failed\tCheckDataStatus\t"}));
}

TEST(Trace, AFailedSendIsTracedAndNeverReachesTheCaller) {
  FakeSink sink;
  TraceChannel channel(sink);
  sink.failSending = true;
  EXPECT_NO_THROW(channel.trace({"lost"}));
  ASSERT_EQ(sink.lines.size(), 1u);
  EXPECT_EQ(sink.lines[0].rfind(": viewer gone\nin TamsaRX9400VTI.mTrace.SendTraceMessage at line ", 0), 0u)
      << sink.lines[0];
}

}  // namespace
}  // namespace rx9400
