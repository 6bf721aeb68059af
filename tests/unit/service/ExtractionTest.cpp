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
    EXPECT_GE(right, std::size_t{35}) << "of " << data.at("questions").size() << "\n" << wrong;
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

    const AskRequest recap{.question = "where did I leave off",
                           .recap = "- Keynote: «Informe Q3» · 47 min · último uso lunes 18:02\n"};
    EXPECT_EQ(answered(recap),
              "Your recent activity:\n- Keynote: «Informe Q3» · 47 min · último uso lunes 18:02");

    AskRequest summary{.question = "Resumen de la reunión", .mode = "meeting_summary"};
    summary.transcript =
        "[10:01] Tú: good morning\n[10:02] Ellos: the launch of the new shop moves to October\n"
        "[10:03] Tú: then the shop launch needs a new budget in October\n";
    EXPECT_THAT(answered(summary),
                StartsWith("The sentences that say most of it, quoted as they stand:\n- “["));
}

TEST(Extraction, SaysWhatTakesALanguageModel) {
    const Picture shot{.format = Picture::Format::png, .base64 = "AAAA"};
    EXPECT_EQ(needed({.question = "escribe un poema", .selection = "El mar."}), composing);
    EXPECT_EQ(needed({.question = "Translate this", .selection = "El mar."}), composing);
    EXPECT_EQ(needed({.question = "¿qué pone aquí?", .screenshot = shot}), picture);
    EXPECT_EQ(needed({.question = "What is the capital of Peru?"}), noMaterial);
    EXPECT_EQ(needed({.question = "", .selection = " \n"}), noMaterial);
    EXPECT_EQ(needed({.question = "¿cuánto pesa la Luna?", .selection = "El mar es azul."}), notFound);
    EXPECT_EQ(
        needed({.question = "Consejo", .mode = "meeting_live", .transcript = "[10:00] Ellos: ¿cuánto es?"}),
        advice);
    for (const auto reason : {composing, picture, noMaterial, notFound, advice, rewriting}) {
        EXPECT_THAT(message({reason}, Language::spanish), HasSubstr("modelo de lenguaje"));
        EXPECT_THAT(message({reason}, Language::english), HasSubstr("language model"));
    }
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
