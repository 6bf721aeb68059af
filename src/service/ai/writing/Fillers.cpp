#include "service/ai/writing/Fillers.h"

#include "service/ai/Language.h"
#include "service/ai/writing/PhraseTable.h"
#include "service/ai/writing/WritingWords.h"

namespace dorix::service {

namespace {

bool isNumber(const Token& token) {
    return !token.text.empty() && token.text.back() >= '0' && token.text.back() <= '9';
}

/// Finds the fillers of one dictation.
class Fillers {
 public:
    Fillers(const Tokens& tokens, Spoken spoken) : tokens_(tokens), spoken_(spoken) {}

    /// How many words from `at` on are a filler; 0 when they mean something. `written` is what remains of the
    /// words before.
    std::size_t at(std::size_t at, const Tokens& written) const {
        if (isHesitation(at) || isStutter(at, written)) return 1;
        const bool begins = written.empty() || written.back().endsClause();
        if (!begins && tokens_[at].gap == Gap::blank) return 0;
        const bool opens = written.empty() || written.back().endsSentence();
        std::size_t words = 0;
        if (spoken_.spanish) words = aside(at, opens, spanish());
        if (words == 0 && spoken_.english) words = aside(at, opens, english());
        return words > 0 ? words : closer(at, written);
    }

 private:
    bool isHesitation(std::size_t at) const {
        const auto& token = tokens_[at];
        if (token.closing.find('?') != std::string::npos) return false;  // "¿eh?" asks something
        if (at > 0 && isNumber(tokens_[at - 1])) return false;           // "10 mm"
        return words::hesitations().contains(token.key) ||
               (spoken_.spanish && words::spanishHesitations().contains(token.key)) ||
               (spoken_.english && words::englishHesitations().contains(token.key) && isLowerOrFirst(at));
    }

    /// "ER" and "UM" name something.
    bool isLowerOrFirst(std::size_t at) const {
        const auto& text = tokens_[at].text;
        return text.size() < 2 || text[1] < 'A' || text[1] > 'Z';
    }

    bool isStutter(std::size_t at, const Tokens& written) const {
        return !written.empty() && !written.back().endsClause() && written.back().key == tokens_[at].key &&
               tokens_[at].opening.empty() && words::stutters().contains(tokens_[at].key);
    }

    /// The fillers of a language.
    struct Table {
        Phrases asides;
        Phrases openers;
    };

    static const Table& spanish() {
        static const Table table{Phrases(words::spanishAsides()), Phrases(words::spanishOpeners())};
        return table;
    }

    static const Table& english() {
        static const Table table{Phrases(words::englishAsides()), Phrases(words::englishOpeners())};
        return table;
    }

    /// A phrase with a comma behind it, or one that opens the sentence with another filler behind it.
    std::size_t aside(std::size_t at, bool opens, const Table& table) const {
        if (const auto words = table.asides.wordsAt(tokens_, at); words > 0 && isCut(at + words))
            return words;
        const auto words = opens ? table.openers.wordsAt(tokens_, at) : 0;
        const auto next = at + words;
        if (words == 0 || next >= tokens_.size()) return 0;
        const bool meetsFiller = tokens_[next - 1].closing.empty() && isHesitation(next);
        return isCut(next) || meetsFiller ? words : 0;
    }

    /// Whether a pause separates the word at `next` from what is before it.
    bool isCut(std::size_t next) const {
        if (next >= tokens_.size()) return false;
        const auto& closing = tokens_[next - 1].closing;
        return closing == "," || closing == "..." || closing == "…";
    }

    /// "…, vale" at the very end.
    std::size_t closer(std::size_t at, const Tokens& written) const {
        if (written.empty() || !written.back().closing.ends_with(',')) return 0;
        static const Phrases closers(words::closers());
        const auto words = closers.wordsAt(tokens_, at);
        return at + words == tokens_.size() ? words : 0;
    }

    const Tokens& tokens_;
    Spoken spoken_;
};

/// A filler takes its own comma along; a full stop behind it ends the sentence before it.
void settle(Token& last, const Token& filler) {
    const bool isStop = filler.endsSentence() || filler.closing == ";" || filler.closing == ":";
    if (last.endsSentence() || !isStop) return;
    if (last.closing.ends_with(',')) last.closing.pop_back();
    const bool asked = filler.closing.find('?') != std::string::npos;
    last.closing += asked ? "." : filler.closing;
}

}  // namespace

Spoken spokenIn(std::string_view transcript) {
    if (isForeign(transcript)) return {};
    const auto language = languageOf(transcript);
    if (!language) return {.spanish = true, .english = true};
    return {.spanish = language == Language::spanish, .english = language == Language::english};
}

Tokens withoutFillers(Tokens tokens, Spoken spoken) {
    if (!spoken.spanish && !spoken.english) return tokens;
    const Fillers fillers(tokens, spoken);
    Tokens written;
    Token gone;
    for (std::size_t at = 0; at < tokens.size();) {
        if (const auto words = fillers.at(at, written)) {
            handOver(tokens[at], gone);
            at += words;
            if (!written.empty()) settle(written.back(), tokens[at - 1]);
            continue;
        }
        written.push_back(tokens[at++]);
        handOver(gone, written.back());
        gone = {};
    }
    if (written.empty()) return tokens;
    if (written.back().closing.ends_with(',') && !tokens.back().closing.ends_with(','))
        written.back().closing.pop_back();
    return written;
}

}  // namespace dorix::service
