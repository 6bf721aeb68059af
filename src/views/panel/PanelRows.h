#pragma once

#include "base/text/Calendar.h"
#include "panel/PanelList.h"

#include <QAbstractListModel>
#include <optional>

namespace dorix {

/// The panel's list as the toolkit wants it. Main thread.
class PanelRows final : public QAbstractListModel {
    Q_OBJECT

 public:
    enum Role { isDay = Qt::UserRole, day, title, subtitle, icon, spoken };

    /// `list` must outlive it.
    explicit PanelRows(PanelList& list);

    int rowCount(const QModelIndex& parent) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    /// The day that the row belongs to.
    Q_INVOKABLE QString dayAt(int row) const;
    /// Whether a day's own row stands there.
    Q_INVOKABLE bool isDayAt(int row) const;

    /// After the language has changed.
    void retranslate();

 private:
    void change(const PanelListChange& change);
    QVariant valueOf(const HistoryItem& item, int role) const;
    QString subtitleOf(const HistoryItem& item) const;

    PanelList& list_;
    std::optional<DateFormat> time_;
    Subscription subscription_;
};

}  // namespace dorix
