#include "base/text/Url.h"

#include "base/text/Text.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace dorix {

namespace {

bool isAlpha(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isHexDigit(char c) { return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

bool isScheme(std::string_view text) {
    return !text.empty() && isAlpha(text.front()) && std::ranges::all_of(text, [](char c) {
        return isAlpha(c) || isDigit(c) || c == '+' || c == '-' || c == '.';
    });
}

bool isPort(std::string_view text) { return std::ranges::all_of(text, isDigit); }

bool isNameCharacter(char c) {
    const bool otherAlphabet = static_cast<unsigned char>(c) >= 0x80;
    return isAlpha(c) || isDigit(c) || otherAlphabet || std::string_view("-._~").contains(c);
}

bool isHostName(std::string_view text) { return !text.empty() && std::ranges::all_of(text, isNameCharacter); }

bool isIPv6(std::string_view text) {
    return text.contains(':') &&
           std::ranges::all_of(text, [](char c) { return isHexDigit(c) || c == ':' || c == '.'; });
}

/// What stands between the two slashes and the path. Browsers read a backslash as a slash, so that a host
/// after one is none.
std::optional<std::string_view> authorityOf(std::string_view url) {
    if (!url.starts_with("//")) {
        const auto scheme = schemeOf(url);
        if (!scheme) return std::nullopt;
        url.remove_prefix(scheme->size() + 1);
    }
    if (!url.starts_with("//")) return std::nullopt;
    url.remove_prefix(2);
    return url.substr(0, url.find_first_of("/\\?#"));
}

std::optional<std::string_view> bracketedHost(std::string_view hostAndPort) {
    const auto end = hostAndPort.find(']');
    if (end == std::string_view::npos) return std::nullopt;
    const auto rest = hostAndPort.substr(end + 1);
    const bool isRestPort = rest.starts_with(':') && isPort(rest.substr(1));
    if (!rest.empty() && !isRestPort) return std::nullopt;
    const auto host = hostAndPort.substr(1, end - 1);
    if (!isIPv6(host)) return std::nullopt;
    return host;
}

std::optional<std::string_view> namedHost(std::string_view hostAndPort) {
    const auto colon = hostAndPort.find(':');
    if (colon != std::string_view::npos && !isPort(hostAndPort.substr(colon + 1))) return std::nullopt;
    const auto host = hostAndPort.substr(0, colon);
    if (!isHostName(host)) return std::nullopt;
    return host;
}

std::optional<std::string> percentDecoded(std::string_view text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            decoded += text[i];
            continue;
        }
        const std::string_view digits = text.substr(i + 1, 2);
        unsigned char byte = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
        if (error != std::errc() || digits.size() != 2 || end != digits.data() + 2 || byte == 0)
            return std::nullopt;
        decoded += static_cast<char>(byte);
        i += 2;
    }
    return decoded;
}

}  // namespace

std::optional<std::string_view> schemeOf(std::string_view url) {
    const auto colon = url.find(':');
    if (colon == std::string_view::npos || !isScheme(url.substr(0, colon))) return std::nullopt;
    return url.substr(0, colon);
}

bool isWebAddress(std::string_view url) { return url.starts_with("https://") || url.starts_with("http://"); }

std::optional<std::string> hostOf(std::string_view url) {
    auto authority = authorityOf(url);
    if (!authority) return std::nullopt;
    if (const auto at = authority->rfind('@'); at != std::string_view::npos) authority->remove_prefix(at + 1);
    const auto host = authority->starts_with('[') ? bracketedHost(*authority) : namedHost(*authority);
    if (!host) return std::nullopt;
    return text::lowercase(*host);
}

bool isThisComputer(std::string_view host) {
    // A name may begin with a number as well.
    const bool isNumber = host.find_first_not_of("0123456789.") == std::string_view::npos;
    return host == "localhost" || host.ends_with(".localhost") || host == "::1" ||
           (isNumber && host.starts_with("127."));
}

std::optional<std::filesystem::path> pathOfFileURL(std::string_view url) {
    const auto scheme = schemeOf(url);
    if (!scheme || text::lowercase(*scheme) != "file") return std::nullopt;
    url.remove_prefix(scheme->size() + 1);
    url = url.substr(0, url.find_first_of("?#"));
    if (url.starts_with("//")) {
        const auto slash = url.find('/', 2);
        if (slash == std::string_view::npos) return std::nullopt;
        const auto host = url.substr(2, slash - 2);
        if (!host.empty() && host != "localhost") return std::nullopt;
        url.remove_prefix(slash);
    }
    if (!url.starts_with('/')) return std::nullopt;
    return percentDecoded(url);
}

std::string fileURL(const std::filesystem::path& path) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string url = "file://";
    for (const char byte : path.native()) {
        const auto code = static_cast<unsigned char>(byte);
        if (isAlpha(byte) || isDigit(byte) || std::string_view("-._~/").contains(byte)) {
            url += byte;
        } else {
            url += '%';
            url += digits[code >> 4U];
            url += digits[code & 0xFU];
        }
    }
    return url;
}

}  // namespace dorix
