#include "dictation/Route.h"

#include <utility>

namespace dorix {

std::string_view name(Route route) {
    switch (route) {
        case Route::selectionRewrite:
            return "selectionRewrite";
        case Route::assistantSelection:
            return "assistantSelection";
        case Route::assistantScreen:
            return "assistantScreen";
        case Route::meetingStart:
            return "meetingStart";
        case Route::meetingStop:
            return "meetingStop";
        case Route::teachStart:
            return "teachStart";
        case Route::teachDone:
            return "teachDone";
        case Route::action:
            return "action";
        case Route::recap:
            return "recap";
        case Route::search:
            return "search";
        case Route::replyPolish:
            return "replyPolish";
        case Route::writeOrAskWrite:
            return "writeOrAskWrite";
        case Route::plain:
            return "plain";
    }
    std::unreachable();
}

}  // namespace dorix
