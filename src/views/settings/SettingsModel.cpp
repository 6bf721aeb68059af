#include "views/settings/SettingsModel.h"

#include "views/DesktopWords.h"

#include <QString>
#include <algorithm>
#include <utility>

namespace dorix {

namespace {

QString kindName(SettingsRow::Kind kind) {
    switch (kind) {
        case SettingsRow::Kind::heading:
            return QStringLiteral("heading");
        case SettingsRow::Kind::toggle:
            return QStringLiteral("toggle");
        case SettingsRow::Kind::choice:
            return QStringLiteral("choice");
        case SettingsRow::Kind::text:
            return QStringLiteral("text");
        case SettingsRow::Kind::item:
            break;
    }
    return QStringLiteral("item");
}

QString toneName(SettingsRow::Tone tone) {
    switch (tone) {
        case SettingsRow::Tone::plain:
            return QStringLiteral("plain");
        case SettingsRow::Tone::good:
            return QStringLiteral("good");
        case SettingsRow::Tone::warning:
            return QStringLiteral("warning");
        case SettingsRow::Tone::wrong:
            break;
    }
    return QStringLiteral("wrong");
}

QVariantList optionsOf(const SettingsRow& row) {
    QVariantList options;
    for (const auto& option : row.options) {
        options.append(QVariantMap{{"id", QString::fromStdString(option.id)},
                                   {"label", shown(option.label)},
                                   {"note", shown(option.note)}});
    }
    return options;
}

QVariantList buttonsOf(const SettingsRow& row) {
    QVariantList buttons;
    for (const auto& button : row.buttons) {
        buttons.append(QVariantMap{{"id", QString::fromStdString(button.id)},
                                   {"label", shown(button.label)},
                                   {"chief", button.isChief},
                                   {"available", button.isAvailable}});
    }
    return buttons;
}

/// What the user has written is theirs, word for word.
QVariantMap mapOf(const SettingsRow& row, bool isFirst) {
    return {{"id", QString::fromStdString(row.id)},
            {"kind", kindName(row.kind)},
            {"first", isFirst},
            {"label", shown(row.label)},
            {"description", shown(row.description)},
            {"status", shown(row.status)},
            {"tone", toneName(row.tone)},
            {"on", row.isOn},
            {"options", optionsOf(row)},
            {"chosen", QString::fromStdString(row.chosen)},
            {"text", QString::fromStdString(row.text)},
            {"example", shown(row.example)},
            {"secret", row.isSecret},
            {"lines", row.lines},
            {"buttons", buttonsOf(row)},
            {"progress", row.progress.value_or(-1)},
            {"showsLevel", row.showsLevel},
            {"quote", QString::fromStdString(row.quote)},
            {"lamp", shown(row.lamp)}};
}

bool isSame(const QVariantMap& one, const QVariantMap& other) {
    return one["id"] == other["id"] && one["kind"] == other["kind"];
}

}  // namespace

int SettingsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QVariant SettingsModel::data(const QModelIndex& index, int role) const {
    if (role != row || !checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    return rows_.at(static_cast<std::size_t>(index.row()));
}

QHash<int, QByteArray> SettingsModel::roleNames() const { return {{row, "row"}}; }

void SettingsModel::show(const SettingsRows& rows) {
    std::vector<QVariantMap> wanted;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        wanted.push_back(mapOf(rows[i], i == 0 || rows[i - 1].kind == SettingsRow::Kind::heading));
    }
    const auto first =
        static_cast<std::size_t>(std::ranges::mismatch(rows_, wanted, isSame).in1 - rows_.begin());
    std::size_t tail = 0;
    const auto most = std::min(rows_.size(), wanted.size()) - first;
    while (tail < most && isSame(rows_[rows_.size() - 1 - tail], wanted[wanted.size() - 1 - tail])) ++tail;

    const auto at = static_cast<int>(first);
    const auto leaving = static_cast<int>(rows_.size() - first - tail);
    const auto coming = static_cast<int>(wanted.size() - first - tail);
    if (leaving > 0) {
        beginRemoveRows({}, at, at + leaving - 1);
        rows_.erase(rows_.begin() + at, rows_.begin() + at + leaving);
        endRemoveRows();
    }
    if (coming > 0) {
        beginInsertRows({}, at, at + coming - 1);
        rows_.insert(rows_.begin() + at, wanted.begin() + at, wanted.begin() + at + coming);
        endInsertRows();
    }
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        if (rows_[i] == wanted[i]) continue;
        rows_[i] = wanted[i];
        const auto changed = index(static_cast<int>(i));
        Q_EMIT dataChanged(changed, changed);
    }
}

}  // namespace dorix
