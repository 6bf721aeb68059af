#include "shell/panel/SearchIndex.h"

#include "base/text/Text.h"

namespace dorix {

namespace {

constexpr std::size_t bytesAtATime = 256 * 1024;  // a millisecond or two to fold

/// Nobody can type a NUL, so no search text is found across two fields.
std::string foldedText(const HistoryItem& item) {
    std::string all = text::fold(item.title);
    for (const auto* field : {&item.query, &item.answer, &item.app}) {
        all += '\0';
        all += text::fold(*field);
    }
    return all;
}

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
    entries_[place].isFolded = false;
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
        if (!entries_[warm_].isFolded) bytes += folded(warm_).folded.size();
    }
    return warm_ < entries_.size();
}

SearchIndex::Entry& SearchIndex::folded(std::size_t place) {
    auto& entry = entries_[place];
    if (!entry.isFolded) {
        entry.folded = foldedText(items_[place]);
        entry.isFolded = true;
    }
    return entry;
}

void SearchIndex::test(std::size_t place) {
    entries_[place].matches = query_.empty() || folded(place).folded.contains(query_);
}

}  // namespace dorix
