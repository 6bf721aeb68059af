#pragma once

#include <string>

namespace dorix {

/// A random (version 4) UUID in upper case, as RFC 4122 writes it. Any thread.
std::string makeUuid();

}  // namespace dorix
