#pragma once

#include <string_view>

namespace dorix {

/// What GTK's settings file says of the look; the desktops without a settings service write it.
struct GtkLook {
    bool prefersDark = false;
    bool reducesMotion = false;

    bool operator==(const GtkLook&) const = default;
};

/// Whether a theme of that name is one of those that are dark.
bool isDarkGtkTheme(std::string_view name);

/// `text` is the content of a settings.ini. What it does not say is light, with motion.
GtkLook parseGtkSettings(std::string_view text);

}  // namespace dorix
