#include "service/ai/extraction/Activity.h"

#include "base/text/Text.h"
#include "service/ai/extraction/Frame.h"
#include "service/ai/extraction/Quotation.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace dorix::service {

namespace {

constexpr std::size_t mostLines = 8;
constexpr std::size_t longestLine = 300;  // characters

constexpr std::string_view lastUsed = "último uso ";
constexpr std::array<std::pair<std::string_view, std::string_view>, 7> days{{{"lunes", "Monday"},
                                                                             {"martes", "Tuesday"},
                                                                             {"miércoles", "Wednesday"},
                                                                             {"jueves", "Thursday"},
                                                                             {"viernes", "Friday"},
                                                                             {"sábado", "Saturday"},
                                                                             {"domingo", "Sunday"}}};

/// "lunes 18:02" and what follows it.
std::string inEnglish(std::string_view when) {
    const auto* const day =
        std::ranges::find_if(days, [&](const auto& one) { return when.starts_with(one.first); });
    if (day == days.end()) return std::string(when);
    return std::string(day->second) + std::string(when.substr(day->first.size()));
}

/// "- Writer: «Informe» [/home/ana/informe.odt] · 47 min · último uso lunes 18:02"
std::string usedLine(std::string line, Language language) {
    const auto minutes = line.rfind("] · ");
    const auto place = line.rfind("» [", minutes);
    if (minutes != std::string::npos && place != std::string::npos)
        line.erase(place + std::string_view("»").size(), minutes + 1 - place - std::string_view("»").size());
    const auto at = line.rfind(lastUsed);
    if (language == Language::spanish || at == std::string::npos) return line;
    return line.substr(0, at) + "last used " + inEnglish(std::string_view(line).substr(at + lastUsed.size()));
}

/// "- Dictado en Writer (lunes 18:02): Salgo ya"
std::string doneLine(const std::string& line, Language language) {
    const auto end = line.find("): ");
    const auto when = line.rfind(" (", end);
    const auto where = line.find(" en ");
    const bool hasShape = end != std::string::npos && when != std::string::npos && where < when;
    if (language == Language::spanish || !hasShape) return line;
    return line.substr(0, where) + " in " + line.substr(where + 4, when + 2 - where - 4) +
           inEnglish(std::string_view(line).substr(when + 2));
}

}  // namespace

std::string activityOf(std::string_view recap, Language language) {
    std::string out(frameIn(language).activity);
    std::size_t count = 0;
    for (const auto raw : text::split(recap, '\n')) {
        const std::string line(text::trim(raw));
        if (line.empty()) continue;
        const bool isHeading = line == "Lo que hizo con DORIX:";
        const auto shown = isHeading ? std::string(frameIn(language).withDorix)
                           : line.find(lastUsed) != std::string::npos ? usedLine(line, language)
                                                                      : doneLine(line, language);
        out += "\n" + plainLine(shown, longestLine);
        if (++count == mostLines) break;
    }
    return out;
}

}  // namespace dorix::service
