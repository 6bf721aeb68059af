#include "settings/WritingSection.h"

#include "base/text/Text.h"
#include "base/text/Url.h"
#include "localdata/Language.h"
#include "settings/ServerRows.h"
#include "writing/LocalPolisher.h"

#include <utility>

namespace dorix {

using namespace settingsrow;
using Standing = SettingsRow::Tone;

namespace {

constexpr int linesOfStyle = 3;

/// Of the server at that address, if it is another computer.
std::optional<std::string> farHost(const std::string& address) {
    auto host = hostOf(address);
    return host && !isThisComputer(*host) ? host : std::nullopt;
}

}  // namespace

WritingSection::WritingSection(SettingsStore& settings, const AccountStore& account, const OwnService& own,
                               ModelServer* models, std::function<void()> showAccount)
    : settings_(settings),
      account_(account),
      own_(own),
      models_(models),
      showAccount_(std::move(showAccount)) {
    follow(settings.engine, settings.adaptTone, settings.signatureName, settings.styleNotes, account.loggedIn,
           account.profile, own.hasBadSettings, settings.speechServer);
    if (models == nullptr) return;
    follow(models->state(), models->key(), settings.modelServer, settings.modelServerModel);
}

void WritingSection::shown() {
    if (models_ != nullptr) models_->look();
}

std::string WritingSection::title() const { return tr("Redacción"); }

SettingsRows WritingSection::rows() {
    SettingsRows rows;
    rows.push_back(heading("writing.intelligence", tr("Inteligencia")));
    rows.push_back(engine());
    rows.push_back(service());
    if (models_ != nullptr) addModel(rows);
    rows.push_back(rules());
    rows.push_back(heading("writing.style", tr("Tu estilo")));
    addStyle(rows);
    return rows;
}

SettingsRow WritingSection::engine() {
    return choice(
        "writing.engine", tr("Motor de redacción"), "",
        {{"auto", tr("Automático (recomendado)"),
          tr("La mejor redacción. Solo se envía el texto dictado, nunca el audio ni tu pantalla.")},
         {"local", tr("Solo en este Mac"), whereLocalWrites()}},
        settings_.engine.get() == WritingEngine::local ? "local" : "auto", [this](const std::string& chosen) {
            settings_.engine.set(chosen == "local" ? WritingEngine::local : WritingEngine::automatic);
        });
}

std::string WritingSection::whereLocalWrites() const {
    if (const auto host = farHost(settings_.modelServer.get()))
        return formatText(tr("Lo que dictes se enviará a %@ para redactarlo."), {*host});
    if (const auto host = farHost(settings_.speechServer.get()))
        return formatText(tr("Lo que dictes se enviará a %@ para transcribirlo."), {*host});
    return tr("Máxima privacidad: todo se procesa en tu Mac. La redacción es más sencilla.");
}

SettingsRow WritingSection::service() const {
    auto row = item("writing.service", tr("Servicio de DORIX"), "");
    const auto& profile = account_.profile.get();
    const bool isOwn = own_.isResponsible();
    row.tone = Standing::good;
    if (settings_.engine.get() == WritingEngine::local) {
        row.tone = Standing::plain;
        row.status = tr("No se usa mientras el motor sea «Solo en este Mac».");
    } else if (isOwn && own_.hasBadSettings.get()) {
        row.tone = Standing::wrong;
        row.status =
            tr("El servicio de este ordenador no puede empezar: en su configuración (variables "
               "DORIX_SERVICE_…) hay un error. El registro de DORIX dice cuál.");
    } else if (account_.loggedIn.get()) {
        row.status = isOwn     ? tr("Funciona en este ordenador, sin cuenta.")
                     : profile ? formatText(tr("Has entrado como %@."), {profile->email})
                               : tr("Has entrado en tu cuenta de DORIX.");
    } else if (isOwn) {
        row.tone = Standing::plain;
        row.status = tr("El servicio de este ordenador todavía no responde.");
    } else {
        row.tone = Standing::warning;
        row.status = tr("Entra en tu cuenta de DORIX para seguir.");
        row.buttons = {{.id = "account", .label = tr("Tu cuenta…")}};
    }
    row.actions.press = [this](const std::string&) { showAccount_(); };
    return row;
}

void WritingSection::addModel(SettingsRows& rows) {
    const auto& state = models_->state().get();
    auto row = item("writing.model", tr("Modelo local"),
                    tr("Escribe en este ordenador cuando el servicio no puede o no debe."));
    if (const auto reason = unavailableReason(state.availability)) {
        row.status = *reason;
        row.tone = Standing::warning;
    } else {
        row.status = formatText("%@ · %@", {state.model, state.server});
        row.tone = Standing::good;
    }
    rows.push_back(std::move(row));
    rows.push_back(modelServer());
    if (!settings_.modelServer.get().empty()) rows.push_back(modelKey());
    if (models_->hasOthersKey())
        rows.push_back(othersKey("writing.others-key", [this] { models_->useKey(""); }));
    auto name = field("writing.model-name", tr("Modelo de lenguaje"),
                      tr("Opcional. Si lo dejas vacío, DORIX elige uno de los que tiene el servidor."),
                      settings_.modelServerModel);
    name.actions.edit = [](const std::string&) {};
    name.actions.commit = [this](const std::string& text) {
        settings_.modelServerModel.set(std::string(text::trim(text)));
    };
    rows.push_back(std::move(name));
}

SettingsRow WritingSection::modelServer() {
    auto row =
        field("writing.model-server", tr("Servidor de modelos"),
              tr("Opcional. Si lo dejas vacío, DORIX busca uno en este ordenador."), settings_.modelServer);
    row.example = "http://127.0.0.1:11434";
    row.actions.edit = [](const std::string&) {};
    row.actions.commit = [this](const std::string& entered) { useModelServer(entered); };
    const auto host = farHost(settings_.modelServer.get());
    if (!refused_.empty()) {
        row.text = refused_;
        row.status = tr("Escribe la dirección entera, con https://");
        row.tone = Standing::wrong;
    } else if (host) {
        row.status = formatText(tr("Lo que dictes se enviará a %@ para redactarlo."), {*host});
        row.tone = Standing::warning;
    }
    return row;
}

/// Nothing is sent to what is half an address: it counts when the user is through with it.
void WritingSection::useModelServer(const std::string& entered) {
    const std::string address(text::trim(entered));
    const bool isAddress = address.empty() || (isWebAddress(address) && hostOf(address));
    refused_ = isAddress ? "" : address;
    if (isAddress) {
        // Where it goes is told here, before anything is dictated.
        settings_.modelServerTold.set(address);
        settings_.modelServer.set(address);
    }
    onChanged();
}

SettingsRow WritingSection::modelKey() {
    auto row = secret("writing.model-key", tr("Clave"), tr("Opcional. Se guarda en el llavero del sistema."),
                      models_->key().get());
    row.actions.commit = [this](const std::string& entered) {
        const std::string key(text::trim(entered));
        if (key != models_->key().get()) models_->useKey(key);
    };
    const auto& address = settings_.modelServer.get();
    if (!row.text.empty() && schemeOf(address) != "https" && farHost(address)) {
        row.status = tr("La clave del servidor de modelos solo se envía por https.");
        row.tone = Standing::warning;
    }
    return row;
}

SettingsRow WritingSection::rules() const {
    auto row = item("writing.rules", tr("Reglas"),
                    tr("Quitan muletillas y ponen mayúsculas y puntos cuando ningún otro motor puede."));
    row.status = tr("Siempre disponibles, sin conexión.");
    row.tone = Standing::good;
    return row;
}

void WritingSection::addStyle(SettingsRows& rows) {
    rows.push_back(toggle("writing.tone", tr("Adaptar el tono a cada app"),
                          tr("Informal en WhatsApp, profesional en el correo, técnico en el código…"),
                          settings_.adaptTone));
    auto name = field("writing.signature", tr("Tu nombre para firmar correos"),
                      tr("Opcional. Si lo dejas vacío, DORIX no firma."), settings_.signatureName);
    name.example = tr("Ej. Marta");
    rows.push_back(std::move(name));
    auto notes = field("writing.notes", tr("Tu estilo"),
                       tr("Cómo quieres que escriba DORIX por ti. Además aprende de los textos que ya ha "
                          "escrito contigo."),
                       settings_.styleNotes);
    notes.example = tr("Ej.: tuteo a los clientes, frases cortas, firmo como Teo");
    notes.lines = linesOfStyle;
    rows.push_back(std::move(notes));
}

}  // namespace dorix
