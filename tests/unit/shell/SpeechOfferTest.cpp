#include "adapters/models/ServedModel.h"
#include "fakes/Eventually.h"
#include "fakes/FakeHttpClient.h"
#include "fakes/RenamedFolders.h"
#include "fakes/dictation/DictationBench.h"
#include "shell/SpeechOffer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>

namespace dorix {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::StartsWith;

class SpeechOfferTest : public testing::Test, protected DictationBench {
 protected:
    /// A catalogue with one model, for Spanish.
    void offerModel(bool isLicenceClear) {
        catalogue = ModelCatalogue::parse(served.catalogue("https://models.invalid/",
                                                           "https://models.invalid/", isLicenceClear))
                        .value();
        installer = std::make_unique<ModelInstaller>(ModelInstaller::Tools{executor, http, unpacker, folders},
                                                     catalogue, home.path(), settings.speechMirrors, 0,
                                                     FileFetch::Patience{.attempts = 1});
        installs = std::make_unique<ModelInstalls>(executor, models, *installer);
        installs->onModelsChanged = [this] { ++installed; };
        offer = std::make_unique<SpeechOffer>(executor, state, settings, models, *installer, *installs,
                                              controller, progress);
    }
    /// All files are there already, from a time before.
    void haveFiles() const {
        fs::create_directories(home.path() / "engines/sherpa-onnx-1");
        for (const auto* library : {"one.so", "two.so"})
            std::ofstream(home.path() / "engines/sherpa-onnx-1" / library) << library;
        const auto parts = home.path() / "models/.downloads/noise";
        fs::create_directories(parts);
        for (const auto& [path, file] : catalogue.models().front().files)
            fs::copy_file(served.folder.path() / path, parts / path);
    }
    std::string first() const {
        const auto menu = offer->menu();
        return menu.empty() ? "" : menu.front().label;
    }
    void choose() const { offer->menu().front().handler(); }
    HUDPhase hud() const { return state.hud.get(); }

    ServedModel served;
    TemporaryFolder home;
    Observable<std::optional<double>> progress;
    SpeechModels models{home.path() / "models", {}, settings.speechModels};
    FakeHttpClient http;
    CopyingUnpacker unpacker;
    RenamedFolders folders;
    ModelCatalogue catalogue;
    std::unique_ptr<ModelInstaller> installer;
    std::unique_ptr<ModelInstalls> installs;
    std::unique_ptr<SpeechOffer> offer;
    int installed = 0;
};

TEST_F(SpeechOfferTest, WhatIsMissingIsToldBehindTheErrorAndInstalledFromTheMenu) {
    offerModel(true);
    EXPECT_EQ(first(), "Instalar el dictado en Español · 4 MB");
    offer->languageMissing();
    controller.flash(HUDPhase::info("otra cosa"), 1);
    executor.advanceBy(2);
    EXPECT_EQ(hud(), HUDPhase::hidden()) << "the press was a tap: nothing went wrong for the user";
    controller.flash(HUDPhase::error("no disponible"), 3.5);
    executor.advanceBy(3.6);
    EXPECT_THAT(hud().text, StartsWith("Para dictar en Español falta un modelo de voz (4 MB). Habla "));
    executor.advanceBy(11);
    EXPECT_EQ(hud(), HUDPhase::hidden());

    haveFiles();
    choose();
    EXPECT_EQ(first(), "Cancelar la descarga del modelo de voz · 0 %");
    EXPECT_TRUE(eventually(executor, [&] { return installed == 1; }));
    executor.runPosted();
    EXPECT_EQ(hud(), HUDPhase::done("Ya puedes dictar en Español"));
    EXPECT_EQ(progress.get(), std::nullopt);
    EXPECT_EQ(first(), "");
    EXPECT_EQ(models.choose("es-ES")->id, "noise");
    EXPECT_TRUE(http.exchanges.empty());
    settings.language.set("it-IT");
    EXPECT_EQ(first(), "") << "there is nothing for that one";

    settings.language.set("es-ES");
    models.setAside(models.folder() / "noise");
    std::filesystem::resize_file(models.folder() / "noise/tokens.txt", 5);
    EXPECT_EQ(models.choose("es-ES"), std::nullopt);
    EXPECT_THAT(first(), StartsWith("Instalar el dictado en Español"));
    choose();
    EXPECT_TRUE(eventually(executor, [&] { return !http.exchanges.empty(); }))
        << "what has gone bad is fetched anew";
}

TEST_F(SpeechOfferTest, ALicenceThatIsNotClearIsAskedAboutFirst) {
    offerModel(false);
    choose();
    EXPECT_THAT(hud().text, HasSubstr("se publica como MIT, pero su autor no deja clara la licencia"));
    EXPECT_EQ(first(), "Aceptar y descargar · 4 MB");
    EXPECT_FALSE(progress.get());
    choose();
    EXPECT_TRUE(eventually(executor, [&] { return !http.exchanges.empty(); }));
    EXPECT_EQ(progress.get(), 0);

    choose();  // it is "cancel" now
    EXPECT_TRUE(eventually(executor, [&] { return !progress.get(); }));
    EXPECT_TRUE(http.last().isOver());
    EXPECT_EQ(first(), "Instalar el dictado en Español · 4 MB") << "another time it is asked again";
    choose();
    choose();
    EXPECT_TRUE(eventually(executor, [&] { return http.exchanges.size() == 2; }));
    http.last().fail();
    EXPECT_TRUE(eventually(executor, [&] { return !progress.get(); }));
    EXPECT_EQ(hud(), HUDPhase::error("No se ha podido descargar el modelo: no hay conexión con el "
                                     "servidor. Lo que ya ha llegado se conserva."));
    EXPECT_EQ(installed, 0);
}

}  // namespace
}  // namespace dorix
