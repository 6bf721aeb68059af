#pragma once

#include "service/ai/writing/Dictation.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace dorix::service {

inline std::string_view phraseOf(std::string_view row) { return row; }
template <typename Row>
std::string_view phraseOf(const Row& row) {
    return row.phrase;
}

/// Rows that are found by a phrase, in time that does not grow with their number. The rows outlive the table.
template <typename Row>
class PhraseTable {
 public:
    explicit PhraseTable(std::span<const Row> rows) {
        for (const auto& row : rows) entries_.push_back({firstWord(phraseOf(row)), &row});
        // The longest of those with one first word comes first.
        std::ranges::sort(entries_, [](const Entry& one, const Entry& other) {
            if (one.firstWord != other.firstWord) return one.firstWord < other.firstWord;
            return phraseOf(*one.row).size() > phraseOf(*other.row).size();
        });
    }

    /// The row with the longest phrase that is said at `at`; none if none is.
    const Row* longestAt(const Tokens& tokens, std::size_t at) const {
        if (at >= tokens.size()) return nullptr;
        const std::string_view key = tokens[at].key;
        auto entry = std::ranges::lower_bound(entries_, key, {}, &Entry::firstWord);
        for (; entry != entries_.end() && entry->firstWord == key; ++entry) {
            if (isPhraseAt(tokens, at, phraseOf(*entry->row))) return entry->row;
        }
        return nullptr;
    }

    /// How many words that phrase has; 0 if there is none.
    std::size_t wordsAt(const Tokens& tokens, std::size_t at) const {
        const auto* row = longestAt(tokens, at);
        return row == nullptr ? 0 : wordsIn(phraseOf(*row));
    }

 private:
    struct Entry {
        std::string_view firstWord;
        const Row* row;
    };

    static std::string_view firstWord(std::string_view phrase) { return phrase.substr(0, phrase.find(' ')); }

    std::vector<Entry> entries_;
};

using Phrases = PhraseTable<std::string_view>;

}  // namespace dorix::service
