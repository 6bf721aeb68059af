#pragma once

#include "assistant/AnswerCard.h"
#include "base/Observable.h"
#include "base/async/Timer.h"
#include "card/CardTexts.h"
#include "card/CardVerbs.h"
#include "card/SpokenAnswer.h"
#include "panel/BlockFeed.h"
#include "platform/Pasteboard.h"
#include "platform/Processes.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// What stands around the pieces of an answer, in the app language.
struct CardHead {
    std::string id;
    std::string appName;
    std::string kind;  // of the question, for people
    Ph icon = Ph::appWindow;
    std::string waiting;  // stands in for the answer; "" when there is one
    bool isRunning = false;

    bool operator==(const CardHead&) const = default;
};

/// The answer's card but for its window: what it shows, and what the user can do there. However often the
/// answer grows, it is shown as a screen shows pictures; while the card does not show, nothing is done about
/// it. Main executor.
class AnswerCardPresenter {
 public:
    using Card = Observable<std::optional<AnswerCard>>;

    struct Parts {
        Executor& executor;
        const Card& card;
        Pasteboard& pasteboard;
        UrlOpener& urls;
    };

    /// What it is given outlives it.
    explicit AnswerCardPresenter(const Parts& parts);
    AnswerCardPresenter(const AnswerCardPresenter&) = delete;
    AnswerCardPresenter& operator=(const AnswerCardPresenter&) = delete;

    /// Filled by whoever can do what they ask.
    CardActions actions;
    /// The id of what is being read aloud, kept by whoever has it read.
    Observable<std::optional<std::string>> speakingID;

    /// Whether the card is up; without it the view fades.
    Observable<bool> isShown;
    Observable<CardHead> head;
    SpokenAnswer spoken;
    /// The id of the card whose answer was copied a moment ago.
    Observable<std::optional<std::string>> copiedID;

    /// Calls back when pieces have changed, with the first of them; when the verbs may have.
    Subscription onPieces(std::function<void(const std::size_t&)> callback) {
        return pieces_.add(std::move(callback));
    }
    Subscription onOffers(std::function<void()> callback) { return offers_.add(std::move(callback)); }

    /// The pieces from that one on.
    std::vector<DetailBlock> piecesFrom(std::size_t first) const { return feed_.from(first); }

    /// What the verbs are about: the card as it is by now, which may be some frames ahead of what shows.
    const std::optional<AnswerCard>& card() const { return parts_.card.get(); }

    void show();
    void hide();
    /// Takes the texts anew, in another language.
    void retranslate();

    void copy();
    /// Opens the source with that number, which the user has clicked.
    void openSource(std::size_t index);
    /// Opens an address that stands in the answer: only one of the web's, as the text may be anybody's.
    void openLink(const std::string& url);

 private:
    void changed();
    void render();

    const Parts parts_;
    BlockFeed feed_;
    Observers<std::size_t> pieces_;
    Observers<> offers_;
    Timer frame_;
    bool isBehind_ = false;
    Timer forgetCopied_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace dorix
