#include "views/onboarding/OnboardingWindow.h"

#include "localdata/Language.h"
#include "views/DesktopWords.h"
#include "views/Tokens.h"

#include <QQuickItem>
#include <algorithm>

namespace dorix {

namespace {

using Step = Onboarding::Step;
using Tone = OnboardingRow::Tone;

constexpr int cardWidth = 560;

std::string heading(Step step, bool isMissing) {
    switch (step) {
        case Step::welcome:
            return tr("Bienvenido a DORIX");
        case Step::permissions:
            return tr("Permisos");
        case Step::practice:
            return tr("Cómo se usa");
        case Step::end:
            break;
    }
    return tr(isMissing ? "Casi listo" : "Todo listo");
}

const char* toneName(Tone tone) {
    switch (tone) {
        case Tone::good:
            return "good";
        case Tone::warning:
            return "warning";
        case Tone::wrong:
            return "wrong";
        case Tone::plain:
            break;
    }
    return "plain";
}

QVariantMap shownChoice(const OnboardingChoice& choice) {
    QVariantList options;
    for (const auto& option : choice.options) {
        options.append(QVariantMap{
            {"id", QString::fromStdString(option.id)}, {"label", shown(option.label)}, {"note", ""}});
    }
    return {{"label", shown(choice.label)},
            {"status", shown(choice.status)},
            {"options", options},
            {"chosen", QString::fromStdString(choice.chosen)}};
}

QVariantMap shownRow(const OnboardingRow& row) {
    QVariantList buttons;
    for (const auto& button : row.buttons) {
        buttons.append(QVariantMap{{"id", QString::fromStdString(button.id)},
                                   {"label", shown(button.label)},
                                   {"chief", button.isChief},
                                   {"available", true}});
    }
    return {{"id", QString::fromStdString(row.id)},
            {"label", shown(row.label)},
            {"description", shown(row.description)},
            {"status", shown(row.status)},
            {"tone", toneName(row.tone)},
            {"progress", row.progress.value_or(-1)},
            {"buttons", buttons}};
}

}  // namespace

OnboardingWindow::OnboardingWindow(const ViewContext& context, SettingsStore& settings,
                                   Onboarding& onboarding)
    : FormWindow(context, {cardWidth, cardWidth}), onboarding_(onboarding) {
    view().insert("byKeyboard", true);
    showWords();
    loadForm("Onboarding");
    watch(settings);
    connect(rootObject(), SIGNAL(wantedHeightChanged()), this, SLOT(fit()), Qt::QueuedConnection);
}

void OnboardingWindow::watch(SettingsStore& settings) {
    subscriptions_.push_back(onboarding_.step().subscribe([this](Step) { showContents(); }));
    subscriptions_.push_back(onboarding_.observe([this] { showContents(); }));
    subscriptions_.push_back(onboarding_.hasPractised().subscribe([this](bool done) {
        view().insert("practised", done);
        if (done) announce("success");
    }));
    subscriptions_.push_back(
        settings.languageObserver().code.subscribe([this](const std::string&) { showWords(); }));
    subscriptions_.push_back(settings.pushToTalkKey.subscribe([this](PushToTalkKey) { showContents(); }));
}

void OnboardingWindow::showWords() {
    QVariantMap words;
    const auto put = [&words](const char* key, const char* text) {
        words.insert(key, shown(dorix::tr(text)));
    };
    put("title", "Bienvenido a DORIX");
    put("motto", "La IA que ve, escucha, entiende y actúa.");
    put("field", "Prueba a dictar aquí");
    put("success", "Funciona: DORIX lo ha escrito por ti.");
    put("home", "DORIX está en su icono: con un clic, tu historial; con el botón derecho, su menú.");
    put("next", "Siguiente");
    put("back", "Atrás");
    put("close", "Cerrar");
    view().insert("words", words);
    showContents();
}

void OnboardingWindow::showContents() {
    const auto step = onboarding_.step().get();
    view().insert({{"step", static_cast<int>(step)},
                   {"place", shown(formatText(dorix::tr("Paso %d de %d"), {static_cast<int>(step) + 1, 4}))},
                   {"heading", shown(heading(step, !onboarding_.missing().empty()))},
                   {"permissions", shown(onboarding_.permissionsText())},
                   {"practice", shown(onboarding_.practiceText())},
                   {"practised", onboarding_.hasPractised().get()},
                   {"missing", shown(onboarding_.missing())},
                   {"end", shown(onboarding_.endLabel())},
                   {"appLanguage", shownChoice(onboarding_.appLanguage())},
                   {"language", shownChoice(onboarding_.language())},
                   {"needsHoldKey", onboarding_.needsHoldKey()},
                   {"holdKey", shownChoice(onboarding_.holdKey())}});
    showRows();
}

/// Rows keep their place as long as they are about the same, and with it the keyboard.
void OnboardingWindow::showRows() {
    QVariantList rows;
    for (const auto& row : onboarding_.rows()) rows.append(shownRow(row));
    if (view().value("rows").toList() != rows) view().insert("rows", rows);
}

QSize OnboardingWindow::cardSize() { return {cardWidth, contentHeight()}; }

}  // namespace dorix
