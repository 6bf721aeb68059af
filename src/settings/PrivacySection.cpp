#include "settings/PrivacySection.h"

#include "base/text/Url.h"
#include "download/InstallError.h"
#include "localdata/Language.h"

#include <system_error>
#include <utility>

namespace dorix {

namespace fs = std::filesystem;
using namespace settingsrow;
using Tone = SettingsRow::Tone;

namespace {

/// 0 where there is nothing, or what is there may not be seen.
std::uint64_t sizeOf(const fs::path& place) {
    std::error_code error;
    std::uint64_t sum = 0;
    if (fs::is_regular_file(fs::symlink_status(place, error))) {
        sum = fs::file_size(place, error);
        return error ? 0 : sum;
    }
    for (fs::recursive_directory_iterator at(place, error), end; !error && at != end; at.increment(error)) {
        std::error_code one;
        if (!fs::is_regular_file(at->symlink_status(one))) continue;
        const auto size = at->file_size(one);
        if (!one) sum += size;
    }
    return sum;
}

/// As sizeText, and small ones too.
std::string amountText(std::uint64_t bytes) {
    constexpr std::uint64_t kilobyte = 1000;
    if (bytes >= kilobyte * kilobyte) return sizeText(bytes);
    return std::to_string((bytes + kilobyte - 1) / kilobyte) + " kB";
}

}  // namespace

PrivacySection::PrivacySection(const Parts& parts) : parts_(parts), tasks_(parts.executor) {
    follow(parts.permissions.microphone, parts.permissions.speech, parts.permissions.accessibility,
           parts.permissions.screen, parts.speechServer);
}

std::string PrivacySection::title() const { return tr("Privacidad"); }

void PrivacySection::shown() {
    parts_.permissions.refresh();
    parts_.permissions.startPolling();
    count_ = parts_.history.count();
    tasks_.spawn(measure());
}

void PrivacySection::hidden() {
    parts_.permissions.stopPolling();
    isClearing_ = isClearingMemory_ = cannotClear_ = cannotOpen_ = false;
}

bool PrivacySection::stepBack() {
    const bool gaveUp = isClearing_ || isClearingMemory_;
    isClearing_ = isClearingMemory_ = false;
    if (gaveUp) onChanged();
    return gaveUp;
}

SettingsRows PrivacySection::rows() {
    SettingsRows rows;
    addPermissions(rows);
    rows.push_back(heading("privacy.history-heading", tr("Historial")));
    rows.push_back(isClearing_ ? clearing() : history());
    rows.push_back(heading("privacy.memory-heading", tr("Memoria")));
    rows.push_back(isClearingMemory_ ? clearingMemory() : memory());
    addStored(rows);
    return rows;
}

void PrivacySection::addPermissions(SettingsRows& rows) {
    auto& permissions = parts_.permissions;
    // What was refused is granted in the system's settings alone.
    const auto add = [&](const char* id, std::string label, std::string description, bool isGranted,
                         bool isRefused, std::string_view pane, std::function<void()> request) {
        auto row = item(id, std::move(label), std::move(description));
        if (isGranted) {
            row.status = tr("Concedido");
            row.tone = Tone::good;
        } else if (isRefused && !permissions.hasPane(pane)) {
            row.status = tr("No está disponible en este ordenador.");
            row.tone = Tone::warning;
        } else {
            row.buttons = {{.id = "request", .label = tr(isRefused ? "Abrir Ajustes" : "Permitir")}};
        }
        row.actions.press = [request = std::move(request)](const std::string&) { request(); };
        rows.push_back(std::move(row));
    };
    rows.push_back(heading("privacy.permissions", tr("Permisos")));
    const auto microphone = permissions.microphone.get();
    add("privacy.microphone", tr("Micrófono"), tr("Solo mientras mantienes pulsada la tecla de dictado."),
        microphone == AuthorizationStatus::authorized, microphone != AuthorizationStatus::notDetermined,
        "Privacy_Microphone", [this] { tasks_.spawn(parts_.permissions.requestMicrophone()); });
    const auto speech = permissions.speech.get();
    const auto kept = parts_.speechServer.get().empty() ? tr("La voz se transcribe en este Mac.") : "";
    add("privacy.speech", tr("Reconocimiento de voz"), kept, speech == SpeechAuthorizationStatus::authorized,
        speech != SpeechAuthorizationStatus::notDetermined, "Privacy_SpeechRecognition",
        [this] { tasks_.spawn(parts_.permissions.requestSpeech()); });
    constexpr auto pane = "Privacy_Accessibility";
    add("privacy.accessibility", tr("Accesibilidad (escribir en otras apps)"), "",
        permissions.accessibility.get(), permissions.hasPane(pane), pane,
        [this] { parts_.permissions.requestAccessibility(); });
    if (!permissions.accessibility.get() && !permissions.hasPane(pane)) {
        rows.back().status =
            tr("La accesibilidad está desactivada en este escritorio, o le falta su servicio "
               "(paquete at-spi2-core).");
        rows.back().tone = Tone::warning;
    }
    constexpr auto screenPane = "Privacy_ScreenCapture";
    add("privacy.screen", tr("Grabación de pantalla (preguntar sobre lo que ves)"), "",
        permissions.screen.get(), true, screenPane, [this] { parts_.permissions.requestScreen(); });
    if (!permissions.screen.get() && !permissions.hasPane(screenPane))
        rows.back().status = tr("Solo se puede en una sesión X11.");
}

SettingsRow PrivacySection::history() {
    auto row = item("privacy.history", "", "");
    row.label = count_ == 1 ? tr("1 elemento guardado solo en este equipo.")
                            : formatText(tr("%d elementos guardados solo en este equipo."),
                                         {static_cast<std::int64_t>(count_)});
    row.buttons = {{.id = "clear", .label = tr("Borrar historial…"), .isAvailable = count_ > 0}};
    if (cannotClear_) {
        row.status = tr("No se ha podido borrar el historial.");
        row.tone = Tone::wrong;
    }
    row.actions.press = [this](const std::string& button) { pressHistory(button); };
    return row;
}

SettingsRow PrivacySection::clearing() {
    auto row = item("privacy.history", tr("¿Borrar todo el historial?"), "");
    row.status = count_ == 1
                     ? tr("Se eliminará 1 elemento de este equipo. No se puede deshacer.")
                     : formatText(tr("Se eliminarán %d elementos de este equipo. No se puede deshacer."),
                                  {static_cast<std::int64_t>(count_)});
    row.tone = Tone::warning;
    row.buttons = {{.id = "back", .label = tr("Cancelar")},
                   {.id = "confirm", .label = tr("Borrar historial"), .isChief = true}};
    row.actions.press = [this](const std::string& button) { pressHistory(button); };
    return row;
}

void PrivacySection::pressHistory(const std::string& button) {
    const bool isMeant = std::exchange(isClearing_, button == "clear") && button == "confirm";
    cannotClear_ = isMeant && !parts_.history.clear();
    // What was dictated since the page was opened goes as well, and is counted.
    count_ = parts_.history.count();
    if (isMeant) tasks_.spawn(measure());
    onChanged();
}

SettingsRow PrivacySection::memory() {
    auto row =
        item("privacy.memory", tr("El índice de tus documentos y tu actividad, solo en este equipo."), "");
    row.buttons = {{.id = "clear", .label = tr("Borrar memoria…")}};
    row.actions.press = [this](const std::string& button) { pressMemory(button); };
    return row;
}

SettingsRow PrivacySection::clearingMemory() {
    auto row = item("privacy.memory", tr("¿Borrar toda la memoria?"), "");
    row.status =
        tr("Se borrarán el índice y tu actividad, no tus documentos. El índice vuelve a hacerse mientras "
           "«Buscar en mis documentos» está activado.");
    row.tone = Tone::warning;
    row.buttons = {{.id = "back", .label = tr("Cancelar")},
                   {.id = "confirm", .label = tr("Borrar memoria"), .isChief = true}};
    row.actions.press = [this](const std::string& button) { pressMemory(button); };
    return row;
}

void PrivacySection::pressMemory(const std::string& button) {
    const bool isMeant = std::exchange(isClearingMemory_, button == "clear") && button == "confirm";
    if (isMeant) tasks_.spawn(clearMemory());
    onChanged();
}

Task<void> PrivacySection::clearMemory() {
    co_await parts_.memory.clearActivity();
    co_await parts_.memory.clearIndex();
    co_await measure();
}

void PrivacySection::addStored(SettingsRows& rows) {
    using Size = std::optional<std::uint64_t>;
    const auto size = [this](std::uint64_t Sizes::* one) { return sizes_ ? Size((*sizes_).*one) : Size(); };
    rows.push_back(heading("privacy.stored", tr("Qué se guarda y dónde")));
    rows.push_back(stored("privacy.stored-history", tr("Historial"), parts_.data / "dorix.sqlite",
                          size(&Sizes::history)));
    rows.push_back(
        stored("privacy.stored-memory", tr("Memoria"), parts_.data / "memory.sqlite", size(&Sizes::memory)));
    rows.push_back(stored("privacy.stored-embedding", tr("Modelo de la memoria"), parts_.data / "embedding",
                          size(&Sizes::embedding)));
    rows.push_back(
        stored("privacy.stored-models", tr("Modelos de voz"), parts_.data / "models", size(&Sizes::models)));
    rows.push_back(stored("privacy.stored-settings", tr("Ajustes"), parts_.settings, size(&Sizes::settings)));
    rows.push_back(
        stored("privacy.stored-service", tr("Servicio de DORIX"), parts_.service, size(&Sizes::service)));
    rows.push_back(item("privacy.stored-keys", tr("Sesión y claves"),
                        tr("En el llavero del sistema; donde no lo hay, en un archivo que solo tú puedes "
                           "leer.") +
                            "\n" + parts_.secrets.string()));
    auto folder = item("privacy.folder", tr("Carpeta de DORIX"), "");
    folder.buttons = {{.id = "open", .label = tr("Abrir carpeta")}};
    if (cannotOpen_) {
        folder.status = tr("No se ha podido abrir la carpeta.");
        folder.tone = Tone::wrong;
    }
    folder.actions.press = [this](const std::string&) { openFolder(); };
    rows.push_back(std::move(folder));
}

SettingsRow PrivacySection::stored(const std::string& id, const std::string& label, const fs::path& place,
                                   std::optional<std::uint64_t> size) const {
    const auto amount = size ? amountText(*size) : tr("Midiendo…");
    return item(id, formatText("%@ · %@", {label, amount}), place.string());
}

void PrivacySection::openFolder() {
    cannotOpen_ = !parts_.urls.open(fileURL(parts_.data));
    onChanged();
}

PrivacySection::Sizes PrivacySection::sizesOf(const Parts& parts) {
    const auto& data = parts.data;
    const auto database = [&data](const std::string& name) {
        return sizeOf(data / name) + sizeOf(data / (name + "-wal"));
    };
    return {.history = database("dorix.sqlite"),
            .memory = database("memory.sqlite"),
            .models = sizeOf(data / "models") + sizeOf(data / "engines"),
            .embedding = sizeOf(data / "embedding"),
            .settings = sizeOf(parts.settings),
            .service = sizeOf(parts.service)};
}

Task<void> PrivacySection::measure() {
    sizes_ = co_await runOn(disk_, [parts = parts_] { return sizesOf(parts); });
    onChanged();
}

}  // namespace dorix
