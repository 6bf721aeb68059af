#include "localdata/TranslationTable.h"
#include "views/DesktopWords.h"

#include <gtest/gtest.h>

#include <array>

namespace dorix {
namespace {

TEST(DesktopWordsTest, KeysAndComputerHaveTheNamesOfThisDesktop) {
    EXPECT_EQ(desktopWords("Mantén pulsado ⌥ Espacio (o ⌥ Opción derecha), ⌥⇧ Espacio o ⌘V"),
              "Mantén pulsado Alt+Espacio (o Alt derecha), Alt+Mayús+Espacio o Ctrl+V");
    EXPECT_EQ(desktopWords("Apple Intelligence (on this Mac)"), "Modelo local (on this computer)");
    EXPECT_EQ(desktopWords("Apple Intelligence (en tu Mac)"), "Modelo local (en tu equipo)");
    EXPECT_TRUE(desktopWords("Este Mac no es compatible con Apple Intelligence.").contains("Instala"));
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
