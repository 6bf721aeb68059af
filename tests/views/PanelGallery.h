#pragma once

#include "base/async/ManualExecutor.h"
#include "fakes/FakeLoginItem.h"
#include "fakes/FakePasteboard.h"
#include "fakes/FakeUrlOpener.h"
#include "fakes/MemoryUserDefaults.h"
#include "fakes/TemporaryFolder.h"
#include "fakes/dictation/FakeSpeechInput.h"
#include "linux/xdg/AtomicFile.h"
#include "localdata/HistoryStore.h"
#include "localdata/SettingsStore.h"
#include "panel/HistoryPanel.h"
#include "views/panel/PanelWindow.h"

#include <QImage>
#include <QQmlEngine>
#include <memory>
#include <string>
#include <vector>

namespace dorix::testing {

/// A state of the panel, and its name in lists of pictures.
struct PanelPicture {
    std::string name;
    std::string language = "es";
    bool dark = false;
    bool composited = true;
    QSize size{720, 520};
    QSize screen{1280, 800};
    std::string query;
    PanelSection section = PanelSection::todo;
    std::string selected;  // an item's id
    bool deletes = false;  // the selected item, at the end
    bool records = false;
    bool byKeyboard = false;
    bool isEmpty = false;  // there is no history at all
    std::string composer;
    std::string heard;  // by the composer's microphone, so far
};

std::vector<PanelPicture> panelPictures();
/// Those for a display on which everything is twice as large.
std::vector<PanelPicture> largePanelPictures();
/// What a language's sheet shows.
std::vector<PanelPicture> panelSheet(const std::string& language);

/// A day's work, in the language, all of it before `now`, in seconds since 1970.
std::vector<HistoryItem> sampleHistory(const std::string& language, double now);

/// Draws the panel off screen, at rest: nothing in the picture depends on time or place.
QImage drawPanel(const PanelPicture& picture);

}  // namespace dorix::testing
