#include "service/ai/extraction/Terms.h"

#include "base/text/Text.h"
#include "service/ai/extraction/ExtractionWords.h"
#include "service/ai/extraction/Thesaurus.h"

#include <algorithm>
#include <functional>
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

std::string_view withoutEnding(std::string_view word, std::size_t least) {
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

std::string bareStem(std::string_view word) {
    if (hasDigit(word)) return std::string(word);
    const auto least = word.size() <= shortestStem + 1 ? shortestStemOfShortWord : shortestStem;
    for (int i = 0; i < mostEndings; ++i) word = withoutEnding(word, least);
    return withPlainVowels(word);
}

using Meanings = std::unordered_map<std::string, std::vector<std::uint16_t>, Hash, std::equal_to<>>;

const Meanings& meanings() {
    static const Meanings byStem = [] {
        Meanings rows;
        std::uint16_t number = 0;
        for (const auto row : words::meanings()) {
            for (const auto word : text::words(row)) {
                auto& numbers = rows[stemOf(word)];
                if (numbers.empty() || numbers.back() != number) numbers.push_back(number);
            }
            ++number;
        }
        return rows;
    }();
    return byStem;
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

std::string stemOf(std::string_view foldedWord) {
    const bool isLetter = foldedWord.size() == 1 && !hasDigit(foldedWord);  // what an apostrophe leaves
    if (isLetter || words::stopWords().contains(foldedWord)) return {};
    if (words::timeWords().contains(foldedWord)) return std::string(foldedWord);  // Marta is no Tuesday
    return bareStem(foldedWord);
}

std::span<const std::uint16_t> meaningsOf(std::string_view stem) {
    const auto found = meanings().find(stem);
    return found == meanings().end() ? std::span<const std::uint16_t>() : found->second;
}

}  // namespace dorix::service
