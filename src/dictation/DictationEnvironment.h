#pragma once

namespace dorix {

class Accessibility;
class Actions;
class Assistant;
class Teaching;
class Meeting;
class Writer;
class DocumentReader;
class Executor;
class HistoryStore;
class Permissions;
class ScreenCapture;
class SelectionProbe;
class SettingsStore;
class SpeechInput;
class SystemSounds;
class TextInserter;
class Workspace;
struct AppState;

/// What the dictation flow works with. All of it outlives the flow. A null pointer is a subsystem that is not
/// there: the roads that need it are not taken.
struct DictationEnvironment {
    Executor& executor;
    AppState& state;
    SettingsStore& settings;
    Permissions& permissions;
    SpeechInput& speech;
    Writer& writer;
    TextInserter& inserter;
    SelectionProbe& selection;
    Workspace& workspace;
    Accessibility& accessibility;
    SystemSounds& sounds;
    HistoryStore& history;
    ScreenCapture* screen = nullptr;
    DocumentReader* documents = nullptr;
    Assistant* assistant = nullptr;
    Meeting* meeting = nullptr;
    Actions* actions = nullptr;
    Teaching* learning = nullptr;
};

}  // namespace dorix
