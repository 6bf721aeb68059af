#include "dictation/AppState.h"

#include <utility>

namespace dorix {

std::string_view name(HUDPhase::Kind kind) {
    switch (kind) {
        case HUDPhase::Kind::done:
            return "done";
        case HUDPhase::Kind::info:
            return "info";
        case HUDPhase::Kind::error:
            return "error";
        case HUDPhase::Kind::learned:
            return "learned";
        case HUDPhase::Kind::hidden:
            return "hidden";
        case HUDPhase::Kind::listening:
            return "listening";
        case HUDPhase::Kind::processing:
            return "processing";
    }
    std::unreachable();
}

}  // namespace dorix
