#pragma once

#include "settings/SettingsSection.h"

#include <string>

namespace dorix {

/// Which version it is, and what it is made with.
class AboutSection final : public SettingsSection {
 public:
    std::string id() const override { return "about"; }
    std::string title() const override;
    SettingsRows rows() override;
};

}  // namespace dorix
