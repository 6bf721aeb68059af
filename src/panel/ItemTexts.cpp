#include "panel/ItemTexts.h"

#include "base/text/Text.h"
#include "localdata/Language.h"
#include "panel/PanelDetail.h"

#include <utility>

namespace dorix {

namespace {

using Kind = AnswerBlock::Kind;

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

std::string_view kindName(Kind kind) {
    switch (kind) {
        case Kind::paragraph:
            return "paragraph";
        case Kind::heading:
            return "heading";
        case Kind::item:
            return "item";
        case Kind::quote:
            return "quote";
        case Kind::code:
            return "code";
        case Kind::rule:
            break;
    }
    return "rule";
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

std::vector<DetailBlock> ItemTexts::blocks(const HistoryItem& item) const {
    std::vector<DetailBlock> blocks;
    const auto add = [&](std::string_view kind, std::string text) {
        if (!text.empty()) blocks.push_back({kind, {.text = std::move(text)}});
    };
    const auto addLiteral = [&](std::string_view kind, std::string_view text) {
        for (auto& block : literalBlocks(text)) blocks.push_back({kind, std::move(block)});
    };
    const PanelDetail detail = panelDetail(item);
    if (!item.query.empty()) {
        add("label", detail.heading);
        addLiteral("query", item.query);
    }
    addLiteral("context", detail.context);
    if (!blocks.empty()) blocks.push_back({"divider", {}});
    if (item.kind == HistoryKind::dictado) {
        // What was typed, sign for sign.
        addLiteral("literal", item.answer);
    } else {
        for (auto& block : answerBlocks(item.answer)) {
            blocks.push_back({kindName(block.kind), std::move(block)});
        }
    }
    add("placeholder", detail.placeholder);
    add("label", detail.sourcesHeading);
    for (const auto& source : detail.sources) add("source", source);
    add("facts", words_(joined(detail.facts)));
    return blocks;
}

}  // namespace dorix
