#pragma once

#include "localdata/HistoryItem.h"
#include "views/panel/AnswerBlocks.h"

#include <QAbstractListModel>
#include <QString>
#include <vector>

namespace dorix {

/// What is known of an item, from its heading down to its sources, in pieces that are laid out one by one as
/// they come into sight. Main thread.
class PanelBlocks final : public QAbstractListModel {
    Q_OBJECT

 public:
    enum Role { kind = Qt::UserRole, level, marker, html, continues };

    int rowCount(const QModelIndex& parent) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    /// Shows the item, or nothing. What is as it was before stays where it is on the screen.
    void show(const HistoryItem* item);

 private:
    struct Block {
        std::string_view kind;
        AnswerBlock content;

        bool operator==(const Block&) const = default;
    };

    static std::vector<Block> blocksOf(const HistoryItem& item);

    std::vector<Block> blocks_;
};

}  // namespace dorix
