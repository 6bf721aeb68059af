#include "linux/desktop/LinuxDesktop.h"

#include "linux/appearance/LinuxAppearance.h"
#include "linux/apps/DesktopEntries.h"
#include "linux/atspi/AtspiAccessibility.h"
#include "linux/dbus/BusConnection.h"
#include "linux/dbus/DBusNotifications.h"
#include "linux/dbus/DBusStatusItem.h"
#include "linux/dbus/PortalSavePanel.h"
#include "linux/grants/LinuxPrivacyGrants.h"
#include "linux/pocketsphinx/PocketsphinxRecognition.h"
#include "linux/process/LinuxProgramLauncher.h"
#include "linux/process/XdgUrlOpener.h"
#include "linux/pulse/PulseAudioEngineFactory.h"
#include "linux/pulse/PulseSystemSounds.h"
#include "linux/x11/X11Connection.h"
#include "linux/x11/X11EventPoster.h"
#include "linux/x11/X11HotKeyRegistrar.h"
#include "linux/x11/X11KeyEventMonitors.h"
#include "linux/x11/X11KeyInput.h"
#include "linux/x11/X11Keyboard.h"
#include "linux/x11/X11MouseEventMonitors.h"
#include "linux/x11/X11Pasteboard.h"
#include "linux/x11/X11Settings.h"
#include "linux/x11/X11WindowSystem.h"
#include "linux/x11/X11Windows.h"
#include "linux/x11/X11Workspace.h"
#include "linux/xdg/AtomicFile.h"
#include "linux/xdg/AutostartLoginItem.h"
#include "linux/xdg/JsonUserDefaults.h"
#include "linux/xdg/LocaleEnvironment.h"
#include "linux/xdg/XdgFolders.h"

#include <utility>

namespace dorix {

namespace {

/// What an X11 session gives.
struct X11Session {
    X11Session(Executor& main, std::unique_ptr<X11Connection> opened, X11Settings::Changed changed)
        : connection(std::move(opened)), entries(main), settings(*connection, std::move(changed)) {}

    std::unique_ptr<X11Connection> connection;
    X11Keyboard keyboard{*connection};
    X11KeyInput input{*connection, keyboard};
    X11Windows windows{*connection};
    DesktopEntries entries;
    X11KeyEventMonitors keyEvents{*connection, keyboard, input, windows};
    X11MouseEventMonitors mouseEvents{*connection, windows};
    X11HotKeyRegistrar hotKeys{*connection, keyboard, input};
    X11Pasteboard pasteboard{*connection};
    X11EventPoster events{*connection, keyboard, input, windows, pasteboard};
    X11Workspace workspace{windows, entries};
    X11Settings settings;
};

/// What stands in where there is no display.
struct NoSession {
    UnavailableKeyEventMonitors keyEvents;
    UnavailableMouseEventMonitors mouseEvents;
    UnavailableHotKeyRegistrar hotKeys;
    UnavailablePasteboard pasteboard;
    UnavailableEventPoster events;
    UnavailableWorkspace workspace;
};

}  // namespace

struct LinuxDesktop::Parts {
    Parts(Executor& main, FdWatcher& watcher, Words words)
        : executor(main),
          defaults(main, xdgConfigHome() / "dorix" / "defaults.json"),
          loginItem(xdgConfigHome(), std::filesystem::read_symlink("/proc/self/exe")),
          accessibility(main, watcher, [this](std::int32_t process) { return windowTitle(process); }),
          audio(main),
          launcher(watcher),
          urls(watcher),
          bus(BusConnection::openSession(main, watcher, [] {})),
          notifications(serviceOn<Notifications, DBusNotifications, UnavailableNotifications>(main)),
          statusItem(serviceOn<StatusItem, DBusStatusItem, UnavailableStatusItem>(main, std::move(words))),
          appearance(bus.get(), watcher, xdgConfigHome()) {
        if (auto connection = X11Connection::open(main, watcher)) {
            x11 = std::make_unique<X11Session>(
                main, std::move(connection),
                [this](const XSettings& settings) { appearance.setDisplaySettings(settings); });
        }
    }

