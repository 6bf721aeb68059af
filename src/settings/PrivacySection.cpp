#include "settings/PrivacySection.h"

#include "localdata/Language.h"
#include "speech/models/InstallError.h"

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

/// The address of a file (RFC 8089).
std::string fileURL(const fs::path& path) {
    constexpr std::string_view plain = "-._~/";
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string url = "file://";
    for (const char byte : path.string()) {
        const auto code = static_cast<unsigned char>(byte);
        const bool isLetter = (code | 0x20U) >= 'a' && (code | 0x20U) <= 'z';
        if (isLetter || (code >= '0' && code <= '9') || plain.contains(byte)) {
            url += byte;
        } else {
            url += '%';
            url += digits[code >> 4U];
            url += digits[code & 0xFU];
        }
    }
    return url;
}

}  // namespace

PrivacySection::PrivacySection(const Parts& parts) : parts_(parts), tasks_(parts.executor) {
    const auto changed = [this](const auto&) { onChanged(); };
    subscriptions_.push_back(parts.permissions.microphone.subscribe(changed));
    subscriptions_.push_back(parts.permissions.speech.subscribe(changed));
    subscriptions_.push_back(parts.permissions.accessibility.subscribe(changed));
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
    isClearing_ = cannotOpen_ = false;
}

bool PrivacySection::stepBack() {
    if (!std::exchange(isClearing_, false)) return false;
    onChanged();
    return true;
}

SettingsRows PrivacySection::rows() {
    SettingsRows rows;
    addPermissions(rows);
    rows.push_back(heading("privacy.history-heading", tr("Historial")));
    rows.push_back(isClearing_ ? clearing() : history());
    addStored(rows);
    return rows;
}

void PrivacySection::addPermissions(SettingsRows& rows) {
    auto& permissions = parts_.permissions;
    const auto add = [&rows](const char* id, std::string label, std::string description, bool isGranted,
                             bool isRefused, std::function<void()> request) {
        auto row = item(id, std::move(label), std::move(description));
        if (isGranted) {
            row.status = tr("Concedido");
            row.tone = Tone::good;
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
        [this] { tasks_.spawn(parts_.permissions.requestMicrophone()); });
    const auto speech = permissions.speech.get();
    add("privacy.speech", tr("Reconocimiento de voz"), tr("La voz se transcribe en este Mac."),
        speech == SpeechAuthorizationStatus::authorized, speech != SpeechAuthorizationStatus::notDetermined,
        [this] { tasks_.spawn(parts_.permissions.requestSpeech()); });
    add("privacy.accessibility", tr("Accesibilidad (escribir en otras apps)"), "",
        permissions.accessibility.get(), true, [this] { parts_.permissions.requestAccessibility(); });
}

SettingsRow PrivacySection::history() {
    auto row = item("privacy.history", "", "");
    row.label = count_ == 1 ? tr("1 elemento guardado solo en este equipo.")
                            : formatText(tr("%d elementos guardados solo en este equipo."),
                                         {static_cast<std::int64_t>(count_)});
    row.buttons = {{.id = "clear", .label = tr("Borrar historial…"), .isAvailable = count_ > 0}};
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
    if (isMeant) parts_.history.clear();
    // What was dictated since the page was opened goes as well, and is counted.
    count_ = parts_.history.count();
    if (isMeant) tasks_.spawn(measure());
    onChanged();
}

void PrivacySection::addStored(SettingsRows& rows) {
    using Size = std::optional<std::uint64_t>;
    const auto size = [this](std::uint64_t Sizes::* one) { return sizes_ ? Size((*sizes_).*one) : Size(); };
    rows.push_back(heading("privacy.stored", tr("Qué se guarda y dónde")));
    rows.push_back(stored("privacy.stored-history", tr("Historial"), parts_.data / "dorix.sqlite",
                          size(&Sizes::history)));
    rows.push_back(
        stored("privacy.stored-models", tr("Modelos de voz"), parts_.data / "models", size(&Sizes::models)));
    rows.push_back(stored("privacy.stored-settings", tr("Ajustes"), parts_.settings, size(&Sizes::settings)));
    rows.push_back(item("privacy.stored-keys", tr("Sesión y claves"),
                        tr("En el llavero del sistema; donde no lo hay, en un archivo que solo tú puedes "
                           "leer.")));
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

PrivacySection::Sizes PrivacySection::sizesIn(const fs::path& data, const fs::path& settings) {
    const auto log = data / "dorix.sqlite-wal";
    return {.history = sizeOf(data / "dorix.sqlite") + sizeOf(log),
            .models = sizeOf(data / "models") + sizeOf(data / "engines"),
            .settings = sizeOf(settings)};
}

Task<void> PrivacySection::measure() {
    sizes_ = co_await runOn(
        disk_, [data = parts_.data, settings = parts_.settings] { return sizesIn(data, settings); });
    onChanged();
}

}  // namespace dorix
