#include "views/panel/PanelScene.h"

#include "localdata/Language.h"
#include "panel/PanelDetail.h"
#include "panel/PanelSections.h"
#include "panel/PanelTexts.h"
#include "views/DesktopWords.h"
#include "views/Glyphs.h"

#include <QStringList>

namespace dorix {

namespace {

QString shown(const std::string& text) { return QString::fromStdString(desktopWords(text)); }
QString word(const char* text) { return shown(dorix::tr(text)); }

}  // namespace

PanelScene::PanelScene(const Environment& environment) : env_(environment), rows_(environment.panel.list) {
    env_.view.insert({{"rows", QVariant::fromValue(&rows_)},
                      {"blocks", QVariant::fromValue(&blocks_)},
                      {"shown", false},
                      {"byKeyboard", false},
                      {"detailOpen", false},
                      {"query", QString::fromStdString(env_.state.query.get())},
                      {"composerText", QString::fromStdString(env_.state.composerText.get())},
                      {"recording", env_.state.composerRecording.get()},
                      {"heard", ""},
                      {"undoMessage", ""}});
    watchState();
    watchComposer();
    watchPanel();
    retranslate();
}

void PanelScene::watchState() {
    bag_.push_back(env_.state.section.subscribe([this](PanelSection) { showSection(); }));
    bag_.push_back(env_.state.query.subscribe([this](const std::string& query) {
        env_.view.insert("query", QString::fromStdString(query));
        showEmptyText();
    }));
    bag_.push_back(env_.settings.pushToTalkKey.subscribe([this](PushToTalkKey) { showWords(); }));
    bag_.push_back(
        env_.settings.languageObserver().code.subscribe([this](const std::string&) { retranslate(); }));
}

// What is being understood stands beside the text until it becomes part of it, or nobody wants it any more.
void PanelScene::watchComposer() {
    bag_.push_back(env_.state.composerText.subscribe([this](const std::string& text) {
        env_.view.insert({{"composerText", QString::fromStdString(text)}, {"heard", ""}});
    }));
    bag_.push_back(env_.state.composerRecording.subscribe([this](bool recording) {
        env_.view.insert("recording", recording);
        env_.view.insert("micLabel", shown(paneltext::micButton(recording)));
    }));
    bag_.push_back(env_.speech.partial.subscribe([this](const std::string& partial) {
        if (env_.state.composerRecording.get()) env_.view.insert("heard", QString::fromStdString(partial));
    }));
    const auto forget = [this](const auto&) { env_.view.insert("heard", ""); };
    bag_.push_back(env_.state.focusRequest.subscribe(forget));
    bag_.push_back(env_.state.panelOpen.subscribe(forget));
}

void PanelScene::watchPanel() {
    bag_.push_back(env_.panel.list.observe([this](const PanelListChange&) { showSelectedRow(); }));
    bag_.push_back(env_.panel.selection.observe([this](PanelSelection::Change) { showDetail(); }));
    bag_.push_back(env_.panel.clipboard.copiedID.subscribe([this](const auto&) { showCopied(); }));
    bag_.push_back(env_.panel.deletions.undoable.subscribe([this](std::size_t) { showUndo(); }));
}

void PanelScene::retranslate() {
    date_.emplace("yMMMdjm", appLocaleIdentifier());
    // The language may have changed before there was a scene, or while there was none.
    env_.panel.list.retranslate();
    showWords();
    showUndo();
    showSection();
    showDetail();
    rows_.retranslate();
}

void PanelScene::showWords() {
    const PushToTalkKey key = env_.settings.pushToTalkKey.get();
    env_.view.insert("words", QVariantMap{{"title", word("Historial")},
                                          {"sections", word("Secciones")},
                                          {"list", word("Historial")},
                                          {"search", shown(paneltext::searchPrompt())},
                                          {"clear", word("Borrar la búsqueda")},
                                          {"close", word("Cerrar (Esc)")},
                                          {"more", word("Más opciones")},
                                          {"back", word("Volver a la lista")},
                                          {"foot", shown(paneltext::listFoot())},
                                          {"composer", shown(paneltext::composerPrompt())},
                                          {"listening", word("Escuchando…")},
                                          {"send", word("Enviar")},
                                          {"cannotSend", shown(paneltext::cannotSend())},
                                          {"undo", word("Deshacer")}});
    const auto texts = paneltext::welcome(key);
    QStringList steps;
    for (const auto& step : texts.steps) steps.append(shown(step));
    env_.view.insert("welcome", QVariantMap{{"title", shown(texts.title)},
                                            {"steps", steps},
                                            {"aside", shown(texts.aside)},
                                            {"sample", shown(texts.sample)}});
    env_.view.insert({{"micLabel", shown(paneltext::micButton(env_.state.composerRecording.get()))},
                      {"canSend", static_cast<bool>(env_.panel.actions.submitComposer)}});
    showEmptyText();
}

void PanelScene::showSection() {
    QVariantList sections;
    int current = 0;
    for (const PanelSection section : allPanelSections) {
        if (section == env_.state.section.get()) current = static_cast<int>(sections.size());
        sections.append(QVariantMap{{"label", shown(label(section))}, {"glyph", glyph(section)}});
    }
    if (env_.view.value("sections").toList() != sections) env_.view.insert("sections", sections);
    env_.view.insert("section", current);
    showEmptyText();
}

void PanelScene::showEmptyText() {
    env_.view.insert("emptyText", shown(paneltext::emptyList(env_.state.section.get(), env_.state.query.get(),
                                                             env_.settings.pushToTalkKey.get())));
}

void PanelScene::showSelectedRow() {
    const auto row = env_.panel.selection.row();
    env_.view.insert("selected", row ? static_cast<int>(*row) : -1);
}

void PanelScene::showDetail() {
    showSelectedRow();
    const HistoryItem* item = env_.panel.selection.item();
    blocks_.show(item);
    if (item == nullptr) {
        env_.view.insert({{"hasDetail", false},
                          {"detailOpen", false},
                          {"detailId", ""},
                          {"detailTitle", ""},
                          {"detailPlace", ""},
                          {"insertLabel", ""},
                          {"removeLabel", ""}});
    } else {
        const auto detail = panelDetail(*item);
        env_.view.insert({{"hasDetail", true},
                          {"detailId", QString::fromStdString(item->id)},
                          {"detailTitle", shown(label(item->kind))},
                          {"detailPlace", placeAndTime(*item)},
                          {"insertLabel", shown(detail.insertButton)},
                          {"removeLabel", shown(detail.removeButton)}});
    }
    showCopied();
}

void PanelScene::showCopied() {
    const HistoryItem* item = env_.panel.selection.item();
    const bool copied = item != nullptr && env_.panel.clipboard.copiedID.get() == item->id;
    env_.view.insert({{"copied", copied}, {"copyLabel", shown(copyButton(copied))}});
}

void PanelScene::showUndo() {
    const bool none = env_.panel.deletions.undoable.get() == 0;
    env_.view.insert("undoMessage", none ? QString() : shown(env_.panel.deletions.message()));
}

QString PanelScene::placeAndTime(const HistoryItem& item) const {
    const QString time = QString::fromStdString(date_->format(item.createdAt));
    return item.app.empty() ? time : shown(dorix::tr(item.app)).simplified() + " · " + time;
}

void PanelScene::chooseSection(int index) {
    env_.state.section.set(allPanelSections.at(static_cast<std::size_t>(index)));
}

void PanelScene::search(const QString& text) { env_.state.query.set(text.toStdString()); }

void PanelScene::choose(int row) {
    if (row >= 0) env_.panel.selection.select(static_cast<std::size_t>(row));
}

void PanelScene::move(int items) { env_.panel.selection.move(items); }
void PanelScene::moveToFirst() { env_.panel.selection.moveToFirst(); }
void PanelScene::moveToLast() { env_.panel.selection.moveToLast(); }

void PanelScene::insertSelected() {
    const HistoryItem* item = env_.panel.selection.item();
    if (item != nullptr && env_.panel.actions.reinsert) env_.panel.actions.reinsert(*item);
}

void PanelScene::copySelected() {
    const HistoryItem* item = env_.panel.selection.item();
    if (item != nullptr) env_.panel.actions.copy(*item);
}

void PanelScene::removeSelected() {
    const HistoryItem* item = env_.panel.selection.item();
    if (item != nullptr) env_.panel.actions.remove(*item);
}

void PanelScene::undo() { env_.panel.deletions.undo(); }

void PanelScene::openLink(const QString& url) { env_.panel.openLink(url.toStdString()); }

void PanelScene::compose(const QString& text) { env_.state.composerText.set(text.toStdString()); }

// Without anybody to send it to the text stays where it is.
void PanelScene::sendComposer() {
    if (env_.panel.actions.submitComposer) env_.panel.actions.submitComposer();
}

void PanelScene::toggleMic() {
    if (env_.panel.actions.toggleMic) env_.panel.actions.toggleMic();
}

void PanelScene::close() {
    if (env_.panel.actions.close) env_.panel.actions.close();
}

void PanelScene::showRowMenu(int row, qreal x, qreal y) {
    choose(row);
    Q_EMIT rowMenuWanted({x, y});
}

}  // namespace dorix
