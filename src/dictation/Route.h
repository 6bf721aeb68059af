#pragma once

#include <string_view>

namespace dorix {

/// Where an utterance went.
enum class Route {
    selectionRewrite,
    assistantSelection,
    assistantScreen,
    meetingStart,
    meetingStop,
    teachStart,
    teachDone,
    action,
    recap,
    search,
    replyPolish,
    writeOrAskWrite,
    plain,
};

/// The route's name, for logs and traces.
std::string_view name(Route route);

}  // namespace dorix
