#pragma once

#include "settings/SettingsRow.h"

#include <QAbstractListModel>
#include <QVariantMap>
#include <vector>

namespace dorix {

/// The rows of the settings, as the toolkit wants lists. A row that stays is changed in its place, so that it
/// keeps the keyboard. Main thread.
class SettingsModel final : public QAbstractListModel {
    Q_OBJECT

 public:
    enum Role { row = Qt::UserRole };

    int rowCount(const QModelIndex& parent) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    void show(const SettingsRows& rows);

 private:
    std::vector<QVariantMap> rows_;
};

}  // namespace dorix
