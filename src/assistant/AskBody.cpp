#include "assistant/AskBody.h"

#include "base/text/Base64.h"
#include "base/text/Text.h"
#include "cloud/WireCoding.h"

#include <cstddef>
#include <string_view>

namespace dorix {

namespace {

// Characters.
constexpr std::size_t longestWindowTitle = 500;
constexpr std::size_t longestSelection = 120'000;
constexpr std::size_t longestDocument = 400'000;
constexpr std::size_t longestRecap = 20'000;
constexpr std::size_t longestTranscript = 400'000;
constexpr std::size_t longestMeetingTitle = 200;
constexpr std::size_t longestHitTitle = 300;
constexpr std::size_t longestHitText = 4000;

constexpr std::size_t mostHits = 12;
constexpr std::size_t lengthOfDay = 10;  // "2026-03-01"

std::string_view suffix(std::string_view text, std::size_t count) {
    if (text.size() <= count) return text;
    const auto length = text::length(text);
    return length <= count ? text : text.substr(text::prefix(text, length - count).size());
}

Json memoryOf(const std::vector<MemoryHit>& hits) {
    Json list = Json::array();
    for (const auto& hit : hits) {
        if (list.size() == mostHits) break;
        list.push_back({{"n", list.size() + 1},
                        {"title", text::prefix(hit.title, longestHitTitle)},
                        {"date", wireTime(hit.modified).substr(0, lengthOfDay)},
                        {"text", text::prefix(hit.text, longestHitText)}});
    }
    return list;
}

}  // namespace

Json askBody(const Assistant::Request& request) {
    Json body{{"question", request.question}, {"appName", request.context.displayName}};
    const auto& title = request.context.windowTitle;
    if (title) body["windowTitle"] = text::prefix(*title, longestWindowTitle);
    if (request.selection) body["selection"] = text::prefix(request.selection->text, longestSelection);
    if (request.shot) body["screenshot"] = text::base64(request.shot->jpeg);
    if (request.document) {
        body["document"] = {{"name", request.document->name},
                            {"text", text::prefix(request.document->text, longestDocument)}};
    }
    if (request.mode) body["mode"] = *request.mode;
    if (request.recap) body["recap"] = text::prefix(*request.recap, longestRecap);
    // The end of a meeting matters more than its beginning.
    if (request.transcript) body["transcript"] = suffix(*request.transcript, longestTranscript);
    if (request.meetingTitle) body["meetingTitle"] = text::prefix(*request.meetingTitle, longestMeetingTitle);
    if (!request.memory.empty()) body["memory"] = memoryOf(request.memory);
    return body;
}

}  // namespace dorix
