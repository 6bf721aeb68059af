#include "download/InstallError.h"

#include "localdata/Language.h"

namespace dorix {

namespace {

std::string wordsFor(HttpError::Kind kind) {
    switch (kind) {
        case HttpError::Kind::unreachable:
            return tr("no hay conexión con el servidor");
        case HttpError::Kind::untrusted:
            return tr("el servidor no demuestra quién es");
        case HttpError::Kind::timedOut:
            return tr("el servidor ha dejado de responder");
        case HttpError::Kind::badRequest:
            return tr("la dirección no es segura o no vale");
        case HttpError::Kind::broken:
        case HttpError::Kind::tooLarge:
        case HttpError::Kind::disk:
            break;
    }
    return tr("la descarga se ha cortado");
}

}  // namespace

InstallError InstallError::tooLittleSpace(std::uint64_t needed, std::uint64_t free) {
    return InstallError(Case::tooLittleSpace,
                        formatText(tr("No hay sitio para el modelo: hacen falta %@ y quedan %@."),
                                   {sizeText(needed), sizeText(free)}));
}

InstallError InstallError::of(const HttpError& error) {
    if (error.kind() == HttpError::Kind::disk)
        return InstallError(Case::notStored, error.localizedDescription());
    return InstallError(Case::unreachable, wordsFor(error.kind()));
}

std::string InstallError::localizedDescription() const {
    switch (kind_) {
        case Case::unknownModel:
            return tr("Ese modelo de voz no está en la lista.");
        case Case::licenceNotAccepted:
            return tr("Antes de descargar ese modelo de voz hay que aceptar su licencia.");
        case Case::tooLittleSpace:
            return detail_;
        case Case::unreachable:
            return formatText(
                tr("No se ha podido descargar el modelo: %@. Lo que ya ha llegado se conserva."), {detail_});
        case Case::notGiven:
            return formatText(tr("El servidor no da el modelo (%@)."), {detail_});
        case Case::wrongContents:
            return tr("Lo que ha llegado no es el modelo, y se ha borrado.");
        case Case::notUnpacked:
            return formatText(tr("No se ha podido preparar el motor de voz: %@."), {detail_});
        case Case::notStored:
            return formatText(tr("No se ha podido guardar el modelo: %@."), {detail_});
        case Case::underWayElsewhere:
            return tr("Otro programa ya está instalando ese modelo.");
        case Case::notOurs:
            return tr("Ese modelo de voz lo trae el sistema; DORIX no puede quitarlo.");
    }
    return {};
}

std::string sizeText(std::uint64_t bytes) {
    constexpr std::uint64_t megabyte = 1'000'000;
    constexpr std::uint64_t gigabyte = 1000 * megabyte;
    // Rounded up, also what is needed.
    const auto megabytes = (bytes + megabyte - 1) / megabyte;
    if (bytes < gigabyte) return std::to_string(megabytes) + " MB";
    const auto tenths = (megabytes + 99) / 100;
    const std::string point = currentAppLanguage() == "en" ? "." : ",";
    return std::to_string(tenths / 10) + point + std::to_string(tenths % 10) + " GB";
}

}  // namespace dorix
