#include "overlay/HUDContent.h"

#include "localdata/Language.h"

#include <string_view>

namespace dorix {

namespace {

using Look = HUDContent::Look;

HUDContent listening(const AppState& state, const std::string& understood) {
    const bool asking = state.asking.get();
    const std::string partial = state.hidesWords.get() ? "" : understood;
    HUDContent content{.look = Look::listening, .isPlaceholder = partial.empty()};
    if (!partial.empty()) {
        content.text = partial;
    } else {
        content.text = tr(asking ? "Pregunta lo que quieras sobre la pantalla…"
                                 : "Se escribe al terminar de hablar · Esc cancela");
    }
    if (asking) {
        content.caption =
            tr(state.handsFree.get() ? "Mirando la ventana activa · responde al terminar de hablar"
                                     : "Mirando la ventana activa");
    }
    return content;
}

HUDContent hint(const AppState& state) {
    const auto key = dictationKeyName(state.keys.get());
    if (!key) return {.look = Look::hint, .text = tr("Elige en el menú del icono una tecla para dictar")};
    const auto use = state.abilities.get().answers
                         ? tr("dicta o pregunta · clic en el icono para tu historial")
                         : tr("dicta en cualquier campo de texto · clic en el icono para tu historial");
    return {.look = Look::hint, .text = formatText(tr("Mantén pulsado %@"), {*key}) + " · " + use};
}

}  // namespace

HUDContent hudContent(const AppState& state, const std::string& partial) {
    const HUDPhase& phase = state.hud.get();
    switch (phase.kind) {
        case HUDPhase::Kind::hidden:
            return state.showFirstRunHint.get() ? hint(state) : HUDContent{};
        case HUDPhase::Kind::listening:
            return listening(state, partial);
        case HUDPhase::Kind::processing:
            return {.look = Look::processing, .spoken = tr("Redactando…")};
        case HUDPhase::Kind::done:
            return {.look = Look::done, .text = phase.text};
        case HUDPhase::Kind::info:
            return {.look = Look::info, .text = phase.text};
        case HUDPhase::Kind::error:
            return {.look = Look::error, .text = phase.text};
        case HUDPhase::Kind::learned:
            return {.look = Look::learned, .text = phase.text};
    }
    return {};
}

}  // namespace dorix
