#include "adapters/harness/EventLoop.h"
#include "adapters/harness/OtherProgram.h"
#include "adapters/harness/WebServer.h"
#include "adapters/models/ServedModel.h"
#include "download/InstallError.h"
#include "linux/curl/CurlHttpClient.h"
#include "linux/xdg/DurableFolders.h"
#include "linux/xdg/MemoryMapper.h"
#include "memory/embedding/EmbeddingModel.h"
#include "speech/models/ModelInstaller.h"
#include "speech/models/SpeechModels.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <utility>

namespace dorix {
namespace {

namespace fs = std::filesystem;
using Case = InstallError::Case;
using Licence = ModelInstaller::Licence;

class ModelInstallerTest : public testing::Test {
 protected:
    /// The model's files from below `base`.
    void use(const std::string& base, std::optional<std::string> engineBase = std::nullopt) {
        installer.reset();
        text = served.catalogue(base, engineBase.value_or(server.url("plain/")), isLicenceClear);
        catalogue = ModelCatalogue::parse(text).value();
        installer = std::make_unique<ModelInstaller>(
            ModelInstaller::Tools{loop.main, *http, unpacker, folders}, catalogue, home.path(), mirrors,
            memory, FileFetch::Patience{.stall = 0.5, .attempts = 3, .pause = 0.01});
        installer->onLetGo = [this](const std::string& id) { letGo.push_back(id); };
    }

    TaskHandle<void> begin(Licence licence = Licence::notAsked) {
        progress.clear();
        return scope->spawn(installer->install("noise", licence, [this](double now) {
            EXPECT_GE(now, progress.empty() ? 0 : progress.back());
            progress.push_back(now);
        }));
    }

    /// What came of it: nothing where it went well.
    std::optional<Case> end(const TaskHandle<void>& task) {
        EXPECT_TRUE(loop.runUntil([&] { return task.isDone(); }, 60));
        std::optional<Case> failure;
        TaskScope reader(loop.main);
        const auto read = reader.spawn([](TaskHandle<void> from, auto& into) -> Task<void> {
            try {
                co_await from;
            } catch (const InstallError& error) {
                EXPECT_FALSE(error.localizedDescription().empty());
                into = error.kind();
            }
        }(task, failure));
        EXPECT_TRUE(loop.runUntil([&] { return read.isDone(); }));
        return failure;
    }
    std::optional<Case> install(Licence licence = Licence::notAsked) { return end(begin(licence)); }
    std::optional<Case> remove() { return end(scope->spawn(installer->remove("noise"))); }

    /// The model is in its folder as it was served, and nothing else lies about.
    bool isRight() const {
        const auto model = readSpeechModel(place);
        if (!model) return false;
        for (const auto& [role, path] : model->files) {
            if (contents(place / path) != contents(served.folder.path() / path)) return false;
            if (sha256OfFile(place / path) != model->sha256.at(path)) return false;
        }
        const auto engine =
            Json::parse(contents(home.path() / "engines/sherpa-onnx-1/engine.json"), nullptr, false);
        return engine.is_object() && engine.at("version") == "1" &&
               engine.at("sha256").at("one.so") ==
                   sha256OfFile(served.folder.path() / "engine.tar").value() &&
               fs::is_empty(home.path() / "models/.downloads") &&
               fs::is_empty(home.path() / "engines/.downloads");
    }
    std::uint64_t heldOfEncoder() const {
        std::error_code error;
        const auto size = fs::file_size(parts / "encoder.onnx", error);
        return error ? 0 : size;
    }

    /// What the server was asked for: behaviour, name, and from where on.
    std::vector<std::tuple<std::string, std::string, std::uint64_t>> asked() {
        const auto answer = loop.result(http->send({.url = server.url("asked/")}));
        return Json::parse(answer.body);
    }
    std::uint64_t lastStart(const std::string& name) {
        std::uint64_t start = 0;
        for (const auto& [behaviour, file, first] : asked()) {
            if (file.ends_with(name)) start = first;
        }
        return start;
    }

