#pragma once

#include <string>

namespace dorix::service {

/// Reads the secret, a line, from an inherited descriptor. Blocks for some seconds at most. Throws
/// std::runtime_error when none comes, or one that could be guessed.
std::string readLocalSecret(int descriptor);

}  // namespace dorix::service
