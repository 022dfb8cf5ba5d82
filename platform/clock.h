#pragma once

/// Time.  Any thread may call both.
namespace kwo::platform {

/// Lets at least `milliseconds` pass.
void Sleep(int milliseconds);

/// Milliseconds since the machine started; wraps after 49 days.
unsigned GetTickCount();

}  // namespace kwo::platform
