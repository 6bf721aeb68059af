#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

class Accessibility;
class Application;
class AudioEngineFactory;
class BackgroundWork;
class CompanionService;
class EventPoster;
class Executor;
class FileMapper;
class FileReplacer;
class FileTree;
class FolderPanel;
class FolderPublisher;
class HelperProcesses;
class HotKeyRegistrar;
class HttpClient;
class Keychain;
class KeyEventMonitors;
class LanguageRecognizer;
class LoginItem;
class MouseEventMonitors;
class Notifications;
class Pasteboard;
class PrivacyGrants;
class Processes;
class SavePanel;
class ScreenContent;
struct SessionState;
class SpeechRecognition;
class SpeechSynthesizer;
class StatusItem;
class SystemLanguageModel;
class SystemSounds;
class UrlOpener;
class UserDefaults;
class Workspace;

/// The languages that the user gave the system, read when the program starts.
struct SystemLanguages {
    /// Locale identifiers, the most wanted first ("es-ES", "en").
    std::vector<std::string> preferred;
    /// The language code of the locale for formats ("es"); none where the system does not say.
    std::optional<std::string> currentLanguageCode;
};

/// All that the program asks of the operating system. Owned by whoever put it together, for longer than
/// anything that uses it.
struct Platform {
    Executor& executor;
    UserDefaults& defaults;
    /// The cloud service's address as the package or the administrator has set it; none where they have not.
    std::optional<std::string> packagedServer;
    SystemLanguages languages;
    std::string computerName;        // as the user calls it
    std::filesystem::path userData;  // the folder in which programs keep a folder each for the user's data
    std::filesystem::path home;
    /// Where the user keeps what they write: documents, the desktop, downloads. Not all need exist.
    std::vector<std::filesystem::path> documentFolders;
    std::filesystem::path settingsFile;  // in which `defaults` is kept, for people to know
    std::filesystem::path secretsFile;   // what `keychain` keeps where the system has none; likewise
    /// Where the system's package has its models of speech; there may be none.
    std::filesystem::path packagedSpeechModels;
    std::uint64_t memory = 0;  // of the computer, in bytes; 0 where that is not known
    KeyEventMonitors& keyEvents;
    MouseEventMonitors& mouseEvents;
    HotKeyRegistrar& hotKeys;
    EventPoster& events;
    Pasteboard& pasteboard;
    Workspace& workspace;
    Accessibility& accessibility;
    ScreenContent& screen;
    AudioEngineFactory& audio;
    /// The system's own; null where it has none, and the program brings one.
    SpeechRecognition* recognition;
    /// The system's own likewise.
    SystemLanguageModel* languageModel;
    SpeechSynthesizer& synthesizer;
    const LanguageRecognizer& languageRecognizer;
    HelperProcesses& helpers;
    PrivacyGrants& grants;
    LoginItem& loginItem;
    SystemSounds& sounds;
    Processes& processes;
    Notifications& notifications;
    StatusItem& statusItem;
    UrlOpener& urls;
    HttpClient& http;
    Keychain& keychain;
    CompanionService& companion;
    SavePanel& savePanel;
    FolderPanel& folderPanel;
    FileReplacer& files;
    FileTree& fileTree;
    BackgroundWork& background;
    FolderPublisher& folders;
    FileMapper& mapper;
    SessionState& session;
    Application& application;
};

}  // namespace dorix
