#include "adapters/models/ServedModel.h"
#include "base/async/ManualExecutor.h"
#include "fakes/Eventually.h"
#include "fakes/MemoryUserDefaults.h"
#include "fakes/settings/SettingsBench.h"
#include "localdata/Language.h"
#include "platform/KeyCodes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace dorix {
namespace {

using Kind = SettingsRow::Kind;
using Tone = SettingsRow::Tone;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

HistoryItem itemCalled(const std::string& id) {
    HistoryItem item;
    item.id = id;
    item.app = "Notas";
    item.title = item.query = item.answer = "Salgo ya.";
    return item;
}

class SettingsFormTest : public testing::Test {
 protected:
    SettingsFormTest() { installLanguage(defaults, {}); }
    ~SettingsFormTest() override { uninstallLanguage(); }

    SettingsRow row(const std::string& id) const {
        for (const auto& one : form().rows()) {
            if (one.id == id) return one;
        }
        ADD_FAILURE() << "no row " << id;
        return {};
    }
    std::vector<std::string> ids() const {
        std::vector<std::string> result;
        for (const auto& one : form().rows()) result.push_back(one.id);
        return result;
    }
    static std::vector<std::string> buttons(const SettingsRow& of) {
        std::vector<std::string> result;
        for (const auto& button : of.buttons) result.push_back(button.id);
        return result;
    }
    void open(const std::string& section) {
        form().open();
        form().showSection(section);
        executor.runPosted();
    }
    SettingsForm& form() const { return bench->form; }

