#include "assistant/AnswerRecords.h"

#include "base/Uuid.h"
#include "base/text/Line.h"
#include "base/text/Text.h"
#include "localdata/Language.h"
#include "writing/TextPolisher.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <optional>

namespace dorix {

namespace {

constexpr std::size_t keptOfSelection = 300;  // characters
constexpr std::size_t mostDocuments = 6;

std::optional<std::string> whatWasSeen(const Assistant::Request& request) {
    if (request.shot) return "pantalla";
    if (request.document) return "documento";
    return std::nullopt;
}

std::optional<std::string> pathOf(const MemoryHit& hit) {
    const bool isLink = hit.kind == "slack" && hit.path.starts_with("http");
    if (hit.kind == "file" || isLink) return hit.path;
    return std::nullopt;
}

std::vector<std::string> titlesOf(const std::vector<AnswerSource>& sources) {
    std::vector<std::string> titles;
    titles.reserve(sources.size());
    for (const auto& source : sources) titles.push_back(source.title);
    return titles;
}

}  // namespace

std::int64_t wholeMilliseconds(double seconds) { return static_cast<std::int64_t>(seconds * 1000); }

AnswerCard cardFor(const Assistant::Request& request) {
    AnswerCard card{.id = makeUuid(),
                    .kind = request.kind,
                    .appName = tr(request.context.displayName),
                    .appIcon = request.context.icon,
                    .question = request.question,
                    .streaming = true,
                    .hadScreen = request.shot.has_value(),
                    .sources = request.sources};
    if (request.selection) {
        card.selection = request.selection->text;
        card.canReplace = request.selection->editable == true;
    }
    if (request.document) {
        card.appName = request.document->name;
        card.appIcon = Ph::fileText;
        card.waiting = tr("Leyendo el documento…");
    }
    return card;
}

HistoryItem rowFor(const Assistant::Request& request, const AnswerEngines::Answer& answer, double duration) {
    HistoryItem row{.id = makeUuid(),
                    .kind = request.kind,
                    .app = request.context.displayName,
                    .bundleID = keptIdentifier(request.context),
                    .title = request.historyTitle ? *request.historyTitle : titleFrom(answer.text),
                    .query = request.historyQuery.value_or(request.question),
                    .answer = answer.text,
                    .meta = {.engine = answer.engine,
                             .durationMs = wholeMilliseconds(duration),
                             .source = whatWasSeen(request)}};
    if (request.selection) row.meta.context = text::prefix(request.selection->text, keptOfSelection);
    if (!request.sources.empty()) row.meta.sources = titlesOf(request.sources);
    return row;
}

std::vector<AnswerSource> sourcesOf(const std::vector<MemoryHit>& hits) {
    std::vector<AnswerSource> sources;
    for (std::size_t n = 0; n < hits.size(); ++n) {
        const auto& hit = hits[n];
        auto source = std::ranges::find(sources, hit.title, &AnswerSource::title);
        if (source == sources.end())
            source = sources.insert(source, AnswerSource{.title = hit.title, .path = pathOf(hit)});
        source->numbers.push_back(n + 1);
    }
    return sources;
}

std::vector<AnswerSource> sourcesOf(const std::vector<std::string>& documents) {
    std::vector<AnswerSource> sources;
    for (const auto& path : documents) {
        if (sources.size() == mostDocuments) break;
        if (std::ranges::find(sources, path, &AnswerSource::path) != sources.end()) continue;
        // A name may be any bytes, and the row that tells of its answer is text.
        const auto name = std::filesystem::path(path).filename().string();
        sources.push_back({.title = text::asLine(name), .path = path});
    }
    return sources;
}

}  // namespace dorix
