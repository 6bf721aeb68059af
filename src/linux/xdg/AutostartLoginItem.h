#pragma once

#include "platform/LoginItem.h"

#include <filesystem>
#include <vector>

namespace dorix {

/// Starts the program with the session by an entry in the desktop's autostart folder. The system may have one
/// of the same name for all users, which the user's takes the place of.
class AutostartLoginItem final : public LoginItem {
 public:
    /// `configHome` is the user's configuration folder, `configFolders` are the system's, the most important
    /// first, `executable` is what the entry starts.
    AutostartLoginItem(const std::filesystem::path& configHome,
                       const std::vector<std::filesystem::path>& configFolders,
                       std::filesystem::path executable);

    void registerApplication() override;
    void unregisterApplication() override;
    /// Whether a desktop would start what is there by now.
    bool isRegistered() const override;

 private:
    const std::filesystem::path entry_;
    std::vector<std::filesystem::path> systemEntries_;
    const std::filesystem::path executable_;
};

}  // namespace dorix
