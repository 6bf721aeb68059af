#include "dictation/FrontDocument.h"

#include "base/text/Text.h"
#include "base/text/Url.h"
#include "platform/Accessibility.h"
#include "routing/IntentRules.h"

#include <string>
#include <utility>

namespace dorix {

namespace {

constexpr std::size_t longestDocument = 400'000;

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
