#pragma once

#include "panel/PanelVerbs.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

class AnswerCardPresenter;

/// What the user can ask for on the card and others do. An absent one is not offered. Main executor.
struct CardActions {
    std::function<void()> close;
    /// Asks the same once more.
    std::function<void()> retry;
    /// Types the text where the question was asked, in place of what is selected there.
    std::function<void(std::string text)> insert;
    /// Reads the text aloud, or ends that when this very answer is being read.
    std::function<void(const std::string& text, const std::string& id)> speak;
};

/// The verbs that a place of the card offers, in their order: one table holds all that there is to a verb.
/// Of the places of the panel the card has the corner, and the two ends of its foot. Main executor.
std::vector<PanelOffer> cardOffers(const AnswerCardPresenter& card, VerbPlace place);

/// Does it, if that makes sense just now; whether it does.
bool performOnCard(AnswerCardPresenter& card, std::string_view verb);

/// The verb that Enter stands for, wherever on the card it is pressed; "" for none. It is never one that
/// types into another application: a stray key must not write over anything.
std::string_view enterVerb(const AnswerCardPresenter& card);

}  // namespace dorix
