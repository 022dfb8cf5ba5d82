#pragma once

#include <string>

namespace kwo::platform {

/// The program's folder among the user's settings, by the desktop's conventions, as the machine
/// writes paths; it is made if it is missing.  Empty for a user without a home.
std::string ConfigFolder();

}  // namespace kwo::platform
