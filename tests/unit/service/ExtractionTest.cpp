#include "base/Json.h"
#include "base/text/Text.h"
#include "service/ai/Extraction.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <fstream>

namespace dorix::service {

namespace {

using testing::HasSubstr;
using testing::StartsWith;
using enum Needed::Reason;

Json corpus() {
    std::ifstream file(std::string(SERVICE_TEST_DATA) + "/extraction_corpus.json");
    return Json::parse(file);
}

std::vector<AskRequest::MemoryHit> hitsOf(const Json& documents) {
    std::vector<AskRequest::MemoryHit> hits;
    for (const auto& document : documents) {
        hits.push_back({.n = std::ssize(hits) + 1,
                        .title = document.at("title"),
                        .date = document.at("date"),
                        .text = document.at("text")});
    }
    return hits;
}

/// Whether the first quotation is the expected one, out of the expected document; or nothing was found where
/// nothing is.
bool isRight(const Json& row, const std::expected<std::string, Needed>& answer) {
    if (row.at("answer").is_null()) return !answer;
    if (!answer) return false;
    const auto first = answer->substr(0, answer->find('\n'));
    return first.find(row.at("answer").get<std::string>()) != std::string::npos &&
           first.ends_with("[" + std::to_string(row.at("n").get<int>()) + "]");
}

std::string answered(const AskRequest& request) {
    const auto answer = answerByExtraction(request, Language::spanish);
    return answer ? *answer : message(answer.error(), Language::english);
}

Needed::Reason needed(const AskRequest& request) {
    const auto answer = answerByExtraction(request, Language::spanish);
    EXPECT_FALSE(answer) << *answer;
    return answer ? rewriting : answer.error().reason;
}

}  // namespace

TEST(Extraction, AnswersMostQuestionsAboutASmallCorpus) {
    const auto data = corpus();
    std::size_t right = 0;
    std::string wrong;
    for (const auto& row : data.at("questions")) {
        const AskRequest request{.question = row.at("question"), .memory = hitsOf(data.at("documents"))};
        const bool isAnswered = isRight(row, answerByExtraction(request, Language::spanish));
        if (isAnswered)
            ++right;
        else
            wrong += request.question + "\n" + answered(request) + "\n";
    }
    // What it reached when this was written, less two.
    EXPECT_GE(right, std::size_t{37}) << "of " << data.at("questions").size() << "\n" << wrong;
}

TEST(Extraction, QuotesEachKindOfMaterialUnderItsName) {
    AskRequest request{.question = "¿Cuándo es la entrega?"};
    request.selection = "La entrega es el lunes 4. Traed cajas.";
    EXPECT_EQ(answered(request), "«La entrega es el lunes 4.» — texto seleccionado");
    request.selection.reset();
    request.document = {.name = "plan.txt",
                        .text = "Fases\n\nEl Sr. Gil hará la entrega el 3. de mayo. Y ya."};
    EXPECT_EQ(answered(request), "«El Sr. Gil hará la entrega el 3. de mayo.» — plan.txt");
    request.document.reset();
    request.transcript = "[10:01] Tú: ¿qué tal?\n[10:02] Ellos: la entrega será el jueves";
    request.meetingTitle = "Reunión de Zoom";
    EXPECT_THAT(answered(request),
                StartsWith("«[10:02] Ellos: la entrega será el jueves» — Reunión de Zoom"));

    AskRequest recap{.question = "where did I leave off",
                     .recap =
                         "- Impress: «When we leave» [/home/a/q3.odp] · 47 min · último uso lunes 18:02\n"
                         "\nLo que hizo con DORIX:\n- Search en Writer (sábado 9:05): en (lunes): x"};
    EXPECT_EQ(answered(recap),
              "Your recent activity:\n- Impress: «When we leave» · 47 min · last used Monday 18:02\n"
              "With DORIX:\n- Search in Writer (Saturday 9:05): en (lunes): x");
    recap.question = "¿dónde lo dejamos?";
    EXPECT_EQ(answered(recap),
              "Tu actividad reciente:\n- Impress: «When we leave» · 47 min · último uso lunes 18:02\n"
              "Con DORIX:\n- Search en Writer (sábado 9:05): en (lunes): x");
}

TEST(Extraction, SumsUpAMeetingByWhatWasDecidedAndWhoDoesWhatUntilWhen) {
    AskRequest spanish{.question = "Resumen de la reunión", .mode = "meeting_summary"};
    spanish.transcript =
        "[10:01] Tú: buenos días, hoy toca hablar del lanzamiento de la tienda en Portugal\n"
        "[10:02] Ellos: el lanzamiento de la tienda depende del presupuesto de publicidad.\n"
        "[10:03] Ellos: ¿Decidimos hoy la fecha? Todavía no hemos decidido el precio.\n"
        "[10:04] Tú: hemos decidido lanzar la tienda el 3 de noviembre\n"
        "[10:05] Tú: yo preparo el presupuesto para el viernes. Marta se encarga de las fotos.\n"
        "[10:06] Ellos: ¿puedes mandarme el contrato mañana por la tarde? Voy a ser sincero, es tarde.\n";
    EXPECT_EQ(
        answered(spanish),
        "Las frases que mejor lo recogen, citadas tal cual:\n"
        "- «buenos días, hoy toca hablar del lanzamiento de la tienda en Portugal» — Tú, 10:01\n"
        "- «el lanzamiento de la tienda depende del presupuesto de publicidad.» — Ellos, 10:02\n"
        "**Decisiones**\n"
        "- «hemos decidido lanzar la tienda el 3 de noviembre» — Tú, 10:04\n"
        "**Tareas**\n"
        "- **Tú, para el viernes**: «yo preparo el presupuesto para el viernes.» — Tú, 10:05\n"
        "- **Marta**: «Marta se encarga de las fotos.» — Tú, 10:05\n"
        "- **Tú, mañana por la tarde**: «¿puedes mandarme el contrato mañana por la tarde?» — Ellos, 10:06");

    AskRequest english{.question = "Resumen de la reunión", .mode = "meeting_summary"};
    english.transcript =
        "[09:00] Ellos: I'll send you the revised quote by Tuesday. Let me share my screen.\n"
        "[09:01] Tú: we agreed to keep the old logo. If we agreed on more, nobody knew.\n"
        "[09:02] Ellos: Could you call the printer before the end of the month?\n";
    EXPECT_EQ(
        answered(english),
        "**Decisions**\n- “we agreed to keep the old logo.” — You, 09:01\n"
        "**Tasks**\n- **They, by Tuesday**: “I'll send you the revised quote by Tuesday.” — They, 09:00\n"
        "- **You, before the end of the month**: “Could you call the printer before the end of the month?” "
        "— They, 09:02");
    const AskRequest silent{
        .question = "",
        .selection = "The tide turns at noon behind the old pier. Bring a tide table for the pier."};
    EXPECT_THAT(answered(silent),
                StartsWith("Las frases que mejor lo recogen, citadas tal cual:\n«The tide"));
    EXPECT_EQ(needed({.question = "Resumen", .mode = "meeting_summary", .transcript = " \n"}), noMaterial);
}

TEST(Extraction, AnswersInAMeetingWhatTheUserWasJustAsked) {
    AskRequest live{.question = "Consejo para este momento de la reunión", .mode = "meeting_live"};
    EXPECT_EQ(answered(live), "—");
    live.transcript =
        "[10:00] Ellos: el pedido de sillas costó 1.200 euros\n[10:01] Tú: ¿y el transporte?\n"
        "[10:02] Ellos: el transporte va incluido\n[10:03] Ellos: perdona, ¿cuánto costó el pedido de "
        "sillas?";
    live.meetingTitle = "Reunión de Zoom";
    EXPECT_EQ(answered(live), "«[10:00] Ellos: el pedido de sillas costó 1.200 euros» — Reunión de Zoom");
    live.transcript =
        "[10:00] Ellos: el pedido costó mucho\n[10:03] Ellos: ¿quién dirige el taller de pintura?";
    EXPECT_EQ(answered(live), "—");
    live.transcript = "[10:00] Ellos: el taller abre a las nueve\n[10:03] Tú: ¿cuándo abre el taller?";
    EXPECT_EQ(answered(live), "—") << "whoever asks knows that they asked";
}

TEST(Extraction, SaysWhatTakesALanguageModel) {
    const Picture shot{.format = Picture::Format::png, .base64 = "AAAA"};
    EXPECT_EQ(needed({.question = "escribe un poema", .selection = "El mar."}), composing);
    EXPECT_EQ(needed({.question = "Translate this", .selection = "El mar."}), composing);
    EXPECT_EQ(needed({.question = "¿qué pone aquí?", .screenshot = shot}), picture);
    EXPECT_EQ(needed({.question = "What is the capital of Peru?"}), noMaterial);
    EXPECT_EQ(needed({.question = "", .selection = " \n"}), noMaterial);
    EXPECT_EQ(needed({.question = "¿cuánto pesa la Luna?", .selection = "El mar es azul."}), notFound);
    for (const auto reason : {composing, picture, noMaterial, notFound, rewriting}) {
        EXPECT_THAT(message({reason}, Language::spanish), HasSubstr("modelo de lenguaje"));
        EXPECT_THAT(message({reason}, Language::english), HasSubstr("language model"));
    }
}

/// What would make a reader of Markdown show more than text.
TEST(Extraction, QuotesMarkupAsText) {
    AskRequest request{.question = "What is the delivery code?",
                       .windowTitle = "Draft ![x](https://evil.example/t.png)"};
    request.selection =
        "# The delivery code is 77 ![p](https://evil.example/p.png) [here](javascript:alert(1)) <img src=x> "
        "!![q][r] !\u200B[s]\uFEFF(t) <https://evil.example> \u202Eabc\u2028\x01\x1b[31m\xC2\x9B and 3 < 4";
    EXPECT_EQ(
        answered(request),
        "“The delivery code is 77 [p] (https://evil.example/p.png) [here] (javascript:alert(1)) < img src=x> "
        "[q] [r] [s] (t) < https://evil.example> abc   [31m  and 3 < 4” — selected text (Draft [x] "
        "(https://evil.example/t.png))");
    request.selection.reset();
    request.recap = "\n[r]: https://evil.example\n- Mail: «![x][r]» · 12 min";
    EXPECT_EQ(answered(request),
              "Your recent activity:\n[r] : https://evil.example\n- Mail: «[x] [r]» · 12 min");
    request.recap.reset();
    request.memory = {{.n = 3, .title = "a\n\n# b", .text = "The delivery code is\r\n77 in all offices"}};
    EXPECT_THAT(answered(request), testing::EndsWith("— a  # b [3]"));
}

TEST(Extraction, TakesTimeInProportion) {
    std::string sentences;
    while (sentences.size() < 100'000) sentences += "El contrato de suministro vence en mayo, Sr. Gil. ";
    for (const auto& text : {sentences, std::string(100'000, 'x'), std::string(100'000, '.'),
                             std::string(100'000, '\n'), std::string(100'000, '\xBF')}) {
        AskRequest request{.question = "¿cuándo vence el contrato?"};
        request.document = {.name = "a", .text = text};
        const auto start = std::chrono::steady_clock::now();
        answerByExtraction(request, Language::spanish);
        request.question = "resume";
        answerByExtraction(request, Language::spanish);
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        EXPECT_LT(taken.count(), 5) << text.substr(0, 20);
    }
}

}  // namespace dorix::service
