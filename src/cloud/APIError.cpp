#include "cloud/APIError.h"

#include "localdata/Language.h"

namespace dorix {

std::string APIError::localizedDescription() const {
    switch (kind_) {
        case Kind::notLoggedIn:
            return tr("Entra en tu cuenta de DORIX para seguir.");
        case Kind::offline:
            return tr("Sin conexión con DORIX. Revisa tu internet.");
        case Kind::limited:
        case Kind::server:
            break;
    }
    if (status_) return formatText(tr("El servidor de DORIX no ha respondido (%d)."), {*status_});
    return tr(message_);
}

std::string DecodingError::localizedDescription() const { return tr("Respuesta no válida."); }

}  // namespace dorix
