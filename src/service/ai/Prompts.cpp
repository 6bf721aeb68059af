#include "service/ai/Prompts.h"

#include "base/text/Text.h"
#include "base/writing/Tones.h"
#include "service/ai/PromptTexts.h"

#include <optional>
#include <string>
#include <vector>

namespace dorix::service {

namespace {

/// One piece of the user's message.
struct Section {
    std::string_view name;  // ours, never from a request
    std::string text;
};
using Sections = std::vector<Section>;

void add(Sections& sections, std::string_view name, const std::string& text) {
    if (!text.empty()) sections.push_back({.name = name, .text = text});
}

void add(Sections& sections, std::string_view name, const std::optional<std::string>& text) {
    if (text) add(sections, name, *text);
}

/// `boundary`, made longer until no section holds it.
std::string unforgeable(std::string_view boundary, const Sections& sections) {
    std::string own = boundary.empty() ? "x" : std::string(boundary);
    for (const auto& section : sections) {
        while (section.text.find(own) != std::string::npos) own += 'x';
    }
    return own;
}

std::string filled(std::string_view text, std::string_view placeholder, std::string_view value) {
    return text::replaceAll(text, placeholder, value);
}

std::string told(const Sections& sections, const std::string& boundary) {
    std::string out;
    for (const auto& section : sections) {
        out += "[" + boundary + " " + std::string(section.name) + "]\n" + section.text + "\n[" + boundary +
               " fin]\n";
    }
    return out;
}

Json userContent(std::string told, const std::optional<Picture>& picture) {
    if (!picture) return told;
    return Json::array({{{"type", "text"}, {"text", std::move(told)}},
                        {{"type", "image_url"}, {"image_url", {{"url", picture->dataUrl()}}}}});
}

Json messages(std::string_view instructions, const Sections& sections, std::string_view boundary,
              const std::optional<Picture>& picture) {
    const auto own = unforgeable(boundary, sections);
    const auto system = std::string(prompttexts::materialRule) + std::string(instructions);
    return Json::array({{{"role", "system"}, {"content", filled(system, "%BOUNDARY%", own)}},
                        {{"role", "user"}, {"content", userContent(told(sections, own), picture)}}});
}

std::optional<Picture> shown(const std::optional<Picture>& picture, Pictures pictures) {
    return pictures == Pictures::sent ? picture : std::nullopt;
}

Sections sectionsOf(const WriteRequest& request) {
    Sections sections;
    add(sections, "aplicacion", request.appName);
    add(sections, "ventana", request.windowTitle);
    add(sections, "firma", request.signatureName);
    add(sections, "estilo", request.styleNotes);
    for (const auto& example : request.styleExamples) add(sections, "ejemplo", example);
    if (request.editableFocus) {
        const bool isThere = *request.editableFocus;
        sections.push_back({"foco", isThere ? "hay un campo de texto" : "no hay un campo de texto"});
    }
    sections.push_back({"dictado", request.transcript});
    return sections;
}

std::string titled(const AskRequest::MemoryHit& hit) {
    std::string text = "[" + std::to_string(hit.n) + "] " + hit.title;
    if (!hit.date.empty()) text += " (" + hit.date + ")";
    return text + "\n" + hit.text;
}

Sections sectionsOf(const AskRequest& request, Pictures pictures) {
    Sections sections;
    add(sections, "aplicacion", request.appName);
    add(sections, "ventana", request.windowTitle);
    // A model that is asked what the screen shows would else make something up.
    if (request.screenshot && pictures == Pictures::leftOut) {
        sections.push_back({"pantalla",
                            "(El usuario pregunta delante de su pantalla, pero tú no ves imágenes: no sabes "
                            "lo que muestra. Si la respuesta depende de ello, la respuesta es que no puedes "
                            "verla y que seleccione el texto.)"});
    }
    if (request.document)
        add(sections, "documento", request.document->name + "\n\n" + request.document->text);
    for (const auto& hit : request.memory) add(sections, "fragmento", titled(hit));
    add(sections, "actividad", request.recap);
    add(sections, "reunion", request.meetingTitle);
    add(sections, "transcripcion", request.transcript);
    add(sections, "seleccion", request.selection);
    sections.push_back({"pregunta", request.question});
    return sections;
}

}  // namespace

Json writeMessages(const WriteRequest& request, std::string_view boundary, Pictures pictures) {
    auto instructions = filled(prompttexts::write, "%TONE%", toneInstruction(request.tone).value_or(""));
    if (request.allowAsk) instructions += prompttexts::writeMayAsk;
    return messages(instructions, sectionsOf(request), boundary, shown(request.screenshot, pictures));
}

Json askMessages(const AskRequest& request, Language caller, std::string_view boundary, Pictures pictures) {
    const auto language = caller == Language::spanish ? "español" : "inglés";
    auto instructions = filled(prompttexts::ask, "%LANGUAGE%", language);
    if (request.mode == "meeting_summary") instructions += prompttexts::meetingSummary;
    if (request.mode == "meeting_live") instructions += prompttexts::meetingLive;
    return messages(instructions, sectionsOf(request, pictures), boundary,
                    shown(request.screenshot, pictures));
}

Json transformMessages(const TransformRequest& request, std::string_view boundary) {
    Sections sections;
    sections.push_back({"seleccion", request.selection});
    sections.push_back({"instruccion", request.instruction});
    return messages(prompttexts::transform, sections, boundary, std::nullopt);
}

}  // namespace dorix::service
