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
    if (c != '.' && c != '!' && c != '?') return false;
    if (at + 1 == text.size()) return true;
    if (!isBlank(text[at + 1])) return false;
    if (c != '.') return true;
    const char next = at + 2 < text.size() ? text[at + 2] : ' ';
    const auto start = at > longestAbbreviation ? at - longestAbbreviation : 0;
    return !(next >= 'a' && next <= 'z') && !isPartOfWord(text.substr(start, at - start));
}

bool isListItem(std::string_view line) {
    return line.starts_with("- ") || line.starts_with("* ") || line.starts_with("• ");
}

/// A short line without an end of its own, or one that announces what follows.
bool isHeading(std::string_view line) {
    constexpr std::size_t mostWords = 8;
    if (isListItem(line)) return false;
    const bool announces = line.starts_with('#') || line.ends_with(':');
    const bool isOpen = line.find(": ") == std::string_view::npos &&
                        line.find_first_of(".!?;", line.size() - 1) == std::string_view::npos;
    return (announces || isOpen) && text::words(line.substr(0, 200)).size() <= mostWords;
}

bool isLabel(std::string_view sentence) {
    constexpr std::size_t mostWords = 3;
    constexpr std::size_t longest = 60;  // bytes
    return sentence.size() <= longest && sentence.ends_with('.') && text::words(sentence).size() <= mostWords;
}

/// Adds the sentences of a line.
void splitLine(std::size_t source, std::string_view line, std::vector<Passage>& passages) {
    using Role = Passage::Role;
    std::size_t start = 0;
    bool isLabelled = true;  // so far there are only labels
    const auto take = [&](std::size_t end) {
        const auto sentence = text::trim(line.substr(start, end - start));
        const bool beginsLine = start == 0;
        start = end;
        if (sentence.empty()) return;
        const bool isWhole = beginsLine && end == line.size();
        isLabelled = isLabelled && !isWhole && isLabel(sentence);
        const auto whole = isWhole && isHeading(sentence) ? Role::heading : Role::sentence;
        passages.push_back({.source = source,
                            .text = sentence,
                            .beginsLine = beginsLine,
                            .role = isLabelled ? Role::label : whole});
    };
    for (std::size_t at = 0; at < line.size(); ++at) {
        if (endsAt(line, at)) take(at + 1);
    }
    take(line.size());
}

void split(std::size_t source, std::string_view text, std::vector<Passage>& passages) {
    for (const auto line : text::split(text, '\n')) splitLine(source, text::trim(line), passages);
}

}  // namespace

std::vector<Source> sourcesOf(const AskRequest& request) {
    using enum Source::Kind;
    std::vector<Source> sources;
    if (request.selection)
        add(sources, {.kind = selection, .title = request.windowTitle, .text = *request.selection});
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

std::vector<std::string_view> sentencesOf(std::string_view text) {
    std::vector<Passage> passages;
    split(0, text, passages);
    std::vector<std::string_view> sentences;
    for (const auto& passage : passages) sentences.push_back(passage.text);
    return sentences;
}

std::vector<Passage> passagesOf(const std::vector<Source>& sources) {
    std::vector<Passage> passages;
    for (std::size_t source = 0; source < sources.size(); ++source)
        split(source, sources[source].text, passages);
    return passages;
}

}  // namespace dorix::service
