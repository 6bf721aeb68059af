#include "service/ai/extraction/Conversation.h"

#include "base/text/Text.h"
#include "service/ai/extraction/Passages.h"

#include <cstddef>
#include <ranges>

namespace dorix::service {

namespace {

constexpr std::size_t longestTime = 8;
constexpr std::size_t longestSpeaker = 40;  // bytes
constexpr std::size_t recentTurns = 6;

std::string_view takeTime(std::string_view& line) {
    const auto end = line.find(']');
    if (!line.starts_with('[') || end == std::string_view::npos || end > longestTime) return {};
    const auto time = line.substr(1, end - 1);
    line = text::trim(line.substr(end + 1));
    return time;
}

std::string_view takeSpeaker(std::string_view& line) {
    const auto colon = line.substr(0, longestSpeaker).find(": ");
    if (colon == std::string_view::npos ||
        line.substr(0, colon).find_first_of(".,;?!") != std::string_view::npos)
        return {};
    const auto speaker = line.substr(0, colon);
    line = text::trim(line.substr(colon + 1));
    return speaker;
}

}  // namespace

std::vector<Turn> turnsOf(std::string_view transcript) {
    std::vector<Turn> turns;
    for (auto line : text::split(transcript, '\n')) {
        line = text::trim(line);
        Turn turn;
        turn.time = takeTime(line);
        turn.speaker = takeSpeaker(line);
        turn.text = line;
        if (!line.empty()) turns.push_back(turn);
    }
    return turns;
}

std::optional<LiveQuestion> lastQuestion(std::string_view transcript) {
    const auto turns = turnsOf(transcript);
    for (const auto& turn : turns | std::views::reverse | std::views::take(recentTurns)) {
        if (turn.speaker == userSpeaker) continue;
        const auto sentences = sentencesOf(turn.text);
        for (const auto sentence : sentences | std::views::reverse) {
            if (!sentence.ends_with('?')) continue;
            const auto line = static_cast<std::size_t>(turn.text.data() - transcript.data());
            const auto lineStart = transcript.rfind('\n', line);
            return LiveQuestion{
                .question = sentence,
                .before = transcript.substr(0, lineStart == std::string_view::npos ? 0 : lineStart)};
        }
    }
    return std::nullopt;
}

}  // namespace dorix::service
