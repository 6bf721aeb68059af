#include "service/ai/writing/Lists.h"

#include "service/ai/WordSet.h"
#include "service/ai/writing/PhraseTable.h"
#include "service/ai/writing/WritingWords.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace dorix::service {

namespace {

using Row = std::span<const std::string_view>;

constexpr std::size_t longestItem = 40;  // words; what is longer is no item but a text

/// Where an item is announced: the words from `first` up to `item`.
struct Marker {
    std::size_t first = 0;
    std::size_t item = 0;
};
using Markers = std::vector<Marker>;

// Behind a marker they tell that it counts nothing: "primero de mayo", "one of them".
const WordSet& notInFront() {
    static const WordSet set(
        {"de", "del", "que", "y", "o", "u", "or", "of", "and", "por", "mas", "and", "a"});
    return set;
}

// Before it they make it a part of the sentence: "lo primero", "en segundo lugar".
const WordSet& notBehind() {
    static const WordSet set({"lo",    "en",    "de",   "del",   "al",   "por", "a",  "o",  "or",
                              "at",    "in",    "of",   "for",   "un",   "muy", "is", "es", "from",
                              "hasta", "desde", "piso", "curso", "mayo", "not", "no"});
    return set;
}

bool isConjunction(const Token& token) {
    return (token.key == "y" || token.key == "and") && !token.endsClause();
}

/// A marker of so many words at `at`, with a conjunction before it taken along. None where the words belong
/// to the sentence around them.
std::optional<Marker> markerAt(const Tokens& tokens, std::size_t at, std::size_t words) {
    const std::size_t item = at + words;
    if (words == 0 || item >= tokens.size() || tokens[item - 1].endsSentence()) return std::nullopt;
    if (!tokens[item - 1].endsClause() && notInFront().contains(tokens[item].key)) return std::nullopt;
    std::size_t first = at;
    if (first > 0 && isConjunction(tokens[first - 1])) --first;
    if (first > 0 && !tokens[first - 1].endsClause()) {
        const auto& last = tokens[first - 1].key;
        if (notBehind().contains(last) || words::determiners().contains(last)) return std::nullopt;
    }
    return Marker{.first = first, .item = item};
}

/// The markers of one row, each behind the one before it, with something said in between.
Markers markersOf(const Tokens& tokens, Row row) {
    Markers markers;
    for (std::size_t at = 0; at < tokens.size() && markers.size() < row.size(); ++at) {
        const auto phrase = row[markers.size()];
        const auto marker = markerAt(tokens, at, isPhraseAt(tokens, at, phrase) ? wordsIn(phrase) : 0);
        if (!marker) continue;
        if (!markers.empty() && marker->first <= markers.back().item) return {};
        markers.push_back(*marker);
        at = marker->item - 1;
    }
    return markers;
}

void addLast(const Tokens& tokens, Markers& markers) {
    static const Phrases last(words::listLast());
    if (markers.size() < 2) return;
    for (std::size_t at = markers.back().item + 1; at < tokens.size(); ++at) {
        const auto marker = markerAt(tokens, at, last.wordsAt(tokens, at));
        if (!marker) continue;
        markers.push_back(*marker);
        return;
    }
}

bool isSetApart(const Tokens& tokens, const Marker& marker) {
    return marker.first == 0 || tokens[marker.first].gap != Gap::blank ||
           tokens[marker.first - 1].endsClause();
}

bool hasShortItems(const Markers& markers) {
    for (std::size_t i = 1; i < markers.size(); ++i) {
        if (markers[i].first - markers[i - 1].item > longestItem) return false;
    }
    return true;
}

/// Three things in a row are a list; two are when pauses set them apart.
bool isList(const Tokens& tokens, const Markers& markers, std::size_t least) {
    if (markers.size() < 2 || !hasShortItems(markers)) return false;
    const auto apart = [&](const auto& marker) { return isSetApart(tokens, marker); };
    return markers.size() >= 3 || (least == 2 && std::ranges::all_of(markers, apart));
}

/// Whether the numbers count items and not things, as they do in "uno grande, dos pequeños": a pause behind
/// each tells, or that a list was announced.
bool countsItems(const Tokens& tokens, const Markers& markers) {
    static const WordSet announcements({"lista", "listado", "pasos", "puntos", "list", "steps", "points"});
    const auto first = tokens.begin() + static_cast<std::ptrdiff_t>(markers.front().first);
    const bool isAnnounced = std::any_of(
        tokens.begin(), first, [](const Token& token) { return announcements.contains(token.key); });
    const auto pauses = [&](const auto& marker) { return tokens[marker.item - 1].endsClause(); };
    return isAnnounced || std::ranges::all_of(markers, pauses);
}

std::string withoutComma(std::string closing) {
    while (closing.ends_with(',') || closing.ends_with(';')) closing.pop_back();
    return closing;
}

/// Takes the words of the markers out and puts `marks` before the items, each in a line of its own.
Tokens listed(const Tokens& tokens, const Markers& markers, bool isNumbered) {
    Tokens written;
    std::size_t next = 0;
    // Else the full stop is that of the sentence, which is a list now.
    const bool isEnded = tokens[markers.back().first - 1].endsSentence();
    for (std::size_t at = 0; at < tokens.size();) {
        if (next == markers.size() || at != markers[next].first) {
            written.push_back(tokens[at++]);
            continue;
        }
        if (!written.empty()) written.back().closing = withoutComma(written.back().closing);
        if (!written.empty() && next == 0 && !written.back().endsClause()) written.back().closing = ":";
        at = markers[next].item;
        Token item = tokens[at++];
        item.gap = std::max(item.gap, written.empty() ? Gap::blank : Gap::line);
        item.marker = isNumbered ? std::to_string(next + 1) + ". " : "- ";
        written.push_back(std::move(item));
        ++next;
    }
    if (!isEnded && written.back().closing == ".") written.back().closing.clear();
    return written;
}

/// Every "bullet point" at which something follows.
Markers bulletsOf(const Tokens& tokens) {
    static const Phrases bullets(words::bulletWords());
    Markers markers;
    for (std::size_t at = 0; at < tokens.size(); ++at) {
        const auto marker = markerAt(tokens, at, bullets.wordsAt(tokens, at));
        if (!marker || (!markers.empty() && marker->first <= markers.back().item)) continue;
        markers.push_back(*marker);
        at = marker->item - 1;
    }
    return markers;
}

}  // namespace

Tokens withLists(Tokens tokens) {
    for (const auto& row : words::listOrdinals()) {
        auto markers = markersOf(tokens, row);
        addLast(tokens, markers);
        if (isList(tokens, markers, 2)) return listed(tokens, markers, true);
    }
    for (const auto& row : words::listNumbers()) {
        const auto markers = markersOf(tokens, row);
        const bool isNamed = wordsIn(row.front()) > 1;
        if (isList(tokens, markers, 3) && (isNamed || countsItems(tokens, markers)))
            return listed(tokens, markers, true);
    }
    const auto bullets = bulletsOf(tokens);
    if (isList(tokens, bullets, 2)) return listed(tokens, bullets, false);
    return tokens;
}

}  // namespace dorix::service
