#include "assistant/WithoutModel.h"

#include "base/text/Text.h"
#include "localdata/Language.h"
#include "memory/Memory.h"
#include "memory/recall/Merge.h"
#include "memory/recall/MessageSearch.h"

#include <vector>

namespace dorix {

namespace {

std::string nothingInMessages(const MessageSearch* messages) {
    if (messages == nullptr || !messages->isConnected())
        return tr("Para buscar en Slack, conéctalo en Ajustes › Conexiones.");
    const auto names = messages->workspaces();
    const auto listed = text::join({names.begin(), names.end()}, ", ");
    return formatText(
        tr("No he encontrado mensajes sobre eso en Slack. He buscado en: %@.\n\nSi el canal está "
           "en otro espacio de Slack, añádelo en Ajustes › Conexiones › Añadir otro espacio."),
        {listed});
}

}  // namespace

std::string nothingFound(std::string_view question, const Memory& memory, const MessageSearch* messages) {
    if (speaksOfSlack(question)) return nothingInMessages(messages);
    if (memory.isReadingFirst())
        return tr("Todavía estoy leyendo tus documentos. Prueba de nuevo en unos minutos.");
    return tr("No he encontrado nada sobre eso en tus documentos ni en tu historial.");
}

std::string nothingDone(const Memory& memory) {
    if (!memory.notesActivity())
        return tr("La memoria de actividad está desactivada. Actívala en Ajustes › Memoria.");
    return tr("Aún no tengo actividad tuya registrada. Vuelve a preguntarme cuando hayas trabajado un rato.");
}

}  // namespace dorix
