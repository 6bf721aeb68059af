#pragma once

#include "cloud/AccountStore.h"
#include "cloud/DorixAPI.h"
#include "cloud/OwnService.h"
#include "fakes/FakeAudioEngine.h"
#include "fakes/FakeDesktop.h"
#include "fakes/FakeHttpClient.h"
#include "fakes/FakeKeys.h"
#include "fakes/RenamedFolders.h"
#include "fakes/TemporaryFolder.h"
#include "fakes/dictation/FakeSpeechInput.h"
#include "fakes/memory/TestMemory.h"
#include "memory/embedding/EmbeddingModel.h"
#include "platform/ArchiveUnpacker.h"
#include "platform/CompanionService.h"
#include "platform/Keychain.h"
#include "settings/SettingsForm.h"

#include <filesystem>
#include <string>
#include <utility>

namespace dorix {

/// What the settings show and change, over ports that the test works.
struct SettingsBench {
    /// Both must outlive it. `shown` is where things are said to lie; the data are in a folder of the test's.
    SettingsBench(Executor& main, UserDefaults& userDefaults, std::filesystem::path shown,
                  ModelCatalogue offered = ModelCatalogue::packaged())
        : executor(main), defaults(userDefaults), catalogue(std::move(offered)), place(std::move(shown)) {}

    SettingsForm::Parts parts() {
        return {.executor = executor,
                .settings = settings,
                .keys = keyboard,
                .account = account,
                .own = own,
                .models = &modelServer,
                .speechInput = speech,
                .speech = {.executor = executor,
                           .settings = settings,
                           .audio = audio,
                           .models = models,
                           .installer = installer,
                           .installs = installs,
                           .server = server,
                           .hasSystemRecogniser = false},
                .memory = {.executor = executor,
                           .memory = memory,
                           .model = embeddingModel,
                           .folderPanel = folderPanel,
                           .home = "/home/marta"},
                .privacy = {.executor = executor,
                            .permissions = permissions,
                            .history = history,
                            .memory = memory,
                            .urls = urls,
                            .speechServer = settings.speechServer,
                            .data = place,
                            .settings = place / "defaults.json",
                            .service = place / "dorix-service",
                            .secrets = place / "secrets.json"},
                .showAccount = [this] { ++accountsShown; }};
    }

    Executor& executor;
    UserDefaults& defaults;
    const ModelCatalogue catalogue;
    const std::filesystem::path place;
    TemporaryFolder folder;
    FakeLoginItem loginItem;
    FakeKeyEventMonitors keyboard{executor};
    FakeAudioEngineFactory audio;
    FakePrivacyGrants grants;
    FakeUrlOpener urls;
    FakeHttpClient http;
    MemoryKeychain keychain;
    UnavailableCompanionService companion;
    RenamedFolders folders;
    UnavailableArchiveUnpacker unpacker;
    FakeSpeechInput speech{executor};
    SettingsStore settings{defaults, loginItem, SystemLanguages{}};
    Permissions permissions{executor, grants};
    HistoryStore history{folder.path() / "dorix.sqlite"};
    SpeechModels models{folder.path() / "models", {}, settings.speechModels};
    ModelInstaller installer{
        {executor, http, unpacker, folders}, catalogue, folder.path(), settings.speechMirrors, 0,
        FileFetch::Patience{.attempts = 1}};
    ModelInstalls installs{executor, models, installer};
    SpeechServer server{executor, settings, keychain};
    FakeFolderPanel folderPanel;
    TestMemory remembered{
        executor,
        defaults,
        history,
        folder.path() / "memory.sqlite",
        {.home = "/home/marta", .documentFolders = {"/home/marta/Documentos", "/home/marta/Escritorio"}}};
    MemoryStore& memoryStore = remembered.store;
    MemoryController& memory = remembered.memory;
    EmbeddingModel embeddingModel{{executor, http, folders},
                                  catalogueEmbedding(),
                                  folder.path(),
                                  settings.speechMirrors,
                                  FileFetch::Patience{.attempts = 1}};
    DorixAPI api{executor, http, keychain, std::nullopt};
    AccountStore account{executor, api, keychain, defaults, "Mesa"};
    OwnService own{executor, http, companion, api, account};
    ModelServer modelServer{executor, settings, http, keychain, [](int) { return false; }};
    int accountsShown = 0;
    SettingsForm form{parts()};
};

}  // namespace dorix
