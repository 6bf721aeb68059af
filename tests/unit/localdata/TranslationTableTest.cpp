#include "localdata/TranslationTable.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {
namespace {

int count(std::string_view text, std::string_view mark) {
    int found = 0;
    for (auto at = text.find(mark); at != std::string_view::npos; at = text.find(mark, at + 1)) ++found;
    return found;
}

/// What has to stand in both languages: "%@" and the like in order, the blanks at the ends, line ends, an
/// ellipsis at the end, pairs of quotes.
std::vector<std::string> frame(std::string_view text) {
    std::vector<std::string> found;
    for (auto at = text.find('%'); at != std::string_view::npos; at = text.find('%', at + 2)) {
        found.emplace_back(text.substr(at, 2));
    }
    constexpr std::string_view blanks = " \n";
    found.emplace_back(text.substr(0, text.find_first_not_of(blanks)));
    found.emplace_back(text.substr(text.find_last_not_of(blanks) + 1));
    found.emplace_back(text.ends_with("…") ? "…" : "");
    found.push_back(std::to_string(count(text, "\n")) + " lines");
    for (const auto& mark : {count(text, "«") + count(text, "“"), count(text, "»") + count(text, "”")}) {
        found.push_back(std::to_string(mark) + " quotes");
    }
    return found;
}

TEST(TranslationTableTest, EnglishCanStandWhereTheSpanishStood) {
    std::map<std::string_view, std::string_view> english;
    for (const auto& row : translationTable()) {
        SCOPED_TRACE(row.spanish);
        EXPECT_TRUE(english.emplace(row.spanish, row.english).second) << "twice";
        EXPECT_EQ(frame(row.english), frame(row.spanish));
        const bool isWrittenAlike =
            row.spanish == "Natural" || row.spanish == "Error" || row.spanish == "General";
        EXPECT_EQ(row.english == row.spanish, isWrittenAlike);
        for (const auto* mark : {"«", "»", "¿", "¡", "á", "é", "í", "ó", "ú", "ñ", "'", "\"", "...", "  "}) {
            EXPECT_FALSE(row.english.contains(mark)) << mark;
        }
    }
    EXPECT_FALSE(english.contains(""));

    // Texts that name a label have to name it as it reads, or the user is sent to one that nobody shows.
    const std::initializer_list<std::pair<std::string_view, std::string_view>> naming{
        {"cuando pulsas Permitir", "Permitir"},
        {"elegir otro arriba, en Dictado", "Dictado"},
        {"en Ajustes › Automatizaciones", "Automatizaciones"},
        {"en Ajustes › Conexiones", "Conexiones"},
        {"› Añadir otro espacio", "Añadir otro espacio"},
        {"en Ajustes › Memoria", "Memoria"},
        {"→ Activar modo reunión", "Activar modo reunión"},
        {"Di con ⌥ Espacio", "⌥ Espacio"}};
    for (const auto& [text, label] : naming) {
        int found = 0;
        for (const auto& row : translationTable()) {
            if (!row.spanish.contains(text)) continue;
            ++found;
            EXPECT_TRUE(row.english.contains(english.at(label))) << row.spanish;
            if (text.contains("Ajustes")) EXPECT_TRUE(row.english.contains(english.at("Ajustes")));
        }
        EXPECT_GT(found, 0) << text;
    }
}

}  // namespace
}  // namespace dorix
