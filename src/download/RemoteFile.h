#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace dorix {

/// A file on the web, as it has to be.
struct RemoteFile {
    std::string url;
    std::uint64_t bytes = 0;
    std::string sha256;

    bool operator==(const RemoteFile&) const = default;
};

/// The files of a folder, by their paths in it.
using RemoteFiles = std::map<std::string, RemoteFile>;

/// What addresses begin with, and what the user has them begin with instead.
using Mirrors = std::map<std::string, std::string>;

/// The address where the longest beginning of it that has a mirror is replaced; a mirror is a web address.
std::string mirrored(const std::string& url, const Mirrors& mirrors);

}  // namespace dorix
