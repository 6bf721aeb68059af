#include "localdata/TranslationTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

namespace dorix {
namespace {

// "%@", "%d", "%%" and the like, in order; a lone "%" gives itself, so that it never passes unnoticed.
std::vector<std::string> placeholders(std::string_view text) {
    std::vector<std::string> found;
    for (std::size_t at = text.find('%'); at != std::string_view::npos; at = text.find('%', at)) {
        const auto one = text.substr(at, 2);
        found.emplace_back(one);
        at += one.size();
    }
    return found;
}

std::string_view leadingBlanks(std::string_view text) {
    return text.substr(0, std::min(text.find_first_not_of(" \n"), text.size()));
}

std::string_view trailingBlanks(std::string_view text) {
    const auto last = text.find_last_not_of(" \n");
    return last == std::string_view::npos ? std::string_view{} : text.substr(last + 1);
}

bool endsInEllipsis(std::string_view text) { return text.ends_with("…"); }

// The row's English, or a text no row has when the key is missing.
std::string_view english(std::string_view spanish) {
    const auto rows = translationTable();
    const auto row = std::ranges::find(rows, spanish, &Translation::spanish);
    return row == rows.end() ? "(missing)" : row->english;
}

TEST(TranslationTableTest, HoldsEveryTextOnce) {
    std::unordered_set<std::string_view> seen;
    for (const auto& row : translationTable()) {
        EXPECT_FALSE(row.spanish.empty());
        EXPECT_FALSE(row.english.empty()) << row.spanish;
        EXPECT_TRUE(seen.insert(row.spanish).second) << "twice: " << row.spanish;
    }
}

TEST(TranslationTableTest, EnglishCanStandWhereTheSpanishStood) {
    for (const auto& row : translationTable()) {
        SCOPED_TRACE(row.spanish);
        const auto marks = placeholders(row.spanish);
        EXPECT_EQ(placeholders(row.english), marks);
        for (const auto& mark : marks) EXPECT_TRUE(mark == "%@" || mark == "%d" || mark == "%%") << mark;
        EXPECT_EQ(leadingBlanks(row.english), leadingBlanks(row.spanish));
        EXPECT_EQ(trailingBlanks(row.english), trailingBlanks(row.spanish));
        EXPECT_EQ(std::ranges::count(row.english, '\n'), std::ranges::count(row.spanish, '\n'));
        EXPECT_EQ(endsInEllipsis(row.english), endsInEllipsis(row.spanish));
    }
}

TEST(TranslationTableTest, EnglishHasNoSpanishLeftInIt) {
    // These two words are written alike in both languages.
    constexpr std::array<std::string_view, 2> kAlike{"Natural", "Error"};
    constexpr std::array<std::string_view, 15> kSpanishOnly{"«", "»", "¿", "¡", "á", "é",  "í",  "ó",
                                                            "ú", "ñ", "É", "Ú", "'", "\"", "..."};
    for (const auto& row : translationTable()) {
        SCOPED_TRACE(row.spanish);
        EXPECT_EQ(row.english == row.spanish, std::ranges::find(kAlike, row.spanish) != kAlike.end());
        for (const auto mark : kSpanishOnly) EXPECT_FALSE(row.english.contains(mark)) << mark;
        EXPECT_FALSE(row.english.contains("  "));
    }
}

TEST(TranslationTableTest, QuotesComeInPairs) {
    const auto count = [](std::string_view text, std::string_view mark) {
        int found = 0;
        for (auto at = text.find(mark); at != std::string_view::npos; at = text.find(mark, at + 1)) ++found;
        return found;
    };
    for (const auto& row : translationTable()) {
        SCOPED_TRACE(row.spanish);
        EXPECT_EQ(count(row.english, "“"), count(row.english, "”"));
        EXPECT_EQ(count(row.english, "“"), count(row.spanish, "«") + count(row.spanish, "“"));
    }
}

// Pairs whose texts name the same thing have to name it alike, or the user is sent to a label that
// the screen does not show.
TEST(TranslationTableTest, TextsNameLabelsAsTheyRead) {
    const std::vector<std::pair<std::string_view, std::vector<std::string_view>>> named{
        {"DORIX solo hace la acción cuando pulsas Permitir.", {"Permitir"}},
        {"También cambia el idioma del dictado; puedes elegir otro arriba, en Dictado.", {"Dictado"}},
        {"Puedes cambiarlo o borrarla en Ajustes › Automatizaciones.", {"Ajustes", "Automatizaciones"}},
        {"Para buscar en Slack, conéctalo en Ajustes › Conexiones.", {"Ajustes", "Conexiones"}},
        {"No he encontrado mensajes sobre eso en Slack. He buscado en: %@.\n\nSi el canal está en otro "
         "espacio de Slack, añádelo en Ajustes › Conexiones › Añadir otro espacio.",
         {"Ajustes", "Conexiones", "Añadir otro espacio"}},
        {"La memoria de actividad está desactivada. Actívala en Ajustes › Memoria.", {"Ajustes", "Memoria"}},
        {"Nada por aquí todavía.\nDi con ⌥ Espacio «activa el modo reunión», o usa el menú del icono → "
         "Activar modo reunión. Al terminar verás aquí el resumen.",
         {"Activar modo reunión", "⌥ Espacio"}},
    };
    for (const auto& [text, labels] : named) {
        for (const auto label : labels) {
            EXPECT_TRUE(english(text).contains(english(label))) << text << " / " << label;
        }
    }
}

}  // namespace
}  // namespace dorix
