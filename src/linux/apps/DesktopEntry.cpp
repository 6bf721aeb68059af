#include "linux/apps/DesktopEntry.h"

#include "base/text/Text.h"

#include <algorithm>
#include <utility>

namespace dorix {

namespace {

std::string unescape(std::string_view value) {
    std::string result;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] != '\\' || i + 1 == value.size()) {
            result += value[i];
            continue;
        }
        switch (value[++i]) {
            case 's':
                result += ' ';
                break;
            case 'n':
                result += '\n';
                break;
            case 't':
                result += '\t';
                break;
            case 'r':
                result += '\r';
                break;
            default:
                result += value[i];
        }
    }
    return result;
}

/// The languages' places for "Name[language]"; the plain "Name" comes after all of them.
std::optional<std::size_t> rankOfNameKey(std::string_view key, const std::vector<std::string>& languages) {
    if (key == "Name") return languages.size();
    if (!key.starts_with("Name[") || !key.ends_with("]")) return std::nullopt;
    const auto language = key.substr(5, key.size() - 6);
    const auto found = std::ranges::find(languages, language);
    if (found == languages.end()) return std::nullopt;
    return static_cast<std::size_t>(found - languages.begin());
}

}  // namespace

std::optional<DesktopEntry> parseDesktopEntry(std::string_view contents,
                                              const std::vector<std::string>& languages) {
    DesktopEntry entry;
    std::size_t nameRank = languages.size() + 1;
    bool inEntry = false;
    bool isApplication = false;
    while (!contents.empty()) {
        const auto end = std::min(contents.find('\n'), contents.size());
        const auto line = text::trim(contents.substr(0, end));
        contents.remove_prefix(std::min(end + 1, contents.size()));
        if (line.starts_with('[')) inEntry = line == "[Desktop Entry]";
        const auto equals = line.find('=');
        if (!inEntry || line.starts_with('#') || equals == std::string_view::npos) continue;
        const auto key = text::trim(line.substr(0, equals));
        const auto value = text::trim(line.substr(equals + 1));
        if (key == "Type") isApplication = value == "Application";
        if (key == "StartupWMClass") entry.startupWmClass = unescape(value);
        if (key == "Exec") entry.exec = unescape(value);
        if (const auto rank = rankOfNameKey(key, languages); rank && *rank < nameRank) {
            nameRank = *rank;
            entry.name = unescape(value);
        }
    }
    if (!isApplication || entry.name.empty()) return std::nullopt;
    return entry;
}

std::vector<std::string> parseExec(std::string_view exec) {
    std::vector<std::string> arguments;
    std::optional<std::string> argument;  // the one being read
    bool quoted = false;
    for (std::size_t i = 0; i < exec.size(); ++i) {
        const char c = exec[i];
        if (c == '"') {
            quoted = !quoted;
            if (!argument) argument.emplace();
        } else if (c == ' ' && !quoted) {
            if (argument) arguments.push_back(*std::exchange(argument, std::nullopt));
        } else {
            const bool escape = c == '%' || (quoted && c == '\\');
            if (escape && ++i == exec.size()) return {};
            if (c == '%' && exec[i] != '%') continue;  // a place for a file or the like
            if (!argument) argument.emplace();
            *argument += exec[i];
        }
    }
    if (quoted) return {};
    if (argument) arguments.push_back(*argument);
    return arguments;
}

}  // namespace dorix
