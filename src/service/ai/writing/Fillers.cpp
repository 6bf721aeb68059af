#include "service/ai/writing/Fillers.h"

#include "base/text/Text.h"
#include "service/ai/Language.h"
#include "service/ai/writing/ClauseWords.h"
#include "service/ai/writing/PhraseTable.h"
#include "service/ai/writing/WritingWords.h"

#include <algorithm>
#include <vector>

namespace dorix::service {

namespace {

constexpr std::size_t leastWordsBeforeVale = 3;

bool isNumber(const Token& token) {
    return !token.text.empty() && token.text.back() >= '0' && token.text.back() <= '9';
}

/// The fillers of a language.
struct Table {
    const WordSet& hesitations;
    Phrases asides;
    Phrases openers;
};

const Table& spanish() {
    static const Table table{words::spanishHesitations(), Phrases(words::spanishAsides()),
                             Phrases(words::spanishOpeners())};
    return table;
}

const Table& english() {
    static const Table table{words::englishHesitations(), Phrases(words::englishAsides()),
                             Phrases(words::englishOpeners())};
    return table;
}

/// Finds the fillers of one dictation. Both tell how many words from `at` on are one, or 0 where they mean
/// something; `written` is what remains of the words before.
class Fillers {
 public:
    Fillers(const Tokens& tokens, Spoken spoken) : tokens_(tokens) {
        if (spoken.spanish) tables_.push_back(&spanish());
        if (spoken.english) tables_.push_back(&english());
    }

    /// A sound, also with the opening filler before it, or a small word said again.
    std::size_t hesitation(std::size_t at, const Tokens& written) const {
        if (isHesitation(at) || isStutter(at, written) || isSaidAgain(at) || isLastVale(at)) return 1;
        if (const auto words = opener(at, written)) return words;
        if (!opensSentence(at, written)) return 0;
        for (const auto* table : tables_) {
            const auto words = table->openers.wordsAt(tokens_, at);
            const auto next = at + words;
            const bool runsOn = words > 0 && next < tokens_.size() && tokens_[next - 1].closing.empty();
            if (runsOn && isHesitation(next)) return words;
        }
        return 0;
    }

    /// A phrase that pauses set apart.
    std::size_t aside(std::size_t at, const Tokens& written) const {
        const bool begins = written.empty() || written.back().endsClause() || tokens_[at].gap != Gap::blank;
        if (!begins) return 0;
        const bool opens = opensSentence(at, written);
        if (const auto words = pair(at, opens)) return words;
        for (const auto* table : tables_) {
            if (const auto words = table->asides.wordsAt(tokens_, at); isCut(at, words)) return words;
            const auto words = opens ? table->openers.wordsAt(tokens_, at) : 0;
            if (isCut(at, words)) return words;
        }
        return closer(at, written);
    }

 private:
    bool opensSentence(std::size_t at, const Tokens& written) const {
        return written.empty() || written.back().endsSentence() || tokens_[at].gap != Gap::blank;
    }

    bool isHesitation(std::size_t at) const {
        const auto& token = tokens_[at];
        if (token.closing.find('?') != std::string::npos) return false;  // "¿eh?" asks something
        if (at > 0 && isNumber(tokens_[at - 1])) return false;           // "10 mm"
        if (isCapitals(token.text)) return false;                        // "ER" and "UM" name something
        const auto knows = [&](const auto* table) { return table->hesitations.contains(token.key); };
        return words::hesitations().contains(token.key) || std::ranges::any_of(tables_, knows);
    }

    static bool isCapitals(std::string_view text) {
        return text.size() > 1 && text[1] >= 'A' && text[1] <= 'Z';
    }

    bool isStutter(std::size_t at, const Tokens& written) const {
        return !written.empty() && !written.back().endsClause() && written.back().key == tokens_[at].key &&
               tokens_[at].opening.empty() && words::stutters().contains(tokens_[at].key);
    }

    /// The first of two with a pause or a sound between them: "con, con", "and, uh, and".
    bool isSaidAgain(std::size_t at) const {
        const auto& token = tokens_[at];
        const auto isPlain = [](const Token& word) { return word.closing.empty() || isPause(word); };
        if (!words::stutters().contains(token.key) || !isPlain(token)) return false;
        auto next = at + 1;
        while (next < tokens_.size() && isHesitation(next) && isPlain(tokens_[next])) ++next;
        if (next >= tokens_.size() || (next == at + 1 && token.closing.empty())) return false;
        return tokens_[next].key == token.key && tokens_[next].opening.empty() &&
               tokens_[next].gap == Gap::blank;
    }

    /// Opening fillers that need no pause before what follows: "I mean I…", "o sea lo que…".
    std::size_t opener(std::size_t at, const Tokens& written) const {
        static const WordSet subjects({"i", "we", "he", "she", "they", "i'm", "we're"});
        static const WordSet articles({"el", "la", "lo", "los", "las", "yo", "nosotros"});
        if (!opensSentence(at, written) && !isBehindGreeting(at)) return 0;
        if (at + 2 >= tokens_.size() || tokens_[at].endsClause() || tokens_[at + 1].endsClause()) return 0;
        const auto& next = tokens_[at + 2].key;
        if (isPhraseAt(tokens_, at, "i mean") && subjects.contains(next)) return 2;
        return isPhraseAt(tokens_, at, "o sea") && articles.contains(next) ? 2 : 0;
    }

