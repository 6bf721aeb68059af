#include "dictation/FrontDocument.h"

#include "base/async/Cancelled.h"
#include "base/text/Text.h"
#include "platform/Accessibility.h"
#include "routing/IntentRules.h"

#include <charconv>
#include <string>
#include <utility>

namespace dorix {

namespace {

constexpr std::size_t longestDocument = 400'000;

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

std::optional<std::filesystem::path> pathOfFrontDocument(Accessibility& accessibility,
                                                         const RunningApplication& app) {
    const auto window = accessibility.createApplication(app.processIdentifier)->element("AXFocusedWindow");
    if (!window) return std::nullopt;
    const auto url = (*window)->string("AXDocument");
    if (!url) return std::nullopt;
    return pathOfFileURL(*url);
}

bool mayBeRead(const std::filesystem::path& file, const DocumentReader& reader) {
    const std::string extension = text::lowercase(file.extension().string());
    return !extension.empty() && reader.reads(std::string_view(extension).substr(1)) &&
           !IntentRules::isSecretName(file.filename().string());
}

}  // namespace

std::optional<std::filesystem::path> pathOfFileURL(std::string_view url) {
    constexpr std::string_view scheme = "file:";
    if (text::lowercase(url.substr(0, scheme.size())) != scheme) return std::nullopt;
    url.remove_prefix(scheme.size());
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

Task<std::optional<FrontDocument>> readFrontDocument(Accessibility& accessibility, DocumentReader& reader,
                                                     std::optional<RunningApplication> app) {
    if (!app) co_return std::nullopt;
    const auto file = pathOfFrontDocument(accessibility, *app);
    if (!file || !mayBeRead(*file, reader)) co_return std::nullopt;
    try {
        if (auto text = co_await reader.text(*file, longestDocument))
            co_return FrontDocument{file->filename().string(), *std::move(text)};
    } catch (const Cancelled&) {
        throw;
    } catch (...) {  // NOLINT(bugprone-empty-catch): a document that cannot be read is none
    }
    co_return std::nullopt;
}

}  // namespace dorix
