#pragma once

#include "card/AnswerCardPresenter.h"
#include "dictation/AppState.h"
#include "fakes/FakeDesktop.h"
#include "fakes/FakePasteboard.h"
#include "fakes/TemporaryFolder.h"
#include "fakes/dictation/FakeSpeechInput.h"
#include "linux/xdg/AtomicFile.h"
#include "localdata/HistoryStore.h"
#include "localdata/SettingsStore.h"
#include "panel/HistoryPanel.h"

namespace dorix::testing {

/// What the windows show: the part of the program that the panel and the card have, with nothing around it.
struct PanelBench {
    PanelBench(Executor& executor, UserDefaults& defaults)
        : speech(executor),
          settings(defaults, loginItem, SystemLanguages{}),
          exporter(executor, executor, savePanel, files, folder.path() / "dorix.sqlite"),
          panel(executor, state, speech, history, pasteboard, urls, exporter),
          answer({.executor = executor, .card = card, .pasteboard = pasteboard, .urls = urls}) {
        panel.actions.close = [] {};
        panel.actions.reinsert = [](const HistoryItem&) {};
        panel.actions.speak = [](const HistoryItem&) {};
    }

    FakeLoginItem loginItem;
    FakePasteboard pasteboard;
    FakeUrlOpener urls;
    UnavailableSavePanel savePanel;
    AtomicFileReplacer files;
    TemporaryFolder folder;
    FakeSpeechInput speech;
    AppState state{.abilities = Observable<Abilities>({true, true, true, true})};
    SettingsStore settings;
    HistoryStore history{folder.path() / "dorix.sqlite"};
    PanelExport exporter;
    HistoryPanel panel;
    AnswerCardPresenter::Card card;
    AnswerCardPresenter answer;
};

}  // namespace dorix::testing
