#pragma once

#include "platform/FileTree.h"

#include <filesystem>
#include <utility>

namespace dorix {

/// By the folders' own entries, and the table of mounts.
class LinuxFileTree final : public FileTree {
 public:
    /// `mounts` is a table of mounts as proc(5) has it.
    explicit LinuxFileTree(std::filesystem::path mounts = "/proc/self/mountinfo")
        : mounts_(std::move(mounts)) {}

    double list(const std::string& folder, const Visitor& visit) override;
    double changed(const std::string& folder) override;
    std::vector<std::string> networkMounts() override;

 private:
    const std::filesystem::path mounts_;
};

}  // namespace dorix
