#include "writing/TextPolisher.h"

#include "base/text/Text.h"
#include "localdata/Language.h"

#include <algorithm>
#include <array>
#include <string>
#include <unordered_set>

namespace dorix {

namespace {

constexpr std::size_t titleWords = 7;
constexpr std::size_t stemLetters = 5;
constexpr std::size_t leastCheckedLetters = 4;

std::string_view toneInstruction(Tone tone) {
    switch (tone) {
        case Tone::informal:
            return "Chat personal (tipo WhatsApp/Mensajes). Tono informal y natural, frases cortas. "
                   "Sin saludo formal, sin despedida y sin firma. "
                   "Puede llevar un emoji solo si encaja claramente.";
        case Tone::profesional:
            return "Correo electrónico profesional. Si el dictado es un mensaje para alguien, dale formato "
                   "de correo: saludo con su nombre (\"Hola Ana,\"), línea en blanco, cuerpo en párrafos "
                   "breves, línea en blanco y despedida corta (\"Un saludo,\" o \"Gracias,\"). "
                   "Tono cordial, claro y sin rodeos.";
        case Tone::cercano:
            return "Mensajería de trabajo (Slack/Teams). Tono cercano y directo, una o pocas líneas. "
                   "Sin saludo formal ni firma.";
        case Tone::comunicativo:
            return "Publicación o mensaje en red profesional (LinkedIn). "
                   "Tono positivo, cercano y comunicativo, frases con ritmo. "
                   "Sin hashtags salvo que se dicten.";
        case Tone::estructurado:
            return "Documento. Redacción clara y estructurada; usa párrafos y, si el contenido lo pide "
                   "(pasos, puntos, listas), una lista numerada o con viñetas.";
        case Tone::tecnico:
            return "Contexto técnico (editor de código/terminal). Conciso y preciso, sin adornos. "
                   "Conserva literalmente nombres de funciones, variables, comandos y términos técnicos. "
                   "Si se dicta un comentario de código, escríbelo con la sintaxis de comentario (//).";
        case Tone::neutral:
            return "Texto general. Limpio, bien puntuado y natural.";
    }
    std::unreachable();
}

constexpr std::string_view closingRules =
    "\n- Mismo idioma y mismo contenido: no añadas ni inventes nada."
    "\n- Quita muletillas (eh, em, vale, bueno) y repeticiones."
    "\n- Si el usuario se corrige («el martes, no, el miércoles»), deja solo la corrección («el miércoles»)."
    "\n- Si dice «dile a X que…», escribe el mensaje directamente para X."
    "\n- Si es una pregunta, escríbela como pregunta, no la respondas."
    "\nTítulo: máximo 6 palabras, solo con lo dictado.";

// An engine may greet and close although nobody dictated it.
constexpr std::array<std::string_view, 12> courtesies{"hola",     "saludo",   "saludos",     "gracias",
                                                      "buenos",   "buenas",   "querido",     "querida",
                                                      "estimado", "estimada", "atentamente", "cordialmente"};

bool isChecked(std::string_view word) {
    return text::length(word) >= leastCheckedLetters &&
           std::ranges::find(courtesies, word) == courtesies.end();
}

}  // namespace

std::string rewriteInstructions(const PolishRequest& request) {
    std::string prompt = "Reescribe la transcripción de un dictado como texto final para ";
    prompt += request.appName;
    prompt += ". ";
    prompt += toneInstruction(request.tone);
    if (request.tone == Tone::profesional && !request.signatureName.empty()) {
        prompt += " Firma con «" + request.signatureName + "».";
    }
    prompt += closingRules;
    return prompt;
}

std::string titleFrom(std::string_view text) {
    auto words = text::words(text);
    if (words.size() > titleWords) words.resize(titleWords);
    const std::string joined = text::join(words, " ");
    const auto title = text::trimAny(joined, ".,;:");
    return title.empty() ? tr("Dictado") : std::string(title);
}

double faithfulnessScore(std::string_view produced, std::string_view dictated) {
    const std::string foldedDictation = text::fold(dictated);
    std::unordered_set<std::string_view> stems;
    for (const auto word : text::letterRuns(foldedDictation)) stems.insert(text::prefix(word, stemLetters));

    int checked = 0;
    int found = 0;
    const std::string foldedProduct = text::fold(produced);
    for (const auto word : text::letterRuns(foldedProduct)) {
        if (!isChecked(word)) continue;
        ++checked;
        if (stems.contains(text::prefix(word, stemLetters))) ++found;
    }
    return checked == 0 ? 1.0 : static_cast<double>(found) / checked;
}

}  // namespace dorix
