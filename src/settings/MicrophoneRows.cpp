#include "settings/MicrophoneRows.h"

#include "localdata/Language.h"

#include <algorithm>
#include <string>
#include <utility>

namespace dorix {

using namespace settingsrow;
using Tone = SettingsRow::Tone;

MicrophoneRows::MicrophoneRows(SettingsStore& settings, AudioEngineFactory& audio, MicrophoneTest& test,
                               const std::function<void()>& changed)
    : settings_(settings), audio_(audio), test_(test) {
    const auto tell = [changed](const auto&) { changed(); };
    subscriptions_.push_back(settings.microphone.subscribe(tell));
    subscriptions_.push_back(settings.paused.subscribe(tell));
    subscriptions_.push_back(audio.inputs().subscribe(tell));
    subscriptions_.push_back(test.isRunning.subscribe(tell));
    subscriptions_.push_back(test.heard.subscribe(tell));
    subscriptions_.push_back(test.failure.subscribe(tell));
}

void MicrophoneRows::addTo(SettingsRows& rows) {
    rows.push_back(heading("speech.microphones", tr("Micrófono")));
    rows.push_back(microphone());
    rows.push_back(test());
}

SettingsRow MicrophoneRows::microphone() {
    const auto& inputs = audio_.inputs().get();
    const auto chosen = settings_.microphone.get();
    std::vector<SettingsRow::Option> options{{"", tr("El que elija el sistema"), ""}};
    for (const auto& input : inputs) options.push_back({input.id, input.name, ""});
    const bool isAbsent =
        !chosen.empty() && std::ranges::find(inputs, chosen, &AudioInput::id) == inputs.end();
    if (isAbsent) options.push_back({chosen, settings_.microphoneName.get(), ""});
    auto row = choice("speech.microphone", tr("Micrófono"),
                      tr("Solo mientras mantienes pulsada la tecla de dictado."), std::move(options), chosen,
                      [this](const std::string& id) { choose(id); });
    if (isAbsent) {
        row.status = formatText(tr("«%@» no está conectado: mientras tanto se usa el que elija el sistema."),
                                {settings_.microphoneName.get()});
        row.tone = Tone::warning;
    } else if (inputs.empty()) {
        row.status = tr("No hay micrófono disponible.");
        row.tone = Tone::wrong;
    }
    return row;
}

void MicrophoneRows::choose(const std::string& id) {
    const auto& inputs = audio_.inputs().get();
    const auto found = std::ranges::find(inputs, id, &AudioInput::id);
    if (found != inputs.end()) settings_.microphoneName.set(found->name);
    settings_.microphone.set(id);
}

SettingsRow MicrophoneRows::test() {
    auto row = item("speech.test", tr("Prueba de voz"),
                    tr("Di algo y mira si DORIX te oye y te entiende. No se escribe ni se guarda nada."));
    const bool isRunning = test_.isRunning.get();
    row.showsLevel = isRunning;
    row.quote = test_.heard.get();
    row.status = test_.failure.get();
    row.tone = Tone::warning;
    if (isRunning && row.quote.empty() && row.status.empty()) {
        row.status = tr("Escuchando…");
        row.tone = Tone::plain;
    }
    row.buttons = {{.id = "test",
                    .label = tr(isRunning ? "Terminar la prueba" : "Probar"),
                    .isChief = isRunning,
                    .isAvailable = isRunning || !settings_.paused.get()}};
    row.actions.press = [this, isRunning](const std::string&) {
        isRunning ? test_.finish() : test_.start(settings_.language.get());
    };
    return row;
}

}  // namespace dorix
