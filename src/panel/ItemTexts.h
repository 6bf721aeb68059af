#pragma once

#include "base/text/Calendar.h"
#include "localdata/HistoryItem.h"
#include "panel/BlockFeed.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

/// How an item of the history is told, in the app language as it was at the last retranslate(). Main
/// executor.
class ItemTexts {
 public:
    /// How the desktop says a text of the interface.
    using Words = std::function<std::string(std::string_view)>;

    explicit ItemTexts(Words words);

    void retranslate();

    /// In the list: on one line each, and together for whoever does not see them.
    std::string title(const HistoryItem& item) const;
    std::string subtitle(const HistoryItem& item) const;
    std::string spoken(const HistoryItem& item) const;

    /// Above the detail: the application and the time.
    std::string place(const HistoryItem& item) const;

    /// What is known of it, from its heading down to its sources: the answer in Markdown, and what stands
    /// above and under it. What was typed is no Markdown, and stands above.
    std::vector<DetailBlock> above(const HistoryItem& item) const;
    static std::string_view markdown(const HistoryItem& item);
    std::vector<DetailBlock> under(const HistoryItem& item) const;

 private:
    std::string appName(const HistoryItem& item) const;

    const Words words_;
    std::optional<DateFormat> time_;
    std::optional<DateFormat> date_;
};

}  // namespace dorix
