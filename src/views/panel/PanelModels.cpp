#include "views/panel/PanelModels.h"

#include "views/DesktopWords.h"
#include "views/Glyphs.h"

#include <algorithm>
#include <utility>

namespace dorix {

namespace {

QString qString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// Whether marks in the line mean something there.
bool isMarkedUp(std::string_view kind) {
    return kind == "paragraph" || kind == "heading" || kind == "item" || kind == "quote";
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

void PanelBlocks::show(std::vector<DetailBlock> blocks) {
    const auto [was, now] = std::ranges::mismatch(blocks_, blocks);
    const int same = static_cast<int>(now - blocks.begin());
    if (was != blocks_.end()) {
        beginRemoveRows({}, same, rowCount({}) - 1);
        blocks_.resize(static_cast<std::size_t>(same));
        endRemoveRows();
    }
    if (static_cast<std::size_t>(same) == blocks.size()) return;
    beginInsertRows({}, same, static_cast<int>(blocks.size()) - 1);
    blocks_ = std::move(blocks);
    endInsertRows();
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
            return qString(isMarkedUp(block.kind) ? richText(block.content.text)
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
            return offer.mark == VerbMark::remove || offer.mark == VerbMark::close;
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
