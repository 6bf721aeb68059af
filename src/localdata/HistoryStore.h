#pragma once

#include "base/Observable.h"
#include "localdata/HistoryItem.h"
#include "sqlite/Sqlite.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

namespace dorix {

/// What has just changed in the list of the history.
struct HistoryChange {
    enum class Kind {
        inserted,  // at `index`
        updated,   // at `index`, in its place
        removed,   // from `index`
        reset,     // any of it
    };

    Kind kind = Kind::reset;
    std::size_t index = 0;

    bool operator==(const HistoryChange&) const = default;
};

/// An item that was taken out of the history, with what it takes to put it back.
struct RemovedItem {
    HistoryItem item;
    std::size_t below = 0;   // how many items stood below it in the list; new ones come above
    bool wasStored = false;  // in the file, too
};

/// Everything that the user dictated or asked: in a SQLite file, and the newest of it in a list to look at.
/// What goes wrong with the file is never reported to the caller; the list then goes on from memory alone,
/// and what is in the file stays as it was. Main executor; every call but items() blocks on the disk, for one
/// row only unless it says more.
class HistoryStore {
 public:
    enum class Persist { no, yes };

    /// Opens the file, making it when it is missing, and reads the newest rows.
    explicit HistoryStore(const std::filesystem::path& database);
    HistoryStore(const HistoryStore&) = delete;
    HistoryStore& operator=(const HistoryStore&) = delete;

    /// Newest first: what was read at the start, what was added since, and what a search found in the file.
    const HistoryItems& items() const { return items_; }

    /// When the last of the items was made that were read at the start, where the file holds more: what is
    /// older than that is listed only when it was found by a search. None where all was read.
    std::optional<double> oldestRead() const { return oldestRead_; }

    /// Lists items that the file holds; those that are listed already stay as they are.
    void showOlder(const std::vector<HistoryItem>& found);

    /// Tells of every change of items(), after it. An observer may not change the history.
    Subscription observe(std::function<void(const HistoryChange&)> observer);

    /// Called once for an item, when it is first written to the file. Without a file, or when that could not
    /// take the item, each add() that was to write it counts as the first.
    std::function<void(const HistoryItem&)> onNewItem;

    /// Shows the item, in the place of the one with its id if there is one, and writes it to the file too
    /// unless told not to, which is for an answer that is still growing.
    void add(const HistoryItem& item, Persist persist);

    /// Whether the item of that id was last added as one that is still growing.
    bool isGrowing(const std::string& id) const { return growingIds_.contains(id); }

    /// Takes the item of that id out of the file and the list; gives it when it was in the list.
    std::optional<RemovedItem> remove(const std::string& id);

    /// Puts back what remove() gave, where it was; an item that has come with its id meanwhile stays instead.
    /// It is not new: onNewItem is not called.
    void restore(const RemovedItem& removed);

    /// Forgets everything: its words are gone from the disk too, unless another program is reading them just
    /// then, and its space is free. Takes a while with a large file. False when the file would not give up
    /// what it holds, as on a full disk: then nothing is forgotten.
    bool clear();

    /// The newest rows, up to `limit`, and all of them; newest first. Rows of a kind that a later version
    /// brought are left out.
    std::vector<HistoryItem> load(int limit) const;
    std::vector<HistoryItem> loadAll() const;

    /// How many items there are, in the file and, without one, in the list.
    std::size_t count() const;

    /// When the oldest row was made, in seconds since 1970; nothing when there is no row.
    std::optional<double> firstDate() const;

 private:
    void show(const HistoryItem& item);
    void replace(const HistoryItem& item);
    void insert(const HistoryItem& item);
    std::optional<RemovedItem> hide(const std::string& itemID);
    std::size_t placeFor(const RemovedItem& removed) const;
    bool isStored(const std::string& id) const;
    void write(const HistoryItem& item);
    bool erase(const std::string& id);
    std::vector<HistoryItem> read(const std::string& sql) const;

    sqlite::Connection db_;
    HistoryItems items_;
    std::unordered_set<std::string>
        shownIds_;  // of items_: most items that come are new, which this tells at once
    std::unordered_set<std::string> growingIds_;
    bool inOrder_ = true;  // items_ is, by date
    std::optional<double> oldestRead_;
    Observers<HistoryChange> observers_;
};

}  // namespace dorix
