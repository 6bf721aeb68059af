#include "service/ai/extraction/Names.h"

#include "base/text/Text.h"
#include "service/ai/extraction/ExtractionWords.h"

namespace dorix::service {

namespace {

constexpr std::string_view punctuation = ".,;:!?()[]\"'*_#-";

/// The folded name; empty for a word that is none.
std::string nameIn(std::string_view raw) {
    const auto word = text::trimAny(raw, punctuation);
    const auto first = text::prefix(word, 1);
    if (first.size() == word.size() || text::lowercase(first) == first) return {};
    auto folded = text::fold(word);
    const bool isOther = words::timeWords().contains(folded) || words::stopWords().contains(folded);
    return isOther ? std::string() : folded;
}

}  // namespace

Names::Names(const std::vector<Passage>& passages) {
    for (const auto& passage : passages) {
        const auto words = text::words(passage.text);
        for (std::size_t at = 1; at < words.size(); ++at) {
            if (auto name = nameIn(words[at]); !name.empty()) known_.insert(std::move(name));
        }
    }
}

bool Names::areIn(std::string_view sentence) const {
    bool isFirst = true;
    for (const auto word : text::words(sentence)) {
        const auto name = nameIn(word);
        if (!name.empty() && (!isFirst || known_.contains(name))) return true;
        isFirst = false;
    }
    return false;
}

}  // namespace dorix::service
