#pragma once

#include "panel/BlockFeed.h"
#include "panel/HistoryPanel.h"
#include "panel/ItemTexts.h"
#include "panel/PanelList.h"
#include "panel/PanelVerbs.h"

#include <QAbstractListModel>
#include <vector>

/// What the panel lists, as the toolkit wants lists. Main thread.
namespace dorix {

/// The days and the items under them.
class PanelRows final : public QAbstractListModel {
    Q_OBJECT

 public:
    enum Role { isDay = Qt::UserRole, day, title, subtitle, icon, spoken };

    /// All must outlive it.
    PanelRows(const HistoryPanel& panel, PanelList& list, const ItemTexts& texts);

    int rowCount(const QModelIndex& parent) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    /// The day that the row belongs to.
    Q_INVOKABLE QString dayAt(int row) const;
    /// Whether a day's own row stands there.
    Q_INVOKABLE bool isDayAt(int row) const;

 private:
    void change(const PanelListChange& change);

    const HistoryPanel& panel_;
    PanelList& list_;
    const ItemTexts& texts_;
    Subscription subscription_;
};

/// An answer and what stands around it, in pieces that are laid out one by one as they come into sight.
class PanelBlocks final : public QAbstractListModel {
    Q_OBJECT

 public:
    enum Role { kind = Qt::UserRole, level, marker, html, continues, sources };

    int rowCount(const QModelIndex& parent) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    /// From that one on the pieces are these. What is as it was before stays where it is on the screen, and
    /// what is another keeps its place.
    void show(std::size_t first, std::vector<DetailBlock> blocks);

 private:
    void change(std::size_t at, DetailBlock& block);

    std::vector<DetailBlock> blocks_;
};

/// The verbs that a place offers. The buttons stay the same ones, and keep the keyboard, while the same verbs
/// are offered.
class PanelOffers final : public QAbstractListModel {
    Q_OBJECT

 public:
    enum Role { verb = Qt::UserRole, words, mark, isMarkAlone, isMain };

    int rowCount(const QModelIndex& parent) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    void show(std::vector<PanelOffer> offers);

 private:
    std::vector<PanelOffer> offers_;
};

}  // namespace dorix
