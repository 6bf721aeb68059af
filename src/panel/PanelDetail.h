#pragma once

#include "localdata/HistoryItem.h"

#include <string>
#include <vector>

namespace dorix {

/// What stands around an item's query and answer, in the app language. The two texts themselves are the
/// item's; the answer is Markdown.
struct PanelDetail {
    std::string heading;             // above the query
    std::string placeholder;         // in place of an answer that is yet to come; else empty
    std::vector<std::string> facts;  // how it was written, one short sentence each
    std::string context;             // what the question was about, such as the beginning of a selection
    std::string sourcesHeading;      // empty when there are no sources
    std::vector<std::string> sources;

    bool operator==(const PanelDetail&) const = default;
};

/// Any thread.
PanelDetail panelDetail(const HistoryItem& item);

}  // namespace dorix
