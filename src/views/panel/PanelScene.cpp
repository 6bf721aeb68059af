#include "views/panel/PanelScene.h"

#include "panel/PanelDetail.h"
#include "panel/PanelKeys.h"
#include "panel/PanelSections.h"
#include "panel/PanelTexts.h"
#include "views/DesktopWords.h"
#include "views/Glyphs.h"

#include <QKeySequence>
#include <QStringList>
#include <array>
#include <optional>
#include <utility>

namespace dorix {

namespace {

std::optional<PanelKey> panelKey(int key, Qt::KeyboardModifiers modifiers) {
    const QKeySequence pressed(QKeyCombination(modifiers, Qt::Key(key)));
    for (const auto& [combination, meaning] : std::to_array<std::pair<QKeySequence::StandardKey, PanelKey>>(
             {{QKeySequence::Copy, PanelKey::copy},
              {QKeySequence::Undo, PanelKey::undo},
              {QKeySequence::Find, PanelKey::find}})) {
        if (QKeySequence::keyBindings(combination).contains(pressed)) return meaning;
    }
    for (const auto& [single, meaning] :
         std::to_array<std::pair<Qt::Key, PanelKey>>({{Qt::Key_Up, PanelKey::up},
                                                      {Qt::Key_Down, PanelKey::down},
                                                      {Qt::Key_PageUp, PanelKey::pageUp},
                                                      {Qt::Key_PageDown, PanelKey::pageDown},
                                                      {Qt::Key_Home, PanelKey::home},
                                                      {Qt::Key_End, PanelKey::end},
                                                      {Qt::Key_Left, PanelKey::left},
                                                      {Qt::Key_Right, PanelKey::right},
                                                      {Qt::Key_Return, PanelKey::enter},
                                                      {Qt::Key_Enter, PanelKey::enter},
                                                      {Qt::Key_Delete, PanelKey::remove},
                                                      {Qt::Key_Menu, PanelKey::menu}})) {
        if (single == key) return meaning;
    }
    return std::nullopt;
}

PanelKeyPress::With with(Qt::KeyboardModifiers modifiers) {
    using With = PanelKeyPress::With;
    if ((modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) != 0) return With::command;
    return modifiers == Qt::NoModifier ? With::nothing : With::shift;
}

PanelArea panelArea(const QString& name) {
    if (name == "search") return PanelArea::search;
    if (name == "list") return PanelArea::list;
    if (name == "detail") return PanelArea::detail;
    return name == "sections" ? PanelArea::sections : PanelArea::elsewhere;
}

}  // namespace

PanelScene::PanelScene(AppState& state, SettingsStore& settings, HistoryPanel& panel, QQmlPropertyMap& view)
    : state_(state),
      settings_(settings),
      panel_(panel),
      view_(view),
      texts_(desktopWords),
      rows_(panel, panel.list, texts_) {
    view_.insert({{"rows", QVariant::fromValue(&rows_)},
                  {"blocks", QVariant::fromValue(&blocks_)},
                  {"cornerOffers", QVariant::fromValue(&cornerOffers_)},
                  {"detailOffers", QVariant::fromValue(&detailOffers_)},
                  {"detailEndOffers", QVariant::fromValue(&detailEndOffers_)},
                  {"shown", false},
                  {"byKeyboard", false},
                  {"query", QString::fromStdString(state_.query.get())},
                  {"heard", QString::fromStdString(panel_.composer.heard.get())},
                  {"undoMessage", ""}});
    watchState();
    watchComposer();
    watchPanel();
    retranslate();
}

void PanelScene::watchState() {
    subscriptions_.push_back(state_.section.subscribe([this](PanelSection) { showSection(); }));
    subscriptions_.push_back(state_.query.subscribe([this](const std::string& query) {
        view_.insert("query", QString::fromStdString(query));
        showEmptyText();
    }));
    subscriptions_.push_back(state_.searchesOlder.subscribe([this](bool) { showEmptyText(); }));
    subscriptions_.push_back(state_.keys.subscribe([this](const WorkingKeys&) { showWords(); }));
    subscriptions_.push_back(state_.abilities.subscribe([this](const Abilities&) { showWords(); }));
    subscriptions_.push_back(
        settings_.languageObserver().code.subscribe([this](const std::string&) { retranslate(); }));
}

void PanelScene::watchComposer() {
    const auto show = [this](const auto&) { showComposer(); };
    subscriptions_.push_back(state_.composerText.subscribe(show));
    subscriptions_.push_back(state_.composerRecording.subscribe(show));
    subscriptions_.push_back(state_.composerScreen.subscribe(show));
    subscriptions_.push_back(state_.panelOver.subscribe(show));
    subscriptions_.push_back(panel_.composer.heard.subscribe(
        [this](const std::string& heard) { view_.insert("heard", QString::fromStdString(heard)); }));
}

void PanelScene::watchPanel() {
    subscriptions_.push_back(panel_.list.observe([this](const PanelListChange&) {
        showSelectedRow();
        showPlace();
    }));
    subscriptions_.push_back(panel_.selection.observe([this](PanelSelection::Change) { showDetail(); }));
    subscriptions_.push_back(panel_.clipboard.copiedID.subscribe([this](const auto&) { showOffers(); }));
    subscriptions_.push_back(panel_.speakingID.subscribe([this](const auto&) { showOffers(); }));
    subscriptions_.push_back(panel_.deletions.undoable.subscribe([this](std::size_t) { showUndo(); }));
    subscriptions_.push_back(panel_.layout.narrow.subscribe([this](bool) { showLayout(); }));
    subscriptions_.push_back(panel_.layout.detailOpen.subscribe([this](bool) { showLayout(); }));
}

void PanelScene::retranslate() {
    texts_.retranslate();
    // The language may have changed before there was a scene, or while there was none.
    panel_.list.retranslate();
    showWords();
    showUndo();
    showSection();
    showDetail();
}

void PanelScene::showWords() {
    QVariantMap words;
    for (const auto& [name, text] : paneltext::words(state_.abilities.get())) words.insert(name, shown(text));
    view_.insert("words", words);
    const auto texts = paneltext::welcome(state_);
    QStringList steps;
    for (const auto& step : texts.steps) steps.append(shown(step));
    view_.insert("welcome", QVariantMap{{"title", shown(texts.title)},
                                        {"steps", steps},
                                        {"aside", shown(texts.aside)},
                                        {"sample", shown(texts.sample)}});
    showComposer();
    showEmptyText();
}

void PanelScene::showComposer() {
    const bool recording = state_.composerRecording.get();
    const bool attaches = state_.composerScreen.get();
    const auto owner = panel_.composer.windowOwner();
    view_.insert({{"composerText", QString::fromStdString(state_.composerText.get())},
                  {"recording", recording},
                  {"micLabel", shown(paneltext::micButton(recording))},
                  {"mayAttach", !owner.empty()},
                  {"attaches", attaches},
                  {"screenLabel", shown(paneltext::screenButton(attaches, owner))},
                  {"canSend", panel_.composer.maySend()},
                  {"cannotSend", shown(panel_.composer.refusal())}});
}

void PanelScene::showSection() {
    QVariantList sections;
    int current = 0;
    for (const PanelSection section : allPanelSections) {
        if (section == state_.section.get()) current = static_cast<int>(sections.size());
        sections.append(QVariantMap{{"label", shown(label(section))}, {"glyph", glyph(section)}});
    }
    if (view_.value("sections").toList() != sections) view_.insert("sections", sections);
    view_.insert("section", current);
    showEmptyText();
}

void PanelScene::showEmptyText() { view_.insert("emptyText", shown(paneltext::emptyList(state_))); }

void PanelScene::showSelectedRow() {
    const auto row = panel_.selection.row();
    view_.insert("selected", row ? static_cast<int>(*row) : -1);
}

void PanelScene::showDetail() {
    showSelectedRow();
    const HistoryItem* item = panel_.selection.item();
    showBlocks(item);
    view_.insert({{"hasDetail", item != nullptr},
                  {"detailId", item == nullptr ? "" : QString::fromStdString(item->id)},
                  {"detailTitle", item == nullptr ? "" : shown(label(item->kind))}});
    showPlace();
    showLayout();
    showOffers();
}

/// An answer that grows is not read again from its beginning.
void PanelScene::showBlocks(const HistoryItem* item) {
    if (item == nullptr) {
        detailID_.clear();
        return blocks_.show(0, {});
    }
    const auto first = detail_.show(texts_.above(*item), ItemTexts::markdown(*item), texts_.under(*item));
    const bool isSame = std::exchange(detailID_, item->id) == item->id;
    if (!isSame) blocks_.show(0, {});
    blocks_.show(isSame ? first : 0, detail_.from(isSame ? first : 0));
}

void PanelScene::showPlace() {
    const HistoryItem* item = panel_.selection.item();
    view_.insert("detailPlace", item == nullptr ? "" : QString::fromStdString(texts_.place(*item)));
}

void PanelScene::showLayout() {
    view_.insert({{"narrow", panel_.layout.narrow.get()},
                  {"detailShows", panel_.layout.showsDetail()},
                  {"listShows", panel_.layout.showsList()}});
}

void PanelScene::showOffers() {
    cornerOffers_.show(panelOffers(panel_, VerbPlace::corner));
    detailOffers_.show(panelOffers(panel_, VerbPlace::detail));
    detailEndOffers_.show(panelOffers(panel_, VerbPlace::detailEnd));
}

void PanelScene::showUndo() {
    const bool none = panel_.deletions.undoable.get() == 0;
    view_.insert("undoMessage", none ? QString() : shown(panel_.deletions.message()));
}

void PanelScene::perform(const QString& verb) { dorix::perform(panel_, verb.toStdString()); }

QString PanelScene::press(const QString& area, int key, int modifiers, bool isRepeat) {
    // A key of the number pad means what its like means elsewhere.
    const auto held = Qt::KeyboardModifiers::fromInt(static_cast<unsigned>(modifiers)) & ~Qt::KeypadModifier;
    const auto meaning = panelKey(key, held);
    if (!meaning) return "";
    const auto verb = verbOf(panelArea(area), {.key = *meaning, .with = with(held)});
    if (!canPerformByKey(panel_, verb)) return "";
    if (!isRepeat || repeats(verb)) dorix::perform(panel_, verb);
    return QString::fromUtf8(verb.data(), static_cast<qsizetype>(verb.size()));
}

void PanelScene::chooseSection(int index) {
    state_.section.set(allPanelSections.at(static_cast<std::size_t>(index)));
}

void PanelScene::search(const QString& text) { state_.query.set(text.toStdString()); }

void PanelScene::choose(int row) {
    if (row >= 0) panel_.selection.select(static_cast<std::size_t>(row));
}

void PanelScene::openLink(const QString& url) { panel_.openLink(url.toStdString()); }

void PanelScene::compose(const QString& text) { state_.composerText.set(text.toStdString()); }

void PanelScene::showRowMenu(int row, qreal x, qreal y) {
    choose(row);
    Q_EMIT menuWanted({x, y}, VerbPlace::itemMenu);
}

}  // namespace dorix
