#include "fakes/FakeLoginItem.h"
#include "fakes/FakePasteboard.h"
#include "fakes/FakeUrlOpener.h"
#include "fakes/MemoryUserDefaults.h"
#include "fakes/TemporaryFolder.h"
#include "fakes/dictation/FakeSpeechInput.h"
#include "linux/qt/QtMainLoop.h"
#include "linux/xdg/AtomicFile.h"
#include "localdata/Language.h"
#include "overlay/IconPlacement.h"
#include "views/Application.h"
#include "views/Tokens.h"
#include "views/Views.h"
#include "views/overlay/FloatingIconWindow.h"
#include "views/overlay/HUDWindow.h"
#include "views/overlay/MenuWindow.h"
#include "views/overlay/TooltipWindow.h"
#include "views/panel/PanelWindow.h"

#include <gtest/gtest.h>
#include <xcb/shape.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon-keysyms.h>

#include <QEventLoop>
#include <QGuiApplication>
#include <QScreen>
#include <array>
#include <cstdlib>
#include <memory>
#include <optional>

namespace dorix::testing {
namespace {

template <typename T>
using Reply = std::unique_ptr<T, decltype([](T* reply) { std::free(reply); })>;

/// The desktop's settings service, which tells the scale. The toolkit looks for it once, at its start.
class SettingsService {
 public:
    SettingsService() : connection_(xcb_connect(nullptr, nullptr)), window_(xcb_generate_id(connection_)) {
        const auto* screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, screen->root, -1, -1, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        setScale(1);
        xcb_set_selection_owner(connection_, window_, atom("_XSETTINGS_S0"), XCB_CURRENT_TIME);
        xcb_flush(connection_);
    }
    ~SettingsService() { xcb_disconnect(connection_); }
    SettingsService(const SettingsService&) = delete;
    SettingsService& operator=(const SettingsService&) = delete;

    void setScale(double scale) {
        const auto dpi = static_cast<std::uint32_t>(scale * 96 * 1024);
        // Least significant byte first: the order and the serial, one setting, a whole number with its name,
        // the serial of its change.
        std::string bytes("\0\0\0\0\0\0\0\0\1\0\0\0\0\0\7\0Xft/DPI\0", 24);
        for (const std::uint32_t number : {++changes_, dpi}) {
            for (unsigned shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(number >> shift);
        }
        const auto name = atom("_XSETTINGS_SETTINGS");
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, name, name, 8,
                            static_cast<std::uint32_t>(bytes.size()), bytes.data());
        xcb_flush(connection_);
    }

 private:
    xcb_atom_t atom(std::string_view name) const {
        const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
            connection_,
            xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()), nullptr));
        return reply->atom;
    }

    xcb_connection_t* connection_;
    xcb_window_t window_;
    std::uint32_t changes_ = 0;
};

SettingsService& theService() {
    static SettingsService service;
    return service;
}

QGuiApplication& theApplication() {
    theService();
    static int count = 1;
    static char name[] = "views_desktop_test";
    static char* arguments[] = {name, nullptr};
    // Never destroyed: at the end of main the toolkit's threads have their storage no more.
    static auto* const application = makeApplication(count, arguments).release();
    return static_cast<QGuiApplication&>(*application);
}

/// The user, and whoever else is on the display: a connection of its own.
class Display {
 public:
    Display() : connection_(xcb_connect(nullptr, nullptr)) {
        root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
        point({5, 5});
    }
    ~Display() { xcb_disconnect(connection_); }
    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;

