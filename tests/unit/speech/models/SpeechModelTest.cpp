#include "base/Json.h"
#include "fakes/TemporaryFolder.h"
#include "speech/models/SpeechModels.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <string>
#include <utility>

namespace dorix {
namespace {

namespace fs = std::filesystem;

const std::string digest(64, 'a');

Json streaming(const std::string& id, const std::string& language) {
    return {{"id", id},
            {"engine", "sherpa-onnx"},
            {"kind", "streaming-transducer"},
            {"languages", {language}},
            {"files",
             {{"encoder", "e.onnx"}, {"decoder", "d.onnx"}, {"joiner", "j.onnx"}, {"tokens", "t/t.txt"}}},
            {"sha256", {{"e.onnx", digest}}},
            {"parameters", {{"model_type", "zipformer2"}, {"blank_penalty", 1}}},
            {"later", true}};
}

Json embedded(const std::string& id, const std::string& language) {
    return {{"id", id},
            {"engine", "pocketsphinx"},
            {"kind", "embedded"},
            {"languages", {language}},
            {"files", {{"acoustic", "model"}, {"dictionary", "dict"}, {"language", "es.lm.bin"}}}};
}

void write(const fs::path& file, const std::string& contents) {
    fs::create_directories(file.parent_path());
    std::ofstream(file) << contents;
}

class SpeechModelTest : public testing::Test {
 protected:
    /// As somebody would put it there by hand.
    fs::path put(const Json& record) {
        const auto place = folder.path() / record.at("id").get<std::string>();
        write(place / "model.json", record.dump());
        for (const auto& [role, path] : record.at("files").items()) {
            const auto file = place / path.get<std::string>();
            write(role == "acoustic" ? file / "mdef" : file, role);
        }
        return place;
    }

