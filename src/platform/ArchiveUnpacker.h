#pragma once

#include "base/Error.h"
#include "base/async/Task.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace dorix {

/// What to take out of an archive.
struct UnpackRequest {
    std::filesystem::path archive;
    /// Where the files go to; it is there, and empty.
    std::filesystem::path folder;
    /// The names of the files that are wanted. Each stands in a folder "lib" of the archive, once.
    std::vector<std::string> files;
    /// Of all of them together, in bytes.
    std::uint64_t largest = 0;
};

/// Takes files out of an archive that came from outside, without trusting it: nothing but regular files of
/// the wanted names, and nothing outside of the folder. Main executor; the work is done elsewhere.
class ArchiveUnpacker {
 public:
    virtual ~ArchiveUnpacker() = default;

    /// Throws an Error when not all of them could be had; some may be there then. Cancelling it ends the
    /// work.
    virtual Task<void> unpack(UnpackRequest request) = 0;
};

/// Where nobody can unpack.
class UnavailableArchiveUnpacker final : public ArchiveUnpacker {
 public:
    Task<void> unpack(UnpackRequest) override {
        throw MessageError("no unpacker");
        co_return;
    }
};

}  // namespace dorix
