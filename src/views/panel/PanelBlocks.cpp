#include "views/panel/PanelBlocks.h"

#include "panel/PanelDetail.h"
#include "views/DesktopWords.h"

#include <algorithm>
#include <utility>

namespace dorix {

namespace {

std::string_view kindName(AnswerBlock::Kind kind) {
    switch (kind) {
        case AnswerBlock::Kind::paragraph:
            return "paragraph";
        case AnswerBlock::Kind::heading:
            return "heading";
        case AnswerBlock::Kind::item:
            return "item";
        case AnswerBlock::Kind::quote:
            return "quote";
        case AnswerBlock::Kind::code:
            return "code";
        case AnswerBlock::Kind::rule:
            break;
    }
    return "rule";
}

/// Whether marks in the line mean something there.
bool isMarkedUp(std::string_view kind) {
    return kind == "paragraph" || kind == "heading" || kind == "item" || kind == "quote";
}

std::string joined(const std::vector<std::string>& facts) {
    std::string line;
    for (const auto& fact : facts) line += (line.empty() ? "" : " · ") + fact;
    return desktopWords(line);
}

}  // namespace

std::vector<PanelBlocks::Block> PanelBlocks::blocksOf(const HistoryItem& item) {
    std::vector<Block> blocks;
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
    add("facts", joined(detail.facts));
    return blocks;
}

void PanelBlocks::show(const HistoryItem* item) {
    auto next = item == nullptr ? std::vector<Block>() : blocksOf(*item);
    const auto [was, now] = std::ranges::mismatch(blocks_, next);
    const int same = static_cast<int>(now - next.begin());
    if (was != blocks_.end()) {
        beginRemoveRows({}, same, rowCount({}) - 1);
        blocks_.resize(static_cast<std::size_t>(same));
        endRemoveRows();
    }
    if (static_cast<std::size_t>(same) == next.size()) return;
    beginInsertRows({}, same, static_cast<int>(next.size()) - 1);
    blocks_ = std::move(next);
    endInsertRows();
}

int PanelBlocks::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(blocks_.size());
}

QVariant PanelBlocks::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount({})) return {};
    const Block& block = blocks_[static_cast<std::size_t>(index.row())];
    switch (role) {
        case kind:
            return QString::fromUtf8(block.kind.data(), static_cast<qsizetype>(block.kind.size()));
        case level:
            return block.content.level;
        case marker:
            return QString::fromStdString(block.content.marker);
        case html:
            return QString::fromStdString(isMarkedUp(block.kind) ? richText(block.content.text)
                                                                 : escaped(block.content.text));
        case continues:
            return block.content.continues;
        default:
            return {};
    }
}

QHash<int, QByteArray> PanelBlocks::roleNames() const {
    return {{kind, "kind"}, {level, "level"}, {marker, "marker"}, {html, "html"}, {continues, "continues"}};
}

}  // namespace dorix
