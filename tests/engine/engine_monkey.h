#pragma once

#include <string>

/// A listener who presses whatever comes to his mind: for the stress test and the soak.
namespace kwo::test {

/// Sets up the engine with its three voices and no thread, fills a folder with songs, good and bad,
/// and starts to play.  The same seed gives the same actions.
void StartEngine(unsigned seed, const std::string& folder);

/// Ends the DJ and the render thread, and frees everything.
void StopEngine();

/// One action on the list, the transport, the mixer or the DJ.  Main thread.
void ActAtRandom();

/// 0 to `limit` - 1, by chance.  Main thread.
int Below(int limit);

}  // namespace kwo::test
