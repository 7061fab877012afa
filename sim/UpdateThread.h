// The library's update thread, as the device library has one: MBRegisterApplication starts it, it wakes
// every few milliseconds and does its work under the library lock unless MBPauseUpdateThread holds it,
// and MBCloseApplication stops and joins it.
//
// Only the Windows build has the thread; natively these functions do nothing, so that the unit tests stay
// deterministic. Nothing stops the thread when the library is unloaded (no DllMain, nothing in a static
// destructor: joining there deadlocks under the loader lock). A host that frees the library while the
// thread runs therefore crashes, as with the device library: the plug-in's tests rely on that.
#pragma once

namespace rx9400::sim {

struct Library;

/// Starts the thread unless it runs. Call under the library lock.
void startUpdateThread(Library& lib);

/// Tells the running thread to end and hands its handle over to joinUpdateThread (nullptr when none
/// runs). Call under the library lock.
void* stopUpdateThread(Library& lib);

/// Waits for the thread stopUpdateThread handed over to end, and closes its handle. Call without the
/// library lock: the thread takes it to learn that it is to end.
void joinUpdateThread(void* thread);

}  // namespace rx9400::sim
