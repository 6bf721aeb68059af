#include "recogniser/server/ServerFailure.h"

namespace dorix::recogniser {

namespace {

using Kind = ServerFailure::Kind;

/// As literals: the program translates them.
const char* wordsOf(Kind kind) {
    switch (kind) {
        case Kind::badAddress:
            return "La dirección del servidor de transcripción no vale.";
        case Kind::keyInClear:
            return "La clave del servidor de transcripción solo se envía por https.";
        case Kind::unreachable:
            return "No hay conexión con el servidor de transcripción.";
        case Kind::untrusted:
            return "El servidor de transcripción no demuestra quién es.";
        case Kind::timedOut:
            return "El servidor de transcripción no responde.";
        case Kind::badKey:
            return "El servidor de transcripción no acepta la clave.";
        case Kind::unknownCall:
            return "El servidor de transcripción no conoce la dirección o el modelo.";
        case Kind::tooLong:
            return "La grabación es demasiado larga para el servidor de transcripción.";
        case Kind::tooMany:
            return "El servidor de transcripción no acepta más peticiones por ahora.";
        case Kind::refused:
            return "El servidor de transcripción no acepta la petición.";
        case Kind::serverError:
            return "El servidor de transcripción ha fallado.";
        case Kind::badAnswer:
            return "La respuesta del servidor de transcripción no se entiende.";
    }
    return "";
}

}  // namespace

ServerFailure::ServerFailure(Kind kind) : Refusal(wordsOf(kind)), kind_(kind) {}

std::optional<Kind> ServerFailure::kindOfStatus(long status) {
    if (status >= 200 && status < 300) return std::nullopt;
    if (status == 401 || status == 403) return Kind::badKey;
    if (status == 404 || status == 405) return Kind::unknownCall;
    if (status == 413) return Kind::tooLong;
    if (status == 429) return Kind::tooMany;
    if (status == 408 || status == 504) return Kind::timedOut;
    return status >= 500 ? Kind::serverError : Kind::refused;
}

bool ServerFailure::isPassing() const {
    return kind_ == Kind::unreachable || kind_ == Kind::serverError || kind_ == Kind::tooMany;
}

}  // namespace dorix::recogniser
