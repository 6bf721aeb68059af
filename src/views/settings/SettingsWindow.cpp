#include "views/settings/SettingsWindow.h"

#include "localdata/Language.h"
#include "views/DesktopWords.h"
#include "views/Tokens.h"

#include <QAccessible>
#include <array>

namespace dorix {

namespace {

constexpr QSize wantedSize{tokens::settingsWidth, tokens::settingsHeight};

/// In the order of the pages.
constexpr std::array glyphs{
    u"\uf493",  // settings
    u"\uf3eb",  // pencil
    u"\uf36e",  // microphone-outline
    u"\uf21e",  // file-find
    u"\uf004",  // account
    u"\uf33e",  // lock
    u"\uf2fd",  // information-outline
};

}  // namespace

SettingsWindow::SettingsWindow(const ViewContext& context, SettingsStore& settings, SettingsForm& form)
    : FormWindow(context, wantedSize), form_(form) {
    form.words = [](const std::string& text) { return desktopWords(text); };
    form.ownWindow = [this] { return winId(); };
    view().insert({{"byKeyboard", false},
                   {"level", 0.0},
                   {"query", QString()},
                   {"section", static_cast<int>(form.section.get())},
                   {"rows", QVariant::fromValue(&rows_)}});
    showWords();
    loadForm("Settings");
    onCancel = [this] { stepBackOrClose(); };
    form.beforeCursor = [this] {
        const auto* field = activeFocusItem();
        if (field == nullptr) return std::string();
        const auto text = field->property("text").toString();
        return text.left(field->property("cursorPosition").toInt()).toStdString();
    };
    connect(this, &QQuickWindow::activeFocusItemChanged, this, &SettingsWindow::tellKeyboard);
    watch(settings);
}

SettingsWindow::~SettingsWindow() {
    // The items still give up the focus, and tell so.
    disconnect(this, &QQuickWindow::activeFocusItemChanged, this, nullptr);
    form_.setKeyboard(SettingsForm::Keyboard::elsewhere);
    form_.beforeCursor = [] { return std::string(); };
    form_.ownWindow = [] { return 0; };
}

/// No item has the focus while the window has not.
void SettingsWindow::tellKeyboard() {
    using enum SettingsForm::Keyboard;
    const auto* item = activeFocusItem();
    if (item == nullptr) return form_.setKeyboard(elsewhere);
    if (!item->property("cursorPosition").isValid()) return form_.setKeyboard(rows);
    form_.setKeyboard(item->property("echoMode").toInt() == 0 ? field : secretField);
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

void SettingsWindow::aboutToOpen() {
    form_.open();
    showRows();
}

void SettingsWindow::aboutToClose() { form_.close(); }

QSize SettingsWindow::cardSize() { return wantedSize; }

bool SettingsWindow::event(QEvent* event) {
    noteKeyboard(*event);
    return FormWindow::event(event);
}

}  // namespace dorix
