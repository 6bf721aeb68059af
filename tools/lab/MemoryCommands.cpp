#include "Command.h"
#include "base/text/Calendar.h"
#include "fakes/TemporaryFolder.h"
#include "localdata/HistoryItem.h"
#include "memory/indexing/Chunker.h"
#include "memory/indexing/Crawl.h"
#include "memory/indexing/Filters.h"
#include "memory/recall/FileNames.h"
#include "memory/recall/Merge.h"
#include "memory/recall/Recap.h"
#include "memory/store/MemoryFile.h"
#include "routing/IntentRules.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace dorix::lab {

namespace {

namespace fs = std::filesystem;
using Vector = std::optional<std::vector<float>>;

/// The elements of the field; none when it is absent or null.
std::vector<Json> listIn(const Json& input, const char* field) {
    const auto found = input.find(field);
    if (found == input.end() || found->is_null()) return {};
    if (!found->is_array()) throw BadInput(std::string("field \"") + field + "\" must be a list");
    return *found;
}

std::size_t requiredCount(const Json& input, const char* field) {
    const auto count = requiredInteger(input, field);
    if (count < 0) throw BadInput(std::string("field \"") + field + "\" is below 0");
    return static_cast<std::size_t>(count);
}

Vector vectorIn(const Json& input, const char* field) {
    const auto found = input.find(field);
    return found == input.end() || found->is_null() ? Vector() : found->get<std::vector<float>>();
}

Json chunk(const Json& input) {
    const ChunkSizes sizes{.size = requiredCount(input, "size"),
                           .overlap = requiredCount(input, "overlap"),
                           .maxChunks = requiredCount(input, "maxChunks")};
    return {{"chunks", chunks(requiredString(input, "text"), sizes)}};
}

Json crawled(const Json& input) {
    const fs::path folder = requiredString(input, "folder");
    std::vector<std::string> files;
    for (const auto& file : crawl(folder)) files.push_back(file.lexically_relative(folder).string());
    std::ranges::sort(files);
    return {{"files", files}};
}

Json indexable(const Json& input) {
    const auto name = requiredString(input, "name");
    const auto extension = fs::path(name).extension().string();
    return {{"extension", !extension.empty() && isIndexable(std::string_view(extension).substr(1))},
            {"sensitive", IntentRules::isSecretName(name)}};
}

MemoryDocument documentIn(const Json& json) {
    MemoryDocument document{.path = requiredString(json, "path"),
                            .title = requiredString(json, "title"),
                            .kind = requiredString(json, "kind"),
                            .modified = requiredNumber(json, "modified"),
                            .chunks = {}};
    for (const auto& chunk : listIn(json, "chunks"))
        document.chunks.push_back({.text = requiredString(chunk, "text"), .vec = vectorIn(chunk, "vec")});
    return document;
}

Json hitText(const MemoryHit& hit) {
    return {{"path", hit.path}, {"title", hit.title}, {"text", hit.text}, {"kind", hit.kind}};
}

Json memory(const Json& input) {
    const TemporaryFolder folder;
    MemoryFile file(folder.path() / "memory.sqlite");
    for (const auto& document : listIn(input, "documents")) file.upsert(documentIn(document), 0);
    for (const auto& path : listIn(input, "removed")) file.removeDoc(path.get<std::string>());
    auto results = Json::array();
    for (const auto& search : listIn(input, "searches")) {
        auto found = Json::array();
        for (const auto& hit : file.search(requiredString(search, "query"), vectorIn(search, "vector"),
                                           requiredCount(search, "limit")))
            found.push_back(hitText(hit));
        results.push_back(std::move(found));
    }
    const auto counts = file.counts();
    return {{"results", results}, {"counts", {counts.documents, counts.chunks}}};
}

Json fileNames(const Json& input) {
    const auto tokens = fileNameTokens(requiredString(input, "query"));
    const auto paths = input.at("paths").get<std::vector<std::string>>();
    return {{"paths", tokens.empty() ? std::vector<std::string>() : bestFileNames(paths, tokens)}};
}

/// As the store gives them: those of the time, in its order.
std::vector<ActivityRow> activityIn(const std::vector<Json>& rows, double since) {
    std::vector<ActivityRow> activity;
    for (const auto& json : rows) {
        ActivityRow row{.time = requiredNumber(json, "ts"),
                        .app = requiredString(json, "app"),
                        .title = requiredString(json, "title"),
                        .document = optionalString(json, "document")};
        if (row.time < since) continue;
        const auto place = std::ranges::upper_bound(activity, row.time, {}, &ActivityRow::time);
        activity.insert(place, std::move(row));
    }
    return activity;
}

std::vector<RecapItem> historyIn(const std::vector<Json>& items) {
    std::vector<RecapItem> history;
    for (const auto& item : items) {
        const auto kind = historyKind(requiredString(item, "kind"));
        if (!kind) throw BadInput("unknown \"kind\"");
        history.push_back({.kind = label(*kind),
                           .app = requiredString(item, "app"),
                           .createdAt = requiredNumber(item, "createdAt"),
                           .title = requiredString(item, "title")});
    }
    return history;
}

Json recapped(const Json& input) {
    const AppLanguage language(languageOf(input));
    ::setenv("TZ", requiredString(input, "timezone").c_str(), 1);
    refreshTimeZone();
    const auto now = requiredNumber(input, "now");
    const auto result =
        recap(activityIn(listIn(input, "rows"), now - recapWindow), historyIn(listIn(input, "history")), now);
    return {{"text", result.text}, {"documents", result.documents}};
}

std::vector<MemoryHit> hitsIn(const Json& input, const char* field) {
    std::vector<MemoryHit> hits;
    for (const auto& hit : listIn(input, field)) {
        hits.push_back({.path = requiredString(hit, "path"),
                        .title = optionalString(hit, "title").value_or(""),
                        .text = requiredString(hit, "text"),
                        .modified = hit.value("modified", 0.0),
                        .kind = optionalString(hit, "kind").value_or("")});
    }
    return hits;
}

Json mergedHits(const Json& input) {
    const auto isConnected = optionalBoolean(input, "slackConnected");
    if (!isConnected) throw BadInput("missing field \"slackConnected\"");
    auto hits = Json::array();
    for (const auto& hit :
         merged({.names = hitsIn(input, "names"),
                 .slack = hitsIn(input, "slack"),
                 .index = hitsIn(input, "index")},
                requiredString(input, "query"), requiredCount(input, "limit"), *isConnected)) {
        auto text = hitText(hit);
        text["modified"] = hit.modified;
        hits.push_back(std::move(text));
    }
    return {{"hits", hits}};
}

}  // namespace

