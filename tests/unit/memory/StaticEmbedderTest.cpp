#include "base/async/TaskScope.h"
#include "fakes/TemporaryFolder.h"
#include "memory/embedding/EmbeddingTable.h"
#include "memory/embedding/StaticEmbedder.h"
#include "memory/embedding/Tokenizer.h"
#include "unit/base/AsyncFixture.h"
#include "unit/memory/EmbeddingModelFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <functional>

namespace dorix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Numbered from 2, behind the two special ones.
const std::vector<std::pair<std::string, double>> pieces{{"▁", -2},     {"a", -3},   {"b", -3},  {"ab", -6},
                                                         {"▁ab", -7},   {"▁la", -4}, {"▁.", -4}, {"é", -5},
                                                         {"▁casa", -5}, {"casa", -9}};
enum : std::uint32_t { blank = 2, a, b, ab, blankAb, la, stop, accented, casa };

TEST(Tokenizer, TextIsNormalisedMarkedAndCutIntoTheLikeliestPieces) {
    const auto tokenizer = Tokenizer::parse(tokenizerJson(pieces).dump()).value();
    EXPECT_EQ(tokenizer.size(), 12U);
    EXPECT_THAT(tokenizer.tokens("  la \t\n casa. "), ElementsAre(la, casa, stop));
    // Full width, and an accent by itself, which goes; one that is written in one stays.
    EXPECT_THAT(tokenizer.tokens("A\xCC\x81 Ｂ é"), ElementsAre(blank, a, blank, b, blank, accented));
    EXPECT_THAT(tokenizer.tokens("ab"), ElementsAre(blankAb));
    // "ab" is as likely as "a" and "b", and was reached first.
    EXPECT_THAT(tokenizer.tokens("aab"), ElementsAre(blank, a, ab));
    // What no piece has gives nothing, whatever stands around it, and so does what is no text at all.
    EXPECT_THAT(tokenizer.tokens("zz日本a\xFF\xE3z"), ElementsAre(blank, a));
    EXPECT_THAT(tokenizer.tokens(" \n "), IsEmpty());
    EXPECT_EQ(tokenizer.tokens(std::string(100'000, 'a')).size(), 100'001U);
}

TEST(Tokenizer, BytesStandInForWhatIsUnknownWhereTheModelHasThem) {
    auto json = tokenizerJson({{"▁", -1}, {"<0xC3>", -9}, {"<0xB1>", -9}});
    json["model"]["byte_fallback"] = true;
    const auto tokenizer = Tokenizer::parse(json.dump()).value();
    EXPECT_THAT(tokenizer.tokens("ñ"), ElementsAre(2, 3, 4));
    EXPECT_THAT(tokenizer.tokens("ññ"), ElementsAre(2, 3, 4, 3, 4));
    EXPECT_THAT(tokenizer.tokens("ñx ñ"), ElementsAre(2, 2, 3, 4)) << "all bytes of a run, or none";
}

TEST(Tokenizer, WhatItCannotFollowToTheLetterIsRefused) {
    const auto refused = [](const std::function<void(Json&)>& change) {
        auto json = tokenizerJson(pieces);
        change(json);
        return !Tokenizer::parse(json.dump()).has_value();
    };
    EXPECT_FALSE(refused([](Json&) {}));
    EXPECT_TRUE(refused([](Json& json) { json["model"]["type"] = "BPE"; }));
    EXPECT_TRUE(refused([](Json& json) { json["model"]["unk_id"] = 12; }));
    EXPECT_TRUE(refused([](Json& json) { json["model"]["vocab"] = Json::array(); }));
    EXPECT_TRUE(refused([](Json& json) { json["model"]["vocab"][3] = Json::array({"x"}); }));
    EXPECT_TRUE(refused([](Json& json) { json["normalizer"] = {{"type", "Lowercase"}}; }));
    EXPECT_TRUE(
        refused([](Json& json) { json["normalizer"]["normalizers"][2]["pattern"] = {{"Regex", "a+"}}; }));
    EXPECT_TRUE(refused([](Json& json) { json["pre_tokenizer"] = {{"type", "ByteLevel"}}; }));
    EXPECT_TRUE(refused([](Json& json) { json["added_tokens"][0] = {{"content", "hola"}}; }));
    EXPECT_TRUE(
        refused([](Json& json) { json["normalizer"]["normalizers"][1]["content"] = std::string(999, 'a'); }));
    EXPECT_FALSE(Tokenizer::parse("[]").has_value());
    for (const auto* key : {"normalizer", "pre_tokenizer", "model"}) {
        const auto deep =
            "{\"" + std::string(key) + "\":" + std::string(200'000, '[') + std::string(200'000, ']') + "}";
        EXPECT_FALSE(Tokenizer::parse(deep).has_value()) << key;
    }
    EXPECT_FALSE(Tokenizer::parse(tokenizerJson(pieces).dump().substr(0, 900)).has_value());
    // A character map that leads out of itself is read no further than its end.
    auto units = characterMapBytes();
    for (std::size_t at = 4; at + 4 < units.size(); at += 4) units[at + 3] = '\x7F';
    auto json = tokenizerJson(pieces);
    json["normalizer"] = {{"type", "Precompiled"}, {"precompiled_charsmap", text::base64(units)}};
    EXPECT_THAT(Tokenizer::parse(json.dump()).value().tokens("Ab"), ElementsAre(blank, b));
}

TEST(EmbeddingTable, AFileThatIsCutOffOrLiesIsRefused) {
    const std::vector<float> numbers{1, 2, 3, 4, 5, 6};
    const auto isTable = [&](const std::string& header) {
        return EmbeddingTable::in(tensorBytes(header, numbers)).has_value();
    };
    const auto good = tensorHeader(3, 2);
    ASSERT_TRUE(isTable(good));
    const auto whole = tensorBytes(good, numbers);
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_FALSE(EmbeddingTable::in(std::string_view(whole).substr(0, size)).has_value()) << size;
    for (const auto* lie :
         {R"({"embeddings":{"dtype":"F16","shape":[3,2],"data_offsets":[0,24]}})",
          R"({"embeddings":{"dtype":"F32","shape":[3,2],"data_offsets":[0,20]}})",
          R"({"embeddings":{"dtype":"F32","shape":[4,2],"data_offsets":[0,24]}})",
          R"({"embeddings":{"dtype":"F32","shape":[0,2],"data_offsets":[0,0]}})",
          R"({"embeddings":{"dtype":"F32","shape":[4611686018427387905,4],"data_offsets":[0,16]}})",
          R"({"embeddings":{"dtype":"F32","shape":[3,2],"data_offsets":[18446744073709551608,16]}})",
          R"({"embeddings":{"dtype":"F32","shape":[6],"data_offsets":[0,24]}})",
          R"({"mapping":{"dtype":"I32","shape":[3],"data_offsets":[0,12]},)"
          R"("embeddings":{"dtype":"F32","shape":[3,2],"data_offsets":[0,24]}})",
          R"({})", R"([])"}) {
        EXPECT_FALSE(isTable(lie)) << lie;
    }
}

class CountingWork final : public BackgroundWork {
 public:
    void makeThreadIdle() override { ++idleThreads; }
    std::optional<double> batteryLeft() override { return std::nullopt; }

    std::atomic<int> idleThreads = 0;
};

class StaticEmbedderTest : public AsyncTest {
 protected:
    void writeModel(float first) {
        std::filesystem::create_directories(place);
        std::vector<float> numbers(pieces.size() * 3 + 6);
        // Of "▁la" and "▁casa".
        numbers[la * 3] = first;
        numbers[casa * 3 + 1] = 3;
        numbers[stop * 3 + 2] = std::nanf("");
        writeFile(place / "tokenizer.json", tokenizerJson(pieces).dump());
        writeFile(place / "model.safetensors", tensorBytes(tensorHeader(pieces.size() + 2, 3), numbers));
    }
    template <typename T>
    T result(Task<T> task) {
        std::optional<T> got;
        const auto running = scope.spawn([](Task<T> work, std::optional<T>& into) -> Task<void> {
            into = co_await std::move(work);
        }(std::move(task), got));
        finish(running);
        return std::move(got).value();
    }

    TemporaryFolder folder;
    std::filesystem::path place = folder.path() / "model";
    ReadingMapper mapper;
    CountingWork background;
    StaticEmbedder embedder{executor, mapper, background, place};
    TaskScope scope{executor};
};

TEST_F(StaticEmbedderTest, AVectorIsTheMeanOfTheTokensMadeAsLongAsOne) {
    EXPECT_FALSE(result(embedder.prepare()));
    writeModel(4);
    EXPECT_EQ(result(embedder.embed("la casa", Embedder::Pace::awaited)), std::nullopt);
    EXPECT_EQ(embedder.identity(), "");
    ASSERT_TRUE(result(embedder.prepare()));
    EXPECT_THAT(result(embedder.embed("la casa", Embedder::Pace::awaited)).value(),
                ElementsAre(testing::FloatEq(0.8F), testing::FloatEq(0.6F), 0));
    EXPECT_EQ(result(embedder.embed("la casa", Embedder::Pace::idle)),
              result(embedder.embed("la casa", Embedder::Pace::awaited)));
    EXPECT_EQ(background.idleThreads, 1);
    EXPECT_THAT(result(embedder.embed("a", Embedder::Pace::awaited)).value(), ElementsAre(0, 0, 0));
    EXPECT_EQ(result(embedder.embed("", Embedder::Pace::awaited)), std::nullopt);
    EXPECT_EQ(result(embedder.embed(" \n", Embedder::Pace::awaited)), std::nullopt);
    EXPECT_EQ(result(embedder.embed("la.", Embedder::Pace::awaited)), std::nullopt)
        << "a vector that is none";
}

TEST_F(StaticEmbedderTest, AModelThatIsReplacedIsAnotherOneAndADamagedOneNone) {
    writeModel(4);
    ASSERT_TRUE(result(embedder.prepare()));
    const auto identity = embedder.identity();
    embedder.letGo();
    EXPECT_EQ(embedder.identity(), "");
    writeModel(5);
    ASSERT_TRUE(result(embedder.prepare()));
    EXPECT_NE(embedder.identity(), identity);
    embedder.letGo();
    std::filesystem::resize_file(place / "model.safetensors", 100);
    EXPECT_FALSE(result(embedder.prepare()));
    writeModel(4);
    EXPECT_FALSE(result(embedder.prepare())) << "it is not read again and again";
    embedder.letGo();
    ASSERT_TRUE(result(embedder.prepare()));
    EXPECT_EQ(embedder.identity(), identity);
}

}  // namespace
}  // namespace dorix
