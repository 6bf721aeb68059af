#include "views/card/CardScene.h"

#include "localdata/Language.h"
#include "views/DesktopWords.h"
#include "views/Glyphs.h"

#include <QKeySequence>

namespace dorix {

CardScene::CardScene(AnswerCardPresenter& card, SettingsStore& settings, QQmlPropertyMap& view)
    : card_(card), view_(view) {
    view_.insert({{"blocks", QVariant::fromValue(&blocks_)},
                  {"cornerOffers", QVariant::fromValue(&cornerOffers_)},
                  {"offers", QVariant::fromValue(&offers_)},
                  {"endOffers", QVariant::fromValue(&endOffers_)},
                  {"shown", card_.isShown.get()},
                  {"byKeyboard", false},
                  {"spoken", ""}});
    subscriptions_.push_back(card_.onPieces([this](std::size_t first) {
        blocks_.show(first, card_.piecesFrom(first));
        Q_EMIT piecesChanged();
    }));
    subscriptions_.push_back(card_.onOffers([this] { showOffers(); }));
    subscriptions_.push_back(card_.head.subscribe([this](const CardHead&) { showHead(); }));
    subscriptions_.push_back(card_.isShown.subscribe([this](bool is) { view_.insert("shown", is); }));
    subscriptions_.push_back(card_.spoken.said.subscribe([this](const std::string& said) {
        view_.insert("spoken", shown(said));
        Q_EMIT spoken();
    }));
    subscriptions_.push_back(
        settings.languageObserver().code.subscribe([this](const std::string&) { card_.retranslate(); }));
    blocks_.show(0, card_.piecesFrom(0));
    showHead();
    showOffers();
}

void CardScene::showHead() {
    const CardHead& head = card_.head.get();
    view_.insert({{"cardId", QString::fromStdString(head.id)},
                  {"appName", shown(head.appName)},
                  {"kind", shown(head.kind)},
                  {"icon", glyph(head.icon)},
                  {"waiting", shown(head.waiting)},
                  {"running", head.isRunning}});
}

void CardScene::showOffers() {
    cornerOffers_.show(cardOffers(card_, VerbPlace::corner));
    offers_.show(cardOffers(card_, VerbPlace::detail));
    endOffers_.show(cardOffers(card_, VerbPlace::detailEnd));
}

void CardScene::perform(const QString& verb) { performOnCard(card_, verb.toStdString()); }

bool CardScene::press(int key, int modifiers) {
    const auto held = Qt::KeyboardModifiers::fromInt(static_cast<unsigned>(modifiers)) & ~Qt::KeypadModifier;
    const QKeySequence pressed(QKeyCombination(held, Qt::Key(key)));
    if (QKeySequence::keyBindings(QKeySequence::Copy).contains(pressed)) return performOnCard(card_, "copy");
    const bool isEnter = held == Qt::NoModifier && (key == Qt::Key_Return || key == Qt::Key_Enter);
    return isEnter && performOnCard(card_, enterVerb(card_));
}

void CardScene::openSource(int index) {
    if (index >= 0) card_.openSource(static_cast<std::size_t>(index));
}

}  // namespace dorix
