#include "service/ai/extraction/Terms.h"

#include "service/ai/extraction/ExtractionWords.h"

#include <algorithm>
#include <unordered_map>

namespace dorix::service {

namespace {

constexpr std::size_t shortestStem = 4;
constexpr std::size_t shortestStemOfShortWord = 3;
constexpr int mostEndings = 2;  // one of number or person, and one of the kind of word

/// How many bytes separate words at the front of a text; 0 at a letter or digit.
std::size_t separatorAt(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text.front());
    if (lead == 0xC2) return std::min<std::size_t>(2, text.size());  // signs of Latin-1
    if (lead == 0xE2) return std::min<std::size_t>(3, text.size());  // general punctuation and symbols
    const bool isWord = lead >= 0x80 || (lead >= '0' && lead <= '9') || (lead >= 'a' && lead <= 'z');
    return isWord ? 0 : 1;
}

bool hasDigit(std::string_view word) {
    return std::ranges::any_of(word, [](char c) { return c >= '0' && c <= '9'; });
}

std::string_view withoutEnding(std::string_view word) {
    const auto least = word.size() <= shortestStem + 1 ? shortestStemOfShortWord : shortestStem;
    for (const auto ending : words::endings()) {
        if (word.ends_with(ending) && word.size() >= least + ending.size())
            return word.substr(0, word.size() - ending.size());
    }
    return word;
}

/// With one vowel for those that change in Spanish verbs: "renueva" and "renovar".
std::string withPlainVowels(std::string_view word) {
    std::string out;
    for (std::size_t at = 0; at < word.size(); ++at) {
        const auto pair = word.substr(at, 2);
        const bool isMute = at > 0 && (word[at - 1] == 'q' || word[at - 1] == 'g');
        const bool changes = (pair == "ue" && !isMute) || pair == "ie";
        out += changes ? (pair == "ue" ? 'o' : 'e') : word[at];
        if (changes) ++at;
    }
    return out;
}

std::string stemOf(std::string_view word) {
    if (hasDigit(word)) return std::string(word);
    for (int i = 0; i < mostEndings; ++i) word = withoutEnding(word);
    return withPlainVowels(word);
}

/// The first word of each meaning, for all its words.
const std::unordered_map<std::string_view, std::string_view>& meanings() {
    static const std::unordered_map<std::string_view, std::string_view> byWord = [] {
        std::unordered_map<std::string_view, std::string_view> rows;
        for (const auto& row : words::synonyms()) {
            for (const auto word : row) rows.emplace(word, row.front());
        }
        return rows;
    }();
    return byWord;
}

}  // namespace

std::vector<std::string_view> foldedWords(std::string_view folded) {
    std::vector<std::string_view> words;
    std::size_t start = 0;
    for (std::size_t at = 0; at < folded.size();) {
        const auto separator = separatorAt(folded.substr(at));
        if (separator == 0) {
            ++at;
            continue;
        }
        if (at > start) words.push_back(folded.substr(start, at - start));
        at += separator;
        start = at;
    }
    if (folded.size() > start) words.push_back(folded.substr(start));
    return words;
}

std::string termOf(std::string_view foldedWord) {
    if (words::stopWords().contains(foldedWord)) return {};
    const auto meaning = meanings().find(foldedWord);
    // No stem begins like this.
    if (meaning != meanings().end()) return "=" + std::string(meaning->second);
    if (words::timeWords().contains(foldedWord)) return std::string(foldedWord);  // Marta is no Tuesday
    return stemOf(foldedWord);
}

}  // namespace dorix::service
