#pragma once

#include "localdata/HistoryItem.h"

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>

namespace dorix {

/// Which items of a list hold a search text, ignoring case and diacritics, in their title, query, answer or
/// app. It keeps each item's fields folded from the first
/// time that they are needed. The list is not the index's:
/// it is told of every change by place. Main executor.
class SearchIndex {
 public:
    /// `items` must outlive the index.
    explicit SearchIndex(const HistoryItems& items);

    /// The list has another item at `place`, has lost the one that was there, or has changed it.
    void inserted(std::size_t place);
    void removed(std::size_t place);
    void updated(std::size_t place);
    /// The list is another one.
    void reset();

    /// Looks for `query` from now on; an empty one is found everywhere. A query that holds the last one is
    /// looked for only where that was found.
    void search(std::string_view query);

    bool matches(std::size_t place) const { return entries_[place].matches; }

    /// Folds some more items ahead of a search, a millisecond or two's worth; false when none is left.
    bool warmUp();

 private:
    struct Entry {
        std::string folded;      // the first fields, in the order of the search, each with a NUL after it
        std::size_t fields = 0;  // how many
        bool matches = true;
    };

    void foldNextField(std::size_t place);
    bool isFound(std::size_t place);
    void test(std::size_t place);

    const HistoryItems& items_;
    std::deque<Entry> entries_;  // beside items_
    std::string query_;          // folded
    std::size_t warm_ = 0;       // how many entries from the front warmUp has seen
};

}  // namespace dorix
