#include "linux/desktop/LinuxDesktop.h"

#include "linux/appearance/LinuxAppearance.h"
#include "linux/apps/DesktopEntries.h"
#include "linux/atspi/AtspiAccessibility.h"
#include "linux/cld2/Cld2LanguageRecognizer.h"
#include "linux/curl/CurlHttpClient.h"
#include "linux/dbus/BusConnection.h"
#include "linux/dbus/DBusNotifications.h"
#include "linux/dbus/DBusSessionState.h"
#include "linux/dbus/DBusStatusItem.h"
#include "linux/dbus/PortalFolderPanel.h"
#include "linux/dbus/PortalSavePanel.h"
#include "linux/desktop/LinuxPrivacyGrants.h"
#include "linux/files/LinuxBackgroundWork.h"
#include "linux/files/LinuxFileTree.h"
#include "linux/process/ChildCompanionService.h"
#include "linux/process/LinuxHelperProcesses.h"
#include "linux/process/LinuxProcesses.h"
#include "linux/process/SoundSettings.h"
#include "linux/pulse/PulseAudioEngine.h"
#include "linux/pulse/PulseSystemSounds.h"
#include "linux/recent/RecentFiles.h"
#include "linux/secret/SecretKeychain.h"
#include "linux/speechd/SpeechdSynthesizer.h"
#include "linux/x11/X11Connection.h"
#include "linux/x11/X11EventPoster.h"
#include "linux/x11/X11HotKeyRegistrar.h"
#include "linux/x11/X11KeyEventMonitors.h"
#include "linux/x11/X11KeyInput.h"
#include "linux/x11/X11Keyboard.h"
#include "linux/x11/X11MouseEventMonitors.h"
#include "linux/x11/X11Pasteboard.h"
#include "linux/x11/X11ScreenContent.h"
#include "linux/x11/X11Settings.h"
#include "linux/x11/X11WindowSystem.h"
#include "linux/x11/X11Windows.h"
#include "linux/x11/X11Workspace.h"
#include "linux/xdg/AtomicFile.h"
#include "linux/xdg/AutostartLoginItem.h"
#include "linux/xdg/DurableFolders.h"
#include "linux/xdg/Environment.h"
#include "linux/xdg/JsonUserDefaults.h"
#include "linux/xdg/MemoryMapper.h"

#include <utility>

namespace dorix {

namespace {

constexpr const char* bundleIdentifier = "es.pelmora.dorix";

/// An X display, and the ports that it can fill: each is made when it is chosen, as not all of them may be.
class X11Session {
 public:
    X11Session(Executor& main, std::unique_ptr<X11Connection> opened, X11Settings::Changed changed,
               ClipboardKeeper& clipboardKeeper)
        : connection(std::move(opened)),
          entries(main),
          settings(*connection, std::move(changed)),
          keeper(clipboardKeeper) {}

    std::unique_ptr<KeyEventMonitors> keyEvents() {
        return std::make_unique<X11KeyEventMonitors>(*connection, keyboard, input, windows);
    }
    std::unique_ptr<MouseEventMonitors> mouseEvents() {
        return std::make_unique<X11MouseEventMonitors>(*connection, windows);
    }
    std::unique_ptr<HotKeyRegistrar> hotKeys() {
        return std::make_unique<X11HotKeyRegistrar>(*connection, keyboard, input);
    }
    std::unique_ptr<Pasteboard> pasteboard() {
        auto made = std::make_unique<X11Pasteboard>(*connection, &keeper);
        clipboard = made.get();
        return made;
    }
    /// After the pasteboard.
    std::unique_ptr<EventPoster> events() {
        return std::make_unique<X11EventPoster>(*connection, keyboard, input, windows, clipboard);
    }
    std::unique_ptr<ScreenContent> screen() {
        return std::make_unique<X11ScreenContent>(connection->display());
    }
    std::unique_ptr<Workspace> workspace() { return std::make_unique<X11Workspace>(windows, entries); }

