#include "base/writing/Faithfulness.h"
#include "writing/BasicPolisher.h"

#include <gtest/gtest.h>

namespace dorix {
namespace {

std::string polish(std::string_view transcript) { return BasicPolisher().polished(transcript).text; }

TEST(BasicPolisherTest, CleansASentence) {
    EXPECT_EQ(polish("  eh, bueno mmm. quedamos   el martes, vale? \n"), "Quedamos el martes.");
    EXPECT_EQ(polish("pues  creo que sí"), "Creo que sí.");
    EXPECT_EQ(polish("Y vamos, ¿vale?"), "Vamos") << "one word gets no period";
    EXPECT_EQ(polish("Este informe está listo"), "Informe está listo.");
    EXPECT_EQ(polish("equivale a tres ehemplos"), "Equivale a tres ehemplos.") << "fillers are whole words";
}

TEST(BasicPolisherTest, LeavesWhatTheRulesDoNotReach) {
    EXPECT_EQ(polish("Eh, bueno, vale"), "Bueno") << "the leading word needs white space behind it";
    EXPECT_EQ(polish("yo también voy"), "Yo también voy.");
    EXPECT_EQ(polish("sí"), "Sí");
    EXPECT_EQ(polish("dos palabras"), "Dos palabras");
    EXPECT_EQ(polish("esto sigue así…"), "Esto sigue así…");
    EXPECT_EQ(polish("¿vienes tú hoy?"), "¿vienes tú hoy?");
    EXPECT_EQ(polish(" "), "");
}

TEST(BasicPolisherTest, EnglishDaysAndMonthsAreCapitalised) {
    EXPECT_EQ(polish("see you on monday or tuesdays in may"), "See you on Monday or Tuesdays in May.");
    EXPECT_EQ(polish("we may march until 5 march and may 3rd"), "We may march until 5 March and May 3rd.");
    EXPECT_EQ(polish("on the 5th may or friday's march 1st"), "On the 5th May or Friday's March 1st.");
    EXPECT_EQ(polish("en mayo, los lunes"), "En mayo, los lunes.");
    const std::string names = "Runs monday_job and friday.py for sunday@x.org in may.txt";
    EXPECT_EQ(polish(names), names + ".") << "no days";
}

TEST(BasicPolisherTest, NamesItselfAndTitlesTheText) {
    const auto result = BasicPolisher().polished("uno dos tres cuatro cinco seis siete ocho");
    EXPECT_EQ(result.engine, "Básico");
    EXPECT_EQ(result.title, "Uno dos tres cuatro cinco seis siete");
    EXPECT_EQ(BasicPolisher().polished("").title, "Dictado");
    EXPECT_EQ(titleFrom("¡Hola!, mundo;:"), "¡Hola!, mundo");
    EXPECT_EQ(titleFrom(".,;"), "Dictado");
}

TEST(FaithfulnessTest, ComparesVocabularyByStems) {
    EXPECT_DOUBLE_EQ(faithfulnessScore("Presupuestar la Canción", "el presupuesto y la cancion"), 1);
    EXPECT_DOUBLE_EQ(faithfulnessScore("Hola, gracias. Un saludo, sí", "nada"), 1);
    EXPECT_DOUBLE_EQ(faithfulnessScore("Enviamos dinero, dinero", "enviamos"), 1.0 / 3);
    EXPECT_DOUBLE_EQ(faithfulnessScore("casa2mesa", "casa mesa"), 1) << "a digit ends a word";
    EXPECT_DOUBLE_EQ(faithfulnessScore("inventado", ""), 0);
}

TEST(RewriteInstructionsTest, SignsOnlyEmails) {
    PolishRequest request{
        .transcript = "x", .appName = "Gmail", .tone = Tone::profesional, .signatureName = "Teo"};
    const auto email = rewriteInstructions(request);
    EXPECT_TRUE(
        email.starts_with("Reescribe la transcripción de un dictado como texto final para Gmail. Correo"));
    EXPECT_NE(email.find("y sin rodeos. Firma con «Teo».\n- Mismo idioma"), std::string::npos);
    EXPECT_TRUE(email.ends_with("Título: máximo 6 palabras, solo con lo dictado."));
    request.tone = Tone::cercano;
    EXPECT_EQ(rewriteInstructions(request).find("Teo"), std::string::npos);
}

}  // namespace
}  // namespace dorix
