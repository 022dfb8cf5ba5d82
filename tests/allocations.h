#pragma once

namespace kwo::test {

/// How often the program has asked for memory so far, on all threads.
long Allocations();

}  // namespace kwo::test
