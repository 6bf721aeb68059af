#include "localdata/HistoryStore.h"

#include "base/Log.h"
#include "localdata/HistoryRows.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iterator>
#include <utility>

namespace dorix {

namespace {

using Kind = HistoryChange::Kind;

/// Opening must not take longer as the file grows.
constexpr std::size_t shownAtStart = 2000;

constexpr const char* schema =
    "PRAGMA journal_mode=WAL;\n"
    "CREATE TABLE IF NOT EXISTS history (\n"
    "    id TEXT PRIMARY KEY,\n"
    "    kind TEXT NOT NULL,\n"
    "    app TEXT NOT NULL,\n"
    "    bundle_id TEXT,\n"
    "    title TEXT NOT NULL,\n"
    "    created_at REAL NOT NULL,\n"
    "    query TEXT NOT NULL,\n"
    "    answer TEXT NOT NULL,\n"
    "    meta TEXT\n"
    ");\n"
    "CREATE INDEX IF NOT EXISTS history_created ON history(created_at DESC);";

constexpr const char* insertOrReplace =
    "INSERT OR REPLACE INTO history (id, kind, app, bundle_id, title, created_at, query, answer, meta) "
    "VALUES (?,?,?,?,?,?,?,?,?)";

/// Stable. An insertion sort, as no more than a few items are ever out of place.
void sortNewestFirst(HistoryItems& items) {
    for (auto item = items.begin(); item != items.end(); ++item) {
        const auto place = std::upper_bound(
            items.begin(), item, *item,
            [](const auto& one, const auto& other) { return one.createdAt > other.createdAt; });
        std::rotate(place, item, item + 1);
    }
}

/// Whether rows may be in a file from which none could be deleted.
bool mayHoldRows(sqlite3* db) {
    if (db == nullptr) return false;
    const int failure = sqlite3_errcode(db) & 0xFF;
    return failure != SQLITE_NOTADB && failure != SQLITE_ERROR;  // there is no table
}

}  // namespace

HistoryStore::HistoryStore(const std::filesystem::path& database) : db_(sqlite::open(database)) {
    if (!db_) logLine("no se pudo abrir la base de datos en " + database.string());
    sqlite::exec(db_.get(), schema);
    auto loaded = load(static_cast<int>(shownAtStart));
    if (loaded.size() >= shownAtStart) oldestRead_ = loaded.back().createdAt;
    for (const auto& item : loaded) shownIds_.insert(item.id);
    items_.assign(std::move_iterator(loaded.begin()), std::move_iterator(loaded.end()));
    inOrder_ = std::ranges::is_sorted(items_, std::greater{}, &HistoryItem::createdAt);
}

Subscription HistoryStore::observe(std::function<void(const HistoryChange&)> observer) {
    return observers_.add(std::move(observer));
}

void HistoryStore::add(const HistoryItem& item, Persist persist) {
    show(item);
    if (persist == Persist::no) {
        growingIds_.insert(item.id);
        return;
    }
    growingIds_.erase(item.id);
    const bool isNew = !isStored(item.id);
    write(item);
    if (isNew && onNewItem) onNewItem(item);
}

std::optional<RemovedItem> HistoryStore::remove(const std::string& id) {
    const bool wasStored = isStored(id);
    if (!erase(id)) return std::nullopt;
    auto removed = hide(id);
    if (removed) removed->wasStored = wasStored;
    return removed;
}

void HistoryStore::restore(const RemovedItem& removed) {
    if (!shownIds_.insert(removed.item.id).second) return;
    const std::size_t index = placeFor(removed);
    items_.insert(items_.begin() + static_cast<std::ptrdiff_t>(index), removed.item);
    if (removed.wasStored) write(removed.item);
    observers_.notify({.kind = Kind::inserted, .index = index});
}

void HistoryStore::showOlder(const std::vector<HistoryItem>& found) {
    for (const auto& item : found) {
        if (!shownIds_.contains(item.id)) show(item);
    }
}

bool HistoryStore::clear() {
    const bool isErased = sqlite::exec(db_.get(), "DELETE FROM history;");
    if (!isErased && mayHoldRows(db_.get())) return false;
    if (isErased) sqlite::exec(db_.get(), "VACUUM;");
    sqlite::emptyLog(db_.get());
    items_.clear();
    shownIds_.clear();
    growingIds_.clear();
    inOrder_ = true;
    oldestRead_.reset();
    observers_.notify({.kind = Kind::reset});
    return true;
}

std::vector<HistoryItem> HistoryStore::load(int limit) const {
    return read(std::string(historyrows::selectNewestFirst) + " LIMIT " + std::to_string(limit));
}

std::vector<HistoryItem> HistoryStore::loadAll() const { return read(historyrows::selectNewestFirst); }

std::size_t HistoryStore::count() const {
    const auto statement = sqlite::prepare(db_.get(), "SELECT COUNT(*) FROM history");
    if (!statement || sqlite3_step(statement.get()) != SQLITE_ROW) return items_.size();
    return std::max(items_.size(), static_cast<std::size_t>(sqlite3_column_int64(statement.get(), 0)));
}

std::optional<double> HistoryStore::firstDate() const {
    const auto statement = sqlite::prepare(db_.get(), "SELECT MIN(created_at) FROM history");
    if (!statement || sqlite3_step(statement.get()) != SQLITE_ROW) return std::nullopt;
    if (sqlite3_column_type(statement.get(), 0) == SQLITE_NULL) return std::nullopt;
    return sqlite3_column_double(statement.get(), 0);
}

// The list

void HistoryStore::show(const HistoryItem& item) {
    if (shownIds_.insert(item.id).second) {
        insert(item);
    } else {
        replace(item);
    }
}

/// Leaves the item where it is, whatever its date has become, so that nothing jumps under the user's eyes.
void HistoryStore::replace(const HistoryItem& item) {
    // From the front: what changes is nearly always among the newest.
    const auto shown = std::ranges::find(items_, item.id, &HistoryItem::id);
    if (*shown == item) return;
    if (shown->createdAt != item.createdAt) inOrder_ = false;
    *shown = item;
    observers_.notify({.kind = Kind::updated, .index = static_cast<std::size_t>(shown - items_.begin())});
}

/// The item takes the place that sorting the list with it in front would give it.
void HistoryStore::insert(const HistoryItem& item) {
    if (!inOrder_) {
        items_.push_front(item);
        sortNewestFirst(items_);
        inOrder_ = true;
        observers_.notify({.kind = Kind::reset});
        return;
    }
    const auto place =
        std::ranges::lower_bound(items_, item.createdAt, std::greater{}, &HistoryItem::createdAt);
    const auto index = static_cast<std::size_t>(place - items_.begin());
    items_.insert(place, item);
    observers_.notify({.kind = Kind::inserted, .index = index});
}

/// A table that another program made may hold more than one row of an id; the first is the one to tell of.
std::optional<RemovedItem> HistoryStore::hide(const std::string& itemID) {
    // A copy, as it may be that of the item itself, which goes.
    const std::string id = itemID;  // NOLINT(performance-unnecessary-copy-initialization)
    growingIds_.erase(id);
    if (shownIds_.erase(id) == 0) return std::nullopt;
    const auto next = [&](const auto& from) {
        return std::ranges::find(from, items_.end(), id, &HistoryItem::id);
    };
    std::optional<RemovedItem> removed;
    for (auto shown = next(items_.begin()); shown != items_.end(); shown = next(shown)) {
        const auto index = static_cast<std::size_t>(shown - items_.begin());
        if (!removed) removed = {.item = std::move(*shown), .below = items_.size() - 1 - index};
        shown = items_.erase(shown);
        observers_.notify({.kind = Kind::removed, .index = index});
    }
    return removed;
}

/// Where the item stood, unless its neighbours are other ones by now: then where its date belongs.
std::size_t HistoryStore::placeFor(const RemovedItem& removed) const {
    const double date = removed.item.createdAt;
    const std::size_t index = items_.size() - std::min(removed.below, items_.size());
    const bool follows = index == 0 || items_[index - 1].createdAt >= date;
    const bool precedes = index == items_.size() || date >= items_[index].createdAt;
    if (!inOrder_ || (follows && precedes)) return index;
    const auto place = std::ranges::lower_bound(items_, date, std::greater{}, &HistoryItem::createdAt);
    return static_cast<std::size_t>(place - items_.begin());
}

// The file

/// No when nobody can tell.
bool HistoryStore::isStored(const std::string& id) const {
    const auto statement = sqlite::prepare(db_.get(), "SELECT 1 FROM history WHERE id = ?");
    if (!statement) return false;
    sqlite::bindText(statement.get(), 1, id);
    return sqlite3_step(statement.get()) == SQLITE_ROW;
}

void HistoryStore::write(const HistoryItem& item) {
    const auto statement = sqlite::prepare(db_.get(), insertOrReplace);
    if (!statement) return;
    auto* const row = statement.get();
    sqlite::bindText(row, 1, item.id);
    sqlite::bindText(row, 2, std::string(storedName(item.kind)));
    sqlite::bindText(row, 3, item.app);
    sqlite::bindText(row, 4, item.bundleID);
    sqlite::bindText(row, 5, item.title);
    sqlite3_bind_double(row, 6, item.createdAt);
    sqlite::bindText(row, 7, item.query);
    sqlite::bindText(row, 8, item.answer);
    sqlite::bindText(row, 9, encodeMeta(item.meta));
    sqlite3_step(row);  // a failure leaves the item in the list, for this run
}

/// Whether the statement could be run, not whether there was such a row.
bool HistoryStore::erase(const std::string& id) {
    const auto statement = sqlite::prepare(db_.get(), "DELETE FROM history WHERE id = ?");
    if (!statement) return false;
    sqlite::bindText(statement.get(), 1, id);
    sqlite3_step(statement.get());
    return true;
}

std::vector<HistoryItem> HistoryStore::read(const std::string& sql) const {
    std::vector<HistoryItem> items;
    const auto statement = sqlite::prepare(db_.get(), sql.c_str());
    if (!statement) return items;
    while (sqlite3_step(statement.get()) == SQLITE_ROW) {
        if (auto item = historyrows::itemOf(statement.get())) items.push_back(*std::move(item));
    }
    return items;
}

}  // namespace dorix
