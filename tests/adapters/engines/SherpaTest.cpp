#include "base/Error.h"
#include "base/Json.h"
#include "fakes/TemporaryFolder.h"
#include "fakes/ToneSpeech.h"
#include "linux/jail/Confinement.h"
#include "recogniser/sherpa/PartialPace.h"
#include "recogniser/sherpa/SherpaEngines.h"
#include "recogniser/sherpa/SherpaParameters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <random>
#include <span>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace dorix::recogniser {
namespace {

namespace fs = std::filesystem;
using Random = std::mt19937;

/// What is understood of an utterance, joined as the program joins it.
class Heard final : public Results {
 public:
    void partial(const std::string& text) override {
        EXPECT_NE(text, partials.empty() ? "" : partials.back());
        partials.push_back(text);
    }
    void final(const std::string& text) override {
        if (!finals.empty()) whole += ' ';
        whole += text;
        finals.push_back(text);
        partials.emplace_back();
    }

    std::string whole;
    std::vector<std::string> finals;
    std::vector<std::string> partials;
};

Json recordOf(const fs::path& folder) { return Json::parse(std::ifstream(folder / "model.json")); }

/// With numbers as the program hands them over.
std::map<std::string, std::string> parametersIn(const Json& record) {
    std::map<std::string, std::string> parameters;
    for (const auto& [name, value] : record.value("parameters", Json::object()).items())
        parameters[name] = value.is_string() ? value.get<std::string>() : value.dump();
    return parameters;
}

ModelRequest request(const fs::path& folder) {
    const auto record = recordOf(folder);
    return {.engine = record.at("engine"),
            .kind = record.at("kind"),
            .language = "es",
            .folder = folder,
            .files = record.at("files"),
            .sha256 = record.at("sha256"),
            .parameters = parametersIn(record),
            .engineFolder = DORIX_SPEECH_ENGINE};
}

/// In pieces as they may come.
Heard transcribe(Engine& engine, const std::vector<float>& samples, Random& random) {
    Heard heard;
    engine.begin(heard);
    for (std::span<const float> left(samples); !left.empty();) {
        const auto count = std::uniform_int_distribution<std::size_t>(1, Engine::sampleRate / 2)(random);
        engine.accept(left.first(std::min(count, left.size())));
        left = left.subspan(std::min(count, left.size()));
    }
    engine.finish();
    return heard;
}

std::string refusal(const ModelRequest& model) {
    try {
        makeSherpaEngine(model);
        return {};
    } catch (const Error& error) {
        return error.localizedDescription();
    }
}

enum class End { understood, misunderstood, refused, died, hung };

/// What comes of a model, in a process of its own.
End endOf(const ModelRequest& model, const std::function<void()>& prepare = [] {}) {
    const auto child = ::fork();
    if (child == 0) {
        std::freopen("/dev/null", "w", stderr);
        ::alarm(60);
        try {
            prepare();
            Random random(1);
            ToneSpeech speech;
            for (const auto& piece : ToneSpeech::pieces) speech.say(piece);
            const auto heard = transcribe(*makeSherpaEngine(model), speech.samples(), random);
            ::_exit(static_cast<int>(heard.whole == speech.text() ? End::understood : End::misunderstood));
        } catch (const std::exception& error) {
            ::_exit(static_cast<int>(*error.what() != '\0' ? End::refused : End::died));
        }
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    if (WIFSIGNALED(status)) return WTERMSIG(status) == SIGALRM ? End::hung : End::died;
    return WEXITSTATUS(status) > static_cast<int>(End::died) ? End::died
                                                             : static_cast<End>(WEXITSTATUS(status));
}

const fs::path streamingModel = fs::path(DORIX_TONE_MODELS) / "tones-streaming";
const fs::path offlineModel = fs::path(DORIX_TONE_MODELS) / "tones-offline";

class SherpaTest : public testing::Test {
 protected:
    void SetUp() override {
        if (fs::exists(DORIX_SPEECH_ENGINE)) return;
        // NOLINTNEXTLINE(concurrency-mt-unsafe)
        if (std::getenv("DORIX_DEMAND_SPEECH_ENGINE") != nullptr)
            FAIL() << "tools/fetch-speech-engine did not run";
        GTEST_SKIP() << "no speech engine: tools/fetch-speech-engine";
    }

    /// A model that can be changed.
    fs::path copied(const fs::path& model) {
        const auto folder = temporary.path() / std::to_string(random());
        fs::copy(model, folder);
        return folder;
    }

    TemporaryFolder temporary;
    Random random{20261122};
};

TEST_F(SherpaTest, EveryWordIsUnderstoodWhereverTheSoundIsCut) {
    const auto engine = makeSherpaEngine(request(streamingModel));
    for (int sentence = 0; sentence < 30; ++sentence) {
        ToneSpeech speech;
        for (int piece = 0; piece < 25; ++piece) speech.sayAny(random);
        const auto heard = transcribe(*engine, speech.samples(), random);
        EXPECT_EQ(heard.whole, speech.text());
        EXPECT_GT(heard.partials.size(), 10U);
    }
}

TEST_F(SherpaTest, ALongDictationComesInPartsThatLoseNothing) {
    const auto engine = makeSherpaEngine(request(streamingModel));
    ToneSpeech speech;
    for (int piece = 0; piece < 600; ++piece) {
        speech.sayAny(random);
        if (piece % 7 == 0) speech.pause(std::uniform_real_distribution(0.0, 4.0)(random));
    }
    const auto heard = transcribe(*engine, speech.samples(), random);
    EXPECT_EQ(heard.whole, speech.text());
    EXPECT_GT(heard.finals.size(), 20U);
}

TEST_F(SherpaTest, SilenceIsNoTextAndAnAbandonedUtteranceIsForgotten) {
    const auto engine = makeSherpaEngine(request(streamingModel));
    EXPECT_THAT(transcribe(*engine, {}, random).partials, testing::IsEmpty());
    EXPECT_THAT(transcribe(*engine, std::vector<float>(80000), random).partials, testing::IsEmpty());
    ToneSpeech dropped;
    dropped.sayAny(random);
    Heard nobody;
    engine->begin(nobody);
    engine->accept(dropped.samples());
    engine->abandon();
    ToneSpeech next;
    next.say(ToneSpeech::pieces[0], 0.2);
    EXPECT_EQ(transcribe(*engine, next.samples(), random).whole, "hola");
}

TEST_F(SherpaTest, WholeUtterancesAreUnderstoodAndLongOnesCutWhereItIsQuiet) {
    const auto engine = makeSherpaEngine(request(offlineModel));
    EXPECT_THAT(transcribe(*engine, {}, random).finals, testing::IsEmpty());
    EXPECT_THAT(transcribe(*engine, {0.1F}, random).finals, testing::IsEmpty());
    for (int sentence = 0; sentence < 30; ++sentence) {
        ToneSpeech speech;
        for (int piece = 0; piece < 25; ++piece) speech.sayAny(random);
        EXPECT_EQ(transcribe(*engine, speech.samples(), random).whole, speech.text());
    }
    ToneSpeech speech;
    for (int word = 0; word < 400; ++word) {
        speech.say(ToneSpeech::pieces[word % 2 == 0 ? 0 : 3]);
        if (word % 20 == 19) speech.pause(0.4);
    }
    const auto heard = transcribe(*engine, speech.samples(), random);
    EXPECT_EQ(heard.whole, speech.text());
    EXPECT_GE(heard.finals.size(), 3U);
}

/// Of a minute's talk, on a computer that works so long on every second of sound, and how much of the time it
/// works.
std::pair<int, double> partialsAndWork(double secondsOfWork) {
    PartialPace pace;
    pace.restart(0);
    int partials = 0;
    double work = 0;
    double now = 0;
    while (now < 60) {
        now += 0.1;
        const auto size = static_cast<std::size_t>(now * Engine::sampleRate);
        if (!pace.isDue(now, size)) continue;
        const auto begin = now;
        now += secondsOfWork * begin;
        work += now - begin;
        pace.worked(begin, now, size);
        ++partials;
    }
    return {partials, work};
}

TEST(PartialPaceTest, PartialTextsComeAsOftenAsTheComputerDoesThemByTheWay) {
    EXPECT_GT(partialsAndWork(0.001).first, 50);
    const auto [partials, work] = partialsAndWork(0.1);
    EXPECT_GT(partials, 5);
    EXPECT_LT(work, 20);
    EXPECT_LE(partialsAndWork(3).first, 1);
}

TEST_F(SherpaTest, ItNeedsNoMoreThanAJailHas) {
    Confinement jail{.readable = systemLibraries(), .memory = 512UZ << 20U};
    jail.readable.insert(jail.readable.end(), {streamingModel, DORIX_SPEECH_ENGINE});
    EXPECT_EQ(endOf(request(streamingModel), [&] { std::ignore = confine(jail); }), End::understood);
    jail.readable.pop_back();
    EXPECT_EQ(endOf(request(streamingModel), [&] { std::ignore = confine(jail); }), End::refused);
}

TEST_F(SherpaTest, DamagedFilesAreRefusedBeforeTheyAreLoaded) {
    for (const auto* name : {"encoder.onnx", "decoder.onnx", "joiner.onnx", "tokens.txt"}) {
        const auto model = copied(streamingModel);
        std::fstream file(model / name, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(100);
        file.put('~');
        file.close();
        EXPECT_THAT(refusal(request(model)), testing::HasSubstr(name));
        fs::resize_file(model / name, 90);
        EXPECT_THAT(refusal(request(model)), testing::HasSubstr(name));
        fs::remove(model / name);
        EXPECT_THAT(refusal(request(model)), testing::HasSubstr(name));
    }
}

/// Whoever puts a model there by hand need not give checksums.
TEST_F(SherpaTest, WithoutChecksumsDamageCostsTheProcessAtMost) {
    const auto isSurvivable = testing::AnyOf(End::refused, End::died);
    for (const auto& original : {streamingModel, offlineModel}) {
        const auto endAfter = [&](const std::function<void(const fs::path&)>& damage) {
            const auto folder = copied(original);
            auto model = request(folder);
            model.sha256.clear();
            damage(folder);
            return endOf(model);
        };
        const auto write = [](const fs::path& file, const std::string& text) { std::ofstream(file) << text; };
        const auto flip = [](const fs::path& path) {
            std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
            file.seekp(static_cast<std::streamoff>(fs::file_size(path) / 2));
            file.put('~');
        };
        EXPECT_EQ(endAfter([](const auto&) {}), End::understood);
        for (const auto* name : {"encoder.onnx", "decoder.onnx", "joiner.onnx"}) {
            SCOPED_TRACE(original.string() + ": " + name);
            EXPECT_THAT(endAfter([&](auto& it) { write(it / name, ""); }), isSurvivable);
            EXPECT_THAT(endAfter([&](auto& it) { write(it / name, "<html>no</html>"); }), isSurvivable);
            EXPECT_THAT(endAfter([&](auto& it) { fs::resize_file(it / name, 300); }), isSurvivable);
            // It may make no difference, or one that nobody can see.
            EXPECT_NE(endAfter([&](auto& it) { flip(it / name); }), End::hung);
        }
        EXPECT_THAT(endAfter([](auto& it) { fs::rename(it / "joiner.onnx", it / "encoder.onnx"); }),
                    isSurvivable);
        EXPECT_THAT(endAfter([&](auto& it) { write(it / "tokens.txt", "<blk> 0\n"); }), isSurvivable);
        EXPECT_THAT(endAfter([&](auto& it) { write(it / "tokens.txt", "a b c\n\x01\x02\n"); }), isSurvivable);
    }
}

TEST_F(SherpaTest, AnotherLibraryIsRefused) {
    const auto install = [&](const std::string& name, const std::string& record) {
        const auto folder = temporary.path() / name;
        fs::create_directories(folder / "lib");
        for (const auto* file : {"libonnxruntime.so", "libsherpa-onnx-c-api.so"}) {
            fs::create_symlink(fs::path(DORIX_SPEECH_ENGINE) / file, folder / "lib" / file);
        }
        if (!record.empty()) std::ofstream(folder / "engine.json") << record;
        auto model = request(streamingModel);
        model.engineFolder = folder;
        return model;
    };
    EXPECT_EQ(refusal(install("by hand", "")), "");
    EXPECT_THAT(refusal(install("old", R"({"version":"1.13.7","sha256":{}})")),
                testing::HasSubstr("version"));
    EXPECT_THAT(
        refusal(install("changed", R"({"version":"1.13.8","sha256":{"lib/libsherpa-onnx-c-api.so":"00"}})")),
        testing::HasSubstr("libsherpa-onnx-c-api.so"));
    EXPECT_THAT(refusal(install("incomplete", R"({"version":"1.13.8","sha256":{}})")),
                testing::HasSubstr("engine.json"));
    EXPECT_THAT(refusal(install("unreadable", "{")), testing::HasSubstr("engine.json"));

    auto model = install("flipped", "");
    const auto runtime = model.engineFolder / "lib/libonnxruntime.so";
    fs::remove(runtime);
    fs::copy_file(DORIX_OTHER_SPEECH_ENGINE, runtime);
    EXPECT_THAT(refusal(model), testing::HasSubstr("libonnxruntime.so"));

    model = install("another", "");
    fs::remove(model.engineFolder / "lib/libsherpa-onnx-c-api.so");
    EXPECT_THAT(refusal(model), testing::HasSubstr("not installed"));
    fs::copy_file(DORIX_OTHER_SPEECH_ENGINE, model.engineFolder / "lib/libsherpa-onnx-c-api.so");
    EXPECT_THAT(refusal(model), testing::HasSubstr("another version"));
}

TEST_F(SherpaTest, OnlyKnownParametersGoToTheLibrary) {
    const auto refusalOf = [&](const std::string& name, const std::string& value) {
        auto model = request(streamingModel);
        model.parameters[name] = value;
        return refusal(model);
    };
    EXPECT_EQ(refusalOf("blank_penalty", "0.5"), "");
    EXPECT_THAT(refusalOf("decoding_method", "beam"), testing::HasSubstr("decoding_method"));
    EXPECT_THAT(refusalOf("model_type", "lstm"), testing::HasSubstr("lstm"));
    EXPECT_THAT(refusalOf("model_type", "nemo_transducer"), testing::HasSubstr("nemo_transducer"));
    for (const auto* value : {"", "nan", "-1", "1e9", "1x"}) {
        EXPECT_THAT(refusalOf("paddingSeconds", value), testing::HasSubstr("paddingSeconds"));
    }
    auto model = request(streamingModel);
    model.kind = "embedded";
    EXPECT_THAT(refusal(model), testing::HasSubstr("embedded"));
}

TEST(SherpaParametersTest, EveryModelOfTheCatalogueHasSome) {
    const auto catalogue = Json::parse(std::ifstream(DORIX_SPEECH_CATALOGUE));
    int models = 0;
    for (const auto& entry : catalogue.at("models")) {
        const ModelRequest model{.kind = entry.at("kind"), .parameters = parametersIn(entry)};
        EXPECT_NO_THROW(SherpaParameters{model}) << entry.at("id");
        ++models;
    }
    EXPECT_GT(models, 5);
}

}  // namespace
}  // namespace dorix::recogniser
