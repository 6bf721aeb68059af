#include "shell/SpeechOffer.h"

#include "base/async/Sleep.h"
#include "dictation/DictationController.h"
#include "download/InstallError.h"
#include "localdata/Language.h"
#include "localdata/SettingsStore.h"

#include <algorithm>
#include <cmath>

namespace dorix {

namespace {

// Seconds that messages show.
constexpr double secondsToRead = 10.0;
constexpr double secondsForOutcome = 6.0;

/// Whether it may be installed without another word.
bool isHarmless(const ModelOffer& offer) { return offer.isLicenceClear && offer.hasMemory; }

std::string question(const ModelOffer& offer) {
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
    return text + tr("Si te parece bien, elige «Aceptar y descargar» en el menú del icono.");
}

}  // namespace

SpeechOffer::SpeechOffer(Executor& executor, const AppState& state, const SettingsStore& settings,
                         const SpeechModels& models, const ModelInstaller& installer, ModelInstalls& installs,
                         DictationController& dictation, Observable<std::optional<double>>& progress)
    : settings_(settings),
      models_(models),
      installer_(installer),
      installs_(installs),
      dictation_(dictation),
      progress_(progress),
      hudObserver_(state.hud.subscribe([this](const HUDPhase& phase) { follow(phase); })),
      installObserver_(installs.observe([this](const std::string& id) { installChanged(id); })),
      tasks_(executor) {}

std::string SpeechOffer::languageLabel() const {
    const auto& id = settings_.language.get();
    const auto* row = std::ranges::find(dictationLanguages, id, &DictationLanguage::id);
    return row == dictationLanguages.end() ? id : std::string(row->label);
}

/// None where the language has a model already, or nothing can be done about it.
std::optional<ModelOffer> SpeechOffer::best() const {
    const auto& language = settings_.language.get();
    if (models_.choose(language)) return std::nullopt;
    const auto suggestion = installer_.suggestionFor(language);
    return suggestion ? std::optional(suggestion->best) : std::nullopt;
}

/// A press that was only a tap shows no error, and then nothing more is told either.
void SpeechOffer::follow(const HUDPhase& phase) {
    if (phase.kind == HUDPhase::Kind::error && isMissing_) isTold_ = true;
    if (phase.kind != HUDPhase::Kind::hidden || !isTold_) return;
    isMissing_ = isTold_ = false;
    const auto offer = best();
    if (!offer || !installs_.underWay().empty()) return;
    const auto text = formatText(tr("Para dictar en %@ falta un modelo de voz (%@). %@ Instálalo desde el "
                                    "menú del icono, con un clic derecho."),
                                 {languageLabel(), sizeText(offer->needs.download), offer->line});
    tasks_.spawn(tell(text));
}

/// Not inside the change of the HUD that it follows.
Task<void> SpeechOffer::tell(std::string text) {
    co_await sleep(0);
    if (dictation_.isIdle()) dictation_.flash(HUDPhase::info(text), secondsToRead);
}

Menu SpeechOffer::menu() {
    if (const auto id = installs_.underWay(); !id.empty()) {
        const auto percent = static_cast<std::int64_t>(std::floor(progress_.get().value_or(0) * 100));
        return {{formatText(tr("Cancelar la descarga del modelo de voz · %d %%"), {percent}),
                 [this, id] { installs_.cancel(id); }},
                ClosureMenuItem::separator()};
    }
    const auto offer = best();
    if (!offer) return {};
    const auto size = sizeText(offer->needs.download);
    const auto label = askedAbout_ == offer->id
                           ? formatText(tr("Aceptar y descargar · %@"), {size})
                           : formatText(tr("Instalar el dictado en %@ · %@"), {languageLabel(), size});
    return {{label, [this, chosen = *offer] { this->chosen(chosen); }}, ClosureMenuItem::separator()};
}

void SpeechOffer::chosen(const ModelOffer& offer) {
    if (!installs_.underWay().empty() || showModels()) return;
    if (!isHarmless(offer) && askedAbout_ != offer.id) {
        askedAbout_ = offer.id;
        return dictation_.flash(HUDPhase::info(question(offer)), secondsToRead);
    }
    install(offer);
}

void SpeechOffer::install(const ModelOffer& offer) {
    begun_ = offer.id;
    language_ = languageLabel();
    installs_.install(offer.id);
}

/// Whoever began an install elsewhere is told of its outcome there.
void SpeechOffer::installChanged(const std::string& id) {
    const auto state = installs_.of(id);
    const auto current = installs_.underWay();
    progress_.set(current.empty() ? std::nullopt : installs_.of(current).progress);
    if (state.progress || state.isRemoving || begun_ != id) return;
    begun_.clear();
    askedAbout_.clear();
    if (!state.failure.empty()) {
        dictation_.flash(HUDPhase::error(state.failure), secondsForOutcome);
    } else if (models_.find(id)) {
        dictation_.flash(HUDPhase::done(formatText(tr("Ya puedes dictar en %@"), {language_})),
                         secondsForOutcome);
    }
}

}  // namespace dorix
