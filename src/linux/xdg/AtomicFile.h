#pragma once

#include "linux/loop/FileDescriptor.h"
#include "platform/UserFiles.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace dorix {

/// The contents of a regular file; none when it cannot be read or is something else, which is not even
/// opened: a pipe would wait for a writer. Blocks on the disk. Any thread.
std::optional<std::string> readFile(const std::filesystem::path& file);

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
