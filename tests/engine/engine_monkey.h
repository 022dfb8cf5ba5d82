#pragma once

#include <string>

/// A listener who presses whatever comes to his mind: for the stress test and the soak.
namespace kwo::test {

/// Fills a folder with songs, good and bad, for the engine that has been made, and starts to play.
/// The same seed gives the same actions.
void BeginToPlay(unsigned seed, const std::string& folder);

/// One action on the list, the transport, the mixer or the DJ.  Main thread.
void ActAtRandom();

/// 0 to `limit` - 1, by chance.  Main thread.
int Below(int limit);

}  // namespace kwo::test
