#pragma once

#include "service/ai/Language.h"
#include "service/ai/extraction/Passages.h"

#include <string>
#include <string_view>
#include <vector>

namespace dorix::service {

/// The few words of an answer that are not quoted.
struct Frame {
    std::string_view open, close;
    std::string_view document, selection, transcript, recap;  // names of sources that have none of their own
    std::string_view activity, withDorix;
    std::string_view gist;
    std::string_view decisions, tasks;
    std::string_view user, others;  // who speaks in a meeting
};

const Frame& frameIn(Language language);

/// A text of the material within quotation marks.
std::string quoted(std::string_view text, const Frame& frame);

/// What a source is called, with the number of a memory hit.
std::string nameOf(const Source& source, const Frame& frame);

}  // namespace dorix::service
