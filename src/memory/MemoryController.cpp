#include "memory/MemoryController.h"

#include "base/Error.h"
#include "base/Log.h"
#include "base/async/Sleep.h"
#include "base/text/Text.h"
#include "localdata/HistoryStore.h"
#include "localdata/Language.h"
#include "platform/BackgroundWork.h"
#include "platform/UserDefaults.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <utility>

namespace dorix {

namespace fs = std::filesystem;

namespace {

constexpr double beforeFirstRun = 60;  // seconds, for the launch not to be in its way
constexpr double betweenRuns = 1800;   // seconds
constexpr double beforeScheduled = 2;  // seconds
constexpr const char* documentsKey = "memoryDocs";
constexpr const char* activityKey = "memoryActivity";
constexpr const char* foldersKey = "memoryFolders";

/// None where the key holds anything but paths.
std::optional<std::vector<fs::path>> storedFolders(const UserDefaults& defaults) {
    const auto value = defaults.value(foldersKey).value_or(Json());
    if (!value.is_array()) return std::nullopt;
    std::vector<fs::path> folders;
    for (const auto& path : value) {
        if (!path.is_string()) return std::nullopt;
        folders.emplace_back(path.get<std::string>());
    }
    return folders;
}

/// What a run came to; nothing of one that came to nothing.
std::string outcomeOf(std::size_t updated, bool isWhole) {
    if (updated == 0) return isWhole ? tr("Al día") : "";
    return formatText(tr("%d documentos actualizados"), {static_cast<std::int64_t>(updated)});
}

}  // namespace

MemoryController::MemoryController(const Parts& parts)
    : folders(storedFolders(parts.defaults).value_or(parts.documentFolders)),
      indexDocuments(parts.defaults.boolean(documentsKey).value_or(true)),
      trackActivity(parts.defaults.boolean(activityKey).value_or(true)),
      parts_(parts),
      first_(parts.executor),
      repeated_(parts.executor),
      worker_(SerialExecutor::AtEnd::drop),
      walkers_([&background = parts.background] { background.makeThreadIdle(); }),
      walks_(parts.files, walkers_),
      pace_(parts.executor, worker_, parts.background),
      retrieval_({.executor = parts.executor,
                  .store = parts.store,
                  .embedder = parts.embedder,
                  .reader = parts.asked,
                  .files = parts.files,
                  .messages = parts.messages,
                  .home = parts.home}),
      tasks_(parts.executor) {
    worker_.post([&background = parts.background] { background.makeThreadIdle(); });
    subscriptions_.push_back(indexDocuments.subscribe([this](bool isOn) {
        parts_.defaults.set(documentsKey, isOn);
        if (isOn) scheduleIndex();
    }));
    subscriptions_.push_back(
        trackActivity.subscribe([this](bool isOn) { parts_.defaults.set(activityKey, isOn); }));
}

void MemoryController::start() {
    tasks_.spawn(refreshCounts());
    first_.once(beforeFirstRun, [this] { indexNow(); });
    repeated_.repeat(betweenRuns, [this] { indexNow(); });
    onStart();
}

void MemoryController::indexNow() {
    if (!indexing.get()) tasks_.spawn(run());
}

void MemoryController::scheduleIndex() { tasks_.spawn(later()); }

Task<void> MemoryController::later() {
    co_await sleep(beforeScheduled);
    indexNow();
}

IndexRun::Sources MemoryController::sources() const {
    IndexRun::Sources sources;
    if (indexDocuments.get()) sources.folders = folders.get();
    std::ranges::copy_if(parts_.history.items(), std::back_inserter(sources.history),
                         [this](const HistoryItem& item) { return !parts_.history.isGrowing(item.id); });
    return sources;
}

Task<void> MemoryController::run() {
    indexing.set(true);
    progress.set(tr("Preparando…"));
    IndexRun run({.store = parts_.store,
                  .embedder = parts_.embedder,
                  .reader = parts_.indexed,
                  .walks = walks_,
                  .pace = pace_,
                  .worker = worker_},
                 sources());
    run.onAvailable = [this](bool isAvailable) {
        available.set(isAvailable);
        if (isAvailable) parts_.store.warmUp();
    };
    run.onProgress = [this](const std::string& line) { progress.set(line); };
    bool isWhole = false;
    try {
        co_await run.done();
        isWhole = true;
    } catch (const Cancelled&) {
        throw;
    } catch (const std::exception& error) {
        // Out of memory, or of threads: the next run may fare better.
        logLine(std::string("the index was not brought up to date: ") + error.what());
    }
    indexing.set(false);
    progress.set(outcomeOf(run.updated(), isWhole));
    if (isWhole) lastIndexed.set(parts_.executor.date());
    co_await refreshCounts();
}

bool MemoryController::addFolder(const fs::path& folder) {
    if (!text::isUtf8(folder.string())) return false;
    auto all = folders.get();
    all.push_back(folder);
    folders.set(std::move(all));
    keepFolders();
    return true;
}

void MemoryController::removeFolder(const fs::path& folder) {
    auto all = folders.get();
    std::erase(all, folder);
    folders.set(std::move(all));
    keepFolders();
}

void MemoryController::keepFolders() {
    auto paths = Json::array();
    for (const auto& folder : folders.get()) paths.push_back(folder.string());
    parts_.defaults.set(foldersKey, std::move(paths));
    scheduleIndex();
}

Task<void> MemoryController::clearIndex() {
    co_await parts_.store.clearAll();
    co_await refreshCounts();
    progress.set(tr("Índice borrado"));
}

Task<void> MemoryController::refreshCounts() {
    const auto counts = co_await parts_.store.counts();
    documents.set(counts.documents);
    chunks.set(counts.chunks);
}

Task<std::vector<MemoryHit>> MemoryController::search(std::string query, std::size_t limit) {
    return retrieval_.search(std::move(query), limit);
}

Task<Recap> MemoryController::recap() {
    const auto now = parts_.executor.date();
    auto rows = co_await parts_.store.activitySince(now - recapWindow);
    std::vector<RecapItem> history;
    for (const auto& item : parts_.history.items()) {
        if (item.createdAt < now - recapWindow) continue;
        history.push_back(
            {.kind = label(item.kind), .app = item.app, .createdAt = item.createdAt, .title = item.title});
    }
    co_return dorix::recap(rows, history, now);
}

Task<void> MemoryController::clearActivity() { return parts_.store.clearActivity(); }

}  // namespace dorix
