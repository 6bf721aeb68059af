#include "panel/PanelExport.h"

#include "base/async/Completion.h"
#include "localdata/Language.h"

#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

namespace dorix {

namespace {

namespace fs = std::filesystem;

/// The history lies in a file and some beside it, whose names begin with its own.
bool isHistoryItself(const fs::path& file, const fs::path& database) {
    std::error_code ignored;
    const auto target = fs::weakly_canonical(file, ignored);
    const auto own = fs::weakly_canonical(database, ignored);
    return target.parent_path() == own.parent_path() &&
           target.filename().string().starts_with(own.filename().string());
}

std::string wordsFor(const std::error_code& error) {
    if (error == std::errc::no_space_on_device) return tr("No queda espacio en el disco.");
    if (error == std::errc::permission_denied || error == std::errc::operation_not_permitted ||
        error == std::errc::read_only_file_system) {
        return tr("No tienes permiso para guardar ahí.");
    }
    if (error == std::errc::operation_canceled) return tr("No se ha podido leer el historial.");
    return formatText(tr("No se ha podido guardar el archivo: %@."), {error.message()});
}

}  // namespace

PanelExport::PanelExport(Executor& executor, Executor& background, SavePanel& savePanel, FileReplacer& files,
                         fs::path database)
    : background_(background),
      savePanel_(savePanel),
      files_(files),
      database_(std::move(database)),
      tasks_(executor) {}

PanelExport::~PanelExport() { stop(); }

void PanelExport::ask(HistoryExportFormat format, std::uint64_t ownWindow) {
    if (isAsking_ || running.get()) return;
    tasks_.spawn(askAndStart(format, ownWindow));
}

Task<void> PanelExport::askAndStart(HistoryExportFormat format, std::uint64_t ownWindow) {
    const char* const extension = format == HistoryExportFormat::markdown ? ".md" : ".json";
    isAsking_ = true;
    const std::shared_ptr<void> done(nullptr, [this](auto) { isAsking_ = false; });
    const auto file = co_await savePanel_.run({.title = tr("Exportar historial"),
                                               .fileName = "DORIX " + tr("Historial") + extension,
                                               .ownWindow = ownWindow});
    onAsked();
    if (file) start(*file, format);
}

void PanelExport::start(const fs::path& file, HistoryExportFormat format) {
    if (running.get()) return;
    if (isHistoryItself(file, database_)) {
        onFinished(tr("Ese archivo es el propio historial de DORIX. Elige otro."), true);
        return;
    }
    stop_ = std::stop_source();
    running.set(true);
    last_.emplace();
    tasks_.spawn(run(file, format, stop_.get_token()));
}

Task<void> PanelExport::settled() {
    if (const auto last = last_) co_await *last;
}

void PanelExport::stop() { stop_.request_stop(); }

Task<void> PanelExport::run(fs::path file, HistoryExportFormat format, std::stop_token stop) {
    // However it ends: the program's end waits for it.
    const std::shared_ptr<void> done(nullptr, [this, last = *last_](auto) {
        running.set(false);
        last.complete();
    });
    // The work may outlast this object, but not what it is given here.
    const auto error =
        co_await runOn(background_, [&files = files_, database = database_, file, format, stop] {
            return files.replace(file, [&](const FileReplacer::Sink& sink) {
                return exportHistory(database, format, sink, stop);
            });
        });
    if (stop.stop_requested()) co_return;
    onFinished(error ? wordsFor(error) : formatText(tr("Historial guardado en %@"), {file.string()}),
               static_cast<bool>(error));
}

}  // namespace dorix
