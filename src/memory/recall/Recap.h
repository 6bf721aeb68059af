#pragma once

#include "memory/store/MemoryRecords.h"

#include <string>
#include <vector>

namespace dorix {

/// What the user did with the program, of which a recap tells as well.
struct RecapItem {
    std::string kind;  // for people, in the app language
    std::string app;
    double createdAt = 0;  // seconds since 1970
    std::string title;
};

/// What was worked on of late, for a prompt.
struct Recap {
    std::string text;
    std::vector<std::string> documents;  // paths, of the lines in their order

    bool operator==(const Recap&) const = default;
};

/// How far back a recap looks, in seconds.
inline constexpr double recapWindow = 36 * 3600;

/// Tells of `rows`, in the order of time and of the recap's window, and of the history, newest first, of
/// which what is older is left out. In Spanish but for the kinds, and in the time zone of the computer. Any
/// thread.
Recap recap(const std::vector<ActivityRow>& rows, const std::vector<RecapItem>& history, double now);

}  // namespace dorix
