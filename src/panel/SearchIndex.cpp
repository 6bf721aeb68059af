#include "panel/SearchIndex.h"

#include "base/text/Text.h"
#include "localdata/HistorySearch.h"

#include <utility>

namespace dorix {

namespace {

constexpr std::size_t bytesAtATime = 256 * 1024;  // a millisecond or two to fold

constexpr const auto& fields = searchedFields;

}  // namespace

SearchIndex::SearchIndex(const HistoryItems& items) : items_(items), entries_(items.size()) {}

void SearchIndex::inserted(std::size_t place) {
    entries_.emplace(entries_.begin() + static_cast<std::ptrdiff_t>(place));
    test(place);
    warm_ = 0;
}

void SearchIndex::removed(std::size_t place) {
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(place));
    warm_ = 0;
}

void SearchIndex::updated(std::size_t place) {
    entries_[place] = {};
    test(place);
    warm_ = 0;
}

void SearchIndex::reset() {
    entries_.clear();
    entries_.resize(items_.size());
    for (std::size_t place = 0; place < entries_.size(); ++place) test(place);
    warm_ = 0;
}

void SearchIndex::search(std::string_view query) {
    auto sought = text::fold(query);
    const bool narrows = sought.contains(query_);
    query_ = std::move(sought);
    for (std::size_t place = 0; place < entries_.size(); ++place) {
        if (!narrows || entries_[place].matches) test(place);
    }
}

bool SearchIndex::warmUp() {
    for (std::size_t bytes = 0; warm_ < entries_.size() && bytes < bytesAtATime; ++warm_) {
        const auto before = entries_[warm_].folded.size();
        while (entries_[warm_].fields < fields.size()) foldNextField(warm_);
        bytes += entries_[warm_].folded.size() - before;
    }
    return warm_ < entries_.size();
}

/// Nobody can type the NUL after a field, so no search text is found across two.
void SearchIndex::foldNextField(std::size_t place) {
    auto& entry = entries_[place];
    entry.folded += text::fold(items_[place].*fields.at(entry.fields));
    entry.folded += '\0';
    ++entry.fields;
}

void SearchIndex::test(std::size_t place) { entries_[place].matches = query_.empty() || isFound(place); }

/// Folds no more fields than it takes to find the text.
bool SearchIndex::isFound(std::size_t place) {
    auto& entry = entries_[place];
    std::size_t searched = 0;
    while (entry.folded.find(query_, searched) == std::string::npos) {
        if (entry.fields == fields.size()) return false;
        searched = entry.folded.size();
        foldNextField(place);
    }
    return true;
}

}  // namespace dorix
