#pragma once

#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>

namespace dorix {

/// A finished transcript, normalised once for all the tests that look at it. A transcript turns into one
/// where a test asks for it; who runs several tests keeps the utterance. Pure; any thread.
class Utterance {
 public:
    template <typename Transcript>
        requires std::convertible_to<Transcript, std::string_view>
    Utterance(const Transcript& transcript) : Utterance(std::string_view(transcript), FromText{}) {}

    /// Folded, without punctuation, single blanks, and without the words that people begin with.
    std::string_view normalised() const { return inner(text_); }

    /// The normalised text, and with a blank at either end, as PatternSet takes it.
    std::string_view ascii() const { return inner(paddedAscii()); }
    std::string_view paddedAscii() const { return ascii_.empty() ? text_ : ascii_; }

    /// Whether the speech engine punctuated the transcript as a question.
    bool isPunctuatedAsQuestion() const { return isPunctuatedAsQuestion_; }

    std::size_t wordCount() const;

 private:
    struct FromText {};
    Utterance(std::string_view transcript, FromText);

    static std::string_view inner(std::string_view padded) { return padded.substr(1, padded.size() - 2); }

    std::string text_;   // with a blank at either end
    std::string ascii_;  // of `text_`; empty if that is ASCII already
    bool isPunctuatedAsQuestion_;
};

}  // namespace dorix
