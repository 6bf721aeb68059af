#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

namespace dorix::service {

/// A set of folded words, made once; the words are literals.
class WordSet {
 public:
    template <std::size_t count>
    explicit WordSet(const std::string_view (&words)[count]) : words_(words, words + count) {
        std::ranges::sort(words_);
    }

    bool contains(std::string_view word) const { return std::ranges::binary_search(words_, word); }

 private:
    std::vector<std::string_view> words_;
};

}  // namespace dorix::service
