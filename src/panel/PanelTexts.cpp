#include "panel/PanelTexts.h"

#include "localdata/Language.h"

#include <string_view>

namespace dorix::paneltext {

namespace {

std::string emptySection(PanelSection section, PushToTalkKey holdKey) {
    switch (section) {
        case PanelSection::todo:
        case PanelSection::dictado:
            break;
        case PanelSection::preguntas:
            return tr(
                "Nada por aquí todavía.\nPulsa ⌥⇧ Espacio y pregunta sobre lo que ves, o selecciona un texto "
                "y pregunta por él.");
        case PanelSection::reunion:
            return tr(
                "Nada por aquí todavía.\nDi con ⌥ Espacio «activa el modo reunión», o usa el menú del icono "
                "→ Activar modo reunión. Al terminar verás aquí el resumen.");
        case PanelSection::busqueda:
            return tr(
                "Nada por aquí todavía.\nPregunta con ⌥ Espacio cosas como «busca el contrato de Velmar» o "
                "«¿qué acordamos con Marta?». Elige qué carpetas recuerda en Ajustes → Memoria.");
        case PanelSection::accion:
            return tr(
                "Nada por aquí todavía.\nPide con ⌥ Espacio cosas como «crea una reunión mañana a las 10 con "
                "Ana» o «envía este documento a Luis». Siempre te pediré confirmación.");
    }
    return formatText(tr("Nada por aquí todavía.\nMantén pulsada %@ y habla en cualquier campo de texto."),
                      {holdKeyName(holdKey)});
}

}  // namespace

std::string emptyList(PanelSection section, const std::string& query, PushToTalkKey holdKey) {
    if (query.empty()) return emptySection(section, holdKey);
    return formatText(tr("Nada coincide con «%@»."), {query});
}

std::string holdKeyName(PushToTalkKey key) {
    switch (key) {
        case PushToTalkKey::rightOption:
            return tr("⌥ derecha");
        case PushToTalkKey::rightCommand:
            return tr("⌘ derecha");
        case PushToTalkKey::rightControl:
            return tr("⌃ derecha");
        case PushToTalkKey::fn:
            break;
    }
    return tr(label(key));
}

std::vector<std::pair<const char*, std::string>> words() {
    return {{"title", tr("Historial")},
            {"sections", tr("Secciones")},
            {"list", tr("Historial")},
            {"search", tr("Buscar en tu historial…")},
            {"clear", tr("Borrar la búsqueda")},
            {"more", tr("Más opciones")},
            {"back", tr("Volver a la lista")},
            {"foot", tr("Tu historial se guarda solo en este equipo.")},
            {"composer", tr("Pregunta, dicta o pide una acción…")},
            {"listening", tr("Escuchando…")},
            {"send", tr("Enviar")},
            {"undo", tr("Deshacer")}};
}

std::string micButton(bool recording) { return tr(recording ? "Terminar dictado" : "Dictar"); }

Welcome welcome(PushToTalkKey holdKey) {
    return {.title = tr("Habla. DORIX escribe."),
            .steps = {tr("Pon el cursor en cualquier campo de texto: Gmail, WhatsApp, Slack, Word…"),
                      formatText(tr("Mantén pulsado ⌥ Espacio (o %@) y habla con naturalidad."),
                                 {holdKeyName(holdKey)}),
                      tr("Suelta: DORIX quita las muletillas, adapta el tono a la app y lo escribe por ti.")},
            .aside = tr("¿Dudas sobre lo que ves? Con el mismo atajo, pregunta: «¿qué me están pidiendo "
                        "aquí?». Con un texto seleccionado: «tradúcelo» o «explícamelo»."),
            .sample = tr("Prueba: «Dile a Carlos que perfecto y que podemos hablar mañana por la mañana».")};
}

}  // namespace dorix::paneltext
