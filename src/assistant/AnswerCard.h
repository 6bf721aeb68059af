#pragma once

#include "context/Glyph.h"
#include "localdata/HistoryItem.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// What an answer rests on.
struct AnswerSource {
    std::string title;
    std::optional<std::string> path;     // of a file, or a link; a label only where there is none
    std::vector<std::size_t> numbers{};  // by which the answer cites what was found there

    bool operator==(const AnswerSource&) const = default;
};

/// One answer, as the floating card shows it. While `answer` is empty and nothing failed, `waiting` stands in
/// for it.
struct AnswerCard {
    std::string id;
    HistoryKind kind = HistoryKind::screen;
    std::string appName;
    Ph appIcon = Ph::appWindow;
    std::string question;
    std::optional<std::string> selection;
    std::string answer;
    bool streaming = false;
    std::optional<std::string> error;
    bool canReplace = false;
    bool hadScreen = false;
    std::vector<AnswerSource> sources;
    std::optional<std::string> waiting;

    bool operator==(const AnswerCard&) const = default;
};

}  // namespace dorix
