#pragma once

#include "base/text/Calendar.h"
#include "dictation/AppState.h"
#include "localdata/SettingsStore.h"
#include "panel/HistoryPanel.h"
#include "speech/SpeechInput.h"
#include "views/panel/PanelBlocks.h"
#include "views/panel/PanelRows.h"

#include <QObject>
#include <QPointF>
#include <QQmlPropertyMap>
#include <optional>
#include <vector>

namespace dorix {

/// What the panel's QML file shows, kept as the state has it, and what it asks for. Main thread.
class PanelScene final : public QObject {
    Q_OBJECT

 public:
    /// All must outlive it; `view` is what the QML file finds under that name.
    struct Environment {
        AppState& state;
        SettingsStore& settings;
        SpeechInput& speech;
        HistoryPanel& panel;
        QQmlPropertyMap& view;
    };

    explicit PanelScene(const Environment& environment);

    Q_INVOKABLE void chooseSection(int index);
    Q_INVOKABLE void search(const QString& text);
    Q_INVOKABLE void choose(int row);
    Q_INVOKABLE void move(int items);
    Q_INVOKABLE void moveToFirst();
    Q_INVOKABLE void moveToLast();
    Q_INVOKABLE void insertSelected();
    Q_INVOKABLE void copySelected();
    Q_INVOKABLE void removeSelected();
    Q_INVOKABLE void undo();
    Q_INVOKABLE void openLink(const QString& url);
    Q_INVOKABLE void compose(const QString& text);
    Q_INVOKABLE void sendComposer();
    Q_INVOKABLE void toggleMic();
    Q_INVOKABLE void close();

    Q_INVOKABLE void showMenu(qreal x, qreal y) { Q_EMIT menuWanted({x, y}); }
    Q_INVOKABLE void showRowMenu(int row, qreal x, qreal y);
    Q_INVOKABLE void moveWindow() { Q_EMIT moveWanted(); }
    Q_INVOKABLE void resizeFrom(int edges) { Q_EMIT resizeWanted(Qt::Edges(edges)); }

 Q_SIGNALS:
    /// A menu at a point of the window: the panel's own, or of the selected item.
    void menuWanted(QPointF at);
    void rowMenuWanted(QPointF at);
    void moveWanted();
    void resizeWanted(Qt::Edges edges);

 private:
    void watchState();
    void watchComposer();
    void watchPanel();
    void retranslate();
    void showWords();
    void showSection();
    void showEmptyText();
    void showSelectedRow();
    void showDetail();
    void showCopied();
    void showUndo();
    QString placeAndTime(const HistoryItem& item) const;

    const Environment env_;
    PanelRows rows_;
    PanelBlocks blocks_;
    std::optional<DateFormat> date_;
    std::vector<Subscription> bag_;
};

}  // namespace dorix
