#include "service/words/Messages.h"

#include <array>
#include <cstddef>
#include <utility>

namespace dorix::service {

namespace {

struct Row {
    Message message;
    std::string_view spanish;
    std::string_view english;
};

constexpr std::array rows = {
    Row{Message::badEmail, "Esa dirección de correo no es válida.", "That email address isn’t valid."},
    Row{Message::badBody, "La petición no se entiende.", "The request can’t be understood."},
    Row{Message::codeRefused, "El código no es correcto o ha caducado. Pide uno nuevo.",
        "The code is wrong or has expired. Ask for a new one."},
    Row{Message::tooManyCodes, "Has pedido demasiados códigos. Espera unos minutos y vuelve a intentarlo.",
        "You’ve asked for too many codes. Wait a few minutes and try again."},
    Row{Message::tooManyTries, "Demasiados intentos. Espera unos minutos y vuelve a intentarlo.",
        "Too many attempts. Wait a few minutes and try again."},
    Row{Message::dayUsedUp, "Has llegado al límite de uso de hoy. Mañana podrás seguir.",
        "You’ve reached today’s usage limit. You can go on tomorrow."},
    Row{Message::noSession, "La sesión no es válida o ha terminado.",
        "The session isn’t valid or has ended."},
    Row{Message::unknownSession, "Esa sesión no existe.", "There is no such session."},
    Row{Message::unknownPath, "Esa dirección no existe.", "There is nothing at that address."},
    Row{Message::wrongMethod, "Esa dirección no admite este método.",
        "That address doesn’t take this method."},
    Row{Message::bodyTooLong, "La petición es demasiado grande.", "The request is too large."},
    Row{Message::notOffered, "Este servidor todavía no ofrece esta función.",
        "This server doesn’t offer this feature yet."},
    Row{Message::foreignOrigin, "Esta dirección no atiende a páginas web.",
        "Web pages aren’t answered here."},
    Row{Message::notForCaller, "No tienes permiso para ver esto.", "You may not see this."},
    Row{Message::storageDown, "El servidor no puede guardar datos en este momento. Inténtalo más tarde.",
        "The server can’t store data right now. Try again later."},
    Row{Message::modelDown, "El modelo de lenguaje no responde. Inténtalo más tarde.",
        "The language model isn’t responding. Try again later."},
    Row{Message::modelUnclear, "El modelo de lenguaje no ha dado una respuesta utilizable.",
        "The language model didn’t give a usable answer."},
    Row{Message::modelCutOff, "La respuesta del modelo de lenguaje se ha cortado.",
        "The language model’s answer was cut off."},
    Row{Message::internal, "Ha ocurrido un error en el servidor.", "Something went wrong on the server."},
    Row{Message::codeSubject, "Tu código de DORIX", "Your DORIX code"},
    Row{Message::codeText,
        "Tu código para entrar en DORIX es %CODE%\n\nVale durante diez minutos. Si no lo has pedido tú, no "
        "hagas nada.\n",
        "Your code to sign in to DORIX is %CODE%\n\nIt is good for ten minutes. If you didn’t ask for it, do "
        "nothing.\n"},
};

constexpr bool inOrder() {
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (static_cast<std::size_t>(std::to_underlying(rows[i].message)) != i) return false;
    }
    return rows.size() == static_cast<std::size_t>(std::to_underlying(Message::codeText)) + 1;
}
static_assert(inOrder(), "a row for every message, in the order of the enumeration");

}  // namespace

std::string_view say(Message message, Language language) {
    const auto& row = rows[static_cast<std::size_t>(std::to_underlying(message))];
    return language == Language::english ? row.english : row.spanish;
}

Language languageAsked(std::string_view tag) { return languageNamed(tag).value_or(Language::spanish); }

}  // namespace dorix::service
