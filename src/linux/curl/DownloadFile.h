#pragma once

#include "linux/loop/FileDescriptor.h"

#include <cstdint>
#include <filesystem>
#include <string_view>

namespace dorix {

/// A file that is written from `start` on to its end; what it held from there is gone. Every call blocks on
/// the disk, and throws HttpError when that fails. One thread at a time.
class DownloadFile {
 public:
    /// Fails when there is less than `start` in the file, or nothing that can be written to.
    DownloadFile(const std::filesystem::path& file, std::uint64_t start);

    void write(std::string_view bytes);
    /// What was written outlasts a power cut from here on.
    void sync();

 private:
    FileDescriptor fd_;
};

}  // namespace dorix
