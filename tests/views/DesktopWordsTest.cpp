#include "localdata/TranslationTable.h"
#include "views/DesktopWords.h"

#include <gtest/gtest.h>

#include <array>

namespace dorix {
namespace {

TEST(DesktopWordsTest, KeysAndComputerHaveTheNamesOfThisDesktop) {
    EXPECT_EQ(desktopWords("Escrito en Notas · también en el portapapeles (⌘V)"),
              "Escrito en Notas · también en el portapapeles (Ctrl+V)");
    EXPECT_EQ(desktopWords("Mantén pulsado ⌥ Espacio (o ⌥ Opción derecha)"),
              "Mantén pulsado Alt+Espacio (o Alt derecha)");
    EXPECT_EQ(desktopWords("Hold ⌥⇧ Space (or Right ⌥)"), "Hold Alt+Shift+Space (or Right Alt)");
    EXPECT_EQ(desktopWords("Pulsa ⌥⇧ Espacio"), "Pulsa Alt+Mayús+Espacio");
    EXPECT_EQ(desktopWords("Este Mac … en tu Mac"), "Este equipo … en tu equipo");
    EXPECT_EQ(desktopWords("stored only on this Mac."), "stored only on this computer.");
    EXPECT_EQ(desktopWords("Apple Intelligence (en tu Mac)"), "Modelo local (en tu equipo)");
    EXPECT_EQ(desktopWords("Machado, MacArthur"), "Machado, MacArthur") << "only whole phrases";
}

// A text that is added with a key or a name of the other system needs its row.
TEST(DesktopWordsTest, NoTextNamesAnotherSystem) {
    constexpr std::array foreign{"⌘", "⌥", "⇧", "⌃", "Mac", "Finder", "Apple"};
    for (const auto& row : translationTable()) {
        for (const auto text : {row.spanish, row.english}) {
            const auto shown = desktopWords(text);
            for (const char* word : foreign) EXPECT_FALSE(shown.contains(word)) << shown;
        }
    }
}

}  // namespace
}  // namespace dorix
