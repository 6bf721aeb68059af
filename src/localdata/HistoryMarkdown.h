#pragma once

#include "base/text/Calendar.h"
#include "localdata/HistoryItem.h"

#include <string>

namespace dorix {

/// The history as a Markdown document (CommonMark) for people, in the app language and in local time: a
/// heading for a day, one below it for an item, and what was said and written as quotations, which keep
/// headings, fences and lists of theirs to themselves. Taking "> " off the lines of one gives its text back.
/// One thread.
class HistoryMarkdown {
 public:
    HistoryMarkdown();

    /// The document's own heading, what follows it for each item, newest first, and its end.
    static std::string begin();
    std::string add(const HistoryItem& item);
    static std::string end() { return {}; }

 private:
    DateFormat dayFormat_;
    DateFormat timeFormat_;
    DaySpan day_;  // the one whose heading was written last
};

}  // namespace dorix