std::vector<Command> memoryCommands() {
    return {
        {"chunk", R"({"text","size","overlap","maxChunks"})", R"({"chunks":[...]})", chunk},
        {"crawl", R"({"folder"})", R"({"files":[...]}: relative, sorted)", crawled},
        {"indexable", R"({"name"})", R"({"extension","sensitive"})", indexable},
        {"memory",
         R"({"documents":[{"path","title","kind","modified","chunks":[{"text","vec"}...]}...],)"
         R"("removed":[path...],"searches":[{"query","vector","limit"}...]})",
         R"({"results":[[{"path","title","text","kind"}...]...],"counts":[documents,chunks]})", memory},
        {"file-names", R"({"paths":[...],"query"})", R"({"paths":[...]}: the best, best first)", fileNames},
        {"recap",
         R"({"now","timezone","language"?,"rows":[{"ts","app","title","document"}...],)"
         R"("history":[{"createdAt","kind","app","title"}...]})",
         R"({"text","documents":[...]})", recapped},
        {"merge",
         R"({"names":[hit...],"slack":[hit...],"index":[hit...],"limit","query","slackConnected"}, )"
         R"(a hit being {"path","title","text","modified","kind"})",
         R"({"hits":[hit...]})", mergedHits},
    };
}

}  // namespace dorix::lab
