#include "service/ai/Transforms.h"

#include <gtest/gtest.h>

#include <array>

namespace dorix::service {

namespace {

std::string transformed(std::string_view instruction, std::string_view selection) {
    const auto result =
        transformByRules({.instruction = std::string(instruction), .selection = std::string(selection)});
    return result ? *result : "needs a model";
}

}  // namespace

TEST(Transforms, DoWhatIsMechanical) {
    struct Case {
        std::string_view instruction, selection, result;
    };
    for (const auto& [instruction, selection, result] : std::to_array<Case>({
             {"ponlo en mayúsculas", "camión ñu\nstraße\n", "CAMIÓN ÑU\nSTRASSE\n"},
             {"Convert this to lowercase, please.", "ÁRBOL\r\nB", "árbol\r\nb"},
             {"haz una lista", "pan, leche y huevos", "- pan\n- leche\n- huevos"},
             {"make it a bulleted list", "Buy milk. Call Ana.", "- Buy milk.\n- Call Ana."},
             {"conviértelo en una lista numerada", "- uno\n  - dos\n\n- tres", "1. uno\n  2. dos\n\n3. tres"},
             {"quita la numeración", "1. uno\n2) dos\n3,5 kg", "uno\ndos\n3,5 kg"},
             {"ordena alfabéticamente", "Óscar\nñu\nnube\nana\n", "ana\nnube\nñu\nÓscar\n"},
             {"sort the lines in reverse order", "a\nc\nb", "c\nb\na"},
             {"quita las líneas repetidas", "a\nb\na\n", "a\nb\n"},
             {"ordena y numera las líneas", "b\na", "1. a\n2. b"},
             {"ordena la lista", "b\na", "a\nb"},
             {"haz la lista", "b\na", "- b\n- a"},
             {"une las líneas", "uno\ndos\n\ntres\n", "uno dos tres\n"},
             {"put it all on one line", "a\nb", "a b"},
             {"quita los espacios que sobran", "  a   b \n\n c", "a b\n\nc"},
             {"remove trailing spaces", "  a   b \n\n c\t", "  a   b\n\n c"},
             {"remove leading whitespace", "  a   b \n\n c", "a   b \n\nc"},
             {"quita las líneas vacías", "  a   b \n \n c", "  a   b \n c"},
             {"pon el texto en mayúsculas", "uno\ndos", "UNO\nDOS"},
         }))
        EXPECT_EQ(transformed(instruction, selection), result) << instruction;
}

TEST(Transforms, LeaveTheRestToAModel) {
    for (const auto* instruction : {"hazlo más corto",
                                    "traduce al inglés",
                                    "pon en mayúsculas los nombres",
                                    "quita las mayúsculas",
                                    "",
                                    "ordena por fecha",
                                    "make it a list of the three best ideas",
                                    "no lo pongas en mayúsculas",
                                    "quita los espacios",
                                    "join the team",
                                    "uppercase and lowercase",
                                    "remove the last line",
                                    "escribe los números en letras",
                                    "convierte la lista en texto",
                                    "quita las palabras repetidas",
                                    "write the numbers as words",
                                    "ordena las palabras",
                                    "recorta esto",
                                    "pon una línea en blanco",
                                    "remove trailing blank lines",
                                    "quita los espacios en blanco",
                                    "duplicate this line"}) {
        EXPECT_EQ(transformed(instruction, "Uno. Dos.\nTres."), "needs a model") << instruction;
    }
    EXPECT_EQ(transformed("haz una lista", "Pan"), "needs a model") << "there is one thing alone";
}

}  // namespace dorix::service
