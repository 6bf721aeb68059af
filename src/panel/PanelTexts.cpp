#include "panel/PanelTexts.h"

#include "localdata/Language.h"

#include <optional>

namespace dorix::paneltext {

namespace {

/// What would bring something into the section; empty where nothing can as yet.
std::string advice(PanelSection section, const AppState& state) {
    const Abilities& can = state.abilities.get();
    switch (section) {
        case PanelSection::todo:
        case PanelSection::dictado:
            break;
        case PanelSection::preguntas:
            if (!can.answers) return "";
            return tr(
                "Nada por aquí todavía.\nPulsa ⌥⇧ Espacio y pregunta sobre lo que ves, o selecciona un texto "
                "y pregunta por él.");
        case PanelSection::reunion:
            if (!can.meetings) return "";
            return tr(
                "Nada por aquí todavía.\nDi con ⌥ Espacio «activa el modo reunión», o usa el menú del icono "
                "→ Activar modo reunión. Al terminar verás aquí el resumen.");
        case PanelSection::busqueda:
            if (!can.memory) return "";
            return tr(
                "Nada por aquí todavía.\nPregunta con ⌥ Espacio cosas como «busca el contrato de Velmar» o "
                "«¿qué acordamos con Marta?». Elige qué carpetas recuerda en Ajustes → Memoria.");
        case PanelSection::accion:
            if (!can.actions) return "";
            return tr(
                "Nada por aquí todavía.\nPide con ⌥ Espacio cosas como «crea una reunión mañana a las 10 con "
                "Ana» o «envía este documento a Luis». Siempre te pediré confirmación.");
    }
    const auto& keys = state.keys.get();
    const auto key = keys.holdIsThere ? std::optional(holdKeyName(keys)) : dictationKeyName(keys);
    return formatText(tr("Nada por aquí todavía.\nMantén pulsada %@ y habla en cualquier campo de texto."),
                      {key.value_or(tr("la tecla que elijas"))});
}

}  // namespace

std::string emptyList(const AppState& state) {
    const std::string& query = state.query.get();
    if (state.searchesOlder.get()) return tr("Buscando en lo más antiguo…");
    if (!query.empty()) return formatText(tr("Nada coincide con «%@»."), {query});
    const std::string text = advice(state.section.get(), state);
    return text.empty() ? tr("Nada por aquí todavía.") : namingKeys(text, state.keys.get());
}

std::vector<std::pair<const char*, std::string>> words(const Abilities& abilities) {
    return {{"title", tr("Historial")},
            {"sections", tr("Secciones")},
            {"list", tr("Historial")},
            {"search", tr("Buscar en tu historial…")},
            {"clear", tr("Borrar la búsqueda")},
            {"more", tr("Más opciones")},
            {"back", tr("Volver a la lista")},
            {"foot", tr("Tu historial se guarda solo en este equipo.")},
            {"composer", tr(abilities.answers ? "Pregunta, dicta o pide una acción…" : "Dicta o escribe…")},
            {"listening", tr("Escuchando…")},
            {"send", tr("Enviar")},
            {"undo", tr("Deshacer")}};
}

std::string micButton(bool recording) { return tr(recording ? "Terminar dictado" : "Dictar"); }

std::string screenButton(bool isOn, const std::string& app) {
    return formatText(tr(isOn ? "Se adjuntará la ventana de %@" : "Adjuntar la ventana de %@ a la pregunta"),
                      {app});
}

Welcome welcome(const AppState& state) {
    const auto& keys = state.keys.get();
    const bool answers = state.abilities.get().answers;
    return {.title = tr("Habla. DORIX escribe."),
            .steps = {tr("Pon el cursor en cualquier campo de texto: Gmail, WhatsApp, Slack, Word…"),
                      namingKeys(tr("Mantén pulsado ⌥ Espacio (o %@) y habla con naturalidad."), keys),
                      tr("Suelta: DORIX quita las muletillas, adapta el tono a la app y lo escribe por ti.")},
            .aside = answers ? tr("¿Dudas sobre lo que ves? Con el mismo atajo, pregunta: «¿qué me están "
                                  "pidiendo aquí?». Con un texto seleccionado: «tradúcelo» o «explícamelo».")
                             : "",
            .sample = tr("Prueba: «Dile a Carlos que perfecto y que podemos hablar mañana por la mañana».")};
}

}  // namespace dorix::paneltext
