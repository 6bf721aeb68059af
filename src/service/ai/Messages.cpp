#include "service/ai/Needed.h"
#include "service/ai/Requests.h"

#include <string_view>
#include <utility>

namespace dorix::service {

namespace {

struct Wording {
    std::string_view spanish;
    std::string_view english;

    std::string_view in(Language language) const { return language == Language::spanish ? spanish : english; }
};

Wording wordingOf(RequestError::Problem problem) {
    using enum RequestError::Problem;
    switch (problem) {
        case notJson:
            return {"La petición no es un objeto JSON válido.", "The request is not a valid JSON object."};
        case missing:
            return {"Falta «%».", "“%” is missing."};
        case wrongType:
            return {"«%» no es del tipo esperado.", "“%” is not of the expected type."};
        case unknown:
            return {"«%» tiene un valor desconocido.", "“%” has an unknown value."};
        case notPicture:
            return {"«%» no es una imagen JPEG o PNG en base64.",
                    "“%” is not a JPEG or PNG picture in base64."};
        case tooLong:
            return {"«%» es demasiado largo.", "“%” is too long."};
    }
    std::unreachable();
}

Wording wordingOf(Needed::Reason reason) {
    using enum Needed::Reason;
    switch (reason) {
        case composing:
            return {
                "Para redactar algo nuevo hace falta un modelo de lenguaje, y este servicio no tiene "
                "ninguno.",
                "Writing something new takes a language model, and this service has none."};
        case picture:
            return {
                "Para ver lo que hay en la pantalla hace falta un modelo de lenguaje, y este servicio no "
                "tiene ninguno. Selecciona el texto y vuelve a preguntar.",
                "Seeing what is on the screen takes a language model, and this service has none. Select the "
                "text and ask again."};
        case noMaterial:
            return {
                "Para responder a esto hace falta un modelo de lenguaje, y este servicio no tiene ninguno. "
                "Sin él, solo puedo citar documentos, textos seleccionados o tu actividad.",
                "Answering this takes a language model, and this service has none. Without it I can only "
                "quote documents, selected text or your activity."};
        case notFound:
            return {
                "No he encontrado ninguna frase que lo responda. Para interpretar el texto hace falta un "
                "modelo de lenguaje, y este servicio no tiene ninguno.",
                "I couldn’t find a sentence that answers this. Interpreting the text takes a language model, "
                "and this service has none."};
        case rewriting:
            return {
                "Para reescribir el texto así hace falta un modelo de lenguaje, y este servicio no tiene "
                "ninguno. Sin él puedo hacer listas, numerar, ordenar, unir líneas y cambiar mayúsculas.",
                "Rewriting text like this takes a language model, and this service has none. Without it I "
                "can make lists, number, sort and join lines, and change case."};
    }
    std::unreachable();
}

}  // namespace

std::string message(const RequestError& error, Language language) {
    const auto wording = wordingOf(error.problem).in(language);
    const auto name = wording.find('%');
    if (name == std::string_view::npos) return std::string(wording);
    return std::string(wording.substr(0, name)) + error.field + std::string(wording.substr(name + 1));
}

std::string message(Needed needed, Language language) {
    return std::string(wordingOf(needed.reason).in(language));
}

}  // namespace dorix::service
