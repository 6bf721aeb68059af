#include "service/ai/extraction/MeetingNotes.h"

#include "base/text/Text.h"
#include "service/ai/extraction/ExtractionWords.h"
#include "service/ai/extraction/MeetingWords.h"
#include "service/ai/extraction/Passages.h"
#include "service/ai/extraction/SpokenTime.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string>

namespace dorix::service {

namespace {

/// A sentence by its folded words, each between blanks, so that a phrase is found as whole words.
class Spoken {
 public:
    explicit Spoken(std::string_view sentence) : raw_(text::words(sentence)) {
        for (auto& word : raw_) word = bare(word);
        joined_ = " ";
        for (const auto word : raw_) {
            starts_.push_back(joined_.size());
            joined_ += text::replaceAll(text::fold(word), "’", "'") + " ";
        }
    }

    /// Where a phrase begins, counted in words.
    std::optional<std::size_t> find(std::string_view phrase) const {
        const auto found = joined_.find(" " + std::string(phrase) + " ");
        if (found == std::string::npos) return std::nullopt;
        return static_cast<std::size_t>(std::ranges::lower_bound(starts_, found + 1) - starts_.begin());
    }

    bool saysAny(std::span<const std::string_view> phrases) const {
        return std::ranges::any_of(phrases, [&](const auto phrase) { return find(phrase).has_value(); });
    }

    std::string_view folded(std::size_t at) const {
        return std::string_view(joined_).substr(starts_[at], joined_.find(' ', starts_[at]) - starts_[at]);
    }
    std::string_view raw(std::size_t at) const { return raw_[at]; }
    std::size_t size() const { return raw_.size(); }

 private:
    static std::string_view bare(std::string_view word) {
        while (word.starts_with("¿") || word.starts_with("¡")) word.remove_prefix(2);
        return text::trimAny(word, ".,;:!?()\"");
    }

    std::vector<std::string_view> raw_;
    std::vector<std::size_t> starts_;
    std::string joined_;
};

struct Cue {
    std::size_t at = 0;
    std::size_t words = 0;
};

/// The first of the phrases that is said and not taken back by a word before it.
std::optional<Cue> cueIn(const Spoken& spoken, std::span<const std::string_view> phrases) {
    constexpr std::size_t reach = 2;
    for (const auto phrase : phrases) {
        const auto at = spoken.find(phrase);
        if (!at) continue;
        bool isTakenBack = false;
        for (auto before = *at > reach ? *at - reach : 0; before < *at; ++before)
            isTakenBack |= words::cueNegations().contains(spoken.folded(before));
        if (!isTakenBack)
            return Cue{.at = *at, .words = static_cast<std::size_t>(std::ranges::count(phrase, ' ')) + 1};
    }
    return std::nullopt;
}

bool isName(const Spoken& spoken, std::size_t at) {
    static const WordSet nobody({"alguien", "nadie", "todos", "cada", "eso", "someone", "somebody",
                                 "everybody", "everyone", "nobody", "it", "i", "he", "she", "we"});
    const auto word = spoken.raw(at);
    const bool isCapital = !word.empty() && text::lowercase(word.substr(0, 2)) != word.substr(0, 2);
    return isCapital && !nobody.contains(spoken.folded(at)) &&
           !words::stopWords().contains(spoken.folded(at));
}

/// Who is named right before or behind a cue.
std::string_view namedAt(const Spoken& spoken, const Cue& cue) {
    if (cue.at > 0 && isName(spoken, cue.at - 1)) return spoken.raw(cue.at - 1);
    const auto behind = cue.at + cue.words;
    return behind < spoken.size() && isName(spoken, behind) ? spoken.raw(behind) : std::string_view();
}

/// Who is called by name at the start: "Marta, ¿puedes…?".
std::string_view calledIn(std::string_view sentence, const Spoken& spoken) {
    const auto comma = sentence.find(',');
    if (comma == std::string_view::npos || spoken.size() == 0) return {};
    const bool isOneWord = sentence.substr(0, comma).find(' ') == std::string_view::npos;
    return isOneWord && isName(spoken, 0) ? spoken.raw(0) : std::string_view();
}

/// In a meeting of two sides, the other one.
std::string_view otherThan(std::string_view speaker) {
    if (speaker == userSpeaker) return othersSpeaker;
    return speaker.empty() ? speaker : userSpeaker;
}

/// "revisaré", folded.
bool promisesByForm(const Spoken& spoken) {
    constexpr std::size_t shortest = 6;
    for (std::size_t at = 0; at < spoken.size(); ++at) {
        const auto raw = spoken.raw(at);
        if (raw.size() > shortest && raw.ends_with("ré") &&
            !(at > 0 && words::cueNegations().contains(spoken.folded(at - 1))))
            return true;
    }
    return false;
}

/// Whose task a sentence tells of; nothing when it tells of none.
std::optional<std::string_view> taskIn(std::string_view sentence, const Spoken& spoken, const Turn& turn) {
    if (spoken.saysAny(words::idleCues())) return std::nullopt;
    if (cueIn(spoken, words::requestCues())) {
        const auto called = calledIn(sentence, spoken);
        return called.empty() ? otherThan(turn.speaker) : called;
    }
    if (sentence.ends_with('?')) return std::nullopt;
    if (cueIn(spoken, words::promiseCues()) || promisesByForm(spoken)) return turn.speaker;
    if (const auto cue = cueIn(spoken, words::assignmentCues())) {
        const auto named = namedAt(spoken, *cue);
        if (!named.empty()) return named;
    }
    if (cueIn(spoken, words::dutyCues())) return std::string_view();
    return std::nullopt;
}

}  // namespace

MeetingNotes notesOf(const std::vector<Turn>& turns) {
    MeetingNotes notes;
    for (std::size_t at = 0; at < turns.size(); ++at) {
        for (const auto sentence : sentencesOf(turns[at].text)) {
            const Spoken spoken(sentence);
            Note note{.turn = at, .sentence = sentence};
            if (!sentence.ends_with('?') && cueIn(spoken, words::decisionCues())) {
                notes.decisions.push_back(note);
            } else if (const auto who = taskIn(sentence, spoken, turns[at])) {
                note.who = *who;
                note.when = timeIn(sentence);
                notes.tasks.push_back(note);
            }
        }
    }
    return notes;
}

}  // namespace dorix::service
