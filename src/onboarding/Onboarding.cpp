#include "onboarding/Onboarding.h"

#include "dictation/WatchedKey.h"
#include "localdata/Language.h"
#include "localdata/SettingsStore.h"
#include "permissions/Permissions.h"
#include "platform/AudioEngine.h"
#include "platform/InputEvents.h"

#include <algorithm>
#include <utility>

namespace dorix {

using Tone = OnboardingRow::Tone;

namespace {

constexpr double betweenLooks = 1.0;  // seconds

std::string allowLabel(bool isDenied) { return tr(isDenied ? "Abrir Ajustes" : "Permitir"); }

}  // namespace

Onboarding::Onboarding(const Means& means)
    : means_(means), speech_(means.speech), poll_(means.executor), tasks_(means.executor) {
    const auto changed = [this](const auto&) { changed_.notify(); };
    auto& permissions = means_.permissions;
    subscriptions_.push_back(permissions.microphone.subscribe(changed));
    subscriptions_.push_back(permissions.speech.subscribe(changed));
    subscriptions_.push_back(permissions.accessibility.subscribe(changed));
    subscriptions_.push_back(permissions.screen.subscribe(changed));
    subscriptions_.push_back(means_.state.keys.subscribe(changed));
    subscriptions_.push_back(means_.state.abilities.subscribe(changed));
    subscriptions_.push_back(means_.speech.installs.observe([this](const std::string& id) {
        if (!poll_.isActive()) return;
        // Between its beginning and its end a download changes nothing but how far it is.
        means_.speech.installs.of(id).progress ? changed_.notify() : look();
    }));
}

void Onboarding::begin(Step first) {
    hasPractised_.set(false);
    fieldText_.clear();
    step_.set(first);
    means_.permissions.startPolling();
    look();
    poll_.repeat(betweenLooks, [this] { look(); });
}

void Onboarding::end() {
    poll_.stop();
    means_.permissions.stopPolling();
    means_.state.practises.set(false);
}

void Onboarding::look() {
    hasMicrophone_ = means_.audio.makeEngine()->inputFormat().channelCount > 0;
    speech_.look();
    onLook();
    changed_.notify();
}

void Onboarding::next() {
    if (step_.get() == Step::end) return finish();
    step_.set(static_cast<Step>(std::to_underlying(step_.get()) + 1));
}

void Onboarding::back() {
    if (step_.get() != Step::welcome) step_.set(static_cast<Step>(std::to_underlying(step_.get()) - 1));
}

void Onboarding::finish() {
    means_.settings.onboardingDone.set(true);
    onFinished();
}

// What is shown

OnboardingChoice Onboarding::appLanguage() const {
    return {.label = tr("Idioma de la app"),
            .options = {{"es", "Español"}, {"en", "English"}},
            .chosen = means_.settings.appLanguage.get()};
}

std::vector<OnboardingRow> Onboarding::rows() const {
    std::vector<OnboardingRow> rows{microphoneRow(), speech_.row(), accessibilityRow()};
    if (means_.state.abilities.get().answers) rows.push_back(screenRow());
    return rows;
}

OnboardingRow Onboarding::microphoneRow() const {
    OnboardingRow row{.id = "microphone",
                      .label = tr("Micrófono"),
                      .description = tr("Solo mientras mantienes pulsada la tecla de dictado.")};
    const auto status = means_.permissions.microphone.get();
    const bool isDenied = status == AuthorizationStatus::denied || status == AuthorizationStatus::restricted;
    if (status != AuthorizationStatus::authorized) {
        row.buttons = {{.id = "allow", .label = allowLabel(isDenied), .isChief = true}};
    } else if (hasMicrophone_) {
        row.status = tr("Micrófono listo.");
        row.tone = Tone::good;
    } else {
        row.status = hasNoSoundSettings_
                         ? tr("Abre los ajustes de sonido de tu escritorio y elige un micrófono.")
                         : tr("No se encuentra ningún micrófono. Conecta uno o elígelo en los ajustes.");
        row.tone = Tone::warning;
        if (!hasNoSoundSettings_) row.buttons = {{.id = "allow", .label = allowLabel(true)}};
    }
    return row;
}

OnboardingRow Onboarding::accessibilityRow() const {
    OnboardingRow row{
        .id = "accessibility",
        .label = tr("Accesibilidad"),
        .description =
            tr("Para detectar la tecla de dictado y escribir en el campo activo. Activa DORIX en la lista.")};
    if (means_.permissions.accessibility.get()) {
        row.status = tr("Accesibilidad lista.");
        row.tone = Tone::good;
    } else {
        row.status =
            tr("La accesibilidad está desactivada en este escritorio, o le falta su servicio (paquete "
               "at-spi2-core).");
        row.tone = Tone::warning;
        row.buttons = {{.id = "allow", .label = allowLabel(false), .isChief = true}};
    }
    return row;
}

OnboardingRow Onboarding::screenRow() const {
    OnboardingRow row{
        .id = "screen",
        .label = tr("Pantalla (opcional)"),
        .description = namingKeys(tr("Para preguntar sobre lo que ves con ⌥⇧ Espacio. Solo mira "
                                     "la ventana activa cuando lo pides."),
                                  means_.state.keys.get())};
    if (means_.permissions.screen.get()) {
        row.status = tr("Pantalla lista.");
        row.tone = Tone::good;
    } else if (!means_.permissions.hasPane("Privacy_ScreenCapture")) {
        row.status = tr("Solo se puede en una sesión X11.");
    } else {
        row.buttons = {{.id = "allow", .label = allowLabel(false)}};
    }
    return row;
}

OnboardingChoice Onboarding::language() const {
    OnboardingChoice choice{.label = tr("Idioma del dictado"), .chosen = means_.settings.language.get()};
    for (const auto& language : dictationLanguages)
        choice.options.push_back({std::string(language.id), std::string(language.label)});
    return choice;
}

bool Onboarding::needsHoldKey() const { return needsKey(means_.state.keys.get()); }

OnboardingChoice Onboarding::holdKey() const {
    const auto& keys = means_.state.keys.get();
    OnboardingChoice choice{.label = tr("Tecla para dictar"), .chosen = std::string(storedName(keys.hold))};
    for (const auto key : allPushToTalkKeys) {
        const auto code = watched(key).keyCode;
        if (key != keys.hold && !means_.keyboard.reportsKey(code)) continue;
        const bool types = means_.keyboard.typesCharacters(code);
        choice.options.push_back(
            {std::string(storedName(key)), holdKeyName({.hold = key, .holdTypes = types})});
    }
    if (!keys.holdIsThere) {
        choice.status = tr("Tu teclado no tiene esta tecla o no avisa de ella. Elige otra.");
    } else if (keys.holdTypes) {
        choice.status =
            tr("En tu teclado esta tecla también escribe caracteres. Si la usas para eso, elige otra.");
    }
    return choice;
}

std::string Onboarding::permissionsText() const {
    return means_.settings.speechServer.get().empty()
               ? tr("Para escribir por ti en cualquier aplicación, DORIX necesita tres permisos. Todo lo que "
                    "dictas se transcribe en este Mac.")
               : tr("Para escribir por ti en cualquier aplicación, DORIX necesita tres permisos.");
}

std::string Onboarding::practiceText() const {
    const bool answers = means_.state.abilities.get().answers;
    const auto text =
        answers ? tr("Mantén pulsado ⌥ Espacio (o %@) y habla. Si dictas, DORIX lo escribe en el campo donde "
                     "tengas el cursor; si le preguntas algo sobre lo que ves, te responde. Pulsa el icono "
                     "para abrir tu historial.")
                : tr("Mantén pulsado ⌥ Espacio (o %@) y habla. DORIX lo escribe en el campo donde tengas el "
                     "cursor. Pulsa el icono para abrir tu historial.");
    return namingKeys(text, means_.state.keys.get());
}

std::string Onboarding::missing() const {
    std::string names;
    for (const auto& row : rows()) {
        if (row.tone == Tone::good || row.id == "screen") continue;
        names += (names.empty() ? "" : ", ") + row.label;
    }
    return names.empty() ? "" : formatText(tr("Falta todavía: %@."), {names});
}

std::string Onboarding::endLabel() const {
    return tr(means_.permissions.allRequired() ? "Empezar" : "Continuar sin todos los permisos");
}

// What the user does

void Onboarding::chooseAppLanguage(const std::string& code) {
    means_.settings.setAppLanguage(code);
    look();
}

void Onboarding::chooseLanguage(const std::string& id) {
    means_.settings.language.set(id);
    look();
}

void Onboarding::chooseHoldKey(const std::string& storedName) {
    if (const auto key = pushToTalkKey(storedName)) means_.settings.pushToTalkKey.set(*key);
}

void Onboarding::press(const std::string& row, const std::string& button) {
    if (row == "microphone") pressMicrophone();
    if (row == "speech") speech_.press(button);
    if (row == "accessibility") means_.permissions.requestAccessibility();
    if (row == "screen") means_.permissions.requestScreen();
    look();
}

void Onboarding::pressMicrophone() {
    if (means_.permissions.microphone.get() != AuthorizationStatus::authorized) {
        tasks_.spawn(means_.permissions.requestMicrophone());
    } else {
        hasNoSoundSettings_ = !means_.permissions.openPane("Privacy_Microphone");
    }
}

void Onboarding::dictated() {
    if (means_.state.practises.get()) hasPractised_.set(true);
}

}  // namespace dorix
