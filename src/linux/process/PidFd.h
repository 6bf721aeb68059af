#pragma once

#include "linux/loop/FileDescriptor.h"

#include <sys/types.h>

namespace dorix {

/// A descriptor that stands for a process, also when its id has been given to another one since; it can be
/// read once the process has ended. None when there is no such process or the kernel has no such descriptors.
FileDescriptor openProcess(pid_t process);

}  // namespace dorix