    void point(QPoint to) { fake(XCB_MOTION_NOTIFY, 0, to); }
    void press(std::uint8_t button) { fake(XCB_BUTTON_PRESS, button); }
    void release(std::uint8_t button) { fake(XCB_BUTTON_RELEASE, button); }
    void click(QPoint at, std::uint8_t button = 1) {
        point(at);
        press(button);
        release(button);
    }
    void drag(QPoint from, QPoint to) {
        point(from);
        press(1);
        for (int step = 1; step <= 8; ++step) point(from + (to - from) * step / 8);
        release(1);
    }
    void key(std::uint32_t symbol) {
        const auto code = keyFor(symbol);
        fake(XCB_KEY_PRESS, code);
        fake(XCB_KEY_RELEASE, code);
    }

    /// A window over the whole screen, or a part of it; it gets the focus.
    xcb_window_t openWindow(QRect frame) {
        const xcb_window_t window = xcb_generate_id(connection_);
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, root_,
                          static_cast<std::int16_t>(frame.x()), static_cast<std::int16_t>(frame.y()),
                          static_cast<std::uint16_t>(frame.width()),
                          static_cast<std::uint16_t>(frame.height()), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                          XCB_COPY_FROM_PARENT, 0, nullptr);
        xcb_map_window(connection_, window);
        xcb_flush(connection_);
        return window;
    }
    void close(xcb_window_t window) {
        xcb_destroy_window(connection_, window);
        xcb_flush(connection_);
    }

    xcb_window_t focus() const {
        const Reply<xcb_get_input_focus_reply_t> reply(
            xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
        return reply->focus;
    }
    xcb_window_t topmost() const {
        const Reply<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(connection_, xcb_query_tree(connection_, root_), nullptr));
        return xcb_query_tree_children(tree.get())[xcb_query_tree_children_length(tree.get()) - 1];
    }
    /// What the screen shows there, in pixels.
    QRgb color(QPoint at) const {
        const Reply<xcb_get_image_reply_t> image(xcb_get_image_reply(
            connection_,
            xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, root_, static_cast<std::int16_t>(at.x()),
                          static_cast<std::int16_t>(at.y()), 1, 1, ~0U),
            nullptr));
        const std::uint8_t* data = xcb_get_image_data(image.get());
        return qRgb(data[2], data[1], data[0]);
    }
    bool isCut(const QWindow& window) const {
        const Reply<xcb_shape_query_extents_reply_t> extents(xcb_shape_query_extents_reply(
            connection_, xcb_shape_query_extents(connection_, static_cast<xcb_window_t>(window.winId())),
            nullptr));
        return extents->bounding_shaped != 0;
    }

    /// Says that something composites, as a compositor does.
    void claimCompositing(bool on) {
        const Reply<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
            connection_, xcb_intern_atom(connection_, 0, 13, "_NET_WM_CM_S0"), nullptr));
        if (on) owner_ = openWindow({0, 0, 1, 1});
        xcb_set_selection_owner(connection_, on ? owner_ : XCB_NONE, atom->atom, XCB_CURRENT_TIME);
        if (!on) close(owner_);
        xcb_flush(connection_);
    }

 private:
    void fake(std::uint8_t type, std::uint8_t detail, QPoint at = {}) {
        xcb_test_fake_input(connection_, type, detail, XCB_CURRENT_TIME, root_,
                            static_cast<std::int16_t>(at.x()), static_cast<std::int16_t>(at.y()), 0);
        Reply<xcb_get_input_focus_reply_t>(
            xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
    }
    std::uint8_t keyFor(std::uint32_t symbol) const {
        const auto* setup = xcb_get_setup(connection_);
        const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
        const Reply<xcb_get_keyboard_mapping_reply_t> mapping(xcb_get_keyboard_mapping_reply(
            connection_, xcb_get_keyboard_mapping(connection_, setup->min_keycode, count), nullptr));
        const auto* symbols = xcb_get_keyboard_mapping_keysyms(mapping.get());
        for (int i = 0; i < count; ++i) {
            if (symbols[i * mapping->keysyms_per_keycode] == symbol) {
                return static_cast<std::uint8_t>(setup->min_keycode + i);
            }
        }
        return 0;
    }

    xcb_connection_t* connection_;
    xcb_window_t root_ = 0;
    xcb_window_t owner_ = 0;
};

