#include "base/Sha256.h"
#include "localdata/TranslationTable.h"
#include "speech/models/ModelCatalogue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <regex>
#include <set>
#include <string>

namespace dorix {
namespace {

using testing::ElementsAre;

std::vector<std::string> idsFor(std::string_view language) {
    std::vector<std::string> ids;
    for (const auto* model : ModelCatalogue::packaged().forLanguage(language)) ids.push_back(model->model.id);
    return ids;
}

TEST(ModelCatalogueTest, WhatIsPartOfTheProgramIsInOrder) {
    const auto& catalogue = ModelCatalogue::packaged();
    // A revision that is a hash stays what it is.
    const std::regex pinned("https://[^/]+/[^/]+/[^/]+/resolve/[0-9a-f]{40}/.+");
    std::set<std::string> ids;
    std::map<std::string, std::string> urls;  // by checksum
    std::set<std::string_view> translated;
    for (const auto& row : translationTable()) translated.insert(row.spanish);
    for (const auto& model : catalogue.models()) {
        SCOPED_TRACE(model.model.id);
        EXPECT_TRUE(ids.insert(model.model.id).second);
        EXPECT_TRUE(translated.contains(model.line));
        EXPECT_FALSE(model.licence.empty());
        EXPECT_EQ(model.cadence > 0, model.model.kind == SpeechModel::Kind::streamingTransducer);
        EXPECT_GE(model.memory, 2 * model.bytes());
        EXPECT_EQ(model.files.size(), model.model.files.size()) << "each role has a file of its own";
        ASSERT_NE(catalogue.engineOf(model), nullptr);
        for (const auto& [path, file] : model.files) {
            EXPECT_TRUE(std::regex_match(file.url, pinned)) << file.url;
            EXPECT_TRUE(file.url.ends_with("/" + path));
            EXPECT_EQ(model.model.sha256.at(path), file.sha256);
            EXPECT_TRUE(urls.emplace(file.sha256, file.url).second || path.contains("tokens"))
                << "two of one sum";
        }
    }
    ASSERT_EQ(catalogue.engines().size(), 1U);
    const auto& engine = catalogue.engines().front();
    EXPECT_EQ(engine.id(), "sherpa-onnx-1.13.8");
    EXPECT_TRUE(engine.archive.url.ends_with("-shared-no-tts-lib.tar.bz2"))
        << "the others hold a part under the GPL";
    EXPECT_TRUE(engine.archive.url.starts_with("https://"));
}

TEST(ModelCatalogueTest, EveryLanguageHasADefaultAndAChoice) {
    EXPECT_THAT(idsFor("en-US"),
                ElementsAre("zipformer-en-2023-06-26", "kroko-en-2025-08-06", "parakeet-tdt-0.6b-v3",
                            "nemotron-3.5-streaming-560ms", "whisper-small", "whisper-base"));
    EXPECT_TRUE(ModelCatalogue::packaged().find(idsFor("en-US").front())->isLicenceClear);
    for (const auto* language : {"es-MX", "fr-FR", "de-DE"}) {
        const auto ids = idsFor(language);
        ASSERT_GE(ids.size(), 2U);
        EXPECT_TRUE(ids.front().starts_with("kroko-" + std::string(language).substr(0, 2)));
        EXPECT_FALSE(ModelCatalogue::packaged().find(ids.front())->isLicenceClear);
    }
    EXPECT_THAT(idsFor("it-IT"), ElementsAre("parakeet-tdt-0.6b-v3", "nemotron-3.5-streaming-560ms",
                                             "whisper-small", "whisper-base"));
    EXPECT_THAT(idsFor("pt-BR"), ElementsAre("parakeet-tdt-0.6b-v3"));
    EXPECT_THAT(idsFor("ja-JP"), ElementsAre());
}

TEST(ModelCatalogueTest, ChecksumsAreThoseOfEverybodyElse) {
    Sha256 sum;
    EXPECT_EQ(sum.hex(), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    sum.update("a");
    sum.update("bc");
    EXPECT_EQ(sum.hex(), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_FALSE(sha256OfFile("/nowhere"));
}

TEST(ModelCatalogueTest, AMirrorStandsForTheBeginningOfAnAddress) {
    const std::string url = "https://a.example/x/y";
    EXPECT_EQ(mirrored(url, {}), url);
    EXPECT_EQ(mirrored(url, {{"https://a.example/", "http://b/"}, {"https://a.example/x/", "http://c/d/"}}),
              "http://c/d/y");
    EXPECT_EQ(mirrored(url, {{"", "http://b/"}, {"https://a.example/", "file:///etc/"}}), url);
    EXPECT_FALSE(ModelCatalogue::parse("{}"));
    EXPECT_FALSE(ModelCatalogue::parse(R"({"engines": [], "models": [{"id": "../x"}]})"));
}

}  // namespace
}  // namespace dorix
