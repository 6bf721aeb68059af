#pragma once

#include "base/async/ManualExecutor.h"
#include "context/TextInsertion.h"
#include "context/UserClipboard.h"
#include "dictation/Composer.h"
#include "dictation/DictationController.h"
#include "dictation/UtteranceRoads.h"
#include "dictation/WrittenText.h"
#include "fakes/FakeAccessibility.h"
#include "fakes/FakeDesktop.h"
#include "fakes/FakeKeys.h"
#include "fakes/FakePasteboard.h"
#include "fakes/MemoryUserDefaults.h"
#include "fakes/TemporaryFolder.h"
#include "fakes/dictation/FakeSpeechInput.h"
#include "fakes/dictation/RecordingCollaborators.h"
#include "localdata/HistoryStore.h"
#include "localdata/Language.h"
#include "localdata/SettingsStore.h"
#include "permissions/Permissions.h"
#include "platform/KeyCodes.h"
#include "platform/SessionState.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace dorix {

/// The dictation flow in virtual time, with an application in front that takes what is pasted. Everything but
/// the flow itself is a fake. Installs itself as the source of the app language.
class DictationBench {
 public:
    static constexpr std::int32_t appProcess = 100;

    /// The subsystems beside the flow that are there.
    struct Have {
        bool assistant = false;
        bool meeting = false;
        bool actions = false;
        bool teaching = false;
    };
    static constexpr Have everything{.assistant = true, .meeting = true, .actions = true, .teaching = true};

    explicit DictationBench(Json settingsValues = Json::object())
        : DictationBench({}, std::move(settingsValues)) {}
    explicit DictationBench(Have have, Json settingsValues = Json::object())
        : defaults(std::move(settingsValues)), flow(*this, have) {
        installLanguage(defaults, {});
        workspace.frontmost = RunningApplication{.processIdentifier = appProcess,
                                                 .bundleIdentifier = "com.apple.TextEdit",
                                                 .localizedName = "TextEdit"};
        setFocus(true);
        poster.onPost = [this](std::uint16_t keyCode) {
            if (keyCode == keycode::v && takesPastes) paste();
        };
    }
    ~DictationBench() { uninstallLanguage(); }
    DictationBench(const DictationBench&) = delete;
    DictationBench& operator=(const DictationBench&) = delete;

    /// Whether a text field has the focus; absent when nobody can tell.
    void setFocus(std::optional<bool> editable) {
        if (editable) {
            accessibility.focus(appProcess, *editable ? "AXTextField" : "AXTable");
        } else {
            accessibility.applications.erase(appProcess);
        }
    }

    /// The flow as it is put together, on a bench.
    struct Flow {
        Flow(DictationBench& bench, Have have)
            : assistant(have.assistant ? &bench.assistant : nullptr),
              hud(bench.executor, bench.state),
              recorder(bench.executor, bench.settings, bench.permissions, bench.speech, bench.workspace,
                       bench.accessibility, &bench.screen),
              written(bench.executor, bench.settings, bench.history, bench.clipboard, bench.inserter,
                      bench.workspace, bench.accessibility, hud),
              roads(bench.writer, bench.selection, bench.accessibility, written, hud,
                    {.assistant = assistant,
                     .meeting = have.meeting ? &bench.meeting : nullptr,
                     .actions = have.actions ? &bench.actions : nullptr,
                     .teaching = have.teaching ? &bench.teaching : nullptr,
                     .documents = &bench.documents}),
              composer(bench.executor, bench.state, bench.settings, bench.permissions, bench.speech, hud,
                       assistant),
              controller(bench.executor, bench.state, bench.settings, bench.permissions, bench.speech,
                         bench.sounds, recorder, roads, written, composer, hud, bench.session) {}

        Assistant* assistant;
        HUDFlash hud;
        Recorder recorder;
        WrittenText written;
        UtteranceRoads roads;
        Composer composer;
        DictationController controller;
    };

    ManualExecutor executor;
    MemoryUserDefaults defaults;
    FakeLoginItem loginItem;
    SettingsStore settings{defaults, loginItem, {}};
    AppState state;
    SessionState session;
    FakePrivacyGrants grants;
    Permissions permissions{executor, grants};
    FakeSpeechInput speech{executor};
    RecordingWriter writer;
    TemporaryFolder folder;
    HistoryStore history{folder.path() / "history.sqlite"};
    FakePasteboard pasteboard;
    RecordingEventPoster poster;
    FakeWorkspace workspace;
    UserClipboard clipboard{executor, pasteboard};
    TextInserter inserter{{executor, clipboard, pasteboard, poster, workspace}};
    FakeAccessibility accessibility;
    RecordingSystemSounds sounds;
    FakeSelection selection;
    FakeScreenCapture screen;
    FakeDocumentReader documents;
    RecordingAssistant assistant;
    RecordingMeeting meeting;
    RecordingActions actions;
    RecordingTeaching teaching;

    /// Whether the application in front pastes when it is told to.
    bool takesPastes = true;
    /// What the application in front was given last; absent until then.
    std::optional<std::string> inserted;
    std::function<void()> onInserted = [] {};

    Flow flow;
    DictationController& controller = flow.controller;

 private:
    void paste() {
        inserted = pasteboard.fetch(*workspace.frontmost, executor.now());
        onInserted();
    }
};

}  // namespace dorix
