#pragma once

#include "service/ai/extraction/AnswerKinds.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace dorix::service {

/// A question as it is compared with sentences: the words that it is about, and what its answer holds.
class Question {
 public:
    /// How near a word is to one of the question.
    struct Match {
        std::size_t term = 0;
        double nearness = 0;  // up to 1, for the same word
    };
    struct Term {
        bool isName = false;  // a name, or a code with digits: it has no synonyms
    };

    explicit Question(std::string_view text);

    const std::vector<Term>& terms() const { return terms_; }
    Kinds asked() const { return asked_; }
    /// The term that says what the answer is: "version" in "Which version does it need?". None where the kind
    /// of the answer says it.
    std::optional<std::size_t> focus() const { return focus_; }

    /// The terms that a folded word stands for, also in another form, by another word or in the other
    /// language. Its time does not grow with the question.
    std::vector<Match> matches(std::string_view foldedWord) const;

 private:
    void add(std::string_view word, bool isName);
    void findFocus(const std::vector<std::string_view>& words);
    void addKey(std::string key, std::size_t term, double nearness);

    std::vector<Term> terms_;
    std::unordered_map<std::string, std::vector<Match>> byKey_;
    Kinds asked_ = 0;
    std::optional<std::size_t> focus_;
};

}  // namespace dorix::service