    bool isBehindGreeting(std::size_t at) const {
        static const Phrases greetings(words::greetings());
        const auto words = greetings.wordsAt(tokens_, 0);
        return words > 0 && at == words + 1;
    }

    /// "Nos vemos luego vale" asks for agreement. Where something may be worth it ("la entrada del lunes
    /// vale") it stays.
    bool isLastVale(std::size_t at) const {
        static const WordSet before({"luego", "pronto", "tarde", "ellos", "ellas", "vosotros", "todos",
                                     "casa", "ahora", "manana", "hoy", "aqui", "alli", "noche"});
        if (tokens_[at].key != "vale" || at + 1 != tokens_.size() || at < leastWordsBeforeVale) return false;
        if (tokens_[at].closing.find('?') != std::string::npos || tokens_[at - 1].endsClause()) return false;
        if (!before.contains(tokens_[at - 1].key) && !words::weekdays().contains(tokens_[at - 1].key))
            return false;
        bool hasVerb = false;
        for (std::size_t word = 0; word < at; ++word) {
            const auto& key = tokens_[word].key;
            if (key == "cuanto" || key == "lo" || key == "si" || (key == "que" && !isBehindPara(word)))
                return false;
            hasVerb |= words::spanishClitics().contains(key) || words::spanishOwnVerbs().contains(key);
        }
        return hasVerb;
    }

    bool isBehindPara(std::size_t at) const { return at > 0 && tokens_[at - 1].key == "para"; }

    /// Two opening fillers, which need no pause.
    std::size_t pair(std::size_t at, bool opens) const {
        static const Phrases pairs(words::openerPairs());
        const auto words = opens ? pairs.wordsAt(tokens_, at) : 0;
        return at + words < tokens_.size() ? words : 0;
    }

    /// Whether a pause separates so many words from what follows.
    bool isCut(std::size_t at, std::size_t words) const {
        if (words == 0 || at + words >= tokens_.size()) return false;
        return isPause(tokens_[at + words - 1]);
    }

    /// "…, vale" at the very end.
    std::size_t closer(std::size_t at, const Tokens& written) const {
        if (written.empty() || !written.back().closing.ends_with(',')) return 0;
        static const Phrases closers(words::closers());
        const auto words = closers.wordsAt(tokens_, at);
        return at + words == tokens_.size() ? words : 0;
    }

    const Tokens& tokens_;
    std::vector<const Table*> tables_;
};

/// A filler takes its own comma along; a full stop behind it ends the sentence before it.
void settle(Token& last, const Token& filler) {
    if (last.closing == "," && isPause(filler)) last.pausesOnly = true;
    const bool isStop = filler.endsSentence() || filler.closing == ";" || filler.closing == ":";
    if (last.endsSentence() || !isStop || isPause(filler)) return;
    if (last.closing.ends_with(',')) last.closing.pop_back();
    const bool asked = filler.closing.find('?') != std::string::npos;
    last.closing += asked ? "." : filler.closing;
}

/// The dictation without what `find` finds, or as it is where nothing else was said.
template <typename Find>
Tokens without(Tokens tokens, Find find) {
    Tokens written;
    Token gone;
    for (std::size_t at = 0; at < tokens.size();) {
        if (const auto words = find(at, written)) {
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

/// Takes out the commas that only set a filler apart. The one behind "Hola, Ana" stands by itself.
void closePauses(Tokens& tokens) {
    static const Phrases greetings(words::greetings());
    bool greets = false;
    for (std::size_t at = 0; at < tokens.size(); ++at) {
        if (beginsSentence(tokens, at)) greets = greetings.wordsAt(tokens, at) > 0;
        if (tokens[at].pausesOnly && tokens[at].closing == "," && !greets) tokens[at].closing.clear();
    }
}

/// What no English word has, nor most words of other languages.
bool hasSpanishAccent(std::string_view transcript) {
    const auto said = text::lowercase(transcript);
    const auto has = [&](std::string_view letter) { return said.find(letter) != std::string::npos; };
    return has("á") || has("í") || has("ó") || has("ú");
}

}  // namespace

Spoken spokenIn(std::string_view transcript) {
    if (isForeign(transcript)) return {};
    const auto language = languageOf(transcript);
    if (!language && hasSpanishAccent(transcript)) return {.spanish = true};
    if (!language) return {.spanish = true, .english = true};
    return {.spanish = language == Language::spanish, .english = language == Language::english};
}

Tokens withoutHesitations(Tokens tokens, Spoken spoken) {
    const Fillers fillers(tokens, spoken);
    return without(tokens,
                   [&](std::size_t at, const Tokens& written) { return fillers.hesitation(at, written); });
}

Tokens withoutAsides(Tokens tokens, Spoken spoken) {
    const Fillers fillers(tokens, spoken);
    auto written =
        without(tokens, [&](std::size_t at, const Tokens& before) { return fillers.aside(at, before); });
    closePauses(written);
    return written;
}

}  // namespace dorix::service
