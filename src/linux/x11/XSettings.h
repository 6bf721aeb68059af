#pragma once

#include <map>
#include <string>
#include <string_view>

namespace dorix {

/// What a desktop's settings service tells the programs on its X display, by name ("Net/ThemeName"). Whole
/// numbers are written in decimal; colours are left out.
using XSettings = std::map<std::string, std::string, std::less<>>;

/// Reads the property that such a service keeps on its window (XSETTINGS, version 0.5). What cannot be
/// understood, and all that follows it, is left out.
XSettings parseXSettings(std::string_view bytes);

}  // namespace dorix