    const std::unique_ptr<X11Connection> connection;
    X11Keyboard keyboard{*connection};
    X11KeyInput input{*connection, keyboard};
    X11Windows windows{*connection};
    DesktopEntries entries;
    X11Settings settings;
    ClipboardKeeper& keeper;
    X11Pasteboard* clipboard = nullptr;  // where that of this display was chosen
};

/// What was chosen, or what stands in for it where nothing was there to choose.
template <typename Unavailable, typename Port>
std::unique_ptr<Port> orElse(std::unique_ptr<Port> chosen) {
    if (!chosen) chosen = std::make_unique<Unavailable>();
    return chosen;
}

}  // namespace

struct LinuxDesktop::Adapters {
    Adapters(Executor& main, FdWatcher& watcher, Words words)
        : executor(main),
          defaults(main, xdgConfigHome() / "dorix" / "defaults.json"),
          loginItem(xdgConfigHome(), xdgConfigFolders(), std::filesystem::read_symlink("/proc/self/exe")),
          recentFiles(main, xdgDataHome() / "recently-used.xbel", homeFolder()),
          accessibility(
              main, watcher, [this](std::int32_t process) { return windowTitle(process); },
              [this](const std::string& title) { return recentFiles.namedIn(title); }),
          audio(main),
          synthesizer(main, watcher),
          processes(watcher),
          helpers(watcher, processes.executable()),
          urls(watcher),
          soundSettings(watcher),
          companion(watcher, programBeside(processes.executable(), "dorix-service")),
          system(BusConnection::system(main, watcher)),
          bus(BusConnection::session(main, watcher)),
          notifications(main, *bus),
          statusItem(main, *bus, std::move(words)),
          appearance(*bus, watcher, xdgConfigHome()),
          x11(openX11(watcher)) {
        processes.passOn(keeper.takeOtherEnd());
        session.reachesAllWindows = !isWaylandSession();
    }

    std::unique_ptr<X11Session> openX11(FdWatcher& watcher) {
        auto connection = X11Connection::open(executor, watcher);
        if (!connection) return nullptr;
        const auto changed = [this](const XSettings& settings) { appearance.setDisplaySettings(settings); };
        return std::make_unique<X11Session>(executor, std::move(connection), changed, keeper);
    }

    template <typename Port>
    std::unique_ptr<Port> onX11(std::unique_ptr<Port> (X11Session::*make)()) {
        return x11 ? ((*x11).*make)() : nullptr;
    }

    /// The title of the window in front, if it is that process's.
    std::optional<std::string> windowTitle(std::int32_t process) const {
        const auto window = x11 ? x11->windows.frontWindow() : xcb_window_t{XCB_WINDOW_NONE};
        if (window == XCB_WINDOW_NONE || x11->windows.processIdentifier(window) != process)
            return std::nullopt;
        auto title = x11->windows.title(window);
        return title.empty() ? std::nullopt : std::optional(std::move(title));
    }

    bool hasDisplay() const { return x11 && !x11->connection->isLost(); }

    Executor& executor;
    JsonUserDefaults defaults;
    AutostartLoginItem loginItem;
    RecentFiles recentFiles;
    AtspiAccessibility accessibility;
    PulseAudioEngineFactory audio;
    LinuxPrivacyGrants grants{
        {.hasRecogniser = [this] { return helpers.isInstalled("dorix-recogniser"); },
         .canUseOtherApplications = [this] { return hasDisplay() && accessibility.isAvailable(); },
         .canCaptureScreen = [this] { return hasDisplay() && !isWaylandSession(); },
         .switchOnAccessibility = [this] { accessibility.switchOn(); },
         .openSoundSettings = [this] { return soundSettings.open(); }}};
    PulseSystemSounds sounds{audio.connection()};
    SpeechdSynthesizer synthesizer;
    Cld2LanguageRecognizer languageRecognizer;
    ClipboardKeeper keeper;
    LinuxProcesses processes;
    LinuxHelperProcesses helpers;
    XdgUrlOpener urls;
    SoundSettings soundSettings;
    AtomicFileReplacer files;
    LinuxFileTree fileTree;
    LinuxBackgroundWork background;
    DurableFolders folders;
    MemoryMapper mapper;
    ChildCompanionService companion;
    CurlHttpClient http;
    const std::filesystem::path secretsFile = xdgDataHome() / "DORIX" / "secrets.json";
    SecretKeychain keychain{bundleIdentifier, secretsFile};
    const std::unique_ptr<BusConnection> system;
    const std::unique_ptr<BusConnection> bus;  // of the session
    DBusNotifications notifications;
    DBusStatusItem statusItem;
    PortalFileChooser fileChooser{*bus};
    PortalSavePanel savePanel{fileChooser, xdgDocuments()};
    PortalFolderPanel folderPanel{fileChooser};
    LinuxAppearance appearance;
    DBusSessionState session{executor, *system, *bus};

