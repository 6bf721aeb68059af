#include "service/ai/extraction/Passages.h"

#include "base/text/Text.h"
#include "service/ai/writing/WritingWords.h"

namespace dorix::service {

namespace {

void add(std::vector<Source>& sources, Source source) {
    if (!text::trim(source.text).empty()) sources.push_back(source);
}

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

/// Whether the full stop behind `before` is part of a word: "Sr.", "J.".
bool isPartOfWord(std::string_view before) {
    const auto blank = before.find_last_of(" \t\n(");
    const auto word = blank == std::string_view::npos ? before : before.substr(blank + 1);
    const bool isInitial = word.size() == 1 && word.front() >= 'A' && word.front() <= 'Z';
    return isInitial || words::abbreviations().contains(text::fold(word));
}

/// Whether a sentence ends with the mark at `at`.
bool endsAt(std::string_view text, std::size_t at) {
    constexpr std::size_t longestAbbreviation = 8;
    const char c = text[at];
    if (c == '\n') return true;
    if (c != '.' && c != '!' && c != '?') return false;
    if (at + 1 == text.size()) return true;
    if (!isBlank(text[at + 1])) return false;
    if (c != '.') return true;
    const char next = at + 2 < text.size() ? text[at + 2] : ' ';
    const auto start = at > longestAbbreviation ? at - longestAbbreviation : 0;
    return !(next >= 'a' && next <= 'z') && !isPartOfWord(text.substr(start, at - start));
}

void split(std::size_t source, std::string_view text, std::vector<Passage>& passages) {
    bool beginsParagraph = true;
    std::size_t start = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (!endsAt(text, at)) continue;
        const auto sentence = text::trim(text.substr(start, at + 1 - start));
        if (!sentence.empty())
            passages.push_back({.source = source, .text = sentence, .beginsParagraph = beginsParagraph});
        beginsParagraph = sentence.empty() ? beginsParagraph || text[at] == '\n' : text[at] == '\n';
        start = at + 1;
    }
    const auto rest = text::trim(text.substr(start));
    if (!rest.empty())
        passages.push_back({.source = source, .text = rest, .beginsParagraph = beginsParagraph});
}

}  // namespace

std::vector<Source> sourcesOf(const AskRequest& request) {
    using enum Source::Kind;
    std::vector<Source> sources;
    if (request.selection) add(sources, {.kind = selection, .text = *request.selection});
    if (request.document) {
        add(sources, {.kind = document, .title = request.document->name, .text = request.document->text});
    }
    for (const auto& hit : request.memory) {
        add(sources, {.kind = memory, .title = hit.title, .number = hit.n, .text = hit.text});
    }
    if (request.transcript) {
        add(sources, {.kind = transcript, .title = request.meetingTitle, .text = *request.transcript});
    }
    if (request.recap) add(sources, {.kind = recap, .text = *request.recap});
    return sources;
}

std::vector<Passage> passagesOf(const std::vector<Source>& sources) {
    std::vector<Passage> passages;
    for (std::size_t source = 0; source < sources.size(); ++source)
        split(source, sources[source].text, passages);
    return passages;
}

}  // namespace dorix::service
