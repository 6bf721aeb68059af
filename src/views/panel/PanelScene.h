#pragma once

#include "dictation/AppState.h"
#include "localdata/SettingsStore.h"
#include "panel/BlockFeed.h"
#include "panel/HistoryPanel.h"
#include "panel/ItemTexts.h"
#include "views/BlockScene.h"
#include "views/panel/PanelModels.h"

#include <QPointF>
#include <QQmlPropertyMap>
#include <string>
#include <vector>

namespace dorix {

/// What the panel's QML file shows, kept as the state has it, and what it asks for. Main thread.
class PanelScene final : public BlockScene {
    Q_OBJECT

 public:
    /// All must outlive it; `view` is what the QML file finds under that name.
    PanelScene(AppState& state, SettingsStore& settings, HistoryPanel& panel, QQmlPropertyMap& view);

    /// Does what the verb of that id stands for, if it can be done.
    Q_INVOKABLE void perform(const QString& verb);
    /// Does what a key press asks for where the keyboard is; the verb's id, "" when the key means nothing
    /// there.
    Q_INVOKABLE QString press(const QString& area, int key, int modifiers, bool isRepeat);

    Q_INVOKABLE void chooseSection(int index);
    Q_INVOKABLE void search(const QString& text);
    Q_INVOKABLE void choose(int row);
    Q_INVOKABLE void setRowsPerPage(int rows) { panel_.layout.rowsPerPage = rows; }
    void openLink(const QString& url) override;
    Q_INVOKABLE void compose(const QString& text);
    /// False when the user is to be told why not.
    Q_INVOKABLE bool send() { return panel_.composer.send(); }

    Q_INVOKABLE void showMenu(qreal x, qreal y) { Q_EMIT menuWanted({x, y}, VerbPlace::panelMenu); }
    Q_INVOKABLE void showRowMenu(int row, qreal x, qreal y);
    Q_INVOKABLE void moveWindow() { Q_EMIT moveWanted(); }
    Q_INVOKABLE void resizeFrom(int edges) { Q_EMIT resizeWanted(Qt::Edges(edges)); }

 Q_SIGNALS:
    /// A menu at a point of the window.
    void menuWanted(QPointF at, VerbPlace menu);
    void moveWanted();
    void resizeWanted(Qt::Edges edges);

 private:
    void watchState();
    void watchComposer();
    void watchPanel();
    void retranslate();
    void showWords();
    void showComposer();
    void showSection();
    void showEmptyText();
    void showSelectedRow();
    void showDetail();
    void showBlocks(const HistoryItem* item);
    void showPlace();
    void showLayout();
    void showOffers();
    void showUndo();

    AppState& state_;
    SettingsStore& settings_;
    HistoryPanel& panel_;
    QQmlPropertyMap& view_;
    ItemTexts texts_;
    PanelRows rows_;
    BlockFeed detail_;
    std::string detailID_;  // of the item that `blocks_` shows
    PanelBlocks blocks_;
    PanelOffers cornerOffers_;
    PanelOffers detailOffers_;
    PanelOffers detailEndOffers_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace dorix
