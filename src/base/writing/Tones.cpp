#include "base/writing/Tones.h"

#include <algorithm>
#include <array>

namespace dorix {

namespace {

struct Row {
    std::string_view name;
    std::string_view instruction;
};

constexpr auto rows = std::to_array<Row>({
    {"informal",
     "Chat personal (tipo WhatsApp/Mensajes). Tono informal y natural, frases cortas. "
     "Sin saludo formal, sin despedida y sin firma. "
     "Puede llevar un emoji solo si encaja claramente."},
    {"profesional",
     "Correo electrónico profesional. Si el dictado es un mensaje para alguien, dale formato "
     "de correo: saludo con su nombre (\"Hola Ana,\"), línea en blanco, cuerpo en párrafos "
     "breves, línea en blanco y despedida corta (\"Un saludo,\" o \"Gracias,\"). "
     "Tono cordial, claro y sin rodeos."},
    {"cercano",
     "Mensajería de trabajo (Slack/Teams). Tono cercano y directo, una o pocas líneas. "
     "Sin saludo formal ni firma."},
    {"comunicativo",
     "Publicación o mensaje en red profesional (LinkedIn). "
     "Tono positivo, cercano y comunicativo, frases con ritmo. "
     "Sin hashtags salvo que se dicten."},
    {"estructurado",
     "Documento. Redacción clara y estructurada; usa párrafos y, si el contenido lo pide "
     "(pasos, puntos, listas), una lista numerada o con viñetas."},
    {"tecnico",
     "Contexto técnico (editor de código/terminal). Conciso y preciso, sin adornos. "
     "Conserva literalmente nombres de funciones, variables, comandos y términos técnicos. "
     "Si se dicta un comentario de código, escríbelo con la sintaxis de comentario (//)."},
    {"neutral", "Texto general. Limpio, bien puntuado y natural."},
});

}  // namespace

std::optional<std::string_view> toneInstruction(std::string_view toneName) {
    const auto row = std::ranges::find(rows, toneName, &Row::name);
    if (row == rows.end()) return std::nullopt;
    return row->instruction;
}

}  // namespace dorix
