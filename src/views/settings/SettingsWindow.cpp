#include "views/settings/SettingsWindow.h"

#include "localdata/Language.h"
#include "views/DesktopWords.h"
#include "views/ScreenMap.h"
#include "views/Tokens.h"

#include <QAccessible>
#include <array>

namespace dorix {

namespace {

constexpr int reach = tokens::shadowReach;
constexpr QMargins shadow{reach, reach, reach, reach};
constexpr QSize wantedSize{tokens::settingsWidth, tokens::settingsHeight};

/// In the order of the pages.
constexpr std::array glyphs{
    u"\uf493",  // settings
    u"\uf3eb",  // pencil
    u"\uf36e",  // microphone-outline
    u"\uf004",  // account
    u"\uf33e",  // lock
    u"\uf2fd",  // information-outline
};

QString shown(const std::string& text) { return QString::fromStdString(desktopWords(text)); }

QRect visibleFrame(WindowSystem& windowSystem) {
    return screenmap::toQt(screenmap::clearOfBars(windowSystem).front().visibleFrame);
}

}  // namespace

SettingsWindow::SettingsWindow(const ViewContext& context, SettingsStore& settings, SettingsForm& form)
    : OverlayPanel(context, WindowSystem::Kind::panel, Focusable::yes), form_(form) {
    form.words = [](const std::string& text) { return desktopWords(text); };
    view().insert({{"shown", false},
                   {"byKeyboard", false},
                   {"level", 0.0},
                   {"query", QString()},
                   {"section", static_cast<int>(form.section.get())},
                   {"rows", QVariant::fromValue(&rows_)}});
    showWords();
    resize(wantedSize.grownBy(shadow));
    load("Settings", {{"verbs", QVariant::fromValue(this)}});
    onCancel = [this] { stepBackOrClose(); };
    watch(settings);
}

void SettingsWindow::watch(SettingsStore& settings) {
    subscriptions_.push_back(form_.observe([this] { showRows(); }));
    subscriptions_.push_back(form_.section.subscribe([this](std::size_t index) {
        view().insert("section", static_cast<int>(index));
        QMetaObject::invokeMethod(rootObject(), "scrollToStart");
    }));
    subscriptions_.push_back(form_.query.subscribe(
        [this](const std::string& query) { view().insert("query", QString::fromStdString(query)); }));
    subscriptions_.push_back(
        form_.level().subscribe([this](float level) { view().insert("level", static_cast<double>(level)); }));
    subscriptions_.push_back(
        settings.languageObserver().code.subscribe([this](const std::string&) { showWords(); }));
}

void SettingsWindow::showWords() {
    QVariantMap words;
    const auto put = [&words](const char* key, const char* text) {
        words.insert(key, shown(dorix::tr(text)));
    };
    put("title", "Ajustes de DORIX");
    put("close", "Cerrar");
    put("sections", "Secciones");
    put("search", "Buscar en los ajustes…");
    put("clear", "Borrar la búsqueda");
    put("level", "Nivel del micrófono");
    view().insert("words", words);
    QVariantList sections;
    const auto titles = form_.titles();
    for (std::size_t i = 0; i < titles.size(); ++i) {
        sections.append(
            QVariantMap{{"label", shown(titles[i])}, {"glyph", QString::fromUtf16(glyphs.at(i))}});
    }
    view().insert("sections", sections);
    showRows();
}

void SettingsWindow::showRows() {
    rows_.show(form_.rows());
    const auto& query = form_.query.get();
    const bool isNothing = !query.empty() && form_.rows().empty();
    view().insert("nothing",
                  isNothing ? shown(formatText(dorix::tr("Nada coincide con «%@»."), {query})) : QString());
}

void SettingsWindow::chooseSection(int index) {
    if (index >= 0) form_.showSection(static_cast<std::size_t>(index));
}

void SettingsWindow::stepBackOrClose() {
    if (!form_.stepBack()) onClosed();
}

void SettingsWindow::tellFocus(QQuickItem* item) {
    if (!QAccessible::isActive() || item == nullptr) return;
    QAccessibleEvent event(item, QAccessible::Focus);
    QAccessible::updateAccessibility(&event);
}

void SettingsWindow::open() {
    fit();
    form_.open();
    showRows();
    const int pixels = qRound(reach * devicePixelRatio());
    context().windowSystem.setFrameExtents(winId(), {pixels, pixels, pixels, pixels});
    view().insert("shown", true);
    orderFrontRegardless();
    context().windowSystem.bringToFront(winId());
    QMetaObject::invokeMethod(rootObject(), "focusFirst");
}

void SettingsWindow::fit() {
    const QRect screen = visibleFrame(context().windowSystem);
    const QSize card = wantedSize.boundedTo(screen.size());
    resize(card.grownBy(shadow));
    if (!isVisible()) setPosition(screen.center() - QPoint(width(), height()) / 2);
    reshape();
}

void SettingsWindow::reshape() {
    const QRectF shape = QRectF(QPointF(0, 0), size()).marginsRemoved(shadow);
    cutTo(shape, tokens::cardRadius);
    takePointerIn(shape, tokens::cardRadius);
}

bool SettingsWindow::event(QEvent* event) {
    noteKeyboard(*event);
    return OverlayPanel::event(event);
}

}  // namespace dorix
