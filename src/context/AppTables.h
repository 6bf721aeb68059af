#pragma once

#include "context/Glyph.h"
#include "context/Tone.h"

#include <span>
#include <string_view>

/// What the program knows of the applications and sites of the world. Built once, never changed; the order of
/// the rows is the order of trying. Any thread.
namespace dorix::apptables {

struct App {
    std::string_view bundleID;
    Tone tone;
    Ph icon;
};

/// A site is told by the title of its browser's window, which holds one of the lower-case keywords.
struct Site {
    std::span<const std::string_view> keywords;
    std::string_view name;
    Tone tone;
    Ph icon;
};

inline constexpr std::string_view aiChatSiteName = "Chat de IA";

/// Applications that are neither neutral nor drawn as a mere window, or that need saying.
std::span<const App> apps();
std::span<const std::string_view> browsers();
std::span<const Site> sites();
std::span<const std::string_view> aiChatApps();
/// Lower-case host names; the hosts below them count as well.
std::span<const std::string_view> aiChatHosts();
std::span<const std::string_view> editableRoles();
std::span<const std::string_view> neverEditableRoles();

}  // namespace dorix::apptables
