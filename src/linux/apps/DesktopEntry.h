#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

/// What a desktop entry tells of an application.
struct DesktopEntry {
    /// The name of its file without ".desktop".
    std::string id;
    /// In the user's language where the entry has it.
    std::string name;
    /// The WM_CLASS of its windows, where the entry tells it.
    std::string startupWmClass;
    /// The command that starts it, as `parseExec` reads it.
    std::string exec;

    bool operator==(const DesktopEntry&) const = default;
};

/// Reads the contents of an entry's file; `id` is left empty. `languages` are the suffixes of localised
/// names, the most wanted first ("es_ES", "es"). None for anything but an application with a name.
///
/// Not by GIO, which takes three times as long and eight times the memory for all of them, and has no way
/// from a window's class to its entry.
std::optional<DesktopEntry> parseDesktopEntry(std::string_view contents,
                                              const std::vector<std::string>& languages);

/// The arguments of an Exec value, its quotes taken away and its places for files and the like left out.
/// Empty when it is not well formed.
std::vector<std::string> parseExec(std::string_view exec);

}  // namespace dorix
