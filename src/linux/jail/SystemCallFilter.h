#pragma once

#include "linux/jail/Confinement.h"

namespace dorix {

/// Leaves the process the system calls that the confinement's work needs, and no others: what only an
/// intruder would call ends the process, the rest fails. Throws std::system_error.
void restrictSystemCalls(const Confinement& confinement);

}  // namespace dorix
