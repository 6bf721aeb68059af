#pragma once

#include "fakes/FakeAudioEngine.h"
#include "fakes/FakeDesktop.h"
#include "fakes/FakeHttpClient.h"
#include "fakes/FakeKeys.h"
#include "onboarding/Onboarding.h"
#include "permissions/Permissions.h"
#include "platform/ArchiveUnpacker.h"
#include "platform/FolderPublisher.h"
#include "views/PanelBench.h"

namespace dorix::testing {

/// The first run on a computer that has what the test says. Nothing recognises any language there as yet.
struct OnboardingBench {
    OnboardingBench(Executor& executor, PanelBench& bench)
        : keyboard(executor),
          permissions(executor, grants),
          models(bench.folder.path() / "models", {}, bench.settings.speechModels),
          installer({executor, http, unpacker, folders}, ModelCatalogue::packaged(), bench.folder.path(),
                    bench.settings.speechMirrors, 0),
          installs(executor, models, installer),
          onboarding({.executor = executor,
                      .state = bench.state,
                      .settings = bench.settings,
                      .permissions = permissions,
                      .audio = audio,
                      .keyboard = keyboard,
                      .speech = {.settings = bench.settings,
                                 .models = models,
                                 .installer = installer,
                                 .installs = installs}}) {}

    FakePrivacyGrants grants;
    FakeAudioEngineFactory audio;
    FakeKeyEventMonitors keyboard;
    FakeHttpClient http;
    UnavailableArchiveUnpacker unpacker;
    UnavailableFolderPublisher folders;
    Permissions permissions;
    SpeechModels models;
    ModelInstaller installer;
    ModelInstalls installs;
    Onboarding onboarding;
};

}  // namespace dorix::testing
