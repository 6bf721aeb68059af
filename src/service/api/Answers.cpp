#include "service/api/Routes.h"

#include <chrono>
#include <utility>

namespace dorix::service {

namespace {

std::pair<unsigned, Message> wordingOf(Refusal refusal) {
    switch (refusal) {
        case Refusal::badEmail:
            return {400, Message::badEmail};
        case Refusal::tooManyCodes:
            return {429, Message::tooManyCodes};
        case Refusal::tooManyTries:
            return {429, Message::tooManyTries};
        // Not 401: that would tell the caller that a session has ended.
        case Refusal::codeRefused:
            return {403, Message::codeRefused};
        case Refusal::noSession:
            return {401, Message::noSession};
        case Refusal::unknownSession:
            return {404, Message::unknownSession};
        case Refusal::dayUsedUp:
            return {429, Message::dayUsedUp};
    }
    std::unreachable();
}

}  // namespace

std::int64_t secondsNow() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::seconds>(now).count();
}

Response jsonResponse(const Json& body, unsigned status) {
    return {.status = status, .body = body.dump(-1, ' ', false, Json::error_handler_t::replace)};
}

Response messageResponse(unsigned status, Message message, Language language) {
    return jsonResponse({{"message", say(message, language)}}, status);
}

Response refusalResponse(Refusal refusal, Language language) {
    const auto [status, message] = wordingOf(refusal);
    return messageResponse(status, message, language);
}

}  // namespace dorix::service