/// The views on the display in $DISPLAY, under the hands of a user.
class ViewsDesktopTest : public ::testing::Test {
 protected:
    void SetUp() override {
        if (std::getenv("DISPLAY") == nullptr) {
            if (std::getenv("CI") != nullptr) FAIL() << "DISPLAY is not set";
            GTEST_SKIP() << "DISPLAY is not set";
        }
        theApplication();
        loop_ = std::make_unique<QtMainLoop>();
        installLanguage(defaults_, {});
        settings_ = std::make_unique<SettingsStore>(defaults_, loginItem_, SystemLanguages{});
        panel_ =
            std::make_unique<HistoryPanel>(HistoryPanel::Environment{.executor = *loop_,
                                                                     .background = *loop_,
                                                                     .state = state_,
                                                                     .history = history_,
                                                                     .database = folder_.path() / "history",
                                                                     .pasteboard = pasteboard_,
                                                                     .savePanel = savePanel_,
                                                                     .files = files_,
                                                                     .urls = urls_});
        views_ = std::make_unique<Views>(Views::Environment{.executor = *loop_,
                                                            .defaults = defaults_,
                                                            .state = state_,
                                                            .settings = *settings_,
                                                            .speech = speech_,
                                                            .panel = *panel_,
                                                            .appearance = appearance_},
                                         Views::Verbs{.iconClicked = [this] { ++clicks_; },
                                                      .iconTooltip = [] { return iconTooltip({}); },
                                                      .iconMenu = [this] { return menuItems(); }});
        views_->windows().icon->place();
        views_->windows().icon->show();
        display_ = std::make_unique<Display>();
        runUntil([&] { return icon().isExposed(); });
    }

    void TearDown() override {
        views_.reset();
        uninstallLanguage();
    }

    Menu menuItems() {
        const auto choose = [this](const char* name) { return [this, name] { chosen_ = name; }; };
        return {{tr("Abrir historial"), choose("history")},
                ClosureMenuItem::separator(),
                {tr("Tu cuenta…"), choose("account")},
                {tr("Salir de DORIX"), choose("quit")}};
    }

    bool runUntil(const std::function<bool()>& condition, double seconds = 5) {
        const double deadline = loop_->now() + seconds;
        while (!condition()) {
            if (loop_->now() > deadline) return false;
            const auto wake = loop_->after(0.01, [] {});
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            loop_->cancel(wake);
        }
        return true;
    }
    /// Long enough for what is on its way to arrive.
    void runFor(double seconds) {
        runUntil([] { return false; }, seconds);
    }

    template <typename Window>
    static Window* find() {
        for (QWindow* window : QGuiApplication::topLevelWindows()) {
            if (auto* found = dynamic_cast<Window*>(window)) return found;
        }
        return nullptr;
    }
    static FloatingIconWindow& icon() { return *find<FloatingIconWindow>(); }
    static HUDWindow* hud() { return find<HUDWindow>(); }
    static QPoint middle() { return icon().geometry().center(); }

    void showHUD(const HUDPhase& phase) {
        state_.hud.set(phase);
        ASSERT_TRUE(runUntil([&] { return hud() != nullptr && hud()->isExposed(); }));
    }
    void openMenu() {
        display_->click(middle(), 3);
        ASSERT_TRUE(runUntil([&] { return icon().menu() != nullptr && icon().menu()->isExposed(); }));
    }

    std::unique_ptr<QtMainLoop> loop_;
    MemoryUserDefaults defaults_;
    FakeLoginItem loginItem_;
    AppState state_;
    std::unique_ptr<SettingsStore> settings_;
    FakeSpeechInput speech_;
    FakePasteboard pasteboard_;
    FakeUrlOpener urls_;
    UnavailableSavePanel savePanel_;
    AtomicFileReplacer files_;
    TemporaryFolder folder_;
    HistoryStore history_{folder_.path() / "history"};
    std::unique_ptr<HistoryPanel> panel_;
    UnavailableDesktopAppearance appearance_;
    std::unique_ptr<Views> views_;
    std::unique_ptr<Display> display_;
    int clicks_ = 0;
    std::string chosen_;
};

