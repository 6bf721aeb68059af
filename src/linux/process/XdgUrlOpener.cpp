#include "linux/process/XdgUrlOpener.h"

#include "linux/process/Spawn.h"

#include <algorithm>
#include <string_view>

namespace dorix {

namespace {

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

/// Also keeps what is given from being taken for an option or a file.
bool hasScheme(std::string_view url) {
    const auto scheme = url.substr(0, url.find(':'));
    return scheme.size() < url.size() && !scheme.empty() && isLetter(scheme.front()) &&
           std::ranges::all_of(
               scheme,
               [](char c) {
                   return isLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
               });
}

}  // namespace

bool XdgUrlOpener::open(const std::string& url) {
    if (!hasScheme(url) || url.find('\0') != std::string::npos) return false;
    const auto child = spawn({"xdg-open", url}, SpawnAs::detached);
    if (child) children_.add(*child);
    return child.has_value();
}

}  // namespace dorix
