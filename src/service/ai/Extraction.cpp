#include "service/ai/Extraction.h"

#include "base/text/Text.h"
#include "service/ai/extraction/Activity.h"
#include "service/ai/extraction/Conversation.h"
#include "service/ai/extraction/ExtractionWords.h"
#include "service/ai/extraction/Frame.h"
#include "service/ai/extraction/MeetingSummary.h"
#include "service/ai/extraction/Passages.h"
#include "service/ai/extraction/Quotation.h"
#include "service/ai/extraction/Ranking.h"
#include "service/ai/extraction/Terms.h"

#include <algorithm>

namespace dorix::service {

namespace {

using enum Needed::Reason;

constexpr std::size_t mostCentral = 5;
constexpr std::string_view summaryMode = "meeting_summary";
constexpr std::string_view liveMode = "meeting_live";
constexpr std::string_view nothingToSay = "—";  // which a meeting's window passes over

/// What the user asks for, apart from what it is about.
class Wish {
 public:
    explicit Wish(std::string_view question) : folded_(text::fold(question)), words_(foldedWords(folded_)) {}

    bool isComposing() const { return !words_.empty() && words::composingVerbs().contains(words_.front()); }

    /// Also where nothing is asked of what is there.
    bool isSummary() const {
        if (words_.empty()) return true;
        const auto asks = [](const auto word) { return words::summaryVerbs().contains(word); };
        const auto isSaid = [&](const auto phrase) { return folded_.find(phrase) != std::string::npos; };
        return std::ranges::any_of(words_.begin(),
                                   words_.begin() + std::min<std::ptrdiff_t>(3, std::ssize(words_)), asks) ||
               std::ranges::any_of(words::summaryPhrases(), isSaid);
    }

 private:
    std::string folded_;
    std::vector<std::string_view> words_;
};

std::string cited(const Passage& passage, const std::vector<Source>& sources, const Frame& frame) {
    return quoted(passage.text, frame) + " — " + nameOf(sources[passage.source], frame);
}

std::string listed(const std::vector<std::size_t>& chosen, const std::vector<Passage>& passages,
                   const std::vector<Source>& sources, const Frame& frame) {
    if (chosen.size() == 1) return cited(passages[chosen.front()], sources, frame);
    std::string out;
    for (const auto at : chosen) {
        if (!out.empty()) out += '\n';
        out += "- " + cited(passages[at], sources, frame);
    }
    return out;
}

bool isBlank(const std::optional<std::string>& text) { return !text || text::trim(*text).empty(); }

/// What was said before, or stands in the material, about what the user was just asked. Asking back is no
/// answer.
std::string adviceFor(const AskRequest& request, Language fallback) {
    const auto asked = request.transcript ? lastQuestion(*request.transcript) : std::nullopt;
    if (!asked) return std::string(nothingToSay);
    auto sources = sourcesOf(request);
    for (auto& source : sources) {
        if (source.kind == Source::Kind::transcript) source.text = asked->before;
    }
    auto passages = passagesOf(sources);
    std::erase_if(passages, [](const auto& passage) { return passage.text.ends_with('?'); });
    const auto best = bestPassages(asked->question, sources, passages);
    if (best.empty()) return std::string(nothingToSay);
    const auto& frame = frameIn(languageOf(*request.transcript).value_or(fallback));
    return cited(passages[best.front()], sources, frame);
}

std::expected<std::string, Needed> summaryOf(const AskRequest& request, Language fallback) {
    if (isBlank(request.transcript)) return std::unexpected(Needed{noMaterial});
    auto summary =
        meetingSummary(*request.transcript, frameIn(languageOf(*request.transcript).value_or(fallback)));
    if (summary.empty()) return std::unexpected(Needed{notFound});
    return summary;
}

}  // namespace

std::expected<std::string, Needed> answerByExtraction(const AskRequest& request, Language fallback) {
    if (request.mode == liveMode) return adviceFor(request, fallback);
    if (request.mode == summaryMode) return summaryOf(request, fallback);
    const Wish wish(request.question);
    if (wish.isComposing()) return std::unexpected(Needed{composing});
    const auto sources = sourcesOf(request);
    if (sources.empty()) return std::unexpected(Needed{request.screenshot ? picture : noMaterial});

    const auto language = languageOf(request.question).value_or(fallback);
    const auto& frame = frameIn(language);
    // Whoever asks about nothing but what they did wants to see that: words of the question that a line
    // happens to hold as well say nothing.
    const auto isActivity = [](const Source& source) { return source.kind == Source::Kind::recap; };
    if (std::ranges::all_of(sources, isActivity)) return activityOf(*request.recap, language);

    const auto passages = passagesOf(sources);
    if (wish.isSummary()) {
        const auto central = centralPassages(passages, mostCentral);
        if (!central.empty())
            return std::string(frame.gist) + "\n" + listed(central, passages, sources, frame);
    }
    const auto best = bestPassages(request.question, sources, passages);
    if (!best.empty()) return listed(best, passages, sources, frame);
    return std::unexpected(Needed{notFound});
}

}  // namespace dorix::service
