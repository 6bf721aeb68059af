#include "service/ai/writing/Fillers.h"

#include "service/ai/Language.h"
#include "service/ai/writing/WritingWords.h"

#include <span>

namespace dorix::service {

namespace {

using Phrases = std::span<const std::string_view>;

bool isNumber(const Token& token) { return !token.text.empty() && token.text.back() >= '0' && token.text.back() <= '9'; }

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
        if (spoken_.spanish) words = apart(at, words::spanishAsides(), opens ? words::spanishOpeners() : Phrases());
        if (words == 0 && spoken_.english)
            words = apart(at, words::englishAsides(), opens ? words::englishOpeners() : Phrases());
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

    /// A phrase with a comma behind it, or an opening one with another filler behind it.
    std::size_t apart(std::size_t at, Phrases asides, Phrases openers) const {
        for (const auto phrases : {asides, openers}) {
            for (const auto phrase : phrases) {
                if (!isPhraseAt(tokens_, at, phrase)) continue;
                const auto next = at + wordsIn(phrase);
                if (next >= tokens_.size()) continue;
                const auto& closing = tokens_[next - 1].closing;
                if (closing == "," || closing == "..." || closing == "…") return wordsIn(phrase);
                const bool meetsFiller = closing.empty() && isHesitation(next);
                if (meetsFiller && phrases.data() == openers.data()) return wordsIn(phrase);
            }
        }
        return 0;
    }

    /// "…, vale" at the very end.
    std::size_t closer(std::size_t at, const Tokens& written) const {
        if (written.empty() || !written.back().closing.ends_with(',')) return 0;
        for (const auto phrase : words::closers()) {
            const auto words = wordsIn(phrase);
            if (at + words == tokens_.size() && isPhraseAt(tokens_, at, phrase)) return words;
        }
        return 0;
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
