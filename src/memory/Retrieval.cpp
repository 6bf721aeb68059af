#include "memory/Retrieval.h"

#include "base/Error.h"
#include "base/Log.h"
#include "base/async/TaskScope.h"
#include "base/async/Timeout.h"
#include "base/text/Line.h"
#include "base/text/Text.h"
#include "localdata/Language.h"
#include "memory/indexing/Filters.h"
#include "memory/indexing/FolderWalks.h"
#include "memory/recall/FileNames.h"
#include "memory/recall/Merge.h"
#include "routing/IntentRules.h"

#include <algorithm>
#include <utility>

namespace dorix {

namespace fs = std::filesystem;

namespace {

// In seconds. The names are looked for twice at most, three seconds each time.
constexpr double embeddingPatience = 2;
constexpr double indexPatience = 5;
constexpr double messagesPatience = 8;
constexpr double readingPatience = 8;  // from the question on, for all files together
constexpr double datePatience = 1;

constexpr std::size_t mostCharacters = 6000;  // of a file
constexpr double distantPast = -62135769600;  // the first day of the first year

std::string extensionOf(const fs::path& path) {
    const auto extension = text::lowercase(path.extension().string());
    return extension.empty() ? extension : extension.substr(1);
}

bool mayRead(const fs::path& path) {
    return isIndexable(extensionOf(path)) && !IntentRules::isSecretName(path.filename().string());
}

}  // namespace

Retrieval::Retrieval(const Parts& parts)
    : parts_(parts), names_(parts.executor, parts.files, disk_, parts.home) {}

Task<std::vector<MemoryHit>> Retrieval::search(std::string query, std::size_t limit) {
    TaskScope legs(parts_.executor);
    const auto names = legs.spawn(byName(query));
    const auto messages = legs.spawn(inMessages(query));
    const auto index = legs.spawn(inIndex(query, limit));
    FoundMemory found;
    found.names = co_await names;
    found.slack = co_await messages;
    found.index = co_await index;
    co_return merged(std::move(found), query, limit,
                     parts_.messages != nullptr && parts_.messages->isConnected());
}

Task<std::vector<MemoryHit>> Retrieval::inIndex(std::string query, std::size_t limit) {
    auto vector = co_await withTimeout(embedded(query), embeddingPatience);
    auto hits = co_await withTimeout(
        parts_.store.search(query, std::move(vector).value_or(std::nullopt), limit), indexPatience);
    co_return std::move(hits).value_or(std::vector<MemoryHit>());
}

Task<std::optional<std::vector<float>>> Retrieval::embedded(std::string query) {
    if (!co_await parts_.embedder.prepare()) co_return std::nullopt;
    co_await parts_.store.useVectorsOf(parts_.embedder.identity());
    co_return co_await parts_.embedder.embed(std::move(query), Embedder::Pace::awaited);
}

Task<std::vector<MemoryHit>> Retrieval::inMessages(std::string query) {
    std::vector<MemoryHit> none;
    if (parts_.messages == nullptr || !parts_.messages->isConnected()) co_return none;
    try {
        auto hits = co_await withTimeout(parts_.messages->search(std::move(query)), messagesPatience);
        co_return std::move(hits).value_or(none);
    } catch (const Error& error) {
        logLine("no messages: " + describedIn(LogLanguage::english, error));
        co_return none;
    }
}

Task<std::vector<MemoryHit>> Retrieval::byName(std::string query) {
    const auto until = parts_.executor.now() + readingPatience;
    std::vector<MemoryHit> hits;
    const auto tokens = fileNameTokens(query);
    if (tokens.empty()) co_return hits;
    auto paths = co_await names_.find(tokens, NameIndex::Match::all);
    if (paths.empty() && tokens.size() != 1) paths = co_await names_.find(tokens, NameIndex::Match::any);
    for (const auto& path : bestFileNames(paths, tokens)) hits.push_back(co_await hitOf(path, until));
    co_return hits;
}

Task<MemoryHit> Retrieval::hitOf(fs::path file, double until) {
    const auto patience = [this, until](double most) {
        return std::clamp(until - parts_.executor.now(), 0.0, most);
    };
    const auto date = co_await disk_.run(
        file.string(), [file](const LooseThreads::Watch&) { return modifiedOf(file); },
        patience(datePatience));
    std::string text;
    if (mayRead(file)) text = co_await textOf(file, patience(readingPatience));
    if (text.empty())
        text = "Archivo encontrado por su nombre en " + text::asLine(file.parent_path().string()) + ".";
    co_return MemoryHit{.path = file.string(),
                        .title = text::asLine(file.filename().string()),
                        .text = std::move(text),
                        .modified = date.value_or(0) != 0 ? *date : distantPast,
                        .kind = "file"};
}

Task<std::string> Retrieval::textOf(fs::path file, double patience) {
    try {
        auto text = co_await withTimeout(parts_.reader.text(std::move(file), mostCharacters), patience);
        co_return std::move(text).value_or(std::nullopt).value_or("");
    } catch (const Error&) {
        co_return "";  // it is found all the same
    }
}

}  // namespace dorix
