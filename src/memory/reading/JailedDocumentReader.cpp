#include "memory/reading/JailedDocumentReader.h"

#include "base/Error.h"
#include "base/text/Text.h"

#include <string>
#include <utility>

namespace dorix {

namespace {

// Seconds: longer than the helper gives a document, as that is to say what was wrong with it.
constexpr double patience = 40;
constexpr double patienceWhenIdle = 130;

std::optional<DocumentKind> kindOf(const std::filesystem::path& file) {
    const auto extension = text::lowercase(file.extension().string());
    return extension.empty() ? std::nullopt : documentKind(std::string_view(extension).substr(1));
}

}  // namespace

bool JailedDocumentReader::reads(std::string_view extension) const {
    return helper_.isInstalled() && documentKind(extension).has_value();
}

Task<std::optional<std::string>> JailedDocumentReader::text(std::filesystem::path file, std::size_t limit) {
    const auto kind = kindOf(file);
    if (!kind) co_return std::nullopt;
    const bool isIdle = pace_ == Pace::idle;
    const ReadOrder order{.file = std::move(file), .kind = *kind, .limit = limit, .isIdle = isIdle};
    auto answer = co_await helper_.answer(encoded(order), isIdle ? patienceWhenIdle : patience);
    if (answer.outcome == ReadAnswer::Outcome::late) throw DocumentLate(std::move(answer.words));
    if (answer.outcome == ReadAnswer::Outcome::unreadable) throw MessageError(std::move(answer.words));
    if (answer.outcome == ReadAnswer::Outcome::noText) co_return std::nullopt;
    co_return std::move(answer.words);
}

}  // namespace dorix
