#pragma once

#include <filesystem>
#include <memory>
#include <system_error>

namespace dorix {

/// Folders that are put in place whole, or not at all. Any thread; blocks on the disk.
class FolderPublisher {
 public:
    /// Keeps others out until it goes, or its process ends.
    class Hold {
     public:
        virtual ~Hold() = default;
    };

    virtual ~FolderPublisher() = default;

    /// For the one who writes in the folder, which is there; null while somebody else on this computer has
    /// it.
    virtual std::unique_ptr<Hold> hold(const std::filesystem::path& folder) = 0;

    /// Makes the folder `from`, with all that is in it, the folder `to` on the same disk. After a crash or a
    /// power cut at any moment `to` is the new one, complete, or what it was. A folder that was at `to` is at
    /// `from` afterwards.
    virtual std::error_code publish(const std::filesystem::path& from, const std::filesystem::path& to) = 0;
};

/// Where there is no place for folders.
class UnavailableFolderPublisher final : public FolderPublisher {
 public:
    std::unique_ptr<Hold> hold(const std::filesystem::path&) override { return nullptr; }
    std::error_code publish(const std::filesystem::path&, const std::filesystem::path&) override {
        return std::make_error_code(std::errc::not_supported);
    }
};

}  // namespace dorix
