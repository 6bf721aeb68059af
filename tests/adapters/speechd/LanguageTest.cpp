#include "linux/cld2/Cld2LanguageRecognizer.h"

#include <gtest/gtest.h>

#include <string>

namespace dorix {
namespace {

TEST(Cld2LanguageRecognizerTest, IsSureOfSentencesAndNotOfAWord) {
    const Cld2LanguageRecognizer recognizer;
    const auto sureOf = [&](const std::string& text) {
        const auto found = recognizer.dominantLanguage(text);
        return found && found->confidence > 0.5 ? found->code : "";
    };
    EXPECT_EQ(sureOf("El contrato con Velmar vence el 3 de marzo, y hay que avisar a Marta antes."), "es");
    EXPECT_EQ(sureOf("The contract expires on March 3, and somebody has to tell Martha before that."), "en");
    EXPECT_EQ(sureOf("Le contrat expire le 3 mars, et il faut prévenir Marthe avant cette date."), "fr");
    EXPECT_EQ(sureOf("Il contratto scade il 3 marzo e bisogna avvisare Marta prima di quella data."), "it");
    EXPECT_EQ(sureOf("El contracte venç el 3 de març i cal avisar la Marta abans d'aquesta data."), "ca");
    for (const std::string text : {"", "ok", "42", "\xFF\xFE"}) EXPECT_EQ(sureOf(text), "") << text;
}

}  // namespace
}  // namespace dorix