TEST_F(ViewsDesktopTest, AClickWithASlipIsAClickAndMovesNothing) {
    const QRect before = icon().geometry();
    display_->click(middle());
    EXPECT_TRUE(runUntil([&] { return clicks_ == 1; }));
    display_->drag(middle(), middle() + QPoint(2, 0));
    EXPECT_TRUE(runUntil([&] { return clicks_ == 2; }));
    for (const auto wheel : std::to_array<std::uint8_t>({4, 5, 6, 7})) display_->click(middle(), wheel);
    display_->click(middle(), 2);
    display_->click(icon().geometry().topLeft() + QPoint(8, 8));  // the margin is not the icon
    runFor(0.2);
    EXPECT_EQ(clicks_, 2);
    EXPECT_EQ(icon().geometry(), before);
    EXPECT_FALSE(savedIconOrigin(defaults_));
}

TEST_F(ViewsDesktopTest, DraggedAcrossTheMiddleTheHUDChangesSides) {
    showHUD(HUDPhase::info("uno"));
    EXPECT_LT(hud()->geometry().left(), icon().geometry().left());
    display_->drag(middle(), {200, 300});
    ASSERT_TRUE(runUntil([&] { return savedIconOrigin(defaults_).has_value(); }));
    EXPECT_EQ(middle(), QPoint(200, 300));
    EXPECT_EQ(clicks_, 0);
    showHUD(HUDPhase::info("dos"));
    EXPECT_TRUE(runUntil([&] { return hud()->geometry().left() > icon().geometry().left(); }));

    display_->drag(middle(), {0, 300});
    EXPECT_TRUE(runUntil([&] { return icon().geometry().left() == -18; })) << "clamped";
    EXPECT_EQ(savedIconOrigin(defaults_)->x, -18);
}

TEST_F(ViewsDesktopTest, TheMenuIsWhollyUsableByKeyboard) {
    openMenu();
    display_->key(XKB_KEY_Down);
    EXPECT_TRUE(runUntil([&] { return icon().menu()->currentRow() == 0; }));
    display_->key(XKB_KEY_Down);
    EXPECT_TRUE(runUntil([&] { return icon().menu()->currentRow() == 2; })) << "past the line";
    display_->key(XKB_KEY_End);
    EXPECT_TRUE(runUntil([&] { return icon().menu()->currentRow() == 3; }));
    display_->key(XKB_KEY_Return);
    EXPECT_TRUE(runUntil([&] { return chosen_ == "quit"; }));
    EXPECT_EQ(icon().menu(), nullptr);

    openMenu();
    display_->key(XKB_KEY_Escape);
    EXPECT_TRUE(runUntil([&] { return icon().menu() == nullptr; }));
    EXPECT_EQ(chosen_, "quit");
}

TEST_F(ViewsDesktopTest, TheMenuTakesAClickAndClosesWithOneElsewhere) {
    openMenu();
    display_->click({20, 20});
    EXPECT_TRUE(runUntil([&] { return icon().menu() == nullptr; }));
    EXPECT_TRUE(chosen_.empty());

    openMenu();
    display_->click(icon().menu()->geometry().topLeft() + QPoint(40, 30));
    EXPECT_TRUE(runUntil([&] { return chosen_ == "history"; }));
    EXPECT_EQ(clicks_, 0);
}

TEST_F(ViewsDesktopTest, AMenuGivesWayToADictation) {
    openMenu();
    state_.hud.set(HUDPhase::listening());
    EXPECT_TRUE(runUntil([&] { return icon().menu() == nullptr; })) << "what is typed would go to it";
    EXPECT_TRUE(chosen_.empty());
}

