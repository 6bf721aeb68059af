#include "assistant/DevicePrompt.h"

#include "base/text/Line.h"
#include "base/text/Regex.h"
#include "base/text/Text.h"

#include <algorithm>
#include <cstddef>

namespace dorix {

namespace {

// Characters.
constexpr std::size_t longestWindowTitle = 120;
constexpr std::size_t longestBlock = 2500;
constexpr std::size_t longestHit = 500;
constexpr std::size_t longestSelection = 30'000;
constexpr std::size_t longestPrompt = 6000;

constexpr std::size_t mostHits = 4;

constexpr std::string_view rules =
    "\nCómo responder:\n"
    "- En el idioma de la pregunta. Breve y directo: ve al grano (1–5 frases o una lista corta), salvo que "
    "pidan detalle.\n"
    "- Si piden redactar algo (una respuesta, un correo, un mensaje), devuelve solo ese texto, listo para "
    "insertar, sin introducción ni comentarios.\n"
    "- Básate en lo que se ve o se ha seleccionado. Si algo no aparece, dilo; no inventes.\n"
    "- Formato: texto plano; **negrita** solo para lo clave; listas con «- » si ayudan. Sin títulos ni "
    "tablas.";

constexpr std::string_view rewriteRules =
    "Aplica la instrucción del usuario al texto seleccionado y devuelve solo el texto resultante, listo para "
    "sustituir al original: sin comillas que lo envuelvan, sin explicaciones.\n"
    "- Conserva el formato (saltos de línea, listas) salvo que la instrucción pida cambiarlo.\n"
    "- Mantén el idioma original, salvo que se pida traducir.\n"
    "- No añadas información que no esté en el texto.";

/// No text ends the program's own words where it likes: a null character ends them for some servers.
std::string asMaterial(std::string_view text, std::size_t longest) {
    using namespace std::string_view_literals;
    return text::replaceAll(text::prefix(text, longest), "\0"sv, "");
}

/// What somebody else has named, within our quotes: it cannot tell where they end.
std::string asName(std::string_view name) {
    return text::replaceAll(text::replaceAll(text::asLine(name), "«", "\""), "»", "\"");
}

/// No line of a text passes for the begin of the next block, or for the question.
std::string withoutLabels(std::string_view material) {
    static const Regex labels(
        "(?m)^(Documento(?= «)|(?:Fragmentos de sus documentos|Actividad reciente|Texto seleccionado"
        "|Texto visible en la ventana|Pregunta)(?=:))");
    return labels.replaceAll(material, "$1 ");
}

/// Nor does one of a found text pass for another.
std::string withoutNumbers(std::string_view found) {
    static const Regex numbers(R"((?m)^(\[\d+)(?=\] ))");
    return numbers.replaceAll(found, "$1 ");
}

void appendBlock(std::string& prompt, std::string_view label, std::string_view material) {
    prompt.append(label).append(withoutLabels(asMaterial(material, longestBlock))).append("\n\n");
}

/// A selected text cannot tell where it ends.
std::string withoutTags(std::string_view selected) {
    return text::replaceAll(selected, "seleccion>", "seleccion >");
}

std::string uncutRewritePrompt(std::string_view instruction, std::string_view selected) {
    std::string prompt = "<seleccion>\n";
    prompt += withoutTags(asMaterial(selected, longestSelection));
    prompt += "\n</seleccion>\n\nInstrucción: ";
    prompt += instruction;
    return prompt;
}

void appendHits(std::string& prompt, const std::vector<MemoryHit>& hits) {
    prompt += "Fragmentos de sus documentos:\n";
    for (std::size_t n = 0; n < std::min(hits.size(), mostHits); ++n) {
        if (n > 0) prompt += '\n';
        prompt.append("[").append(std::to_string(n + 1)).append("] ");
        prompt.append(text::asLine(hits[n].title)).append(": ");
        prompt += withoutNumbers(withoutLabels(asMaterial(hits[n].text, longestHit)));
    }
    prompt += "\n\n";
}

}  // namespace

std::string answerInstructions(const Assistant::Request& request) {
    const auto& context = request.context;
    std::string prompt =
        "Eres DORIX, un copiloto de IA que vive en el ordenador del usuario y ve lo que él ve.\n"
        "El usuario está en ";
    prompt += asName(context.displayName);
    const auto title = context.windowTitle.value_or("");
    if (!title.empty() && title != context.displayName) {
        prompt += " — ventana «";
        prompt.append(asName(text::prefix(title, longestWindowTitle))).append("»");
    }
    prompt += ".\n";
    if (request.shot) prompt += "Se adjunta una captura de esa ventana: es tu contexto principal.\n";
    if (request.selection) {
        prompt +=
            "El usuario ha seleccionado el texto que va entre <seleccion>; la pregunta se refiere a él.\n";
    }
    prompt += rules;
    return prompt;
}

std::string answerPrompt(const Assistant::Request& request, const std::optional<std::string>& screenText) {
    std::string prompt;
    if (request.document) {
        appendBlock(prompt, "Documento «" + asName(request.document->name) + "»:\n", request.document->text);
    }
    if (!request.memory.empty()) appendHits(prompt, request.memory);
    if (request.recap) appendBlock(prompt, "Actividad reciente:\n", *request.recap);
    if (request.selection) appendBlock(prompt, "Texto seleccionado:\n", request.selection->text);
    if (screenText) appendBlock(prompt, "Texto visible en la ventana:\n", *screenText);
    return prompt + "Pregunta: " + asMaterial(request.question, request.question.size());
}

std::string_view rewriteSelectionInstructions() { return rewriteRules; }

std::string rewriteSelectionPrompt(std::string_view instruction, std::string_view selected) {
    return std::string(text::prefix(uncutRewritePrompt(instruction, selected), longestPrompt));
}

bool hasRoomToRewrite(std::string_view instruction, std::string_view selected) {
    return text::length(selected) <= longestSelection &&
           text::length(uncutRewritePrompt(instruction, selected)) <= longestPrompt;
}

}  // namespace dorix
