#include "memory/recall/Recap.h"

#include "base/text/Calendar.h"
#include "base/text/Line.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>

namespace dorix {

namespace {

constexpr double longestRow = 300;     // seconds: who was away longer was away
constexpr double shortestGroup = 120;  // seconds
constexpr std::size_t mostLines = 15;

struct Group {
    std::string app;
    std::string title;
    std::optional<std::string> document;
    double began = 0;
    double lastSeen = 0;
    double seconds = 0;
};

/// By application and document, or else title; in the order in which they began.
std::vector<Group> groupsOf(const std::vector<ActivityRow>& rows, double now) {
    std::vector<Group> groups;
    std::map<std::string, std::size_t> known;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const auto& row = rows[i];
        const double next = i + 1 < rows.size() ? rows[i + 1].time : now;
        const auto key = row.app + "|" + row.document.value_or(row.title);
        const auto [at, isNew] = known.try_emplace(key, groups.size());
        if (isNew)
            groups.push_back(
                {.app = row.app, .title = row.title, .document = row.document, .began = row.time});
        auto& group = groups[at->second];
        // A clock that was set back takes nothing away.
        group.seconds += std::clamp(next - row.time, 0.0, longestRow);
        group.lastSeen = std::max(group.lastSeen, row.time);
    }
    return groups;
}

/// Names and titles are of anybody's making: none of them may look like a line of its own.
std::string lineOf(const Group& group, const DateFormat& date) {
    const auto document = group.document ? " [" + text::asLine(*group.document) + "]" : "";
    const auto minutes = static_cast<std::int64_t>(group.seconds) / 60;
    return "- " + text::asLine(group.app) + ": «" + text::asLine(group.title) + "»" + document + " · " +
           std::to_string(minutes) + " min · último uso " + date.format(group.lastSeen);
}

std::string lineOf(const RecapItem& item, const DateFormat& date) {
    return "- " + item.kind + " en " + text::asLine(item.app) + " (" + date.format(item.createdAt) +
           "): " + text::asLine(item.title);
}

void addLine(std::string& text, const std::string& line, bool isFirst) {
    if (!isFirst) text += "\n";
    text += line;
}

}  // namespace

Recap recap(const std::vector<ActivityRow>& rows, const std::vector<RecapItem>& history, double now) {
    const auto date = DateFormat::ofPattern("EEEE HH:mm", "es_ES");
    auto groups = groupsOf(rows, now);
    std::erase_if(groups, [](const Group& group) { return group.seconds < shortestGroup; });
    std::ranges::sort(groups, {}, [](const Group& group) { return std::pair(-group.seconds, group.began); });
    groups.resize(std::min(groups.size(), mostLines));

    Recap recap;
    for (const auto& group : groups) {
        addLine(recap.text, lineOf(group, date), &group == groups.data());
        if (group.document) recap.documents.push_back(*group.document);
    }
    std::string done;
    std::size_t lines = 0;
    for (const auto& item : history) {
        if (item.createdAt < now - recapWindow) continue;
        if (lines == mostLines) break;
        addLine(done, lineOf(item, date), lines++ == 0);
    }
    if (lines > 0) addLine(recap.text, "\nLo que hizo con DORIX:\n" + done, groups.empty());
    return recap;
}

}  // namespace dorix