TEST_F(ViewsDesktopTest, TheTooltipStandsBesideTheIconUntilTheHUDDoes) {
    display_->point(middle());
    ASSERT_TRUE(runUntil([] { return find<TooltipWindow>() != nullptr; }));
    EXPECT_NEAR(find<TooltipWindow>()->geometry().center().y(), middle().y(), 1);
    EXPECT_LT(find<TooltipWindow>()->geometry().right(), middle().x());
    showHUD(HUDPhase::info("uno"));
    EXPECT_EQ(find<TooltipWindow>(), nullptr);
}

TEST_F(ViewsDesktopTest, NeitherTakesTheFocusAndBothStayOnTop) {
    const auto other = display_->openWindow({100, 100, 300, 200});
    ASSERT_TRUE(runUntil([&] { return display_->focus() == other; }));
    showHUD(HUDPhase::listening());
    display_->click(middle());
    runFor(0.1);
    EXPECT_EQ(display_->focus(), other);
    const auto big = display_->openWindow({0, 0, 1280, 800});
    EXPECT_TRUE(runUntil([&] { return display_->focus() == big; }));
    EXPECT_TRUE(runUntil([&] { return display_->topmost() == hud()->winId(); }));
    display_->close(big);
    display_->close(other);
}

TEST_F(ViewsDesktopTest, ACompositorMayComeAndGo) {
    showHUD(HUDPhase::info("texto"));
    EXPECT_TRUE(display_->isCut(icon()) && display_->isCut(*hud()));
    display_->claimCompositing(true);
    EXPECT_TRUE(runUntil([&] { return !display_->isCut(icon()) && !display_->isCut(*hud()); }));
    display_->claimCompositing(false);
    EXPECT_TRUE(runUntil([&] { return display_->isCut(icon()) && display_->isCut(*hud()); }));
}

TEST_F(ViewsDesktopTest, TheIconLeavesAScreenThatGetsSmaller) {
    ASSERT_EQ(std::system("xrandr --newmode small 40 800 840 968 1056 600 601 605 628 && "
                          "xrandr --addmode screen small && xrandr --output screen --mode small"),
              0);
    EXPECT_TRUE(runUntil([&] { return icon().geometry() == QRect(800 - 98, 600 - 98, 96, 96); }));
    EXPECT_FALSE(savedIconOrigin(defaults_)) << "it was not the user";
    ASSERT_EQ(std::system("xrandr --output screen --mode 1280x800 && xrandr --delmode screen small && "
                          "xrandr --rmmode small"),
              0);
    EXPECT_TRUE(runUntil([&] { return icon().geometry() == QRect(1280 - 98, 800 - 98, 96, 96); }));
}

TEST_F(ViewsDesktopTest, TheScaleMayChangeWhileItShows) {
    showHUD(HUDPhase::info("uno"));
    theService().setScale(1.5);
    ASSERT_TRUE(runUntil([&] { return icon().devicePixelRatio() == 1.5; }));
    // At 24 points from the edges; the letter does not reach as far to the right and down.
    const QPoint corner(1280, 800);
    const QPoint centre = corner - QPoint(75, 75);
    const QRgb surface = tokens::light.surface;
    EXPECT_TRUE(runUntil([&] {
        return display_->color(centre + QPoint(30, 0)) == surface &&
               display_->color(centre + QPoint(0, 30)) == surface;
    }));
    EXPECT_TRUE(runUntil([&] { return display_->color(centre - QPoint(72, 0)) == surface; })) << "the HUD";
    theService().setScale(1);
    EXPECT_TRUE(runUntil([&] { return icon().geometry() == QRect(1280 - 98, 800 - 98, 96, 96); }));
}

