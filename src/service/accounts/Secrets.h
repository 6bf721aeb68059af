#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// What must not be guessed. Any thread.
namespace dorix::service {

/// Bytes of the system's cryptographic source, in hex. Throws std::runtime_error where it has none.
std::string randomHex(std::size_t bytes);

/// Six decimal digits, each code as likely as any other.
std::string randomCode();

/// SHA-256, in hex.
std::string hashOf(std::string_view secret);

/// Takes as long whatever is equal; only the lengths may show.
bool isSameSecret(std::string_view one, std::string_view other);

}  // namespace dorix::service