    // The ports of the session, each from where it is to be had.
    std::unique_ptr<X11Session> x11;  // none where there is no X display
    std::unique_ptr<KeyEventMonitors> keyEvents =
        orElse<UnavailableKeyEventMonitors>(onX11(&X11Session::keyEvents));
    std::unique_ptr<MouseEventMonitors> mouseEvents =
        orElse<UnavailableMouseEventMonitors>(onX11(&X11Session::mouseEvents));
    std::unique_ptr<HotKeyRegistrar> hotKeys =
        orElse<UnavailableHotKeyRegistrar>(onX11(&X11Session::hotKeys));
    std::unique_ptr<Pasteboard> pasteboard = orElse<UnavailablePasteboard>(onX11(&X11Session::pasteboard));
    std::unique_ptr<EventPoster> events = orElse<UnavailableEventPoster>(onX11(&X11Session::events));
    std::unique_ptr<Workspace> workspace = orElse<UnavailableWorkspace>(onX11(&X11Session::workspace));

    // What programs of another display protocol draw is on no X display.
    std::unique_ptr<ScreenContent> screen =
        orElse<UnavailableScreenContent>(isWaylandSession() ? nullptr : onX11(&X11Session::screen));

    std::unique_ptr<WindowSystem> windowSystem;  // made when the toolkit asks for it
};

LinuxDesktop::LinuxDesktop(Executor& executor, FdWatcher& watcher, Words words)
    : adapters_(std::make_unique<Adapters>(executor, watcher, std::move(words))) {}

LinuxDesktop::~LinuxDesktop() = default;

Platform LinuxDesktop::platform(Application& application) {
    auto& made = *adapters_;
    return {.executor = made.executor,
            .defaults = made.defaults,
            .packagedServer = packagedServer(),
            .languages = systemLanguages(),
            .computerName = computerName(),
            .userData = xdgDataHome(),
            .home = homeFolder(),
            .documentFolders = xdgDocumentFolders(),
            .settingsFile = xdgConfigHome() / "dorix" / "defaults.json",
            .secretsFile = made.secretsFile,
            .packagedSpeechModels = packagedSpeechModels(),
            .memory = computerMemory(),
            .keyEvents = *made.keyEvents,
            .mouseEvents = *made.mouseEvents,
            .hotKeys = *made.hotKeys,
            .events = *made.events,
            .pasteboard = *made.pasteboard,
            .workspace = *made.workspace,
            .accessibility = made.accessibility,
            .screen = *made.screen,
            .audio = made.audio,
            .recognition = nullptr,
            .languageModel = nullptr,
            .synthesizer = made.synthesizer,
            .languageRecognizer = made.languageRecognizer,
            .helpers = made.helpers,
            .grants = made.grants,
            .loginItem = made.loginItem,
            .sounds = made.sounds,
            .processes = made.processes,
            .notifications = made.notifications,
            .statusItem = made.statusItem,
            .urls = made.urls,
            .http = made.http,
            .keychain = made.keychain,
            .companion = made.companion,
            .savePanel = made.savePanel,
            .folderPanel = made.folderPanel,
            .files = made.files,
            .fileTree = made.fileTree,
            .background = made.background,
            .folders = made.folders,
            .mapper = made.mapper,
            .session = made.session,
            .application = application};
}

WindowSystem& LinuxDesktop::windowSystem(std::function<void()> finishToolkitRequests) {
    auto& made = adapters_->windowSystem;
    if (adapters_->x11 && finishToolkitRequests) {
        auto& session = *adapters_->x11;
        made = std::make_unique<X11WindowSystem>(*session.connection, session.windows,
                                                 std::move(finishToolkitRequests));
    } else {
        made = std::make_unique<UnavailableWindowSystem>();
    }
    return *made;
}

DesktopAppearance& LinuxDesktop::appearance() { return adapters_->appearance; }

void LinuxDesktop::onDisplayLost(std::function<void()> callback) {
    if (adapters_->x11) adapters_->x11->connection->onLost(std::move(callback));
}

Task<void> LinuxDesktop::handOverClipboard() {
    const bool isOurs = adapters_->hasDisplay() && adapters_->x11->clipboard != nullptr;
    if (isOurs) co_await adapters_->x11->clipboard->handOver();
}

}  // namespace dorix
