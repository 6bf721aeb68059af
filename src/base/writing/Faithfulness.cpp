#include "base/writing/Faithfulness.h"

#include "base/text/Text.h"

#include <algorithm>
#include <array>
#include <string>
#include <unordered_set>

namespace dorix {

namespace {

constexpr std::size_t stemLetters = 5;
constexpr std::size_t leastCheckedLetters = 4;

// An engine may greet and close although nobody dictated it.
constexpr std::array<std::string_view, 12> courtesies{"hola",     "saludo",   "saludos",     "gracias",
                                                      "buenos",   "buenas",   "querido",     "querida",
                                                      "estimado", "estimada", "atentamente", "cordialmente"};

bool isChecked(std::string_view word) {
    return text::length(word) >= leastCheckedLetters &&
           std::ranges::find(courtesies, word) == courtesies.end();
}

}  // namespace

double faithfulnessScore(std::string_view produced, std::string_view dictated) {
    const std::string foldedDictation = text::fold(dictated);
    std::unordered_set<std::string_view> stems;
    for (const auto word : text::letterRuns(foldedDictation)) stems.insert(text::prefix(word, stemLetters));

    int checked = 0;
    int found = 0;
    const std::string foldedProduct = text::fold(produced);
    for (const auto word : text::letterRuns(foldedProduct)) {
        if (!isChecked(word)) continue;
        ++checked;
        if (stems.contains(text::prefix(word, stemLetters))) ++found;
    }
    return checked == 0 ? 1.0 : static_cast<double>(found) / checked;
}

}  // namespace dorix
