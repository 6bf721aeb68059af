#include "settings/ServerRows.h"

#include "base/text/Text.h"
#include "base/text/Url.h"
#include "localdata/Language.h"

#include <utility>

namespace dorix {

using namespace settingsrow;
using Tone = SettingsRow::Tone;

ServerRows::ServerRows(Executor& executor, SettingsStore& settings, SpeechServer& server,
                       std::function<void()> changed)
    : settings_(settings), server_(server), changed_(std::move(changed)), tasks_(executor) {
    const auto tell = [this](const auto&) { changed_(); };
    subscriptions_.push_back(settings.speechServer.subscribe(tell));
    subscriptions_.push_back(settings.speechServerModel.subscribe(tell));
}

void ServerRows::addTo(SettingsRows& rows) {
    rows.push_back(heading("speech.servers", tr("Servidor de transcripción")));
    rows.push_back(address());
    if (!settings_.speechServer.get().empty()) {
        rows.push_back(
            field("speech.server-model", tr("Modelo que se le pide"), "", settings_.speechServerModel));
        rows.push_back(key());
    }
    if (server_.hasOthersKey()) rows.push_back(othersKey("speech.others-key", [this] { saveKey(""); }));
}

SettingsRow ServerRows::address() {
    auto row = field("speech.server", tr("Dirección del servidor"),
                     tr("Opcional. Un servidor tuyo que transcribe en lugar de este ordenador."),
                     settings_.speechServer);
    row.example = "https://";
    row.actions.edit = [](const std::string&) {};
    row.actions.commit = [this](const std::string& address) { useServer(address); };
    const auto host = hostOf(settings_.speechServer.get());
    if (!refused_.empty()) {
        row.text = refused_;
        row.status = tr("La dirección del servidor de transcripción no vale.");
        row.tone = Tone::wrong;
    } else if (host && !isThisComputer(*host)) {
        row.status = formatText(tr("Lo que dictes se enviará a %@ para transcribirlo."), {*host});
        row.tone = Tone::warning;
    }
    return row;
}

/// Nothing is sent to what is half an address: it counts when the user is through with it.
void ServerRows::useServer(const std::string& entered) {
    const std::string address(text::trim(entered));
    const bool isAddress = address.empty() || (isWebAddress(address) && hostOf(address));
    refused_ = isAddress ? "" : address;
    if (isAddress) {
        // Where it goes is told here, before anything is said.
        settings_.speechServerTold.set(address);
        settings_.speechServer.set(address);
        lookAnew();
    }
    changed_();
}

SettingsRow ServerRows::key() {
    auto row = secret("speech.server-key", tr("Clave"), tr("Opcional. Se guarda en el llavero del sistema."),
                      server_.key());
    row.actions.commit = [this](const std::string& entered) {
        const std::string key(text::trim(entered));
        if (key != server_.key()) saveKey(key);
    };
    if (!row.text.empty() && schemeOf(settings_.speechServer.get()) != "https") {
        const auto host = hostOf(settings_.speechServer.get());
        if (!host || !isThisComputer(*host)) {
            row.status = tr("La clave del servidor de transcripción solo se envía por https.");
            row.tone = Tone::warning;
        }
    }
    return row;
}

SettingsRow othersKey(std::string id, std::function<void()> remove) {
    auto row = item(std::move(id), tr("Clave de otro servidor"),
                    tr("Opcional. Se guarda en el llavero del sistema."));
    row.buttons = {{.id = "remove", .label = tr("Quitar")}};
    row.actions.press = [remove = std::move(remove)](const std::string&) { remove(); };
    return row;
}

Task<void> ServerRows::readKey() {
    co_await server_.readKey();
    changed_();
}

void ServerRows::saveKey(const std::string& key) {
    tasks_.spawn(server_.saveKey(key));
    changed_();
}

}  // namespace dorix
