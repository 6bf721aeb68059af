#pragma once

#include "card/AnswerCardPresenter.h"
#include "localdata/SettingsStore.h"
#include "views/BlockScene.h"
#include "views/panel/PanelModels.h"

#include <QQmlPropertyMap>
#include <vector>

namespace dorix {

/// What the card's QML file shows, kept as the presenter has it, and what it asks for. Main thread.
class CardScene final : public BlockScene {
    Q_OBJECT

 public:
    /// All must outlive it; `view` is what the QML file finds under that name.
    CardScene(AnswerCardPresenter& card, SettingsStore& settings, QQmlPropertyMap& view);

    /// Does what the verb of that id stands for, if it can be done.
    Q_INVOKABLE void perform(const QString& verb);
    /// The same for a key; false when it means nothing on the card.
    Q_INVOKABLE bool press(int key, int modifiers);
    void openLink(const QString& url) override { card_.openLink(url.toStdString()); }
    void openSource(int index) override;

    Q_INVOKABLE void beginMove() { Q_EMIT moveBegun(); }
    Q_INVOKABLE void move() { Q_EMIT moved(); }
    Q_INVOKABLE void endMove() { Q_EMIT moveEnded(); }

 Q_SIGNALS:
    /// The user takes the card by its head, draws it along, and lets go.
    void moveBegun();
    void moved();
    void moveEnded();
    /// The pieces have changed.
    void piecesChanged();
    /// Something is to be said to whoever hears the screen.
    void spoken();

 private:
    void showHead();
    void showOffers();

    AnswerCardPresenter& card_;
    QQmlPropertyMap& view_;
    PanelBlocks blocks_;
    PanelOffers cornerOffers_;
    PanelOffers offers_;
    PanelOffers endOffers_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace dorix
