#pragma once

#include "linux/jail/Confinement.h"

namespace dorix {

/// Leaves the calling thread, and what it starts, the files of the confinement and no others, and no way to
/// signal or connect to what is outside. False when the kernel has no landlock. Throws std::system_error. No
/// new privileges are to be had by then.
[[nodiscard]] bool restrictFiles(const Confinement& confinement);

}  // namespace dorix
