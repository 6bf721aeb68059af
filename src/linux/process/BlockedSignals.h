#pragma once

#include "linux/loop/FileDescriptor.h"

#include <initializer_list>

namespace dorix {

/// The signals as a descriptor that is readable when one has come: they are then handled on a loop like any
/// other event. Blocks them for the calling thread and those that it starts, so call it before other threads
/// start.
FileDescriptor blockedSignals(std::initializer_list<int> numbers);

}  // namespace dorix
