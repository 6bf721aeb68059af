#include "card/CardVerbs.h"

#include "card/AnswerCardPresenter.h"
#include "localdata/Language.h"

#include <algorithm>
#include <array>

namespace dorix {

namespace {

using Card = AnswerCardPresenter;
using enum VerbPlace;

struct Verb {
    std::string_view id;
    VerbPlace place;
    bool (*isPossible)(const Card&);
    void (*act)(Card&);
    std::string (*label)(const Card&);
    bool (*isDone)(const Card&) = [](const Card&) { return false; };
    const char* doneLabel = "";
    bool isMain = false;
    VerbMark mark = VerbMark::none;
};

const AnswerCard& shownCard(const Card& card) { return *card.card(); }

/// There is an answer, and no more of it will come.
bool isAnswered(const Card& card) {
    return card.card() && !shownCard(card).streaming && !shownCard(card).answer.empty();
}

bool hasFailed(const Card& card) { return card.card() && shownCard(card).error.has_value(); }

void insertAnswer(Card& card) { card.actions.insert(shownCard(card).answer); }

bool canInsert(const Card& card) { return isAnswered(card) && !hasFailed(card) && card.actions.insert; }

bool isSpoken(const Card& card) { return card.card() && card.speakingID.get() == shownCard(card).id; }

constexpr std::array verbs{
    Verb{.id = "replace",
         .place = detail,
         .isPossible = [](const Card& card) { return canInsert(card) && shownCard(card).canReplace; },
         .act = insertAnswer,
         .label = [](const Card&) { return tr("Reemplazar"); },
         .isMain = true},
    // What is selected would be replaced all the same.
    Verb{.id = "insert",
         .place = detail,
         .isPossible = [](const Card& card) { return canInsert(card) && !shownCard(card).canReplace; },
         .act = insertAnswer,
         .label = [](const Card&) { return tr("Insertar"); },
         .isMain = true},
    Verb{.id = "copy",
         .place = detail,
         .isPossible = isAnswered,
         .act = [](Card& card) { card.copy(); },
         .label = [](const Card&) { return tr("Copiar"); },
         .isDone = [](const Card& card) { return card.card() && card.copiedID.get() == shownCard(card).id; },
         .doneLabel = "Copiado"},
    Verb{.id = "speak",
         .place = detail,
         .isPossible = [](const Card& card) { return isAnswered(card) && card.actions.speak; },
         .act = [](Card& card) { card.actions.speak(shownCard(card).answer, shownCard(card).id); },
         .label = [](const Card& card) { return tr(isSpoken(card) ? "Detener" : "Escuchar"); }},
    Verb{.id = "retry",
         .place = detailEnd,
         .isPossible =
             [](const Card& card) { return card.card() && !shownCard(card).streaming && card.actions.retry; },
         .act = [](Card& card) { card.actions.retry(); },
         .label = [](const Card&) { return tr("Regenerar"); }},
    Verb{.id = "close",
         .place = corner,
         .isPossible = [](const Card& card) { return static_cast<bool>(card.actions.close); },
         .act = [](Card& card) { card.actions.close(); },
         .label = [](const Card&) { return tr("Cerrar (Esc)"); },
         .mark = VerbMark::close},
};

}  // namespace

std::vector<PanelOffer> cardOffers(const AnswerCardPresenter& card, VerbPlace place) {
    std::vector<PanelOffer> offers;
    for (const Verb& verb : verbs) {
        if (verb.place != place || !verb.isPossible(card)) continue;
        if (verb.isDone(card)) {
            offers.push_back({verb.id, tr(verb.doneLabel), VerbMark::done, verb.isMain});
        } else {
            // Where an answer has failed there is nothing better to do than to ask again.
            const bool isWayOut = verb.id == "retry" && hasFailed(card);
            offers.push_back({verb.id, verb.label(card), verb.mark, verb.isMain || isWayOut});
        }
    }
    return offers;
}

bool performOnCard(AnswerCardPresenter& card, std::string_view verb) {
    const auto found = std::ranges::find(verbs, verb, &Verb::id);
    if (found == verbs.end() || !found->isPossible(card)) return false;
    found->act(card);
    return true;
}

std::string_view enterVerb(const AnswerCardPresenter& card) {
    return hasFailed(card) ? std::string_view("retry") : std::string_view();
}

}  // namespace dorix
