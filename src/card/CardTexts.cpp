#include "card/CardTexts.h"

#include "base/text/Text.h"
#include "base/text/Url.h"
#include "localdata/Language.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <utility>

namespace dorix {

namespace {

constexpr std::size_t longestExcerpt = 300;  // characters of the selection

std::string excerpt(const std::string& selection) {
    const auto whole = text::trim(selection);
    const std::string beginning(text::trim(text::prefix(whole, longestExcerpt)));
    return beginning.size() < whole.size() ? beginning + "…" : beginning;
}

std::string listed(const std::vector<std::size_t>& numbers) {
    std::string list;
    for (const auto number : numbers) list += (list.empty() ? "" : ", ") + std::to_string(number);
    return list;
}

std::vector<SourceChip> chipsOf(const std::vector<AnswerSource>& sources) {
    std::vector<SourceChip> chips;
    for (const auto& source : sources) {
        chips.push_back({.title = text::join(text::words(source.title), " "),
                         .address = addressOf(source),
                         .numbers = listed(source.numbers)});
    }
    return chips;
}

}  // namespace

std::string waitingText(const AnswerCard& card) {
    if (!card.answer.empty() || card.error) return "";
    if (card.waiting) return *card.waiting;
    return tr(card.hadScreen ? "Mirando la pantalla…" : "Pensando…");
}

std::vector<DetailBlock> piecesAbove(const AnswerCard& card) {
    auto pieces = literalPieces("query", card.question);
    if (card.selection) {
        std::ranges::move(literalPieces("context", excerpt(*card.selection)), std::back_inserter(pieces));
    }
    const bool hasMore = !card.answer.empty() || card.error || !card.sources.empty();
    if (!pieces.empty() && hasMore) pieces.push_back({"divider", {}, {}});
    return pieces;
}

std::vector<DetailBlock> piecesUnder(const AnswerCard& card) {
    std::vector<DetailBlock> pieces;
    if (card.error) pieces.push_back({"error", {.text = *card.error}, {}});
    if (card.sources.empty()) return pieces;
    pieces.push_back({"label", {.text = tr("Fuentes")}, {}});
    pieces.push_back({"sources", {}, chipsOf(card.sources)});
    return pieces;
}

std::string addressOf(const AnswerSource& source) {
    if (!source.path) return "";
    if (isWebAddress(*source.path)) return *source.path;
    const std::filesystem::path path(*source.path);
    return path.is_absolute() ? fileURL(path) : "";
}

}  // namespace dorix