    /// A service of the session bus, or what stands in for it where there is none.
    template <typename Port, typename Adapter, typename Unavailable, typename... More>
    std::unique_ptr<Port> serviceOn(Executor& main, More... more) const {
        if (bus) return std::make_unique<Adapter>(main, *bus, std::move(more)...);
        return std::make_unique<Unavailable>();
    }

    /// The title of the window in front, if it is that process's.
    std::optional<std::string> windowTitle(std::int32_t process) const {
        if (!x11) return std::nullopt;
        const auto front = x11->workspace.frontmostApplication();
        if (!front || front->processIdentifier != process) return std::nullopt;
        return x11->workspace.windowTitle(front->windowNumber);
    }

    bool hasDisplay() const { return x11 && !x11->connection->isLost(); }

    template <typename Session>
    Platform platformWith(Session& session, Application& application) {
        return {.executor = executor,
                .defaults = defaults,
                .languages = systemLanguages(),
                .userData = xdgDataHome(),
                .keyEvents = session.keyEvents,
                .mouseEvents = session.mouseEvents,
                .hotKeys = session.hotKeys,
                .events = session.events,
                .pasteboard = session.pasteboard,
                .workspace = session.workspace,
                .accessibility = accessibility,
                .audio = audio,
                .recognition = recognition,
                .grants = grants,
                .loginItem = loginItem,
                .sounds = sounds,
                .launcher = launcher,
                .notifications = *notifications,
                .statusItem = *statusItem,
                .urls = urls,
                .savePanel = savePanel,
                .files = files,
                .application = application};
    }

    Executor& executor;
    JsonUserDefaults defaults;
    AutostartLoginItem loginItem;
    AtspiAccessibility accessibility;
    PulseAudioEngineFactory audio;
    PocketsphinxRecognition recognition;
    LinuxPrivacyGrants grants{
        {.hasSoundInput = [this] { return audio.makeEngine()->inputFormat().channelCount > 0; },
         .hasRecogniser = [this] { return recognition.supportedLocale("en-US").has_value(); },
         .canUseOtherApplications = [this] { return hasDisplay() && accessibility.isAvailable(); },
         .canCaptureScreen = [this] { return hasDisplay(); }}};
    PulseSystemSounds sounds{audio.connection()};
    LinuxProgramLauncher launcher;
    XdgUrlOpener urls;
    AtomicFileReplacer files;
    std::unique_ptr<BusConnection> bus;  // none where there is no session bus
    std::unique_ptr<Notifications> notifications;
    std::unique_ptr<StatusItem> statusItem;
    PortalSavePanel savePanel{bus.get(), xdgDocuments()};
    LinuxAppearance appearance;
    NoSession none;
    std::unique_ptr<X11Session> x11;
    std::unique_ptr<WindowSystem> windowSystem;
};

LinuxDesktop::LinuxDesktop(Executor& executor, FdWatcher& watcher, Words words)
    : parts_(std::make_unique<Parts>(executor, watcher, std::move(words))) {}

LinuxDesktop::~LinuxDesktop() = default;

Platform LinuxDesktop::platform(Application& application) {
    return parts_->x11 ? parts_->platformWith(*parts_->x11, application)
                       : parts_->platformWith(parts_->none, application);
}

WindowSystem& LinuxDesktop::windowSystem(std::function<void()> finishToolkitRequests) {
    auto& made = parts_->windowSystem;
    if (parts_->x11 && finishToolkitRequests) {
        auto& session = *parts_->x11;
        made = std::make_unique<X11WindowSystem>(*session.connection, session.windows,
                                                 std::move(finishToolkitRequests));
    } else {
        made = std::make_unique<UnavailableWindowSystem>();
    }
    return *made;
}

DesktopAppearance& LinuxDesktop::appearance() { return parts_->appearance; }

void LinuxDesktop::onDisplayLost(std::function<void()> callback) {
    if (parts_->x11) parts_->x11->connection->onLost(std::move(callback));
}

Task<void> LinuxDesktop::handOverClipboard() {
    if (parts_->hasDisplay()) co_await parts_->x11->pasteboard.handOver();
}

}  // namespace dorix
