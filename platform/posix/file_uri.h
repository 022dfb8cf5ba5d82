#pragma once

#include <string>
#include <string_view>

namespace kwo::platform {

/// The path that a file: URI names on this machine, in the system's form; empty for one that names
/// none: of another kind or another machine, not absolute, with a broken percent sign, with a NUL,
/// or with a backslash in a name, which would become a separator.  Bytes are taken as they stand: a
/// file's name need not be text.  Any thread.
std::string PathOfFileUri(std::string_view uri);

/// The other way, for a path of the system's form.
std::string FileUriOf(std::string_view path);

}  // namespace kwo::platform
