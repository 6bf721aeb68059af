#include "panel/HistoryPanel.h"

#include "localdata/Language.h"

#include <utility>

namespace dorix {

HistoryPanel::HistoryPanel(Environment environment)
    : list(environment.executor, environment.state, environment.history),
      selection(environment.state, environment.history, list),
      deletions(environment.executor, environment.state, environment.history),
      clipboard(environment.executor, environment.pasteboard),
      env_(std::move(environment)),
      exporter_(env_.executor, env_.background, env_.files, env_.database),
      tasks_(env_.executor) {
    actions.copy = [this](const HistoryItem& item) { clipboard.copy(item); };
    actions.remove = [this](const HistoryItem& item) { deletions.remove(std::string(item.id)); };
}

void HistoryPanel::exportHistory(HistoryExportFormat format, std::uint64_t ownWindow) {
    if (isAsking_ || exporter_.running.get()) return;
    tasks_.spawn(askAndExport(format, ownWindow));
}

Task<void> HistoryPanel::askAndExport(HistoryExportFormat format, std::uint64_t ownWindow) {
    const char* const extension = format == HistoryExportFormat::markdown ? ".md" : ".json";
    isAsking_ = true;
    const std::shared_ptr<void> done(nullptr, [this](auto) { isAsking_ = false; });
    const auto file = co_await env_.savePanel.run({.title = tr("Exportar historial"),
                                                   .fileName = "DORIX " + tr("Historial") + extension,
                                                   .ownWindow = ownWindow});
    onAsked();
    if (!file) co_return;
    exporter_.onFinished = [this, name = file->string()](const std::optional<std::string>& failure) {
        onExported(failure ? *failure : formatText(tr("Historial guardado en %@"), {name}),
                   failure.has_value());
    };
    exporter_.start(*file, format);
}

void HistoryPanel::openLink(const std::string& url) {
    if (url.starts_with("https://") || url.starts_with("http://")) env_.urls.open(url);
}

}  // namespace dorix