TEST_F(ViewsDesktopTest, ThePanelKeepsItsSizeInAnotherScale) {
    const auto open = [&] {
        views_->windows().panel->place();
        state_.panelOpen.set(true);
        views_->windows().panel->show();
    };
    open();
    ASSERT_TRUE(runUntil([&] { return find<PanelWindow>()->isExposed(); }));
    const QSize size = find<PanelWindow>()->size();
    theService().setScale(1.5);
    const auto isRight = [&](qreal scale) {
        const auto* panel = find<PanelWindow>();
        if (panel->devicePixelRatio() != scale || panel->size() != size) return false;
        // In the composer's margin, at the far end of all that is drawn.
        const QPoint end =
            panel->geometry().topLeft() * scale +
            QPointF(size.width() - tokens::shadowReach - 6, size.height() - 30).toPoint() * scale;
        return display_->color(end) == tokens::light.surface;
    };
    EXPECT_TRUE(runUntil([&] { return isRight(1.5); }));
    state_.panelOpen.set(false);
    views_->windows().panel->hide();
    theService().setScale(1);
    EXPECT_TRUE(runUntil([&] { return find<PanelWindow>() == nullptr; })) << "one that hides is made anew";
    open();
    EXPECT_TRUE(runUntil([&] { return isRight(1); }));
    state_.panelOpen.set(false);
    views_->windows().panel->hide();
}

TEST_F(ViewsDesktopTest, TheIconComesBackFromAScreenThatIsUnplugged) {
    ASSERT_EQ(std::system("xrandr --setmonitor left 640/169x800/211+0+0 screen && "
                          "xrandr --setmonitor right 640/169x800/211+640+0 none"),
              0);
    ASSERT_TRUE(runUntil([] { return QGuiApplication::screens().size() == 2; }));
    ASSERT_TRUE(runUntil([&] { return icon().geometry().right() < 640; })) << "to the main one's corner";
    display_->drag(middle(), {700, 400});
    ASSERT_TRUE(runUntil([&] { return savedIconOrigin(defaults_).has_value(); }));
    showHUD(HUDPhase::info("uno"));
    EXPECT_GT(hud()->geometry().left(), icon().geometry().left()) << "the screen's own middle counts";

    ASSERT_EQ(std::system("xrandr --delmonitor right"), 0);
    EXPECT_TRUE(runUntil([&] { return icon().geometry() == QRect(640 - 98, 800 - 98, 96, 96); }));
    EXPECT_TRUE(runUntil([&] { return hud()->geometry().left() < icon().geometry().left(); }));
    ASSERT_EQ(std::system("xrandr --setmonitor right 640/169x800/211+640+0 none"), 0);
    EXPECT_TRUE(runUntil([&] { return middle() == QPoint(700, 400); })) << "plugged in again";
    ASSERT_EQ(std::system("xrandr --delmonitor right && xrandr --delmonitor left"), 0);
    EXPECT_TRUE(runUntil([] { return QGuiApplication::primaryScreen()->size() == QSize(1280, 800); }));
}

