#pragma once

#include "base/async/ManualExecutor.h"
#include "fakes/FakeAccessibility.h"
#include "fakes/FakeAudioEngine.h"
#include "fakes/FakeDesktop.h"
#include "fakes/FakeHttpClient.h"
#include "fakes/FakeKeys.h"
#include "fakes/FakePasteboard.h"
#include "fakes/FakeSpeechRecognition.h"
#include "fakes/FakeSpeechSynthesizer.h"
#include "fakes/MemoryUserDefaults.h"
#include "fakes/TemporaryFolder.h"
#include "platform/BackgroundWork.h"
#include "platform/CompanionService.h"
#include "platform/FileMapper.h"
#include "platform/FileTree.h"
#include "platform/FolderPublisher.h"
#include "platform/HelperProcess.h"
#include "platform/Keychain.h"
#include "platform/LanguageRecognizer.h"
#include "platform/Notifications.h"
#include "platform/Platform.h"
#include "platform/ScreenContent.h"
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
    UnavailableScreenContent screen;
    FakeAudioEngineFactory audio;
    FakeSpeechRecognition recognition;
    FakeSpeechSynthesizer synthesizer;
    UnavailableLanguageRecognizer languageRecognizer;
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
    FakeFolderPanel folderPanel;
    UnavailableFileReplacer files;
    UnavailableFileTree fileTree;
    UnavailableBackgroundWork background;
    UnavailableFolderPublisher folders;
    UnavailableFileMapper mapper;
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
                .home = {},
                .documentFolders = {},
                .settingsFile = folder.path() / "defaults.json",
                .packagedSpeechModels = {},
                .keyEvents = keyboard,
                .mouseEvents = mouse,
                .hotKeys = hotKeys,
                .events = poster,
                .pasteboard = pasteboard,
                .workspace = workspace,
                .accessibility = accessibility,
                .screen = screen,
                .audio = audio,
                .recognition = &recognition,
                .languageModel = nullptr,
                .synthesizer = synthesizer,
                .languageRecognizer = languageRecognizer,
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
                .folderPanel = folderPanel,
                .files = files,
                .fileTree = fileTree,
                .background = background,
                .folders = folders,
                .mapper = mapper,
                .session = session,
                .application = application};
    }
};

}  // namespace dorix
