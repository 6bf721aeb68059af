#include "onboarding/SpeechSetup.h"

#include "download/InstallError.h"
#include "localdata/Language.h"
#include "localdata/SettingsStore.h"

#include <cmath>
#include <cstdint>

namespace dorix {

using Tone = OnboardingRow::Tone;

void SpeechSetup::look() {
    const auto& language = means_.settings.language.get();
    const bool isElsewhere = !means_.needsModels || !means_.settings.speechServer.get().empty();
    isReady_ = isElsewhere || means_.models.choose(language).has_value();
    offer_.reset();
    if (isReady_) return;
    if (auto suggestion = means_.installer.suggestionFor(language)) offer_ = std::move(suggestion->best);
}

OnboardingRow SpeechSetup::row() const {
    OnboardingRow row{.id = "speech", .label = tr("Reconocimiento de voz")};
    if (isReady_) {
        const auto& server = means_.settings.speechServer.get();
        row.status = means_.needsModels && !server.empty()
                         ? formatText(tr("El servidor de transcripción: %@"), {server})
                         : tr("Modelo de voz listo en este Mac.");
        row.tone = Tone::good;
    } else if (offer_) {
        addOffer(row);
    } else {
        row.status = tr("No hay ningún modelo de voz para este idioma. Elige otro.");
        row.tone = Tone::warning;
    }
    return row;
}

void SpeechSetup::addOffer(OnboardingRow& row) const {
    row.description = tr("Descarga el modelo de voz de tu idioma (una sola vez).");
    const auto state = means_.installs.of(offer_->id);
    if (state.progress) {
        const auto percent = static_cast<std::int64_t>(std::floor(*state.progress * 100));
        row.status = formatText(tr("Descargando el modelo de voz… %d %%"), {percent});
        row.progress = state.progress;
        row.buttons = {{.id = "cancel", .label = tr("Cancelar")}};
        return;
    }
    row.status = sizeText(offer_->needs.download) + " · " + offer_->line;
    if (!offer_->isLicenceClear) {
        row.status +=
            " " +
            formatText(tr("Este modelo de voz se publica como %@, pero su autor no deja clara la licencia. "),
                       {offer_->licence});
    }
    if (!offer_->hasMemory) {
        row.status +=
            " " + formatText(tr("Este modelo de voz ocupa %@ de memoria, mucho para este ordenador. "),
                             {sizeText(offer_->needs.memory)});
    }
    if (!state.failure.empty()) {
        row.status = state.failure;
        row.tone = Tone::wrong;
    }
    row.buttons = {{.id = "install", .label = tr("Preparar"), .isChief = true}};
}

void SpeechSetup::press(const std::string& button) {
    if (!offer_) return;
    if (button == "install") means_.installs.install(offer_->id);
    if (button == "cancel") means_.installs.cancel(offer_->id);
}

}  // namespace dorix
