#include "settings/ModelRows.h"

#include "download/InstallError.h"
#include "localdata/Language.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace dorix {

using namespace settingsrow;
using Tone = SettingsRow::Tone;

ModelRows::ModelRows(SettingsStore& settings, const SpeechModels& models, const ModelInstaller& installer,
                     ModelInstalls& installs, std::function<void()> changed)
    : settings_(settings),
      models_(models),
      installer_(installer),
      installs_(installs),
      changed_(std::move(changed)),
      language_(settings.language.get()) {
    subscriptions_.push_back(installs.observe([this](const std::string& id) {
        // Between its beginning and its end a download changes no file that counts.
        if (!installs_.of(id).progress) lookAnew();
        changed_();
    }));
    subscriptions_.push_back(
        settings.language.subscribe([this](const std::string& id) { showLanguage(id); }));
    subscriptions_.push_back(settings.speechModels.subscribe([this](const auto&) {
        lookAnew();
        changed_();
    }));
    subscriptions_.push_back(settings.speechServer.subscribe([this](const auto&) { changed_(); }));
}

void ModelRows::showLanguage(const std::string& id) {
    language_ = id;
    pending_.reset();
    lookAnew();
    changed_();
}

void ModelRows::lookAnew() {
    entries_.clear();
    std::vector<ModelOffer> offers;
    if (auto suggestion = installer_.suggestionFor(language_)) {
        offers = std::move(suggestion->others);
        offers.insert(offers.begin(), std::move(suggestion->best));
    }
    for (const auto& here : models_.installed()) {
        if (!here.serves(language_)) continue;
        const auto offer = std::ranges::find(offers, here.id, &ModelOffer::id);
        entries_.push_back({.id = here.id,
                            .isInstalled = true,
                            .isPackaged = here.folder.parent_path() != models_.folder(),
                            .isUsable = models_.isUsable(here) && !models_.isSetAside(here.folder),
                            .offer = offer == offers.end() ? std::nullopt : std::optional(*offer),
                            .engine = std::string(storedName(here.engine))});
        if (offer != offers.end()) offers.erase(offer);
    }
    for (auto& offer : offers) entries_.push_back({.id = offer.id, .offer = std::move(offer), .engine = {}});
    const auto chosen = models_.choose(language_);
    serving_ = chosen ? chosen->id : "";
}

bool ModelRows::stepBack() { return std::exchange(pending_, std::nullopt).has_value(); }

void ModelRows::addTo(SettingsRows& rows) {
    rows.push_back(heading("speech.models", tr("Modelos de voz")));
    rows.push_back(language());
    rows.push_back(serving());
    if (std::ranges::count(entries_, true, &Entry::isInstalled) > 1) rows.push_back(choiceOfModel());
    for (const auto& entry : entries_) rows.push_back(model(entry));
}

SettingsRow ModelRows::language() {
    std::vector<SettingsRow::Option> options;
    for (const auto& row : dictationLanguages)
        options.push_back({std::string(row.id), std::string(row.label), ""});
    return choice("speech.language", tr("Idioma"), tr("Los modelos de abajo son de este idioma."),
                  std::move(options), language_, [this](const std::string& id) { showLanguage(id); });
}

SettingsRow ModelRows::serving() const {
    auto row = item("speech.serving", tr("Ahora transcribe"), "");
    row.tone = Tone::good;
    if (!settings_.speechServer.get().empty()) {
        row.status = formatText(tr("El servidor de transcripción: %@"), {settings_.speechServer.get()});
    } else if (!serving_.empty()) {
        row.status = serving_;
    } else {
        row.status = tr("Nadie: para este idioma falta un modelo de voz.");
        row.tone = Tone::warning;
    }
    return row;
}

SettingsRow ModelRows::choiceOfModel() {
    std::vector<SettingsRow::Option> options{{"", tr("El mejor de los instalados"), ""}};
    for (const auto& entry : entries_) {
        if (entry.isInstalled) options.push_back({entry.id, entry.id, ""});
    }
    const auto& chosen = settings_.speechModels.get();
    const auto found = chosen.find(languageCode(language_));
    return choice("speech.model", tr("Modelo para este idioma"), "", std::move(options),
                  found == chosen.end() ? "" : found->second, [this](const std::string& id) { choose(id); });
}

void ModelRows::choose(const std::string& id) {
    auto chosen = settings_.speechModels.get();
    if (id.empty()) {
        chosen.erase(languageCode(language_));
    } else {
        chosen[languageCode(language_)] = id;
    }
    settings_.speechModels.set(std::move(chosen));
}

