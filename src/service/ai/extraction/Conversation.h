#pragma once

#include <optional>
#include <string_view>
#include <vector>

namespace dorix::service {

/// What the transcript of a meeting calls the user and everybody else.
inline constexpr std::string_view userSpeaker = "Tú";
inline constexpr std::string_view othersSpeaker = "Ellos";

/// What one of a meeting said: a line of its transcript, "[10:02] Ellos: …". The texts are the transcript's.
struct Turn {
    std::string_view time;     // empty where the line has none
    std::string_view speaker;  // the same
    std::string_view text;     // never blank
};

/// Linear; pure.
std::vector<Turn> turnsOf(std::string_view transcript);

/// What the user was asked last.
struct LiveQuestion {
    std::string_view question;
    std::string_view before;  // the transcript up to the line of the question
};

/// None when nobody else asked anything of late. Linear; pure.
std::optional<LiveQuestion> lastQuestion(std::string_view transcript);

}  // namespace dorix::service