    TemporaryFolder folder;
    Observable<SpeechModelChoices> choices;
    SpeechModels models{folder.path(), {}, choices};
};

TEST_F(SpeechModelTest, ARecordIsReadAndWrittenBack) {
    const auto place = put(streaming("tones", "es"));
    const auto model = readSpeechModel(place);
    ASSERT_TRUE(model) << model.error();
    EXPECT_EQ(model->fileFor("tokens"), place / "t/t.txt");
    EXPECT_EQ(model->sha256.at("e.onnx"), digest);
    EXPECT_EQ(std::get<std::string>(model->parameters.at("model_type")), "zipformer2");
    EXPECT_EQ(std::get<double>(model->parameters.at("blank_penalty")), 1);
    auto again = parseSpeechModel(speechModelText(*model));
    ASSERT_TRUE(again) << again.error();
    again->folder = place;
    EXPECT_EQ(*again, *model);
}

TEST_F(SpeechModelTest, WhatIsWrongIsRefused) {
    const std::initializer_list<std::pair<const char*, const char*>> patches{
        {R"({"id": "../tones"})", "id"},
        {R"({"id": ".tones"})", "id"},
        {R"({"engine": "other"})", "engine"},
        {R"({"kind": "embedded"})", "no models of that kind"},
        {R"({"kind": "newer"})", "kind"},
        {R"({"languages": []})", "languages"},
        {R"({"languages": ["es", "../x"]})", "language"},
        {R"({"files": {"joiner": null}})", "joiner is missing"},
        {R"({"files": {"tokens": "/etc/passwd"}})", "tokens"},
        {R"({"files": {"tokens": "a/../../b"}})", "tokens"},
        {R"({"files": {"other": "./b"}})", "other"},
        {R"({"files": {"tokens": "a\u0000b"}})", "tokens"},
        {R"({"files": 3})", "files"},
        {R"({"sha256": {"e.onnx": "abc"}})", "sha256"},
        {R"({"sha256": {"../e.onnx": "0000000000000000000000000000000000000000000000000000000000000000"}})",
         "sha256"},
        {R"({"parameters": {"debug": true}})", "parameter"},
    };
    for (const auto& [patch, words] : patches) {
        auto record = streaming("tones", "es");
        record.merge_patch(Json::parse(patch));
        const auto model = parseSpeechModel(record.dump());
        ASSERT_FALSE(model) << patch;
        EXPECT_TRUE(model.error().contains(words)) << patch << ": " << model.error();
    }
    for (const auto* text : {"", "[]", "{", "\xff", "{\"id\": \"\xff\"}"})
        EXPECT_FALSE(parseSpeechModel(text));
}

TEST_F(SpeechModelTest, AFolderIsClosedInItself) {
    const auto place = put(streaming("tones", "es"));
    fs::create_symlink("d.onnx", place / "also");
    EXPECT_TRUE(readSpeechModel(place)) << "that one stays inside";
    fs::remove(place / "e.onnx");
    EXPECT_EQ(readSpeechModel(place).error(), "the file of encoder is missing");
    fs::create_symlink("/etc/passwd", place / "e.onnx");
    EXPECT_EQ(readSpeechModel(place).error(), "a link leads out of the folder");
    fs::remove(place / "e.onnx");
    fs::create_directory(place / "e.onnx");
    EXPECT_EQ(readSpeechModel(place).error(), "the file of encoder is missing");

    const auto other = folder.path() / "other";
    fs::rename(put(streaming("named", "es")), other);
    EXPECT_EQ(readSpeechModel(other).error(), "the folder is not called as its model");
    write(other / "model.json", std::string(300'000, ' '));
    EXPECT_EQ(readSpeechModel(other).error(), "model.json is too long");
    EXPECT_EQ(readSpeechModel(folder.path()).error(), "there is no model.json");
    EXPECT_TRUE(models.installed().empty());
}

TEST_F(SpeechModelTest, TheUsersChoiceComesFirstThenTheBest) {
    EXPECT_EQ(models.choose("es-ES"), std::nullopt) << "there is not even a folder for them";
    put(embedded("words", "es"));
    EXPECT_EQ(models.choose("es-ES")->id, "words") << "it counts at once";
    auto offline = streaming("offline", "es");
    offline["kind"] = "nemo-transducer";
    put(offline);
    EXPECT_EQ(models.choose("es-ES")->id, "offline");
    auto many = streaming("all-languages", "es");
    many["languages"] = {"es", "en", "it"};
    put(many);
    put(streaming("tones", "es"));
    put(streaming(".half", "es"));
    for (const auto* language : {"es-ES", "es-MX", "es", "ES_ar"})
        EXPECT_EQ(models.choose(language)->id, "tones") << language;
    EXPECT_EQ(models.choose("it-IT")->id, "all-languages");
    EXPECT_EQ(models.choose("est"), std::nullopt);

    choices.set({{"es", "words"}, {"it", "words"}});
    EXPECT_EQ(models.choose("es-MX")->id, "words");
    EXPECT_EQ(models.choose("it-IT")->id, "all-languages") << "it does not speak that";
    fs::remove_all(folder.path() / "words");
    EXPECT_EQ(models.choose("es-MX")->id, "tones");

    models.setAside(folder.path() / "tones");
    EXPECT_EQ(models.choose("es-MX")->id, "all-languages");
    models.trust(folder.path() / "tones");
    models.isUsable = [](const SpeechModel& model) {
        return model.kind != SpeechModel::Kind::streamingTransducer;
    };
    EXPECT_EQ(models.choose("es-MX")->id, "offline");
}

TEST_F(SpeechModelTest, ThePackagesModelComesLast) {
    const TemporaryFolder package;
    const SpeechModels both(folder.path(), package.path(), choices);
    EXPECT_EQ(both.choose("en-GB"), std::nullopt);
    write(package.path() / "en-us/en-us/mdef", "");
    write(package.path() / "en-us/en-us.lm.bin", "");
    write(package.path() / "en-us/cmudict-en-us.dict", "");
    const auto english = both.choose("en-GB");
    ASSERT_TRUE(english);
    EXPECT_EQ(english->fileFor("acoustic"), package.path() / "en-us/en-us");
    EXPECT_EQ(both.choose("es-ES"), std::nullopt);
    put(embedded("an-english-one", "en"));
    EXPECT_EQ(both.choose("en-GB")->id, "an-english-one");
    choices.set({{"en", english->id}});
    EXPECT_EQ(both.choose("en-GB")->id, english->id);
}

}  // namespace
}  // namespace dorix