std::string ModelRows::question(const ModelOffer& offer) {
    std::string text;
    if (!offer.isLicenceClear) {
        text =
            formatText(tr("Este modelo de voz se publica como %@, pero su autor no deja clara la licencia. "),
                       {offer.licence});
    }
    if (!offer.hasMemory) {
        text += formatText(tr("Este modelo de voz ocupa %@ de memoria, mucho para este ordenador. "),
                           {sizeText(offer.needs.memory)});
    }
    return text;
}

SettingsRow ModelRows::model(const Entry& entry) {
    auto row = item("speech.model." + entry.id, entry.id, "");
    if (entry.offer) {
        row.description = entry.offer->line + "\n" + formatText(tr("Licencia: %@"), {entry.offer->licence});
        if (entry.offer->needs.memory > 0)
            row.description += formatText(tr(" · memoria: %@"), {sizeText(entry.offer->needs.memory)});
    } else if (entry.isPackaged) {
        row.description = formatText(tr("Lo trae el sistema. Motor: %@"), {entry.engine});
    } else {
        row.description = formatText(tr("Puesto a mano. Motor: %@"), {entry.engine});
    }
    describe(entry, row);
    row.actions.press = [this, id = entry.id](const std::string& button) { press(id, button); };
    return row;
}

/// Its state, and what can be done about that.
void ModelRows::describe(const Entry& entry, SettingsRow& row) const {
    const auto state = installs_.of(entry.id);
    const bool isPending = pending_ && pending_->model == entry.id;
    if (state.progress) {
        row.progress = state.progress;
        row.status = formatText(tr("Descargando el modelo de voz… %d %%"),
                                {static_cast<std::int64_t>(std::floor(*state.progress * 100))});
        row.buttons = {{.id = "cancel", .label = tr("Cancelar")}};
    } else if (state.isRemoving) {
        row.status = tr("Quitando…");
    } else if (isPending && pending_->isRemoval) {
        row.status = tr("Se borrará de este ordenador. Para volver a usarlo habrá que descargarlo otra vez.");
        row.tone = Tone::warning;
        row.buttons = {{.id = "back", .label = tr("Cancelar")},
                       {.id = "confirm", .label = tr("Quitar"), .isChief = true}};
    } else if (isPending) {
        row.status = question(*entry.offer);
        row.tone = Tone::warning;
        row.buttons = {{.id = "back", .label = tr("Cancelar")},
                       {.id = "confirm", .label = tr("Aceptar y descargar"), .isChief = true}};
    } else if (entry.isInstalled) {
        const bool serves = entry.id == serving_;
        row.status = !entry.isUsable ? tr("Está dañado o le falta su motor.")
                     : serves        ? tr("Instalado, en uso")
                                     : tr("Instalado");
        row.tone = !entry.isUsable ? Tone::wrong : serves ? Tone::good : Tone::plain;
        if (!entry.isUsable && entry.offer)
            row.buttons.push_back({.id = "install", .label = tr("Descargar otra vez")});
        if (!entry.isPackaged) row.buttons.push_back({.id = "remove", .label = tr("Quitar…")});
    } else {
        const auto size = sizeText(entry.offer->needs.download);
        row.status = entry.offer->hasSpace ? "" : tr("No queda espacio en el disco.");
        row.tone = Tone::warning;
        row.buttons = {{.id = "install",
                        .label = formatText(tr("Descargar · %@"), {size}),
                        .isAvailable = entry.offer->hasSpace}};
    }
    if (!state.failure.empty()) {
        row.status = state.failure;
        row.tone = Tone::wrong;
    }
}

void ModelRows::press(const std::string& model, const std::string& button) {
    const auto entry = std::ranges::find(entries_, model, &Entry::id);
    if (entry == entries_.end()) return;
    const auto pending = std::exchange(pending_, std::nullopt);
    if (button == "cancel") {
        installs_.cancel(model);
    } else if (button == "remove") {
        pending_ = Pending{.model = model, .isRemoval = true};
    } else if (button == "install" && entry->offer && !question(*entry->offer).empty()) {
        pending_ = Pending{.model = model};
    } else if (button == "confirm" && pending && pending->isRemoval) {
        installs_.remove(model);
    } else if (button == "install" || button == "confirm") {
        installs_.install(model);
    }
    changed_();
}

}  // namespace dorix
