#include "settings/GeneralSection.h"

#include "dictation/WatchedKey.h"
#include "localdata/Language.h"

#include <utility>

namespace dorix {

using namespace settingsrow;
using Tone = SettingsRow::Tone;

GeneralSection::GeneralSection(SettingsStore& settings, KeyEventMonitors& keys, const SpeechModels& models,
                               ModelInstalls& installs, std::function<void()> showModels)
    : settings_(settings), keys_(keys), models_(models), showModels_(std::move(showModels)), lamp_(keys) {
    follow(lamp_.isLit, settings.playSounds, settings.paused);
    keep(settings.pushToTalkKey.subscribe([this](PushToTalkKey key) {
        if (isShown_) lamp_.watch(key);
        onChanged();
    }));
    const auto looked = [this](const auto&) {
        if (isShown_) lookForModel();
        onChanged();
    };
    keep(settings.language.subscribe(looked));
    keep(settings.speechServer.subscribe(looked));
    keep(installs.observe([looked, &installs](const std::string& id) {
        if (!installs.of(id).progress) looked(id);
    }));
}

std::string GeneralSection::title() const { return tr("General"); }

void GeneralSection::shown() {
    isShown_ = true;
    launchesAtLogin_ = settings_.launchesAtLogin();
    lookForModel();
    lamp_.watch(settings_.pushToTalkKey.get());
}

void GeneralSection::hidden() {
    isShown_ = false;
    loginFailure_.clear();
    lamp_.stop();
}

void GeneralSection::lookForModel() {
    hasModel_ = !settings_.speechServer.get().empty() || models_.choose(settings_.language.get());
}

SettingsRows GeneralSection::rows() {
    SettingsRows rows;
    rows.push_back(heading("general.dictation", tr("Dictado")));
    addKey(rows);
    addLanguage(rows);
    rows.push_back(toggle("general.sounds", tr("Sonidos al empezar y terminar"), "", settings_.playSounds));
    rows.push_back(heading("general.program", tr("Aplicación")));
    addProgram(rows);
    return rows;
}

void GeneralSection::addKey(SettingsRows& rows) {
    const auto key = settings_.pushToTalkKey.get();
    std::vector<SettingsRow::Option> options;
    for (const auto one : allPushToTalkKeys)
        options.push_back({std::string(storedName(one)), tr(label(one)), ""});
    auto row = choice("general.key", tr("Tecla para dictar"),
                      tr("Mantenla pulsada mientras hablas y suéltala para escribir."), std::move(options),
                      std::string(storedName(key)), [this](const std::string& name) {
                          if (const auto chosen = pushToTalkKey(name)) settings_.pushToTalkKey.set(*chosen);
                      });
    if (!keys_.reportsKey(watched(key).keyCode)) {
        row.status = tr("Tu teclado no tiene esta tecla o no avisa de ella. Elige otra.");
        row.tone = Tone::warning;
    } else if (keys_.typesCharacters(watched(key).keyCode)) {
        row.status =
            tr("En tu teclado esta tecla también escribe caracteres, y lo seguirá haciendo: para dictar, "
               "mantenla pulsada sola.");
    }
    rows.push_back(std::move(row));

    auto test = item("general.key-test", tr("Prueba la tecla"), "");
    test.lamp = formatText(tr(lamp_.isLit.get() ? "%@: pulsada" : "%@: suelta"), {tr(label(key))});
    test.isOn = lamp_.isLit.get();
    if (settings_.paused.get()) test.status = tr("DORIX está en pausa: la tecla llega, pero no dicta.");
    rows.push_back(std::move(test));
}

void GeneralSection::addLanguage(SettingsRows& rows) {
    std::vector<SettingsRow::Option> options;
    for (const auto& language : dictationLanguages)
        options.push_back({std::string(language.id), std::string(language.label), ""});
    const auto kept = settings_.speechServer.get().empty() ? tr("La voz se transcribe en este Mac.") : "";
    rows.push_back(choice("general.language", tr("Idioma del dictado"), kept, std::move(options),
                          settings_.language.get(),
                          [this](const std::string& id) { settings_.language.set(id); }));
    if (hasModel_) return;
    auto missing = item("general.model", "", "");
    missing.status = tr("Para este idioma falta un modelo de voz.");
    missing.tone = Tone::warning;
    missing.buttons = {{.id = "models", .label = tr("Ver los modelos")}};
    missing.actions.press = [this](const std::string&) { showModels_(); };
    rows.push_back(std::move(missing));
}

void GeneralSection::addProgram(SettingsRows& rows) {
    rows.push_back(choice("general.app-language", tr("Idioma de la app"),
                          tr("También cambia el idioma del dictado; puedes elegir otro arriba, en Dictado."),
                          {{"es", "Español", ""}, {"en", "English", ""}}, settings_.appLanguage.get(),
                          [this](const std::string& code) { settings_.setAppLanguage(code); }));
    rows.push_back(loginRow());
    rows.push_back(toggle("general.paused", tr("Pausar DORIX"),
                          tr("Desactiva la tecla de dictado y el micrófono hasta que lo reanudes."),
                          settings_.paused));
}

SettingsRow GeneralSection::loginRow() {
    SettingsRow row;
    row.kind = SettingsRow::Kind::toggle;
    row.id = "general.login";
    row.label = tr("Abrir DORIX al iniciar sesión");
    row.isOn = launchesAtLogin_;
    row.status = loginFailure_;
    row.tone = Tone::wrong;
    row.actions.toggle = [this](bool on) { setLaunchAtLogin(on); };
    return row;
}

void GeneralSection::setLaunchAtLogin(bool enabled) {
    const auto done = settings_.setLaunchAtLogin(enabled);
    loginFailure_ = done ? "" : formatText(tr("No se ha podido cambiar: %@."), {done.error()});
    launchesAtLogin_ = settings_.launchesAtLogin();
    onChanged();
}

}  // namespace dorix
