#include "linux/process/SoundSettings.h"

#include "base/text/Text.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

namespace {

struct Program {
    std::string_view desktop;  // by its name in XDG_CURRENT_DESKTOP; any where it is empty
    std::string_view name;
    std::string_view argument;
};

constexpr std::array programs{
    Program{"gnome", "gnome-control-center", "sound"},
    Program{"unity", "unity-control-center", "sound"},
    Program{"budgie", "budgie-control-center", "sound"},
    Program{"kde", "systemsettings", "kcm_pulseaudio"},
    Program{"kde", "systemsettings5", "kcm_pulseaudio"},
    Program{"cinnamon", "cinnamon-settings", "sound"},
    Program{"mate", "mate-volume-control", ""},
    Program{"pantheon", "io.elementary.settings", "sound"},
    Program{"lxqt", "pavucontrol-qt", ""},
    Program{"", "pavucontrol", "--tab=4"},  // the tab of the inputs
    Program{"", "pavucontrol-qt", "--tab=4"},
    Program{"", "pwvucontrol", ""},
};

std::string variable(const char* name) {
    const char* const value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe)
    return value == nullptr ? "" : value;
}

bool isInPath(std::string_view program) {
    const auto path = variable("PATH");
    const auto folders = text::split(path, ':');
    return std::ranges::any_of(folders, [&](std::string_view folder) {
        return !folder.empty() &&
               ::access((std::string(folder) + "/" + std::string(program)).c_str(), X_OK) == 0;
    });
}

bool isOf(const Program& program, const std::string& desktops) {
    return program.desktop.empty() || desktops.contains(program.desktop);
}

}  // namespace

bool SoundSettings::open() {
    const auto desktops = text::lowercase(variable("XDG_CURRENT_DESKTOP"));
    const auto* const program = std::ranges::find_if(
        programs, [&](const Program& one) { return isOf(one, desktops) && isInPath(one.name); });
    if (program == programs.end()) return false;
    std::vector<std::string> command{std::string(program->name)};
    if (!program->argument.empty()) command.emplace_back(program->argument);
    const auto child = spawn(command, SpawnAs::detached);
    if (child) children_.add(*child);
    return child.has_value();
}

}  // namespace dorix
