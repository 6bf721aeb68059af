#include "views/panel/PanelModels.h"

#include "views/DesktopWords.h"
#include "views/Glyphs.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace dorix {

namespace {

QString qString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QVariantList chips(const std::vector<SourceChip>& sources) {
    QVariantList list;
    for (const auto& source : sources) {
        list.append(QVariantMap{{"title", qString(source.title)},
                                {"address", qString(source.address)},
                                {"numbers", qString(source.numbers)}});
    }
    return list;
}

/// Whether marks in the line mean something there.
bool isMarkedUp(std::string_view kind) {
    return kind == "paragraph" || kind == "heading" || kind == "item" || kind == "quote";
}

QString htmlOf(const DetailBlock& block) {
    const std::string& text = block.content.text;
    if (isMarkedUp(block.kind)) return qString(richText(text));
    return qString(escaped(block.kind == "error" ? desktopWords(text) : text));
}

}  // namespace

// The list

PanelRows::PanelRows(const HistoryPanel& panel, PanelList& list, const ItemTexts& texts)
    : panel_(panel), list_(list), texts_(texts) {
    subscription_ = list_.observe([this](const PanelListChange& now) { change(now); });
}

// The list tells of what has happened already. Views look at a model's rows only at the end of a change,
// where both agree.
void PanelRows::change(const PanelListChange& now) {
    const int first = static_cast<int>(now.first);
    const int last = first + static_cast<int>(now.count) - 1;
    switch (now.kind) {
        case PanelListChange::Kind::inserted:
            beginInsertRows({}, first, last);
            endInsertRows();
            break;
        case PanelListChange::Kind::removed:
            beginRemoveRows({}, first, last);
            endRemoveRows();
            break;
        case PanelListChange::Kind::changed:
            Q_EMIT dataChanged(index(first), index(last));
            break;
        case PanelListChange::Kind::reset:
            beginResetModel();
            endResetModel();
            break;
    }
}

int PanelRows::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(list_.rows().size());
}

QVariant PanelRows::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount({})) return {};
    const PanelRow& row = list_.rows()[static_cast<std::size_t>(index.row())];
    if (role == isDay) return row.kind == PanelRow::Kind::day;
    if (role == day) return qString(*row.day);
    if (row.kind == PanelRow::Kind::day) return role == spoken ? data(index, day) : QVariant(QString());
    const HistoryItem& item = list_.item(row);
    switch (role) {
        case title:
            return qString(texts_.title(item));
        case subtitle:
            return qString(texts_.subtitle(item));
        case spoken:
            return qString(texts_.spoken(item));
        case icon:
            return glyph(panel_.icon(item));
        default:
            return {};
    }
}

QHash<int, QByteArray> PanelRows::roleNames() const {
    return {{isDay, "isDay"},       {day, "day"},   {title, "title"},
            {subtitle, "subtitle"}, {icon, "icon"}, {spoken, "spoken"}};
}

QString PanelRows::dayAt(int row) const { return data(index(row), day).toString(); }

bool PanelRows::isDayAt(int row) const { return data(index(row), isDay).toBool(); }

// The detail

void PanelBlocks::show(std::size_t first, std::vector<DetailBlock> blocks) {
    const std::size_t kept = std::min(blocks_.size(), first + blocks.size());
    for (std::size_t at = first; at < kept; ++at) change(at, blocks[at - first]);
    if (blocks_.size() > kept) {
        beginRemoveRows({}, static_cast<int>(kept), rowCount({}) - 1);
        blocks_.resize(kept);
        endRemoveRows();
    }
    if (first + blocks.size() == kept) return;
    const auto fresh = blocks.begin() + static_cast<std::ptrdiff_t>(kept - first);
    beginInsertRows({}, static_cast<int>(kept), static_cast<int>(first + blocks.size()) - 1);
    std::move(fresh, blocks.end(), std::back_inserter(blocks_));
    endInsertRows();
}

void PanelBlocks::change(std::size_t at, DetailBlock& block) {
    if (blocks_[at] == block) return;
    blocks_[at] = std::move(block);
    Q_EMIT dataChanged(index(static_cast<int>(at)), index(static_cast<int>(at)));
}

int PanelBlocks::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(blocks_.size());
}

QVariant PanelBlocks::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount({})) return {};
    const DetailBlock& block = blocks_[static_cast<std::size_t>(index.row())];
    switch (role) {
        case kind:
            return qString(block.kind);
        case level:
            return block.content.level;
        case marker:
            return qString(block.content.marker);
        case html:
            return htmlOf(block);
        case continues:
            return block.content.continues;
        case sources:
            return chips(block.sources);
        default:
            return {};
    }
}

QHash<int, QByteArray> PanelBlocks::roleNames() const {
    return {{kind, "kind"}, {level, "level"},         {marker, "marker"},
            {html, "html"}, {continues, "continues"}, {sources, "sources"}};
}

// Verbs

void PanelOffers::show(std::vector<PanelOffer> offers) {
    if (offers == offers_) return;
    const bool sameVerbs = std::ranges::equal(offers, offers_, {}, &PanelOffer::id, &PanelOffer::id);
    if (sameVerbs) {
        offers_ = std::move(offers);
        Q_EMIT dataChanged(index(0), index(rowCount({}) - 1));
        return;
    }
    beginResetModel();
    offers_ = std::move(offers);
    endResetModel();
}

int PanelOffers::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(offers_.size());
}

QVariant PanelOffers::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount({})) return {};
    const PanelOffer& offer = offers_[static_cast<std::size_t>(index.row())];
    switch (role) {
        case verb:
            return qString(offer.id);
        case words:
            return qString(desktopWords(offer.label));
        case mark:
            return glyph(offer.mark);
        case isMarkAlone:
            return offer.mark != VerbMark::none && offer.mark != VerbMark::done;
        case isMain:
            return offer.isMain;
        default:
            return {};
    }
}

QHash<int, QByteArray> PanelOffers::roleNames() const {
    return {
        {verb, "verb"}, {words, "words"}, {mark, "mark"}, {isMarkAlone, "isMarkAlone"}, {isMain, "isMain"}};
}

}  // namespace dorix
