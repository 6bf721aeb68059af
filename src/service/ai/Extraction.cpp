#include "service/ai/Extraction.h"

#include "base/text/Text.h"
#include "service/ai/extraction/ExtractionWords.h"
#include "service/ai/extraction/Passages.h"
#include "service/ai/extraction/Ranking.h"
#include "service/ai/extraction/Terms.h"

#include <algorithm>

namespace dorix::service {

namespace {

using enum Needed::Reason;

constexpr std::size_t mostCentral = 5;
constexpr std::size_t mostActivityLines = 8;
constexpr std::size_t longestQuotation = 600;  // characters
constexpr std::string_view summaryMode = "meeting_summary";
constexpr std::string_view liveMode = "meeting_live";

/// The few words that are not quoted.
struct Frame {
    std::string_view open, close;
    std::string_view selection, transcript, recap;
    std::string_view activity;
    std::string_view gist;
};

const Frame& frameIn(Language language) {
    static constexpr Frame spanish{.open = "«",
                                   .close = "»",
                                   .selection = "texto seleccionado",
                                   .transcript = "reunión",
                                   .recap = "tu actividad",
                                   .activity = "Tu actividad reciente:",
                                   .gist = "Las frases que mejor lo recogen, citadas tal cual:"};
    static constexpr Frame english{.open = "“",
                                   .close = "”",
                                   .selection = "selected text",
                                   .transcript = "meeting",
                                   .recap = "your activity",
                                   .activity = "Your recent activity:",
                                   .gist = "The sentences that say most of it, quoted as they stand:"};
    return language == Language::spanish ? spanish : english;
}

std::string nameOf(const Source& source, const Frame& frame) {
    using enum Source::Kind;
    switch (source.kind) {
        case document:
            return std::string(source.title);
        case memory:
            return std::string(source.title) + " [" + std::to_string(source.number) + "]";
        case selection:
            return std::string(frame.selection);
        case transcript:
            return std::string(source.title.empty() ? frame.transcript : source.title);
        case recap:
            return std::string(frame.recap);
    }
    return {};
}

std::string quoted(const Passage& passage, const std::vector<Source>& sources, const Frame& frame) {
    const auto kept = text::prefix(passage.text, longestQuotation);
    const auto* end = kept.size() < passage.text.size() ? "…" : "";
    return std::string(frame.open) + std::string(kept) + end + std::string(frame.close) + " — " +
           nameOf(sources[passage.source], frame);
}

/// What the user asks for, apart from what it is about.
class Wish {
 public:
    explicit Wish(std::string_view question) : folded_(text::fold(question)), words_(foldedWords(folded_)) {}

    bool isComposing() const { return !words_.empty() && words::composingVerbs().contains(words_.front()); }

    bool isSummary() const {
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

std::string listed(const std::vector<std::size_t>& chosen, const std::vector<Passage>& passages,
                   const std::vector<Source>& sources, const Frame& frame) {
    if (chosen.size() == 1) return quoted(passages[chosen.front()], sources, frame);
    std::string out;
    for (const auto at : chosen) {
        if (!out.empty()) out += '\n';
        out += "- " + quoted(passages[at], sources, frame);
    }
    return out;
}

/// The first lines of the user's activity, as they are.
std::string activityOf(std::string_view recap, const Frame& frame) {
    std::string out(frame.activity);
    std::size_t count = 0;
    for (const auto line : text::split(recap, '\n')) {
        if (text::trim(line).empty()) continue;
        out += "\n" + std::string(text::trim(line));
        if (++count == mostActivityLines) break;
    }
    return out;
}

}  // namespace

std::expected<std::string, Needed> answerByExtraction(const AskRequest& request, Language fallback) {
    if (request.mode == liveMode) return std::unexpected(Needed{advice});
    const Wish wish(request.question);
    if (wish.isComposing()) return std::unexpected(Needed{composing});
    const auto sources = sourcesOf(request);
    if (sources.empty()) return std::unexpected(Needed{request.screenshot ? picture : noMaterial});

    const bool isSummary = request.mode == summaryMode || wish.isSummary();
    const auto asked =
        request.mode == summaryMode ? languageOf(sources.front().text) : languageOf(request.question);
    const auto& frame = frameIn(asked.value_or(fallback));
    const auto passages = passagesOf(sources);
    if (isSummary) {
        const auto central = centralPassages(passages, mostCentral);
        if (!central.empty())
            return std::string(frame.gist) + "\n" + listed(central, passages, sources, frame);
    }
    const auto best = bestPassages(request.question, sources, passages);
    if (!best.empty()) return listed(best, passages, sources, frame);
    if (request.recap && !text::trim(*request.recap).empty()) return activityOf(*request.recap, frame);
    return std::unexpected(Needed{notFound});
}

}  // namespace dorix::service
