#pragma once

#include "service/settings/Settings.h"

#include <span>
#include <string>
#include <string_view>

namespace dorix::service {

/// One setting as it is written down.
struct SettingRow {
    std::string_view name;
    std::string_view defaultValue;
    std::string_view meaning;
    /// Takes the value over; what is wrong with it otherwise, after the setting's name, or nothing.
    std::string (*read)(Settings& settings, const std::string& value);
};

/// In the order of --help.
std::span<const SettingRow> settingsTable();

}  // namespace dorix::service
