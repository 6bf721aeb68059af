#pragma once

#include "platform/FolderPublisher.h"

namespace dorix {

/// Folders on a Linux file system: what is in them reaches the disk before their new name does, and a folder
/// that is replaced changes places with its successor in one step.
class DurableFolders final : public FolderPublisher {
 public:
    std::unique_ptr<Hold> hold(const std::filesystem::path& folder) override;
    std::error_code publish(const std::filesystem::path& from, const std::filesystem::path& to) override;
};

}  // namespace dorix