    ManualExecutor executor;
    MemoryUserDefaults defaults{Json{{"appLanguage", "es"}, {"language", "es-ES"}}};
    std::unique_ptr<SettingsBench> bench = std::make_unique<SettingsBench>(executor, defaults, "/data/DORIX");
};

TEST_F(SettingsFormTest, EveryControlOfEveryPageShowsWhatWasChosenAtOnceAndKeepsIt) {
    form().open();
    int worked = 0;
    for (std::size_t page = 0; page < form().titles().size(); ++page) {
        form().showSection(page);
        for (const auto& before : SettingsRows(form().rows())) {
            SCOPED_TRACE(before.id);
            if (before.kind == Kind::toggle) {
                form().toggle(before.id, !before.isOn);
                EXPECT_NE(row(before.id).isOn, before.isOn);
            } else if (before.kind == Kind::choice && before.options.size() > 1) {
                form().choose(before.id, before.options.back().id);
                EXPECT_EQ(row(before.id).chosen, before.options.back().id);
            } else if (before.kind == Kind::text && before.id != "speech.server" &&
                       before.id != "writing.model-server") {
                form().edit(before.id, "Marta");
                form().commit(before.id, "Marta");
                EXPECT_EQ(row(before.id).text, "Marta");
            } else {
                continue;
            }
            ++worked;
        }
    }
    EXPECT_GE(worked, 10);
    const SettingsStore& kept = bench->settings;
    const SettingsStore read(defaults, bench->loginItem, {});
    EXPECT_EQ(read.pushToTalkKey.get(), PushToTalkKey::fn);
    EXPECT_EQ(read.language.get(), kept.language.get());
    EXPECT_EQ(read.appLanguage.get(), "en");
    EXPECT_EQ(read.engine.get(), WritingEngine::local);
    EXPECT_FALSE(read.adaptTone.get() || read.playSounds.get());
    EXPECT_EQ(read.signatureName.get() + read.styleNotes.get(), "MartaMarta");
    EXPECT_TRUE(read.paused.get() && read.launchesAtLogin());
}

TEST_F(SettingsFormTest, TheKeyLightsUpWhileItIsDownAndOnlyWhileItIsLookedAt) {
    EXPECT_EQ(bench->keyboard.installed(), 0);
    open("general");
    using namespace modifier;
    bench->keyboard.flags(keycode::rightOption, option | deviceRightOption);
    EXPECT_TRUE(row("general.key-test").isOn);
    EXPECT_EQ(row("general.key-test").lamp, "⌥ Opción derecha: pulsada");
    bench->keyboard.flags(keycode::leftOption, option | deviceRightOption);
    bench->keyboard.flags(keycode::rightOption, 0);
    EXPECT_FALSE(row("general.key-test").isOn);

    form().choose("general.key", "rightControl");
    bench->keyboard.flags(keycode::rightOption, option | deviceRightOption);
    EXPECT_FALSE(row("general.key-test").isOn) << "it is not that key any more";
    bench->keyboard.send(KeyEventMask::flagsChanged, {keycode::rightControl, control | deviceRightControl},
                         true);
    EXPECT_TRUE(row("general.key-test").isOn) << "also over the settings' own window";
    form().showSection("about");
    EXPECT_EQ(bench->keyboard.installed(), 0);
}

TEST_F(SettingsFormTest, WhatFailsIsToldAtItsPlace) {
    open("general");
    bench->loginItem.refuses = true;
    form().toggle("general.login", true);
    EXPECT_EQ(row("general.login").status, "No se ha podido cambiar: refused.");
    EXPECT_FALSE(row("general.login").isOn);
    bench->loginItem.refuses = false;
    form().toggle("general.login", true);
    EXPECT_EQ(row("general.login").status, "");
    EXPECT_TRUE(row("general.login").isOn);

    EXPECT_EQ(row("general.model").tone, Tone::warning) << "nothing understands Spanish here";
    form().press("general.model", "models");
    EXPECT_THAT(ids(), Contains("speech.serving"));
}

TEST_F(SettingsFormTest, FindsInBothLanguagesWhateverTheAccents) {
    form().words = [](const std::string& text) { return text == "Ajustes" ? "Preferencias" : text; };
    form().open();
    for (const auto* query : {"microfono", "MICRÓFONO", "microphone"}) {
        form().search(query);
        EXPECT_THAT(ids(), Contains("speech.microphone")) << query;
        EXPECT_THAT(ids(), testing::Not(Contains("general.sounds"))) << query;
    }
    form().search("manten tecla");
    EXPECT_THAT(ids(), Contains("general.key"));
    form().search("iniciar sesion");
    EXPECT_THAT(ids(), ElementsAre("found.general", "general.login"));
    form().toggle("general.login", true);
    EXPECT_TRUE(row("general.login").isOn) << "it works where it was found";
    form().search("zxqw");
    EXPECT_TRUE(form().rows().empty());
    EXPECT_TRUE(form().stepBack());
    EXPECT_THAT(ids(), Contains("general.key"));
    EXPECT_FALSE(form().stepBack()) << "nothing is left but to close";
}

TEST_F(SettingsFormTest, TheHistoryGoesWithTheSecondWordAndWithNothingElse) {
    for (const auto* id : {"1", "2", "3"}) bench->history.add(itemCalled(id), HistoryStore::Persist::yes);
    open("privacy");
    const auto count = [this] { return bench->history.count(); };
    EXPECT_EQ(row("privacy.history").label, "3 elementos guardados solo en este equipo.");
    form().press("privacy.history", "clear");
    EXPECT_EQ(row("privacy.history").label, "¿Borrar todo el historial?");
    EXPECT_EQ(row("privacy.history").status,
              "Se eliminarán 3 elementos de este equipo. No se puede deshacer.");
    EXPECT_EQ(count(), 3U);
    EXPECT_TRUE(form().stepBack());
    form().press("privacy.history", "confirm");
    EXPECT_EQ(count(), 3U) << "nobody had asked";
    form().press("privacy.history", "clear");
    form().press("privacy.history", "back");
    form().press("privacy.history", "clear");
    form().showSection("about");
    form().showSection("privacy");
    EXPECT_THAT(buttons(row("privacy.history")), ElementsAre("clear")) << "whoever went away has not agreed";
    form().press("privacy.history", "clear");
    bench->history.add(itemCalled("4"), HistoryStore::Persist::yes);
    form().press("privacy.history", "confirm");
    EXPECT_EQ(count(), 0U);
    EXPECT_FALSE(row("privacy.history").buttons.front().isAvailable);
}

TEST_F(SettingsFormTest, AFolderThatCannotBeOpenedIsToldAndItsNameIsWritten) {
    open("privacy");
    form().press("privacy.folder", "open");
    EXPECT_THAT(bench->urls.opened, ElementsAre("file:///data/DORIX"));
    EXPECT_TRUE(
        eventually(executor, [&] { return row("privacy.stored-history").label == "Historial · 0 kB"; }));
    EXPECT_EQ(row("privacy.stored-history").description, "/data/DORIX/dorix.sqlite");
}

TEST_F(SettingsFormTest, FoldersComeByTheDesktopsDialogOrByTheirPathAndGoAtOnce) {
    const auto listed = [this] {
        std::vector<std::string> result;
        for (const auto& one : form().rows()) {
            if (one.id.starts_with("memory.folder.")) result.push_back(one.label);
        }
        return result;
    };
    const std::string added = "memory.folder./mnt/Obra";
    open("memory");
    EXPECT_THAT(listed(), ElementsAre("~/Documentos", "~/Escritorio"));
    form().ownWindow = [] { return 7; };
    form().press("memory.add-folder", "add");
    EXPECT_EQ(bench->folderPanel.request.ownWindow, 7U);
    EXPECT_FALSE(row("memory.add-folder").buttons.front().isAvailable) << "one dialog is enough";
    bench->folderPanel.answer.complete({.wasAsked = true, .folder = "/mnt/Obra"});
    executor.runPosted();
    EXPECT_THAT(listed(), ElementsAre("~/Documentos", "~/Escritorio", "/mnt/Obra"));
    bench->memory.addFolder("/mnt/Obra");
    EXPECT_THAT(listed(), testing::SizeIs(3));
    form().press(added, "remove");
    EXPECT_THAT(listed(), ElementsAre("~/Documentos", "~/Escritorio"));

    form().press("memory.add-folder", "add");
    bench->folderPanel.answer.complete({.wasAsked = true, .folder = {}});
    executor.runPosted();
    EXPECT_TRUE(row("memory.add-folder").buttons.front().isAvailable) << "thought better of it";
    form().press("memory.add-folder", "add");
    bench->folderPanel.answer.complete({.wasAsked = true, .folder = "/mnt/\xFF"});
    executor.runPosted();
    EXPECT_EQ(row("memory.add-folder").tone, Tone::wrong) << "it would not be there after a start";
    EXPECT_THAT(listed(), testing::SizeIs(2));
    form().press("memory.add-folder", "add");
    EXPECT_EQ(row("memory.add-folder").tone, Tone::plain);
    bench->folderPanel.answer.complete({});
    executor.runPosted();
    form().commit("memory.folder-path", "Obra");
    EXPECT_EQ(row("memory.folder-path").tone, Tone::wrong);
    form().commit("memory.folder-path", " ~/Obra ");
    EXPECT_THAT(listed(), ElementsAre("~/Documentos", "~/Escritorio", "~/Obra"));
    EXPECT_EQ(defaults.value("memoryFolders"),
              Json::array({"/home/marta/Documentos", "/home/marta/Escritorio", "/home/marta/Obra"}));
}

TEST_F(SettingsFormTest, WhatIsRememberedIsCountedAndForgottenWhenItIsMeant) {
    const auto run = [this](Task<void> task) {
        TaskScope scope(executor);
        const auto handle = scope.spawn(std::move(task));
        EXPECT_TRUE(eventually(executor, [&] { return handle.isDone(); }));
    };
    const auto rows = [&] {
        std::size_t count = 0;
        run([](MemoryStore& store, std::size_t& into) -> Task<void> {
            into = (co_await store.activitySince(0)).size();
        }(bench->memoryStore, count));
        return count;
    };
    run(bench->memoryStore.upsert({.path = "/a/Obra.txt", .title = "Obra.txt", .kind = "file"}));
    run(bench->memoryStore.recordActivity("Notas", {}, "Obra", {}));
    open("memory");
    EXPECT_TRUE(eventually(executor, [&] {
        executor.advanceBy(0.1);
        return row("memory.documents").description.starts_with("1 documento en tu memoria.");
    }));
    form().press("memory.clear-activity", "clear");
    EXPECT_EQ(row("memory.clear-activity").label, "¿Borrar tu actividad registrada?");
    EXPECT_TRUE(form().stepBack());
    form().press("memory.clear-activity", "confirm");
    EXPECT_EQ(rows(), 1U) << "nobody had asked";
    form().press("memory.clear-activity", "clear");
    form().press("memory.clear-activity", "confirm");
    EXPECT_TRUE(eventually(executor, [&] { return row("memory.clear-activity").tone == Tone::good; }));
    EXPECT_EQ(rows(), 0U);
    form().press("memory.index", "clear");
    EXPECT_TRUE(eventually(executor, [&] {
        executor.advanceBy(0.1);
        return row("memory.index").status == "Índice borrado";
    }));
    EXPECT_THAT(row("memory.documents").description, StartsWith("0 documentos"));

    run(bench->memoryStore.recordActivity("Notas", {}, "Obra", {}));
    form().showSection("privacy");
    form().press("privacy.memory", "clear");
    form().press("privacy.memory", "back");
    form().press("privacy.memory", "confirm");
    EXPECT_EQ(rows(), 1U);
    form().press("privacy.memory", "clear");
    form().press("privacy.memory", "confirm");
    EXPECT_TRUE(eventually(executor, [&] { return rows() == 0; }));
}

TEST_F(SettingsFormTest, TheMemorysModelIsFetchedAndItsAbsenceIsTold) {
    open("memory");
    EXPECT_THAT(ids(), testing::Not(Contains("memory.unavailable")));
    bench->memory.available.set(false);
    EXPECT_THAT(ids(), Contains("memory.unavailable"));
    EXPECT_THAT(row("memory.model").buttons.front().label, StartsWith("Descargar · "));
    form().press("memory.model", "install");
    EXPECT_TRUE(eventually(executor, [&] { return !bench->http.exchanges.empty(); }));
    EXPECT_EQ(buttons(row("memory.model")), std::vector<std::string>{"cancel"});
    EXPECT_EQ(row("memory.model").progress, 0.0);
    bench->http.last().fail();
    EXPECT_TRUE(eventually(executor, [&] { return !row("memory.model").progress; }));
    EXPECT_EQ(row("memory.model").tone, Tone::wrong);
}

TEST_F(SettingsFormTest, AMicrophoneThatIsAbsentIsKeptAndSaidSo) {
    bench->audio.microphones.set({{"usb", "Micro USB"}, {"builtin", "Micro interno"}});
    open("speech");
    form().choose("speech.microphone", "usb");
    EXPECT_EQ(bench->settings.microphone.get(), "usb");
    bench->audio.microphones.set({{"builtin", "Micro interno"}});
    EXPECT_EQ(row("speech.microphone").status,
              "«Micro USB» no está conectado: mientras tanto se usa el que elija el sistema.");
    EXPECT_EQ(row("speech.microphone").chosen, "usb");
    EXPECT_EQ(row("speech.microphone").options.size(), 3U);
    bench->audio.microphones.set({{"usb", "Micro USB"}});
    EXPECT_EQ(row("speech.microphone").status, "");
}

TEST_F(SettingsFormTest, TheTestShowsWhatIsHeardAndLetsGoOfTheMicrophoneForADictation) {
    open("speech");
    form().press("speech.test", "test");
    executor.runPosted();
    EXPECT_TRUE(bench->speech.isOn && row("speech.test").showsLevel);
    bench->speech.partial.set("hola");
    bench->speech.level.set(0.5F);
    EXPECT_EQ(row("speech.test").quote, "hola");
    EXPECT_EQ(form().level().get(), 0.5F);
    bench->speech.transcript = "Hola, Marta.";
    form().press("speech.test", "test");
    executor.advanceBy(0.1);
    EXPECT_EQ(row("speech.test").quote, "Hola, Marta.");
    EXPECT_FALSE(bench->speech.isOn || row("speech.test").showsLevel);

    form().press("speech.test", "test");
    executor.runPosted();
    form().microphoneTest().end();
    EXPECT_FALSE(bench->speech.isOn) << "inside the call";
    EXPECT_FALSE(row("speech.test").showsLevel);
    bench->speech.log.clear();
    bench->speech.partial.set("lo dictado");
    form().close();
    EXPECT_THAT(bench->speech.log, ElementsAre()) << "the dictation goes on";

    open("speech");
    EXPECT_EQ(row("speech.test").quote, "");
    form().press("speech.test", "test");
    executor.advanceBy(MicrophoneTest::longestTest + 1);
    EXPECT_FALSE(bench->speech.isOn) << "somebody has forgotten it";
    form().microphoneTest().mayListen = [] { return false; };
    form().press("speech.test", "test");
    EXPECT_FALSE(bench->speech.isOn);
    EXPECT_THAT(row("speech.test").status, StartsWith("Ahora no se puede probar"));
}

TEST_F(SettingsFormTest, WithoutAModelTheLevelShowsAllTheSame) {
    open("speech");
    bench->speech.startError = "falta el modelo";
    form().press("speech.test", "test");
    executor.runPosted();
    EXPECT_EQ(row("speech.test").status, "falta el modelo");
    EXPECT_TRUE(bench->audio.deliver(std::vector<float>(480, 0.5F)));
    executor.runPosted();
    EXPECT_GT(form().level().get(), 0.8F);
    form().showSection("general");
    EXPECT_FALSE(bench->audio.isRunning());
    EXPECT_EQ(form().level().get(), 0);
}

TEST_F(SettingsFormTest, AModelIsAskedAboutFetchedStoppedAndItsFailureKept) {
    const ServedModel served;
    bench.reset();
    const auto catalogue =
        ModelCatalogue::parse(served.catalogue("https://models.invalid/", "https://models.invalid/", false));
    bench = std::make_unique<SettingsBench>(executor, defaults, "/data/DORIX", catalogue.value());
    open("speech");
    const std::string noise = "speech.model.noise";
    EXPECT_EQ(row("speech.serving").tone, Tone::warning);
    form().search("descargar");
    form().press(noise, "install");
    EXPECT_THAT(row(noise).status, HasSubstr("su autor no deja clara la licencia"));
    EXPECT_TRUE(form().stepBack());
    EXPECT_THAT(buttons(row(noise)), ElementsAre("install"));
    form().press(noise, "confirm");
    form().press(noise, "install");
    form().press(noise, "confirm");
    EXPECT_EQ(row(noise).progress, 0.0);
    EXPECT_TRUE(eventually(executor, [&] { return !bench->http.exchanges.empty(); }));
    form().press(noise, "cancel");
    EXPECT_TRUE(eventually(executor, [&] { return !row(noise).progress; }));
    EXPECT_EQ(row(noise).tone, Tone::warning);

    form().press(noise, "install");
    form().press(noise, "confirm");
    EXPECT_TRUE(eventually(executor, [&] { return bench->http.exchanges.size() == 2; }));
    bench->http.last().fail();
    EXPECT_TRUE(eventually(executor, [&] { return !row(noise).progress; }));
    EXPECT_THAT(row(noise).status, StartsWith("No se ha podido descargar el modelo"));
    EXPECT_EQ(row(noise).tone, Tone::wrong);
    form().search("");
    form().choose("speech.language", "it-IT");
    EXPECT_THAT(ids(), testing::Not(Contains(noise)));
}

TEST_F(SettingsFormTest, AServerCountsOnceItsAddressIsWholeAndItsKeyIsASecret) {
    open("speech");
    form().edit("speech.server", "htt");
    form().commit("speech.server", "velmar.example");
    EXPECT_EQ(row("speech.server").status, "La dirección del servidor de transcripción no vale.");
    EXPECT_EQ(bench->settings.speechServer.get(), "");
    form().commit("speech.server", " https://velmar.example/v1 ");
    EXPECT_EQ(bench->settings.speechServer.get(), "https://velmar.example/v1");
    EXPECT_EQ(row("speech.server").status, "Lo que dictes se enviará a velmar.example para transcribirlo.");
    form().commit("speech.server-key", "s3cret");
    executor.runPosted();
    EXPECT_EQ(bench->server.request("es")->server.key, "s3cret");
    EXPECT_FALSE(defaults.value("speech-server-key"));
    form().commit("speech.server", "https://otra.example/v1");
    EXPECT_EQ(bench->server.request("es")->server.key, "") << "it is not that server's";
    EXPECT_THAT(ids(), Contains("speech.others-key"));
    form().edit("speech.server", "https://velmar.example/v1");
    form().showSection("general");
    form().showSection("speech");
    EXPECT_EQ(row("speech.server-key").text, "s3cret") << "what was being written counts";
    form().commit("speech.server", "");
    form().press("speech.others-key", "remove");
    EXPECT_THAT(ids(), testing::Not(Contains("speech.others-key")));
    form().commit("speech.server", "https://velmar.example/v1");
    EXPECT_EQ(row("speech.server-key").text, "");
    EXPECT_THAT(row("speech.serving").status, HasSubstr("velmar.example"));
    form().showSection("writing");
    EXPECT_EQ(row("writing.model").tone, Tone::warning) << "there is no server of models";
    form().commit("writing.model-server", "localhost");
    EXPECT_EQ(row("writing.model-server").tone, Tone::wrong);
    form().commit("writing.model-server", "https://velmar.example");
    EXPECT_EQ(bench->settings.modelServer.get(), "https://velmar.example");
    EXPECT_THAT(row("writing.model-server").status, StartsWith("Lo que dictes se enviará a velmar.example"));
    EXPECT_THAT(row("writing.engine").options[1].note,
                StartsWith("Lo que dictes se enviará a velmar.example"));
    form().commit("writing.model-key", " s3cret ");
    executor.advanceBy(0);
    EXPECT_EQ(row("writing.model-key").text, "s3cret");
    EXPECT_EQ(bench->http.last().header("authorization"), "Bearer s3cret");
    form().commit("writing.model-server", "http://velmar.example");
    executor.advanceBy(0);
    EXPECT_EQ(bench->http.last().header("authorization"), "") << "it is not that server's";
    EXPECT_THAT(ids(), Contains("writing.others-key"));
    form().commit("writing.model-key", "s3cret");
    executor.advanceBy(0);
    EXPECT_EQ(bench->http.last().header("authorization"), "") << "anybody could read it";
    EXPECT_EQ(row("writing.model-key").tone, Tone::warning);
    form().commit("writing.model-key", "");
    executor.advanceBy(0);
    EXPECT_EQ(row("writing.model-key").tone, Tone::plain);
    form().showSection("speech");
    form().commit("speech.server", "");
    EXPECT_THAT(ids(), testing::Not(Contains("speech.server-key")));
}

TEST_F(SettingsFormTest, PagesSpeakTheLanguageOfTheAppAndPermissionsAreFollowed) {
    bench->grants.trusted = false;
    open("privacy");
    EXPECT_THAT(buttons(row("privacy.accessibility")), ElementsAre("request"));
    bench->grants.hasPanes = false;
    bench->grants.speech = SpeechAuthorizationStatus::denied;
    executor.advanceBy(1.1);
    EXPECT_EQ(row("privacy.accessibility").buttons.front().label, "Permitir") << "it can be switched on here";
    EXPECT_THAT(buttons(row("privacy.speech")), ElementsAre()) << "there is nothing to be opened";
    bench->grants.trusted = true;
    executor.advanceBy(1.1);
    EXPECT_EQ(row("privacy.accessibility").status, "Concedido");
    bench->settings.setAppLanguage("en");
    EXPECT_EQ(row("privacy.accessibility").status, "Granted");
    EXPECT_EQ(form().titles().front(), "General");
}

}  // namespace
}  // namespace dorix
