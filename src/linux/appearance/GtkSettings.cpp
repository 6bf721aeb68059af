#include "linux/appearance/GtkSettings.h"

#include "base/text/Text.h"

namespace dorix {

namespace {

bool isTrue(std::string_view value) { return value == "1" || value == "true" || value == "yes"; }

}  // namespace

bool isDarkGtkTheme(std::string_view name) {
    const auto folded = text::lowercase(name);
    return folded.ends_with("-dark") || folded.ends_with(":dark");
}

GtkLook parseGtkSettings(std::string_view text) {
    GtkLook look;
    bool inSection = false;
    for (const auto raw : text::split(text, '\n')) {
        const auto line = text::trim(raw);
        if (line.starts_with('[')) inSection = line == "[Settings]";
        const auto equals = line.find('=');
        if (!inSection || line.starts_with('#') || equals == std::string_view::npos) continue;
        const auto key = text::trim(line.substr(0, equals));
        const auto value = text::trimAny(text::trim(line.substr(equals + 1)), "\"");
        if (key == "gtk-application-prefer-dark-theme" && isTrue(value)) look.prefersDark = true;
        if (key == "gtk-theme-name" && isDarkGtkTheme(value)) look.prefersDark = true;
        if (key == "gtk-enable-animations" && !isTrue(value)) look.reducesMotion = true;
    }
    return look;
}

}  // namespace dorix
