#pragma once

#include "platform/LoginItem.h"

#include <filesystem>

namespace dorix {

/// Starts the program with the session by an entry in the desktop's autostart folder.
class AutostartLoginItem final : public LoginItem {
 public:
    /// `configHome` is the user's configuration folder, `executable` what the entry starts.
    AutostartLoginItem(const std::filesystem::path& configHome, std::filesystem::path executable);

    void registerApplication() override;
    void unregisterApplication() override;
    bool isRegistered() const override;

 private:
    const std::filesystem::path entry_;
    const std::filesystem::path executable_;
};

}  // namespace dorix