TEST_F(ViewsDesktopTest, EscGoesToWhoeverWantsIt) {
    int cancelled = 0;
    QKeyEvent esc(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    QCoreApplication::sendEvent(&icon(), &esc);
    EXPECT_FALSE(esc.isAccepted()) << "nobody asked for it here";
    icon().onCancel = [&] { ++cancelled; };
    QCoreApplication::sendEvent(&icon(), &esc);
    EXPECT_EQ(cancelled, 1);
    EXPECT_FALSE(icon().isFocusable());
}

TEST_F(ViewsDesktopTest, LanguageAndThemeChangeWhileItShows) {
    showHUD(HUDPhase::listening());
    const auto shows = [&](const char* name) { return hud()->view().value(name).toString(); };
    EXPECT_EQ(shows("text"), "Se escribe al terminar de hablar · Esc cancela");
    settings_->setAppLanguage("en");
    EXPECT_EQ(shows("text"), "Typed when you finish speaking · Esc cancels");
    EXPECT_EQ(icon().view().value("tooltip"), "DORIX · Alt+Space to dictate · click for history");
    runFor(0.5);
    const QRgb light = icon().grabWindow().pixel(30, 48);
    appearance_.prefersDark.set(true);
    EXPECT_TRUE(runUntil([&] { return icon().grabWindow().pixel(30, 48) != light; }));
}

TEST_F(ViewsDesktopTest, ThePanelFollowsLanguageAndThemeAndRestsOtherwise) {
    history_.add({.id = "1", .app = "Notas", .title = "Hola", .createdAt = loop_->date(), .answer = "Hola."},
                 HistoryStore::Persist::no);
    const auto other = display_->openWindow({100, 100, 300, 200});
    ASSERT_TRUE(runUntil([&] { return display_->focus() == other; }));
    views_->windows().panel->place();
    state_.panelOpen.set(true);
    views_->windows().panel->show();
    auto& panel = *find<PanelWindow>();
    ASSERT_TRUE(runUntil([&] { return panel.isExposed() && panel.isActive(); }));
    const auto word = [&](const char* name) {
        return panel.view().value("words").toMap().value(name).toString();
    };
    EXPECT_EQ(word("search"), "Buscar en tu historial…");
    settings_->setAppLanguage("en");
    EXPECT_EQ(word("search"), "Search your history…");
    EXPECT_EQ(panel.view().value("rows").value<QAbstractItemModel*>()->index(0, 0).data(PanelRows::day),
              "Today");
    const QRgb light = panel.grabWindow().pixel(40, 300);
    appearance_.prefersDark.set(true);
    EXPECT_TRUE(runUntil([&] { return panel.grabWindow().pixel(40, 300) != light; }));

    const auto heard = [&] { return panel.view().value("heard").toString(); };
    state_.composerRecording.set(true);
    speech_.partial.set("dile a Carlos");
    EXPECT_EQ(heard(), "dile a Carlos");
    state_.composerRecording.set(false);
    EXPECT_EQ(heard(), "dile a Carlos") << "until it is part of the text";
    state_.composerText.set("Dile a Carlos");
    EXPECT_EQ(heard(), "");
    speech_.partial.set("otro dictado");
    EXPECT_EQ(heard(), "") << "not the composer's";

    state_.focusRequest.set(AppState::FocusTarget::composer);
    runFor(0.5);
    int frames = 0;
    QObject::connect(&panel, &QQuickWindow::frameSwapped, &panel, [&] { ++frames; });
    runFor(1.5);
    EXPECT_EQ(frames, 0) << "a cursor that stands still";

    state_.panelOpen.set(false);
    EXPECT_TRUE(runUntil([&] { return display_->focus() == other; })) << "before the window has gone";
    EXPECT_TRUE(panel.isVisible());
    views_->windows().panel->hide();
    EXPECT_FALSE(panel.isVisible());
    display_->close(other);
}

TEST_F(ViewsDesktopTest, AtRestNoFrameIsDrawn) {
    showHUD(HUDPhase::done("Escrito en Notas"));
    state_.hud.set(HUDPhase::hidden());
    ASSERT_TRUE(runUntil([&] { return !hud()->isVisible(); }));
    runFor(0.5);
    int frames = 0;
    QObject receiver;
    for (QQuickWindow* window : {static_cast<QQuickWindow*>(&icon()), static_cast<QQuickWindow*>(hud())}) {
        QObject::connect(window, &QQuickWindow::frameSwapped, &receiver, [&] { ++frames; });
    }
    speech_.level.set(0.5F);
    runFor(1.5);
    EXPECT_EQ(frames, 0);
    state_.hud.set(HUDPhase::listening());
    EXPECT_TRUE(runUntil([&] { return frames > 2; }));
}

}  // namespace
}  // namespace dorix::testing
