#include "memory/store/MemoryStore.h"

#include "base/async/Completion.h"

#include <utility>

namespace dorix {

namespace {
constexpr double secondsOfDay = 86400;
constexpr std::size_t vectorsInOneGo = 2000;
}  // namespace

MemoryStore::MemoryStore(Executor& clock, std::filesystem::path file)
    : clock_(clock), path_(std::move(file)) {}

MemoryFile& MemoryStore::file() {
    if (!file_) file_.emplace(path_);
    return *file_;
}

void MemoryStore::warmUp() {
    thread_.post([this] { loadMore(); });
}

void MemoryStore::loadMore() {
    if (!isEnding_ && file().loadVectors(vectorsInOneGo)) warmUp();
}

Task<std::optional<double>> MemoryStore::docModified(std::string path) {
    return runOn(thread_, [this, path = std::move(path)] { return file().docModified(path); });
}

Task<std::unordered_map<std::string, double>> MemoryStore::docsModified(std::string kind, bool hasModel) {
    return runOn(thread_,
                 [this, kind = std::move(kind), hasModel] { return file().docsModified(kind, hasModel); });
}

Task<std::vector<std::string>> MemoryStore::docPaths(std::string kind) {
    return runOn(thread_, [this, kind = std::move(kind)] { return file().docPaths(kind); });
}

Task<void> MemoryStore::upsert(MemoryDocument document) {
    return runOn(thread_, [this, document = std::move(document), now = clock_.date()] {
        file().upsert(document, now);
    });
}

Task<void> MemoryStore::removeDoc(std::string path) {
    return runOn(thread_, [this, path = std::move(path)] { file().removeDoc(path); });
}

Task<MemoryCounts> MemoryStore::counts() {
    return runOn(thread_, [this] { return file().counts(); });
}

Task<void> MemoryStore::clearAll() {
    return runOn(thread_, [this] { file().clearAll(); });
}

Task<bool> MemoryStore::mergeWords() {
    return runOn(thread_, [this] { return file().mergeWords(); });
}

Task<void> MemoryStore::useVectorsOf(std::string identity) {
    return runOn(thread_, [this, identity = std::move(identity)] { file().useVectorsOf(identity); });
}

Task<std::vector<MemoryHit>> MemoryStore::search(std::string query, std::optional<std::vector<float>> vector,
                                                 std::size_t limit) {
    return runOn(thread_, [this, query = std::move(query), vector = std::move(vector), limit] {
        return file().search(query, vector, limit);
    });
}

Task<void> MemoryStore::recordActivity(std::string app, std::optional<std::string> bundle, std::string title,
                                       std::optional<std::string> document) {
    ActivityRow row{.time = clock_.date(),
                    .app = std::move(app),
                    .title = std::move(title),
                    .document = std::move(document)};
    return runOn(thread_, [this, row = std::move(row), bundle = std::move(bundle)] {
        file().recordActivity(row, bundle);
    });
}

Task<std::vector<ActivityRow>> MemoryStore::activitySince(double time) {
    return runOn(thread_, [this, time] { return file().activitySince(time); });
}

Task<void> MemoryStore::pruneActivity(int days) {
    const auto before = clock_.date() - days * secondsOfDay;
    return runOn(thread_, [this, before] { file().pruneActivity(before); });
}

Task<void> MemoryStore::clearActivity() {
    return runOn(thread_, [this] { file().clearActivity(); });
}

}  // namespace dorix
