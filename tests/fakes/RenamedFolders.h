#pragma once

#include "platform/FolderPublisher.h"

#include <filesystem>
#include <memory>
#include <system_error>

namespace dorix {

/// Puts folders in place as a disk does that never fails.
class RenamedFolders final : public FolderPublisher {
 public:
    std::unique_ptr<Hold> hold(const std::filesystem::path&) override { return std::make_unique<Hold>(); }
    std::error_code publish(const std::filesystem::path& from, const std::filesystem::path& to) override {
        std::error_code error;
        std::filesystem::rename(from, to, error);
        return error;
    }
};

}  // namespace dorix
