#include "linux/apps/CommandChords.h"

#include "base/text/Text.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

namespace dorix {

namespace {

struct Row {
    std::string_view name;
    CommandChord chord;
};

using enum CommandChord;

constexpr std::array rows{
    Row{"alacritty", controlShift},
    Row{"blackbox", controlShift},
    Row{"com.mitchellh.ghostty", controlShift},
    Row{"com.raggesilver.blackbox", controlShift},
    Row{"contour", controlShift},
    Row{"cool-retro-term", controlShift},
    Row{"deepin-terminal", controlShift},
    Row{"dev.warp.warp", controlShift},
    Row{"emacs", insert},
    Row{"eterm", insertPrimary},
    Row{"foot", controlShift},
    Row{"footclient", controlShift},
    Row{"ghostty", controlShift},
    Row{"gnome-terminal", controlShift},
    Row{"gnome-terminal-server", controlShift},
    Row{"guake", controlShift},
    Row{"gvim", none},
    Row{"hyper", controlShift},
    Row{"io.elementary.terminal", controlShift},
    Row{"kgx", controlShift},
    Row{"kitty", controlShift},
    Row{"konsole", controlShift},
    Row{"koi8rxterm", insertPrimary},
    Row{"lilyterm", controlShift},
    Row{"lxterminal", controlShift},
    Row{"mate-terminal", controlShift},
    Row{"mlterm", insertPrimary},
    Row{"neovide", none},
    Row{"nvim-qt", none},
    Row{"org.gnome.console", controlShift},
    Row{"org.gnome.ptyxis", controlShift},
    Row{"org.gnome.terminal", controlShift},
    Row{"org.kde.konsole", controlShift},
    Row{"org.kde.yakuake", controlShift},
    Row{"org.wezfurlong.wezterm", controlShift},
    Row{"ptyxis", controlShift},
    Row{"qterminal", controlShift},
    Row{"rio", controlShift},
    Row{"roxterm", controlShift},
    Row{"rxvt", insertPrimary},
    Row{"sakura", controlShift},
    Row{"st", controlShift},
    Row{"st-256color", controlShift},
    Row{"tabby", controlShift},
    Row{"terminator", controlShift},
    Row{"terminology", controlShift},
    Row{"termit", controlShift},
    Row{"tilda", controlShift},
    Row{"tilix", controlShift},
    Row{"urxvt", insertPrimary},
    Row{"uxterm", insertPrimary},
    Row{"warp", controlShift},
    Row{"wezterm", controlShift},
    Row{"wezterm-gui", controlShift},
    Row{"xfce4-terminal", controlShift},
    Row{"xterm", insertPrimary},
    Row{"yakuake", controlShift},
};

std::optional<CommandChord> find(std::string_view name) {
    const std::string lower = text::lowercase(name);
    const auto* row = std::ranges::find(rows, lower, &Row::name);
    if (row == rows.end()) return std::nullopt;
    return row->chord;
}

}  // namespace

CommandChord commandChordFor(std::string_view instance, std::string_view className) {
    if (const auto chord = find(className)) return *chord;
    return find(instance).value_or(control);
}

}  // namespace dorix
