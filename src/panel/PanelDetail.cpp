#include "panel/PanelDetail.h"

#include "localdata/FarEngine.h"
#include "localdata/Language.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace dorix {

namespace {

/// What the history calls the service, as a writer and as one who answers. All other engines run here, but
/// those of other computers, of which the name says where.
constexpr std::array<std::string_view, 2> cloudEngines{"Nube de DORIX", "nube"};
constexpr std::string_view windowSource = "pantalla";

std::string engineFact(const HistoryItem& item) {
    if (auto host = hostOfEngine(*item.meta.engine)) return *std::move(host);
    const bool cloud = std::ranges::find(cloudEngines, *item.meta.engine) != cloudEngines.end();
    if (item.kind == HistoryKind::dictado) {
        return tr(cloud ? "Redactado en la nube de DORIX" : "Redactado en este Mac");
    }
    return tr(cloud ? "Respondido en la nube de DORIX" : "Respondido en este Mac");
}

std::vector<std::string> factsOf(const HistoryItem& item) {
    std::vector<std::string> facts;
    if (item.meta.tone) facts.push_back(formatText(tr("Tono: %@"), {tr(*item.meta.tone)}));
    if (item.meta.engine) facts.push_back(engineFact(item));
    if (item.meta.source == windowSource) {
        facts.push_back(formatText(tr("Con la ventana de %@"), {tr(item.app)}));
    }
    return facts;
}

}  // namespace

PanelDetail panelDetail(const HistoryItem& item) {
    const bool dictated = item.kind == HistoryKind::dictado;
    PanelDetail detail{.heading = questionTitle(item.kind),
                       .facts = factsOf(item),
                       .context = item.meta.context.value_or(""),
                       .sources = item.meta.sources.value_or(std::vector<std::string>())};
    // One that ended without a word says by whom it was answered.
    const bool isRunning = item.answer.empty() && !dictated && !item.meta.engine;
    if (isRunning) detail.placeholder = tr("Pensando…");
    if (!detail.sources.empty()) detail.sourcesHeading = tr("Fuentes");
    return detail;
}

}  // namespace dorix
