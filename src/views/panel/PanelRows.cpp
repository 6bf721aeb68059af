#include "views/panel/PanelRows.h"

#include "context/AppContext.h"
#include "localdata/Language.h"
#include "views/DesktopWords.h"
#include "views/Glyphs.h"

#include <QStringList>

namespace dorix {

namespace {
constexpr const char* timeOfDay = "jm";
}

PanelRows::PanelRows(PanelList& list) : list_(list) {
    time_.emplace(timeOfDay, appLocaleIdentifier());
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

void PanelRows::retranslate() {
    time_.emplace(timeOfDay, appLocaleIdentifier());
    if (!list_.rows().empty()) Q_EMIT dataChanged(index(0), index(rowCount({}) - 1));
}

int PanelRows::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(list_.rows().size());
}

QVariant PanelRows::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount({})) return {};
    const PanelRow& row = list_.rows()[static_cast<std::size_t>(index.row())];
    if (role == isDay) return row.kind == PanelRow::Kind::day;
    if (role == day) return QString::fromStdString(*row.day);
    if (row.kind == PanelRow::Kind::day) return role == spoken ? data(index, day) : QVariant(QString());
    return valueOf(list_.item(row), role);
}

QVariant PanelRows::valueOf(const HistoryItem& item, int role) const {
    switch (role) {
        case title:
            return QString::fromStdString(item.title).simplified();
        case subtitle:
            return subtitleOf(item);
        case icon:
            return glyph(storedRowIcon(item.app, item.bundleID));
        case spoken:
            return QString::fromStdString(label(item.kind)) + ": " +
                   QString::fromStdString(item.title).simplified() + ", " + subtitleOf(item);
        default:
            return {};
    }
}

QString PanelRows::subtitleOf(const HistoryItem& item) const {
    QStringList parts;
    // What most items are needs no saying.
    if (item.kind != HistoryKind::dictado) parts.append(QString::fromStdString(label(item.kind)));
    parts.append(QString::fromStdString(desktopWords(dorix::tr(item.app))).simplified());
    parts.append(QString::fromStdString(time_->format(item.createdAt)));
    parts.removeAll(QString());
    return parts.join(QStringLiteral(" · "));
}

QHash<int, QByteArray> PanelRows::roleNames() const {
    return {{isDay, "isDay"},       {day, "day"},   {title, "title"},
            {subtitle, "subtitle"}, {icon, "icon"}, {spoken, "spoken"}};
}

QString PanelRows::dayAt(int row) const { return data(index(row), day).toString(); }

bool PanelRows::isDayAt(int row) const { return data(index(row), isDay).toBool(); }

}  // namespace dorix
