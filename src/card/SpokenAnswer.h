#pragma once

#include "assistant/AnswerCard.h"
#include "base/Observable.h"
#include "base/async/Executor.h"

#include <cstddef>
#include <string>

namespace dorix {

/// What whoever hears the screen is told of an answer while it comes: that it is awaited, then whole
/// sentences, some at a time, and at the end the rest. Main executor.
class SpokenAnswer {
 public:
    explicit SpokenAnswer(Executor& executor) : executor_(executor) {}

    /// What is to be said now; the same once more says nothing.
    Observable<std::string> said;

    /// The card as it shows by now. `waiting` is what stands in for its answer.
    void follow(const AnswerCard& card, const std::string& waiting);

 private:
    void begin(const AnswerCard& card);
    void say(const AnswerCard& card, std::size_t end);

    Executor& executor_;
    std::string id_;
    std::size_t position_ = 0;  // bytes of the answer that have been said
    double saidAt_ = 0;
};

}  // namespace dorix
