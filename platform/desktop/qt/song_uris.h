#pragma once

#include <QByteArrayList>
#include <string>
#include <vector>

namespace kwo::platform {

/// The paths that URIs name, 10,000 at most; those that name no file on this machine are left out.
std::vector<std::string> PathsOf(const QByteArrayList& uris);

/// What of them the program is given, as for `DroppedSongs`; within 0.3 s, also where a file system
/// does not answer: then all of them.  Main thread.
std::vector<std::string> SongsInTime(const std::vector<std::string>& paths);

}  // namespace kwo::platform
