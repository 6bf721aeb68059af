#pragma once

#include "base/async/Task.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace dorix {

/// Asks the user where a file is to go. Main executor; suspends until the user has answered.
class SavePanel {
 public:
    struct Request {
        std::string title;
        std::string fileName;         // what is suggested
        std::uint64_t ownWindow = 0;  // above which it stands; only the adapter knows what the number means
    };

    virtual ~SavePanel() = default;

    /// Nothing when the user thought better of it. Where nobody can be asked, a name in the user's documents
    /// that no file has yet.
    virtual Task<std::optional<std::filesystem::path>> run(Request request) = 0;
};

/// Where there is no place for files.
class UnavailableSavePanel final : public SavePanel {
 public:
    Task<std::optional<std::filesystem::path>> run(Request) override { co_return std::nullopt; }
};

/// Asks the user for a folder. Main executor; suspends until the user has answered.
class FolderPanel {
 public:
    struct Request {
        std::string title;
        std::string accept;           // what the button that chooses says
        std::uint64_t ownWindow = 0;  // as that of SavePanel
    };
    struct Answer {
        bool wasAsked = false;                        // false where nobody can ask the user
        std::optional<std::filesystem::path> folder;  // none when the user thought better of it

        bool operator==(const Answer&) const = default;
    };

    virtual ~FolderPanel() = default;

    virtual Task<Answer> run(Request request) = 0;
};

/// Where nobody can ask.
class UnavailableFolderPanel final : public FolderPanel {
 public:
    Task<Answer> run(Request) override { co_return Answer(); }
};

/// Writes files that are whole or not there. Any thread; blocks on the disk.
class FileReplacer {
 public:
    /// Takes the next piece of the contents; false when it could not be written, and no more is wanted.
    using Sink = std::function<bool(std::string_view piece)>;
    /// Hands all of the contents to the sink; false when there is nothing to be kept of them.
    using Source = std::function<bool(const Sink& sink)>;

    virtual ~FileReplacer() = default;

    /// Makes `file` hold what `source` gives, readable by the user only. After a crash or a power cut at any
    /// moment, and whenever this gives an error, it is the old one, or not there; a source that gives up is
    /// std::errc::operation_canceled. A symbolic link is followed, not replaced.
    virtual std::error_code replace(const std::filesystem::path& file, const Source& source) = 0;
};

/// Where there is no place for files.
class UnavailableFileReplacer final : public FileReplacer {
 public:
    std::error_code replace(const std::filesystem::path&, const Source&) override {
        return std::make_error_code(std::errc::not_supported);
    }
};

}  // namespace dorix
