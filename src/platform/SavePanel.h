#pragma once

#include "base/async/Task.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

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

}  // namespace dorix
