#include "base/Json.h"
#include "service/ai/Requests.h"

#include <gtest/gtest.h>

namespace dorix::service {

namespace {

using enum RequestError::Problem;

// One white pixel each.
constexpr auto png =
    "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAAAAAA6fptVAAAACklEQVR4nGP4DwABAQEAsTj2pQAAAABJRU5ErkJggg==";
constexpr auto jpeg =
    "/9j/4AAQSkZJRgABAQAAAQABAAD/2wBDAAMCAgMCAgMDAwMEAwMEBQgFBQQEBQoHBwYIDAoMDAsKCwsNDhIQDQ4RDgsLEBYQERMUFRUV"
    "DA8XGBYUGBIUFRT/wAALCAABAAEBAREA/8QAFAABAAAAAAAAAAAAAAAAAAAACf/EABQQAQAAAAAAAAAAAAAAAAAAAAD/2gAIAQEAAD8A"
    "VN//2Q==";

Json writeBody() {
    return {{"transcript", "hola"}, {"appName", "Mail"}, {"tone", "neutral"}, {"allowAsk", false}};
}

RequestError writeError(Json changed) {
    auto body = writeBody();
    body.merge_patch(changed);
    const auto parsed = parseWriteRequest(body.dump());
    return parsed ? RequestError{} : parsed.error();
}

RequestError error(RequestError::Problem problem, std::string field) {
    return {.problem = problem, .field = std::move(field)};
}

std::string nested(std::size_t depth) {
    return "{\"transcript\":" + std::string(depth, '[') + std::string(depth, ']') + "}";
}

}  // namespace

TEST(Requests, AreReadWhole) {
    auto body = writeBody();
    body.merge_patch({{"allowAsk", true},
                      {"windowTitle", std::string(600, 'w')},
                      {"signatureName", "Ana"},
                      {"screenshot", jpeg},
                      {"editableFocus", false},
                      {"style", {{"notes", "breve"}, {"examples", {"uno", "dos", "tres", "cuatro"}}}},
                      {"later", {{"version", 2}}}});
    const WriteRequest expected{.transcript = "hola",
                                .appName = "Mail",
                                .tone = "neutral",
                                .allowAsk = true,
                                .windowTitle = std::string(500, 'w'),
                                .signatureName = "Ana",
                                .screenshot = Picture{.format = Picture::Format::jpeg, .base64 = jpeg},
                                .editableFocus = false,
                                .styleNotes = "breve",
                                .styleExamples = {"uno", "dos", "tres"}};
    EXPECT_EQ(parseWriteRequest(body.dump()), expected);

    Json ask{{"question", "¿qué?"}, {"appName", "DORIX"}, {"memory", Json::array()}};
    ask["transcript"] = "inicio " + std::string(400'000, 'x');
    ask["document"] = {{"name", "a.pdf"}, {"text", "texto"}};
    for (int i = 1; i <= 15; ++i) {
        ask["memory"].push_back({{"n", i}, {"title", "t"}, {"date", "2026-01-02"}, {"text", "x"}});
    }
    const auto asked = parseAskRequest(ask.dump());
    ASSERT_TRUE(asked);
    EXPECT_EQ(asked->memory.size(), 12U);
    EXPECT_EQ(asked->memory.back().n, 12);
    EXPECT_EQ(asked->transcript, std::string(400'000, 'x')) << "its end counts";
    EXPECT_EQ(asked->document->text, "texto");
    EXPECT_FALSE(asked->selection);
}

TEST(Requests, AreRefusedWithTheNameOfWhatIsWrong) {
    EXPECT_EQ(writeError({{"transcript", nullptr}}), error(missing, "transcript"));
    EXPECT_EQ(writeError({{"transcript", 7}}), error(wrongType, "transcript"));
    EXPECT_EQ(writeError({{"tone", "sarcastico"}}), error(unknown, "tone"));
    EXPECT_EQ(writeError({{"allowAsk", "true"}}), error(wrongType, "allowAsk"));
    EXPECT_EQ(writeError({{"style", {{"notes", ""}, {"examples", {1}}}}}),
              error(wrongType, "style.examples"));
    EXPECT_EQ(writeError({{"transcript", std::string(200'001, 'x')}}), error(tooLong, "transcript"));
    for (const auto* picture : {"", "aG9sYQ==", "not base64!", "/9j/", "iVBORw0KGgo="}) {
        EXPECT_EQ(writeError({{"screenshot", picture}}), error(notPicture, "screenshot")) << picture;
    }
    EXPECT_EQ(writeError({{"screenshot", png}}), RequestError{}) << "no error";

    for (const auto& body : {std::string(), std::string("[]"), std::string("{\"transcript\":\"\xFF\"}"),
                             std::string("{} {}"), nested(200'000), std::string(200'000, '[')}) {
        EXPECT_EQ(parseWriteRequest(body).error(), error(notJson, "")) << body.substr(0, 30);
    }
    const auto memory = parseAskRequest(R"({"question":"q","appName":"","memory":[{"text":1}]})");
    EXPECT_EQ(memory.error(), error(wrongType, "memory.text"));
    const Json transform{{"instruction", "lista"}, {"selection", std::string(60'001, 'x')}};
    EXPECT_EQ(parseTransformRequest(transform.dump()).error(), error(tooLong, "selection"));

    EXPECT_EQ(message(error(missing, "tone"), Language::spanish), "Falta «tone».");
    EXPECT_EQ(message(error(missing, "tone"), Language::english), "“tone” is missing.");
}

}  // namespace dorix::service
