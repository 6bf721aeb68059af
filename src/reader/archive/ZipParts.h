#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace dorix::reader {

/// The bytes of those files in a zip archive whose paths are wanted, by their paths. `fd` stands at its
/// beginning and can be sought in; `size` is the archive's. Throws MessageError when it is none, when it has
/// unreasonably many entries, and when what is wanted unpacks to more than a document has: a bomb.
std::map<std::string, std::string> zipParts(int fd, std::uint64_t size,
                                            const std::function<bool(std::string_view path)>& isWanted);

}  // namespace dorix::reader
