#pragma once

#include "context/AppContext.h"
#include "context/ScreenCapture.h"

namespace dorix {

/// A recording, and what was captured when it began.
struct Recording {
    AppContext context;
    double startedAt = 0;  // seconds since 1970
    ShotTask shot;
};

}  // namespace dorix
