#pragma once

#include "base/async/ManualExecutor.h"
#include "fakes/FakeAccessibility.h"
#include "fakes/FakeAudioEngine.h"
#include "fakes/FakeDesktop.h"
#include "fakes/FakeHttpClient.h"
#include "fakes/FakeKeys.h"
#include "fakes/FakePasteboard.h"
#include "fakes/FakeSpeechRecognition.h"
#include "fakes/MemoryUserDefaults.h"
#include "fakes/TemporaryFolder.h"
#include "platform/CompanionService.h"
#include "platform/FolderPublisher.h"
#include "platform/HelperProcess.h"
#include "platform/Keychain.h"
#include "platform/Notifications.h"
#include "platform/Platform.h"
#include "platform/SessionState.h"
#include "platform/UserFiles.h"

namespace dorix {

/// A whole operating system in virtual time.
struct FakePlatform {
    TemporaryFolder folder;
    ManualExecutor executor;
    MemoryUserDefaults defaults;
    FakeKeyEventMonitors keyboard{executor};
    FakeMouseEventMonitors mouse;
    FakeHotKeyRegistrar hotKeys{executor};
    RecordingEventPoster poster;
    FakePasteboard pasteboard;
    FakeWorkspace workspace;
    FakeAccessibility accessibility;
    FakeAudioEngineFactory audio;
    FakeSpeechRecognition recognition;
    UnavailableHelperProcesses helpers;
    FakePrivacyGrants grants;
    FakeLoginItem loginItem;
    RecordingSystemSounds sounds;
    FakeProcesses processes;
    UnavailableNotifications notifications;
    FakeUrlOpener urls;
    FakeHttpClient http;
    MemoryKeychain keychain;
    UnavailableCompanionService companion;
    FakeSavePanel savePanel;
    UnavailableFileReplacer files;
    UnavailableFolderPublisher folders;
    SessionState session;
    FakeStatusItem statusItem;
    FakeApplication application;

    Platform platform() {
        return {.executor = executor,
                .defaults = defaults,
                .packagedServer = {},
                .languages = {},
                .computerName = "Mesa",
                .userData = folder.path(),
                .settingsFile = folder.path() / "defaults.json",
                .packagedSpeechModels = {},
                .keyEvents = keyboard,
                .mouseEvents = mouse,
                .hotKeys = hotKeys,
                .events = poster,
                .pasteboard = pasteboard,
                .workspace = workspace,
                .accessibility = accessibility,
                .audio = audio,
                .recognition = &recognition,
                .languageModel = nullptr,
                .helpers = helpers,
                .grants = grants,
                .loginItem = loginItem,
                .sounds = sounds,
                .processes = processes,
                .notifications = notifications,
                .statusItem = statusItem,
                .urls = urls,
                .http = http,
                .keychain = keychain,
                .companion = companion,
                .savePanel = savePanel,
                .files = files,
                .folders = folders,
                .session = session,
                .application = application};
    }
};

}  // namespace dorix
