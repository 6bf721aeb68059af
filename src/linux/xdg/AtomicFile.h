#pragma once

#include "linux/loop/FileDescriptor.h"
#include "platform/UserFiles.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

namespace dorix {

/// The contents of a regular file of up to `limit` bytes, file_too_large for a longer one. Something else is
/// not even opened, as a pipe would wait for a writer: is_a_directory, or not_supported. Blocks on the disk.
/// Any thread.
std::expected<std::string, std::error_code> readFile(const std::filesystem::path& file,
                                                     std::size_t limit = SIZE_MAX);

/// Makes `file` hold exactly `contents`, readable by the user only. After a crash or a power cut at any
/// moment the file is the old one or the new one, whole. Folders on the way are made. A symbolic link is
/// followed, not replaced. Blocks on the disk. Any thread; two at once on one file, from whatever process,
/// leave one of the two contents.
std::error_code replaceFile(const std::filesystem::path& file, std::string_view contents);

/// The same for contents that come piece by piece.
class AtomicFileReplacer final : public FileReplacer {
 public:
    std::error_code replace(const std::filesystem::path& file, const Source& source) override;
};

/// Keeps other processes that lock the same folder out for as long as the descriptor is held. On the folder,
/// not on a file in it: files there are replaced, and a lock file would be one more to explain. Blocks for a
/// second at most: then, and on a file system without locks, it is held by nobody, as a process that was
/// stopped while holding it must not stop all others. Any thread.
FileDescriptor lockFolder(const std::filesystem::path& folder);

}  // namespace dorix
