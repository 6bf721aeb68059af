#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

/// Addresses as other programs write them (RFC 3986). Pure functions, any thread; they take any bytes.
namespace dorix {

/// What stands before the first colon, if it is a scheme.
std::optional<std::string_view> schemeOf(std::string_view url);

/// Whether it is a page's, and not of a scheme that does something on this computer.
bool isWebAddress(std::string_view url);

/// The host in lower case, without user, port or the brackets of an IPv6 address. None when the address has
/// no host or cannot be one.
std::optional<std::string> hostOf(std::string_view url);

/// Whether a host, as hostOf gives it, is this computer by its very name: what goes there stays here.
bool isThisComputer(std::string_view host);

/// The path that a "file:" address names (RFC 8089); nothing for any other address, or one of another
/// computer.
std::optional<std::filesystem::path> pathOfFileURL(std::string_view url);

/// The "file:" address of an absolute path.
std::string fileURL(const std::filesystem::path& path);

}  // namespace dorix
