#include "writing/TextPolisher.h"

#include "base/text/Regex.h"
#include "base/text/Text.h"
#include "base/writing/Tones.h"
#include "localdata/Language.h"

#include <algorithm>
#include <string>

namespace dorix {

namespace {

constexpr std::size_t titleWords = 7;

constexpr std::string_view closingRules =
    "\n- Mismo idioma y mismo contenido: no añadas ni inventes nada."
    "\n- Quita muletillas (eh, em, vale, bueno) y repeticiones."
    "\n- Si el usuario se corrige («el martes, no, el miércoles»), deja solo la corrección («el miércoles»)."
    "\n- Si dice «dile a X que…», escribe el mensaje directamente para X."
    "\n- Si es una pregunta, escríbela como pregunta, no la respondas."
    "\nTítulo: máximo 6 palabras, solo con lo dictado.";

}  // namespace

std::size_t wordCount(std::string_view text) {
    return static_cast<std::size_t>(
        std::ranges::count_if(text::split(text, ' '), [](const auto piece) { return !piece.empty(); }));
}

std::string withoutControls(std::string_view text) {
    static const Regex controls(R"([\p{Cc}&&[^\n\t]])");
    return controls.replaceAll(text, "");
}

std::string typeable(std::string_view written) { return std::string(text::trim(withoutControls(written))); }

std::string rewriteInstructions(const PolishRequest& request) {
    std::string prompt = "Reescribe la transcripción de un dictado como texto final para ";
    prompt += request.appName;
    prompt += ". ";
    prompt += toneInstruction(toneName(request.tone)).value();
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

}  // namespace dorix
