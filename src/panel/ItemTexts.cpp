#include "panel/ItemTexts.h"

#include "base/text/Text.h"
#include "localdata/Language.h"
#include "panel/PanelDetail.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace dorix {

namespace {

constexpr std::string_view separator = " · ";

std::string onOneLine(std::string_view text) { return text::join(text::words(text), " "); }

std::string joined(const std::vector<std::string>& parts) {
    std::string line;
    for (const auto& part : parts) {
        if (part.empty()) continue;
        if (!line.empty()) line += separator;
        line += part;
    }
    return line;
}

void add(std::vector<DetailBlock>& pieces, std::string_view kind, std::string text) {
    if (!text.empty()) pieces.push_back({kind, {.text = std::move(text)}, {}});
}

void addLiteral(std::vector<DetailBlock>& pieces, std::string_view kind, std::string_view text) {
    std::ranges::move(literalPieces(kind, text), std::back_inserter(pieces));
}

}  // namespace

ItemTexts::ItemTexts(Words words) : words_(std::move(words)) { retranslate(); }

void ItemTexts::retranslate() {
    time_.emplace("jm", appLocaleIdentifier());
    date_.emplace("yMMMdjm", appLocaleIdentifier());
}

std::string ItemTexts::appName(const HistoryItem& item) const {
    return item.app.empty() ? "" : onOneLine(words_(tr(item.app)));
}

std::string ItemTexts::title(const HistoryItem& item) const { return onOneLine(item.title); }

std::string ItemTexts::subtitle(const HistoryItem& item) const {
    // What most items are needs no saying.
    const std::string kind = item.kind == HistoryKind::dictado ? "" : label(item.kind);
    return joined({kind, appName(item), time_->format(item.createdAt)});
}

std::string ItemTexts::spoken(const HistoryItem& item) const {
    return label(item.kind) + ": " + title(item) + ", " + subtitle(item);
}

std::string ItemTexts::place(const HistoryItem& item) const {
    return joined({appName(item), date_->format(item.createdAt)});
}

std::vector<DetailBlock> ItemTexts::above(const HistoryItem& item) const {
    std::vector<DetailBlock> pieces;
    const PanelDetail detail = panelDetail(item);
    if (!item.query.empty()) {
        add(pieces, "label", detail.heading);
        addLiteral(pieces, "query", item.query);
    }
    addLiteral(pieces, "context", detail.context);
    if (!pieces.empty()) pieces.push_back({"divider", {}, {}});
    if (item.kind == HistoryKind::dictado) addLiteral(pieces, "literal", item.answer);  // sign for sign
    return pieces;
}

std::string_view ItemTexts::markdown(const HistoryItem& item) {
    return item.kind == HistoryKind::dictado ? std::string_view() : item.answer;
}

std::vector<DetailBlock> ItemTexts::under(const HistoryItem& item) const {
    std::vector<DetailBlock> pieces;
    const PanelDetail detail = panelDetail(item);
    add(pieces, "placeholder", detail.placeholder);
    add(pieces, "label", detail.sourcesHeading);
    std::vector<SourceChip> chips;
    for (const auto& source : detail.sources)
        chips.push_back({.title = onOneLine(source), .address = "", .numbers = ""});
    if (!chips.empty()) pieces.push_back({"sources", {}, std::move(chips)});
    add(pieces, "facts", words_(joined(detail.facts)));
    return pieces;
}

}  // namespace dorix