    EventLoop loop;
    ServedModel served;
    WebServer server{{DORIX_MODEL_SERVER, served.folder.path().string()}};
    TemporaryFolder home;
    const fs::path place = home.path() / "models/noise";
    const fs::path parts = home.path() / "models/.downloads/noise";
    std::unique_ptr<CurlHttpClient> http = std::make_unique<CurlHttpClient>();
    CopyingUnpacker unpacker;
    DurableFolders folders;
    bool isLicenceClear = true;
    Observable<Mirrors> mirrors;
    std::uint64_t memory = 0;
    std::string text;
    ModelCatalogue catalogue;
    std::unique_ptr<ModelInstaller> installer;
    std::vector<double> progress;
    std::vector<std::string> letGo;
    std::unique_ptr<TaskScope> scope = std::make_unique<TaskScope>(loop.main);
};

TEST_F(ModelInstallerTest, AModelIsInstalledWithItsEngineChosenAndRemoved) {
    use(server.url("plain/"));
    const Observable<SpeechModelChoices> choices;
    const SpeechModels models(home.path() / "models", {}, choices);
    const auto needs = installer->needs(catalogue.models().front());
    EXPECT_EQ(needs, (ModelNeeds{.download = 3'271'300, .disk = 3'671'300, .memory = 6'000'000}));

    EXPECT_EQ(install(), std::nullopt);
    EXPECT_TRUE(isRight());
    EXPECT_EQ(models.choose("es-MX")->folder, place);
    EXPECT_EQ(progress.front(), 0);
    EXPECT_EQ(progress.back(), 1);
    EXPECT_EQ(fs::status(place / "encoder.onnx").permissions() & fs::perms::group_all, fs::perms::none);

    const auto requests = asked().size();
    EXPECT_EQ(install(), std::nullopt);
    EXPECT_EQ(asked().size(), requests) << "it is there";
    fs::resize_file(place / "tokens.txt", 5);
    EXPECT_EQ(install(), std::nullopt);
    EXPECT_TRUE(isRight()) << "what was damaged is replaced";
    EXPECT_EQ(unpacker.calls, 1);
    fs::resize_file(home.path() / "engines/sherpa-onnx-1/one.so", 5);
    EXPECT_EQ(install(), std::nullopt);
    EXPECT_TRUE(isRight());
    EXPECT_EQ(unpacker.calls, 2) << "so is a damaged engine";

    letGo.clear();
    EXPECT_EQ(remove(), std::nullopt);
    EXPECT_THAT(letGo, testing::ElementsAre("noise"));
    EXPECT_EQ(models.choose("es"), std::nullopt);
    EXPECT_FALSE(fs::exists(place));
    EXPECT_EQ(remove(), std::nullopt);
    EXPECT_EQ(end(scope->spawn(installer->remove("../engines"))), Case::notOurs);
    EXPECT_EQ(end(scope->spawn(installer->install("other", Licence::accepted, nullptr))), Case::unknownModel);
}

TEST_F(ModelInstallerTest, WhatTheNetworkDoesIsOvercome) {
    for (const auto* behaviour : {"cut", "stall", "busy", "cutsAndStartsAnew"}) {
        SCOPED_TRACE(behaviour);
        use(server.url(std::string(behaviour) + "/"), server.url(std::string(behaviour) + "/"));
        EXPECT_EQ(install(), std::nullopt);
        EXPECT_TRUE(isRight());
        fs::remove_all(home.path() / "models");
        fs::remove_all(home.path() / "engines");
    }
}

TEST_F(ModelInstallerTest, WhatIsNotTheFileIsRefused) {
    const std::initializer_list<std::pair<const char*, Case>> behaviours{
        {"wrong", Case::wrongContents},     {"short", Case::notGiven},
        {"endless", Case::wrongContents},   {"page", Case::notGiven},
        {"missing", Case::notGiven},        {"liesAboutRange", Case::unreachable},
        {"liesAboutLength", Case::notGiven}};
    for (const auto& [behaviour, expected] : behaviours) {
        SCOPED_TRACE(behaviour);
        use(server.url(std::string(behaviour) + "/"));
        EXPECT_EQ(install(), expected);
        EXPECT_FALSE(fs::exists(place));
        if (expected == Case::wrongContents) EXPECT_EQ(heldOfEncoder(), 0U) << "nothing is left of it";
    }
    use(server.url("plain/"));
    EXPECT_EQ(install(), std::nullopt);
    EXPECT_TRUE(isRight()) << "and nothing of all that stands in the way";
}

TEST_F(ModelInstallerTest, APartIsGoneOnWithWhateverCameBetween) {
    use(server.url("plain/"), server.url("missing/"));
    EXPECT_EQ(install(), Case::notGiven);
    fs::create_directories(parts);
    const auto whole = contents(served.folder.path() / "encoder.onnx");
    std::ofstream(parts / "encoder.onnx", std::ios::binary) << whole.substr(0, 2'000'000);
    EXPECT_EQ(installer->needs(catalogue.models().front()).download, 1'271'300U);
    use(server.url("page/"));
    EXPECT_EQ(install(), Case::notGiven);
    EXPECT_EQ(heldOfEncoder(), 2'000'000U) << "a page in its place costs nothing";
    use(server.url("plain/"));
    EXPECT_EQ(install(), std::nullopt);
    EXPECT_TRUE(isRight());
    EXPECT_EQ(lastStart("encoder.onnx"), 2'000'000U);

    // A part that the power failed under, and one that is longer than the file.
    for (const std::size_t size : {2'000'000U, 3'000'000U, 3'000'001U}) {
        EXPECT_EQ(remove(), std::nullopt);
        fs::create_directories(parts);
        std::ofstream(parts / "encoder.onnx", std::ios::binary) << std::string(size, '\0');
        EXPECT_EQ(install(), std::nullopt);
        EXPECT_TRUE(isRight());
        EXPECT_EQ(lastStart("encoder.onnx"), 0U);
    }
}

TEST_F(ModelInstallerTest, TwoWhoWantTheSameWaitForOne) {
    use(server.url("slow/"));
    const auto one = begin();
    EXPECT_TRUE(loop.runUntil([&] { return heldOfEncoder() > 0; }));
    auto second = std::make_unique<TaskScope>(loop.main);
    double told = 0;
    const auto other =
        second->spawn(installer->install("noise", Licence::notAsked, [&](double now) { told = now; }));
    one.cancel();
    EXPECT_TRUE(loop.runUntil([&] { return one.isDone() && told > 0; })) << "the other one goes on";
    EXPECT_EQ(end(other), std::nullopt);
    EXPECT_TRUE(isRight());
    EXPECT_EQ(std::ranges::count(asked(), std::tuple("slow", "encoder.onnx", 0U)), 1);

    // Another program is kept out; who is destroyed lets go.
    EXPECT_EQ(remove(), std::nullopt);
    const auto third = begin();
    EXPECT_TRUE(loop.runUntil([&] { return heldOfEncoder() > 0; }));
    EXPECT_EQ(DurableFolders().hold(parts), nullptr);
    scope = std::make_unique<TaskScope>(loop.main);
    EXPECT_TRUE(loop.runUntil([&] { return DurableFolders().hold(parts) != nullptr; }));
    const auto hold = folders.hold(parts);
    EXPECT_EQ(install(), Case::underWayElsewhere);
}

TEST_F(ModelInstallerTest, CancellingLeavesWhatTheNextTimeGoesOnWith) {
    use(server.url("slow/"));
    const auto task = begin();
    EXPECT_TRUE(loop.runUntil([&] { return heldOfEncoder() > 100'000; }));
    installer->cancel("noise");
    EXPECT_TRUE(loop.runUntil([&] { return task.isDone(); }));
    EXPECT_FALSE(fs::exists(place));
    loop.runFor(0.1);
    const auto held = heldOfEncoder();
    EXPECT_GT(held, 100'000U);
    EXPECT_EQ(install(), std::nullopt);
    EXPECT_TRUE(isRight());
    EXPECT_EQ(lastStart("encoder.onnx"), held);

    // Removing ends it as well, and leaves nothing at all.
    EXPECT_EQ(remove(), std::nullopt);
    const auto again = begin();
    EXPECT_TRUE(loop.runUntil([&] { return heldOfEncoder() > 0; }));
    EXPECT_EQ(remove(), std::nullopt);
    EXPECT_TRUE(loop.runUntil([&] { return again.isDone(); }));
    EXPECT_FALSE(fs::exists(place) || fs::exists(parts));
}

TEST_F(ModelInstallerTest, ALicenceThatIsNotClearIsAskedAboutAndTooLittleIsTold) {
    isLicenceClear = false;
    memory = 10'000'000;
    use(server.url("plain/"));
    const auto suggestion = installer->suggestionFor("es-AR");
    ASSERT_TRUE(suggestion);
    EXPECT_FALSE(suggestion->best.isLicenceClear);
    EXPECT_FALSE(suggestion->best.hasMemory);
    EXPECT_TRUE(suggestion->best.hasSpace);
    EXPECT_EQ(installer->suggestionFor("it-IT"), std::nullopt);
    EXPECT_EQ(install(), Case::licenceNotAccepted);
    EXPECT_TRUE(asked().empty());
    EXPECT_EQ(install(Licence::accepted), std::nullopt);
    EXPECT_TRUE(isRight());
    EXPECT_EQ(installer->needs(catalogue.models().front()).disk, 3'071'300U) << "the engine is there";

    auto large = Json::parse(text);
    for (auto& file : large["models"][0]["files"]) file["bytes"] = 1'000'000'000'000'000;
    large["models"][0]["licence"]["clear"] = true;
    catalogue = ModelCatalogue::parse(large.dump()).value();
    EXPECT_FALSE(installer->suggestionFor("es")->best.hasSpace);
    EXPECT_EQ(install(), Case::tooLittleSpace);
}

TEST_F(ModelInstallerTest, AnEngineThatCannotBeUnpackedLeavesNoHalf) {
    use(server.url("plain/"));
    unpacker.fails = true;
    EXPECT_EQ(install(), Case::notUnpacked);
    EXPECT_FALSE(fs::exists(home.path() / "engines/sherpa-onnx-1") || fs::exists(place));
    unpacker.fails = false;
    EXPECT_EQ(install(), std::nullopt);
    EXPECT_TRUE(isRight());
    EXPECT_EQ(std::ranges::count(asked(), std::tuple("plain", "engine.tar", 0U)), 1)
        << "the archive was there";
}

TEST_F(ModelInstallerTest, NobodyIsLedOutOfTheSafe) {
    const Certificate certificate;
    const WebServer secure({DORIX_MODEL_SERVER, served.folder.path().string()}, &certificate);
    const WebServer other({DORIX_MODEL_SERVER, served.folder.path().string()}, &certificate);
    use(secure.url("plain/"));
    EXPECT_EQ(install(), Case::unreachable) << "nobody answers for that certificate";
    installer.reset();
    http = std::make_unique<CurlHttpClient>(certificate.file);
    use(secure.url("to/" + server.url("plain/")));
    EXPECT_EQ(install(), Case::unreachable);
    EXPECT_FALSE(fs::exists(parts / "encoder.onnx"));
    use(secure.url("to/" + other.url("plain/")));
    EXPECT_EQ(install(), std::nullopt);
    EXPECT_TRUE(isRight()) << "another host is no harm";
}

TEST_F(ModelInstallerTest, ACompanyHasItsOwnPlaceForModels) {
    mirrors.set({{"https://models.invalid/a", "no address"},
                 {"https://models.invalid/", server.url("plain/")},
                 {"https://models.invalid/b/", server.url("missing/")}});
    use("https://models.invalid/a/", "https://models.invalid/c/");
    EXPECT_EQ(install(), std::nullopt);
    EXPECT_TRUE(isRight());
}

TEST_F(ModelInstallerTest, KilledAtAnyMomentItGoesOnToTheRightModel) {
    use(server.url("slow/"), server.url("slow/"));
    const auto file = home.path() / "catalogue.json";
    std::ofstream(file) << text;
    std::mt19937 random(4);  // NOLINT(bugprone-random-generator-seed)
    for (int round = 0; round < 4; ++round) {
        for (int life = 0; life < 8; ++life) {
            OtherProgram program({DORIX_INSTALL_MODEL, file.string(), home.path().string(), "noise"});
            loop.runFor(std::uniform_real_distribution(0.03, 0.3)(random));
            program.signal(SIGKILL);
            program.wait();
            if (fs::exists(place))
                EXPECT_TRUE(readSpeechModel(place) && contents(place / "joiner.onnx").size() == 70'000);
        }
        OtherProgram last({DORIX_INSTALL_MODEL, file.string(), home.path().string(), "noise"});
        EXPECT_EQ(last.wait(), 0) << last.output();
        EXPECT_TRUE(isRight());
        fs::remove_all(home.path() / "models");
        fs::remove_all(home.path() / "engines");
    }
}

TEST_F(ModelInstallerTest, TheModelOfTheMemoryComesAndGoesTheSameWay) {
    EmbeddingCatalogueEntry entry{.name = "static", .licence = "MIT", .files = {}};
    const auto serve = [&](const std::string& how) {
        for (const auto* name : {"encoder.onnx", "tokens.txt"}) {
            const auto file = served.folder.path() / name;
            entry.files[name] = {.url = server.url(how + "/") + name,
                                 .bytes = fs::file_size(file),
                                 .sha256 = sha256OfFile(file).value()};
        }
    };
    serve("missing");
    EmbeddingModel model({loop.main, *http, folders}, entry, home.path(), mirrors,
                         {.stall = 0.5, .attempts = 2, .pause = 0.01});
    int letGoOf = 0;
    model.onLetGo = [&] { ++letGoOf; };
    const auto isIdle = [&] { return !model.state().get().progress && !model.state().get().isRemoving; };
    const auto isThere = [&] { return fs::exists(model.folder()); };
    model.install();
    EXPECT_TRUE(loop.runUntil(isIdle));
    EXPECT_TRUE(model.state().get().failure.contains("404")) << model.state().get().failure;

    serve("slow");
    model.install();
    EXPECT_TRUE(loop.runUntil([&] { return model.bytesToFetch() < model.bytes(); }));
    model.cancel();
    EXPECT_TRUE(loop.runUntil(isIdle));
    EXPECT_EQ(model.state().get(), EmbeddingModel::State()) << "it was the user's wish";
    EXPECT_FALSE(isThere());

    serve("plain");
    model.install();
    EXPECT_TRUE(loop.runUntil(isIdle));
    EXPECT_EQ(model.state().get(), EmbeddingModel::State{.isInstalled = true});
    EXPECT_EQ(letGoOf, 2) << "before the folder changes, and once it has";
    EXPECT_TRUE(fs::is_empty(home.path() / "embedding/.downloads"));
    const auto mapped = MemoryMapper().map(model.folder() / "encoder.onnx");
    ASSERT_TRUE(mapped);
    EXPECT_TRUE(mapped->bytes() == contents(served.folder.path() / "encoder.onnx"));
    EXPECT_FALSE(MemoryMapper().map(model.folder()));

    model.remove();
    EXPECT_TRUE(loop.runUntil(isIdle));
    EXPECT_EQ(model.state().get(), EmbeddingModel::State());
    EXPECT_EQ(letGoOf, 4);
    EXPECT_FALSE(isThere());
    EXPECT_TRUE(mapped->bytes() == contents(served.folder.path() / "encoder.onnx"))
        << "who reads it still can";
}

}  // namespace
}  // namespace dorix
