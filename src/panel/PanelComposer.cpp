#include "panel/PanelComposer.h"

#include "base/text/Text.h"
#include "localdata/Language.h"

namespace dorix {

PanelComposer::PanelComposer(AppState& state, SpeechInput& speech, const PanelActions& actions)
    : state_(state), actions_(actions) {
    subscriptions_.push_back(speech.partial.subscribe([this](const std::string& partial) {
        if (state_.composerRecording.get()) heard.set(partial);
    }));
    const auto forget = [this](const auto&) { heard.set(""); };
    subscriptions_.push_back(state.composerText.subscribe(forget));
    subscriptions_.push_back(state.focusRequest.subscribe(forget));
    subscriptions_.push_back(state.panelOpen.subscribe(forget));
}

bool PanelComposer::hasText() const { return !text::trim(state_.composerText.get()).empty(); }

std::string PanelComposer::windowOwner() const { return actions_.toggleScreen ? state_.panelOver.get() : ""; }

bool PanelComposer::maySend() const { return actions_.submitComposer && hasText(); }

std::string PanelComposer::refusal() const {
    if (actions_.submitComposer) return "";
    return tr("Todavía no hay asistente que responda. Tu texto se queda aquí.");
}

bool PanelComposer::send() {
    if (maySend()) actions_.submitComposer();
    return !hasText() || actions_.submitComposer;
}

}  // namespace dorix
