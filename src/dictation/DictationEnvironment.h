#pragma once

namespace dorix {

class Accessibility;
class DictationActions;
class DictationAssistant;
class DictationHistory;
class DictationLearning;
class DictationMeeting;
class DictationWriter;
class DocumentReader;
class Executor;
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
    DictationWriter& writer;
    TextInserter& inserter;
    SelectionProbe& selection;
    Workspace& workspace;
    Accessibility& accessibility;
    SystemSounds& sounds;
    DictationHistory* history = nullptr;
    ScreenCapture* screen = nullptr;
    DocumentReader* documents = nullptr;
    DictationAssistant* assistant = nullptr;
    DictationMeeting* meeting = nullptr;
    DictationActions* actions = nullptr;
    DictationLearning* learning = nullptr;
};

}  // namespace dorix
