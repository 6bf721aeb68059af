#include "settings/MemorySection.h"

#include "base/text/Calendar.h"
#include "base/text/Text.h"
#include "localdata/Language.h"

#include <algorithm>
#include <utility>

namespace dorix {

namespace fs = std::filesystem;
using namespace settingsrow;
using Tone = SettingsRow::Tone;

namespace {

/// Seconds between two looks at what changes with every document that is read.
constexpr double betweenLooks = 0.1;

/// As people write it: "~/Documentos".
std::string shownPath(const fs::path& path, const fs::path& home) {
    const auto below = path.lexically_relative(home);
    const bool isBelow = !below.empty() && below != "." && *below.begin() != "..";
    return isBelow ? "~/" + below.string() : path.string();
}

/// What was typed for a path; empty where it is none.
fs::path typedPath(const std::string& text, const fs::path& home) {
    const auto trimmed = text::trim(text);
    if (trimmed == "~") return home;
    fs::path path = trimmed.starts_with("~/") ? home / trimmed.substr(2) : fs::path(trimmed);
    return path.is_absolute() ? path.lexically_normal() : fs::path();
}

std::string momentText(double date) { return DateFormat("EEEEdMMMjmm", appLocaleIdentifier()).format(date); }

}  // namespace

MemorySection::MemorySection(const Parts& parts)
    : parts_(parts),
      model_(parts.model, [this] { onChanged(); }),
      soon_(parts.executor),
      tasks_(parts.executor) {
    auto& memory = parts.memory;
    follow(memory.indexing, memory.available, memory.folders, memory.indexDocuments, memory.trackActivity);
    keep(memory.progress.subscribe([this](const auto&) { changedOften(); }));
    keep(memory.documents.subscribe([this](const auto&) { changedOften(); }));
}

std::string MemorySection::title() const { return tr("Memoria"); }

void MemorySection::changedOften() {
    if (!soon_.isActive()) soon_.once(betweenLooks, [this] { onChanged(); });
}

void MemorySection::shown() {
    model_.lookAnew();
    tasks_.spawn(parts_.memory.refreshCounts());
}

void MemorySection::hidden() {
    model_.stepBack();
    isTyping_ = isWrong_ = isRefused_ = isClearing_ = isCleared_ = false;
}

bool MemorySection::stepBack() {
    const bool gaveUpClearing = std::exchange(isClearing_, false);
    if (!model_.stepBack() && !gaveUpClearing) return false;
    onChanged();
    return true;
}

SettingsRows MemorySection::rows() {
    SettingsRows rows;
    rows.push_back(heading("memory.documents-heading", tr("Documentos")));
    rows.push_back(documents());
    rows.push_back(index());
    rows.push_back(heading("memory.folders-heading", tr("Carpetas")));
    addFolders(rows);
    rows.push_back(heading("memory.meaning-heading", tr("Búsqueda por significado")));
    if (!parts_.memory.available.get()) {
        auto missing = item("memory.unavailable", "", "");
        missing.status =
            tr("La búsqueda por significado no está disponible en este Mac; se buscará por palabras.");
        missing.tone = Tone::warning;
        rows.push_back(std::move(missing));
    }
    rows.push_back(model_.row());
    rows.push_back(heading("memory.activity-heading", tr("Actividad")));
    rows.push_back(toggle("memory.activity", tr("Recordar mi actividad"),
                          tr("Para «¿dónde lo dejamos?»: guarda solo en tu Mac qué app y documento usas (sin "
                             "capturas ni contenido), 30 días."),
                          parts_.memory.trackActivity));
    rows.push_back(isClearing_ ? clearing() : activity());
    return rows;
}

SettingsRow MemorySection::documents() {
    const auto count = parts_.memory.documents.get();
    return toggle(
        "memory.documents", tr("Buscar en mis documentos"),
        count == 1
            ? tr("1 documento en tu memoria. El índice se guarda solo en este Mac.")
            : formatText(tr("%d documentos en tu memoria. El índice se guarda solo en este Mac."), {count}),
        parts_.memory.indexDocuments);
}

SettingsRow MemorySection::index() {
    const auto& memory = parts_.memory;
    auto row = item("memory.index", tr("Índice"), "");
    if (const auto last = memory.lastIndexed.get())
        row.description = formatText(tr("Última actualización: %@."), {momentText(*last)});
    row.status = memory.progress.get();
    const bool isBusy = memory.indexing.get();
    row.buttons = {
        {.id = "update", .label = tr(isBusy ? "Indexando…" : "Actualizar ahora"), .isAvailable = !isBusy},
        {.id = "clear", .label = tr("Borrar índice")}};
    row.actions.press = [this](const std::string& button) { pressIndex(button); };
    return row;
}

void MemorySection::pressIndex(const std::string& button) {
    if (button == "update") parts_.memory.indexNow();
    if (button == "clear") tasks_.spawn(parts_.memory.clearIndex());
}

void MemorySection::addFolders(SettingsRows& rows) {
    const auto isListed = [&rows](const SettingsRow& row) {
        return std::ranges::find(rows, row.id, &SettingsRow::id) != rows.end();
    };
    for (const auto& path : parts_.memory.folders.get()) {
        if (auto row = folder(path); !isListed(row)) rows.push_back(std::move(row));
    }
    rows.push_back(isTyping_ ? typing() : adding());
}

SettingsRow MemorySection::folder(const fs::path& path) {
    auto row = item("memory.folder." + path.string(), shownPath(path, parts_.home), "");
    row.buttons = {{.id = "remove", .label = tr("Quitar")}};
    row.actions.press = [this, path](const std::string&) { parts_.memory.removeFolder(path); };
    return row;
}

SettingsRow MemorySection::adding() {
    auto row = item("memory.add-folder", "", "");
    if (parts_.memory.folders.get().empty()) row.description = tr("No hay ninguna carpeta que leer.");
    if (isRefused_) {
        row.status = tr("Esa carpeta no se puede añadir: su ruta no es texto UTF-8.");
        row.tone = Tone::wrong;
    }
    row.buttons = {{.id = "add", .label = tr("Añadir carpeta…"), .isAvailable = !isChoosing_}};
    row.actions.press = [this](const std::string&) {
        if (!isChoosing_) tasks_.spawn(addFolder());
    };
    return row;
}

SettingsRow MemorySection::typing() {
    SettingsRow row;
    row.kind = SettingsRow::Kind::text;
    row.id = "memory.folder-path";
    row.label = tr("Añadir carpeta");
    row.description = tr("Este escritorio no tiene un diálogo para elegirla: escribe su ruta.");
    row.example = "~/Proyectos";
    if (isWrong_) {
        row.status = tr("Tiene que ser una ruta entera, como ~/Proyectos.");
        row.tone = Tone::wrong;
    }
    row.actions.commit = [this](const std::string& text) { type(text); };
    return row;
}

void MemorySection::type(const std::string& text) {
    if (text::trim(text).empty()) return;
    const auto path = typedPath(text, parts_.home);
    isWrong_ = path.empty() || !parts_.memory.addFolder(path);
    isTyping_ = isWrong_;
    onChanged();
}

Task<void> MemorySection::addFolder() {
    isChoosing_ = true;
    isRefused_ = false;
    onChanged();
    const auto answer = co_await parts_.folderPanel.run(
        {.title = tr("Elige una carpeta para tu memoria"), .accept = tr("Añadir"), .ownWindow = ownWindow()});
    isChoosing_ = false;
    isTyping_ = !answer.wasAsked;
    isRefused_ = answer.folder && !parts_.memory.addFolder(*answer.folder);
    onChanged();
}

SettingsRow MemorySection::activity() {
    auto row = item("memory.clear-activity", "", "");
    if (isCleared_) {
        row.status = tr("Tu actividad registrada se ha borrado.");
        row.tone = Tone::good;
    }
    row.buttons = {{.id = "clear", .label = tr("Borrar mi actividad…")}};
    row.actions.press = [this](const std::string& button) { pressActivity(button); };
    return row;
}

SettingsRow MemorySection::clearing() {
    auto row = item("memory.clear-activity", tr("¿Borrar tu actividad registrada?"), "");
    row.status =
        tr("Se borrará de este Mac el registro de apps y documentos que usaste. No se puede deshacer.");
    row.tone = Tone::warning;
    row.buttons = {{.id = "back", .label = tr("Cancelar")},
                   {.id = "confirm", .label = tr("Borrar actividad"), .isChief = true}};
    row.actions.press = [this](const std::string& button) { pressActivity(button); };
    return row;
}

void MemorySection::pressActivity(const std::string& button) {
    isCleared_ = false;
    const bool isMeant = std::exchange(isClearing_, button == "clear") && button == "confirm";
    if (isMeant) tasks_.spawn(clearActivity());
    onChanged();
}

Task<void> MemorySection::clearActivity() {
    co_await parts_.memory.clearActivity();
    isCleared_ = true;
    onChanged();
}

}  // namespace dorix
