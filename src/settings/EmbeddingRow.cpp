#include "settings/EmbeddingRow.h"

#include "download/InstallError.h"
#include "localdata/Language.h"

#include <cmath>
#include <utility>

namespace dorix {

using Tone = SettingsRow::Tone;

EmbeddingRow::EmbeddingRow(EmbeddingModel& model, std::function<void()> changed)
    : model_(model), changed_(std::move(changed)) {
    changes_ = model.state().subscribe([this](const EmbeddingModel::State& state) {
        // Between its beginning and its end a download changes nothing that counts.
        if (!state.progress) lookAnew();
        changed_();
    });
}

void EmbeddingRow::lookAnew() {
    toFetch_ = model_.bytesToFetch();
    size_ = model_.bytes();
}

bool EmbeddingRow::stepBack() { return std::exchange(isRemoval_, false); }

SettingsRow EmbeddingRow::row() {
    auto row = settingsrow::item("memory.model", model_.entry().name, "");
    row.description = tr("Encuentra también lo que está dicho con otras palabras, en varios idiomas.") +
                      "\n" + formatText(tr("Licencia: %@"), {model_.entry().licence});
    describe(row);
    row.actions.press = [this](const std::string& button) { press(button); };
    return row;
}

/// Its state, and what can be done about that.
void EmbeddingRow::describe(SettingsRow& row) const {
    const auto& state = model_.state().get();
    if (state.progress) {
        row.progress = state.progress;
        row.status = formatText(tr("Descargando… %d %%"),
                                {static_cast<std::int64_t>(std::floor(*state.progress * 100))});
        row.buttons = {{.id = "cancel", .label = tr("Cancelar")}};
        return;
    }
    if (state.isRemoving) {
        row.status = tr("Quitando…");
    } else if (isRemoval_) {
        row.status = tr("Se borrará de este ordenador. Para volver a usarlo habrá que descargarlo otra vez.");
        row.tone = Tone::warning;
        row.buttons = {{.id = "back", .label = tr("Cancelar")},
                       {.id = "confirm", .label = tr("Quitar"), .isChief = true}};
    } else if (state.isInstalled) {
        row.status = formatText("%@ · %@", {tr("Instalado"), sizeText(size_)});
        row.tone = Tone::good;
        row.buttons = {{.id = "remove", .label = tr("Quitar…")}};
    } else {
        row.buttons = {{.id = "install", .label = formatText(tr("Descargar · %@"), {sizeText(toFetch_)})}};
    }
    if (!state.failure.empty()) {
        row.status = state.failure;
        row.tone = Tone::wrong;
    }
}

void EmbeddingRow::press(const std::string& button) {
    const bool wasAsked = std::exchange(isRemoval_, button == "remove");
    if (button == "install") model_.install();
    if (button == "cancel") model_.cancel();
    if (button == "confirm" && wasAsked) model_.remove();
    changed_();
}

}  // namespace dorix
