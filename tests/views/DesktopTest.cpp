#include "fakes/MemoryUserDefaults.h"
#include "fakes/settings/SettingsBench.h"
#include "linux/qt/QtMainLoop.h"
#include "linux/qt/ToolkitDisplay.h"
#include "linux/x11/X11WindowSystem.h"
#include "localdata/Language.h"
#include "overlay/Icon.h"
#include "overlay/Placement.h"
#include "views/AccountBench.h"
#include "views/Application.h"
#include "views/OnboardingBench.h"
#include "views/PanelBench.h"
#include "views/ScreenMap.h"
#include "views/ShownText.h"
#include "views/Tokens.h"
#include "views/Views.h"
#include "views/card/AnswerCardWindow.h"
#include "views/overlay/FloatingIconWindow.h"
#include "views/overlay/HUDWindow.h"
#include "views/overlay/MenuWindow.h"
#include "views/overlay/TooltipWindow.h"
#include "views/panel/PanelWindow.h"

#include <gtest/gtest.h>
#include <xcb/shape.h>
#include <xcb/xcb.h>

#include <QEventLoop>
#include <QGuiApplication>
#include <QScreen>
#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

namespace dorix::testing {
namespace {

using FreeReply = decltype([](void* reply) { std::free(reply); });

/// Another program on the display.
class Client {
 public:
    Client() : connection_(xcb_connect(nullptr, nullptr)) {
        root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    }
    ~Client() { xcb_disconnect(connection_); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    /// A window that gets the focus.
    xcb_window_t open(QRect frame) {
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
    /// Asks the window manager for it.
    void setFullScreen(xcb_window_t window, bool fills) {
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = window;
        message.type = atom("_NET_WM_STATE");
        message.data.data32[0] = fills ? 1 : 0;
        message.data.data32[1] = atom("_NET_WM_STATE_FULLSCREEN");
        xcb_send_event(connection_, 0, root_,
                       XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&message));
        xcb_flush(connection_);
    }
    void own(const char* selection, xcb_window_t window) {
        xcb_set_selection_owner(connection_, window, atom(selection), XCB_CURRENT_TIME);
        xcb_flush(connection_);
    }
    void setBytes(xcb_window_t window, const char* property, const std::string& bytes) {
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom(property), atom(property), 8,
                            static_cast<std::uint32_t>(bytes.size()), bytes.data());
        xcb_flush(connection_);
    }

    xcb_window_t focus() const {
        return answer(xcb_get_input_focus_reply, xcb_get_input_focus(connection_))->focus;
    }
    xcb_window_t topmost() const {
        const auto tree = answer(xcb_query_tree_reply, xcb_query_tree(connection_, root_));
        return xcb_query_tree_children(tree.get())[xcb_query_tree_children_length(tree.get()) - 1];
    }
    bool isCut(const QWindow& window) const {
        const auto id = static_cast<xcb_window_t>(window.winId());
        return answer(xcb_shape_query_extents_reply, xcb_shape_query_extents(connection_, id))
                   ->bounding_shaped != 0;
    }

 private:
    template <typename T, typename Cookie>
    std::unique_ptr<T, FreeReply> answer(T* (*wait)(xcb_connection_t*, Cookie, xcb_generic_error_t**),
                                         Cookie cookie) const {
        return std::unique_ptr<T, FreeReply>(wait(connection_, cookie, nullptr));
    }
    xcb_atom_t atom(std::string_view name) const {
        const auto size = static_cast<std::uint16_t>(name.size());
        return answer(xcb_intern_atom_reply, xcb_intern_atom(connection_, 0, size, name.data()))->atom;
    }

    xcb_connection_t* connection_;
    xcb_window_t root_;
};

/// The desktop's settings service, which tells the scale.
class SettingsService {
 public:
    SettingsService() {
        setScale(1);
        client_.own("_XSETTINGS_S0", window_);
    }

    void setScale(double scale) {
        // Least significant byte first: the order and the serial, one setting, a whole number with its name,
        // the serial of its change.
        std::string bytes("\0\0\0\0\0\0\0\0\1\0\0\0\0\0\7\0Xft/DPI\0", 24);
        for (const std::uint32_t number : {++changes_, static_cast<std::uint32_t>(scale * 96 * 1024)}) {
            for (unsigned shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(number >> shift);
        }
        client_.setBytes(window_, "_XSETTINGS_SETTINGS", bytes);
    }

 private:
    Client client_;
    const xcb_window_t window_ = client_.open({0, 0, 1, 1});
    std::uint32_t changes_ = 0;
};

/// The toolkit looks for the service once, at its start. It goes before the end of main, where it still finds
/// all that it needs.
class Toolkit : public ::testing::Environment {
 public:
    void SetUp() override {
        if (std::getenv("DISPLAY") == nullptr) return;
        service.emplace();
        application_ = makeApplication(count_, arguments_.data(), true);
    }
    void TearDown() override {
        application_.reset();
        service.reset();
    }

    std::optional<SettingsService> service;

 private:
    std::string name_ = "views_desktop_test";
    std::array<char*, 2> arguments_{name_.data(), nullptr};
    int count_ = 1;
    std::unique_ptr<QCoreApplication> application_;
};

auto* const toolkit = new Toolkit;
const auto* const registered = ::testing::AddGlobalTestEnvironment(toolkit);

bool run(const std::string& command) { return std::system(command.c_str()) == 0; }

// The user's hands.
std::string at(QPoint point) {
    return "mousemove " + std::to_string(point.x()) + " " + std::to_string(point.y()) + " ";
}
void hands(const std::string& act) { ASSERT_TRUE(run("xdotool " + act)); }
void click(QPoint point, int button = 1) { hands(at(point) + "click " + std::to_string(button)); }
void drag(QPoint from, QPoint to) {
    std::string way = at(from) + "mousedown 1 ";
    for (int step = 1; step <= 8; ++step) way += at(from + (to - from) * step / 8);
    hands(way + "mouseup 1");
}
void press(const std::string& key) { hands("key " + key); }

/// In pixels.
QRgb screenColor(QPoint point) {
    return QGuiApplication::primaryScreen()->grabWindow().toImage().pixel(point);
}

/// What can be read there just now, in pieces of an answer.
std::vector<QString> textsOf(const QQuickWindow& window) {
    std::vector<QString> texts;
    for (const auto& shown : shownTexts(window, QRectF({}, window.size()))) {
        if (shown.seen.height() > 8) texts.push_back(shown.text());
    }
    return texts;
}
bool showsText(const QQuickWindow& window, const QString& text) {
    return std::ranges::any_of(textsOf(window), [&](const QString& one) { return one.contains(text); });
}

/// The views on the display in $DISPLAY, under the hands of a user.
class ViewsDesktopTest : public ::testing::Test {
 protected:
    void SetUp() override {
        if (std::getenv("DISPLAY") == nullptr) {
            if (std::getenv("CI") != nullptr) FAIL() << "DISPLAY is not set";
            GTEST_SKIP() << "DISPLAY is not set";
        }
        loop_ = std::make_unique<QtMainLoop>();
        installLanguage(defaults_, {});
        bench_ = std::make_unique<PanelBench>(*loop_, defaults_);
        account_ = std::make_unique<AccountBench>(*loop_, defaults_);
        onboarding_ = std::make_unique<OnboardingBench>(*loop_, *bench_);
        settings_ = std::make_unique<SettingsBench>(*loop_, defaults_, "/data/DORIX");
        connection_ = X11Connection::open(*loop_, *loop_);
        windows_ = std::make_unique<X11Windows>(*connection_);
        windowSystem_ = std::make_unique<X11WindowSystem>(*connection_, *windows_, finishToolkitRequests);
        surroundings_ = std::make_unique<Surroundings>(*loop_, defaults_, appearance_, *windowSystem_);
        views_ = std::make_unique<Views>(*surroundings_, bench_->state, bench_->settings, bench_->speech,
                                         bench_->panel, bench_->answer, account_->form,
                                         onboarding_->onboarding, settings_->form,
                                         IconView::Verbs{.clicked = [this] { ++clicks_; },
                                                         .tooltip = [] { return iconTooltip({}, {}, false); },
                                                         .menu = [this] { return menuItems(); }});
        hands(at({5, 5}));
        other_.emplace();
        views_->windows().icon->place();
        views_->windows().icon->show();
        runUntil([&] { return icon().isExposed(); });
    }

    void TearDown() override {
        views_.reset();
        surroundings_.reset();
        windowSystem_.reset();
        windows_.reset();
        connection_.reset();
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
    /// Long enough to see that nothing happens.
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
    static PanelWindow* panel() { return find<PanelWindow>(); }
    static AnswerCardWindow* card() { return find<AnswerCardWindow>(); }
    static QPoint middle() { return icon().geometry().center(); }
    /// In the corner of a screen whose own corner is there.
    static bool iconIsIn(QPoint corner) {
        return icon().geometry() == QRect(corner - QPoint(98, 98), QSize(96, 96));
    }

    void showHUD(const HUDPhase& phase) {
        bench_->state.hud.set(phase);
        ASSERT_TRUE(runUntil([&] { return hud() != nullptr && hud()->isExposed(); }));
    }
    void openMenu() {
        click(middle(), 3);
        ASSERT_TRUE(runUntil([&] { return icon().menu() != nullptr && icon().menu()->isExposed(); }));
    }
    bool menuCloses() {
        return runUntil([&] { return icon().menu() == nullptr; });
    }
    void openPanel() {
        views_->windows().panel->place();
        bench_->state.panelOpen.set(true);
        views_->windows().panel->show();
        ASSERT_TRUE(runUntil([&] { return panel()->isExposed() && panel()->isActive(); }));
    }
    /// The card as the shell shows it, over another program's window, which keeps the keyboard.
    void openCard() {
        bench_->answer.actions.close = [this] {
            bench_->answer.hide();
            views_->windows().card->hide();
        };
        bench_->card.set(asked_);
        bench_->answer.show();
        views_->windows().card->place();
        views_->windows().card->show();
        ASSERT_TRUE(runUntil([&] { return card()->isExposed(); }));
    }
    void answer(const std::string& text, bool isLast = false) {
        asked_.answer = text;
        asked_.streaming = !isLast;
        bench_->card.set(asked_);
    }
    /// Of the screen, as the toolkit counts.
    static QRect cardFrame() { return screenmap::toQt(card()->cardFrame()); }
    static std::string lines(int count) {
        std::string text;
        for (int i = 1; i <= count; ++i) text += "Línea " + std::to_string(i) + ".\n\n";
        return text;
    }
    void closePanel() {
        bench_->state.panelOpen.set(false);
        views_->windows().panel->hide();
    }

    std::unique_ptr<QtMainLoop> loop_;
    MemoryUserDefaults defaults_;
    std::unique_ptr<PanelBench> bench_;
    std::unique_ptr<AccountBench> account_;
    std::unique_ptr<OnboardingBench> onboarding_;
    std::unique_ptr<SettingsBench> settings_;
    DesktopAppearance appearance_;
    std::unique_ptr<X11Connection> connection_;
    std::unique_ptr<X11Windows> windows_;
    std::unique_ptr<X11WindowSystem> windowSystem_;
    std::unique_ptr<Surroundings> surroundings_;
    std::unique_ptr<Views> views_;
    std::optional<Client> other_;
    int clicks_ = 0;
    std::string chosen_;
    AnswerCard asked_{
        .id = "1", .appName = "Notas", .question = "¿Qué dice este párrafo?", .streaming = true};
};

TEST_F(ViewsDesktopTest, AClickWithASlipIsAClickAndMovesNothing) {
    const QRect before = icon().geometry();
    click(middle());
    EXPECT_TRUE(runUntil([&] { return clicks_ == 1; }));
    drag(middle(), middle() + QPoint(2, 0));
    EXPECT_TRUE(runUntil([&] { return clicks_ == 2; }));
    for (const int wheelOrMiddle : {4, 5, 6, 7, 2}) click(middle(), wheelOrMiddle);
    click(icon().geometry().topLeft() + QPoint(8, 8));  // the margin is not the icon
    runFor(0.2);
    EXPECT_EQ(clicks_, 2);
    EXPECT_EQ(icon().geometry(), before);
    EXPECT_FALSE(savedIconOrigin(defaults_));
}

TEST_F(ViewsDesktopTest, DraggedAcrossTheMiddleTheHUDChangesSides) {
    showHUD(HUDPhase::info("uno"));
    EXPECT_LT(hud()->geometry().left(), icon().geometry().left());
    drag(middle(), {200, 300});
    ASSERT_TRUE(runUntil([&] { return savedIconOrigin(defaults_).has_value(); }));
    EXPECT_EQ(middle(), QPoint(200, 300));
    EXPECT_EQ(clicks_, 0);
    showHUD(HUDPhase::info("dos"));
    EXPECT_TRUE(runUntil([&] { return hud()->geometry().left() > icon().geometry().left(); }));

    drag(middle(), {0, 300});
    EXPECT_TRUE(runUntil([&] { return icon().geometry().left() == -18; })) << "clamped";
    EXPECT_EQ(savedIconOrigin(defaults_)->x, -18);
}

TEST_F(ViewsDesktopTest, TheMenuTakesKeysAndAClickAndGivesWayToAnythingElse) {
    openMenu();
    for (const int row : {0, 2 /* past the line */}) {
        press("Down");
        EXPECT_TRUE(runUntil([&] { return icon().menu()->currentRow() == row; })) << row;
    }
    press("Escape");
    EXPECT_TRUE(menuCloses());
    openMenu();
    click({20, 20});
    EXPECT_TRUE(menuCloses());
    openMenu();
    bench_->state.hud.set(HUDPhase::listening());
    EXPECT_TRUE(menuCloses()) << "what is typed would go to it";
    EXPECT_TRUE(chosen_.empty());
    openMenu();
    click(icon().menu()->geometry().topLeft() + QPoint(40, 30));
    EXPECT_TRUE(runUntil([&] { return chosen_ == "history"; }));
    EXPECT_EQ(clicks_, 0);
}

TEST_F(ViewsDesktopTest, TheTooltipStandsBesideTheIconUntilTheHUDDoes) {
    hands(at(middle()));
    ASSERT_TRUE(runUntil([] { return find<TooltipWindow>() != nullptr; }));
    EXPECT_NEAR(find<TooltipWindow>()->geometry().center().y(), middle().y(), 1);
    EXPECT_LT(find<TooltipWindow>()->geometry().right(), middle().x());
    showHUD(HUDPhase::info("uno"));
    EXPECT_EQ(find<TooltipWindow>(), nullptr);
}

TEST_F(ViewsDesktopTest, NeitherTakesTheFocusAndBothStayOnTop) {
    const auto window = other_->open({100, 100, 300, 200});
    ASSERT_TRUE(runUntil([&] { return other_->focus() == window; }));
    showHUD(HUDPhase::listening());
    click(middle());
    EXPECT_TRUE(runUntil([&] { return clicks_ == 1; }));
    EXPECT_EQ(other_->focus(), window);
    const auto big = other_->open({0, 0, 1280, 800});
    EXPECT_TRUE(runUntil([&] { return other_->focus() == big; }));
    EXPECT_TRUE(runUntil([&] { return other_->topmost() == hud()->winId(); }));
}

TEST_F(ViewsDesktopTest, TheIconIsNotOnAFilmButTheHUDIs) {
    const auto film = other_->open({0, 0, 1280, 800});
    ASSERT_TRUE(runUntil([&] { return other_->focus() == film; }));
    for (const bool fills : {true, false}) {
        other_->setFullScreen(film, fills);
        EXPECT_TRUE(runUntil([&] { return icon().isVisible() != fills; }));
    }
    other_->setFullScreen(film, true);
    EXPECT_TRUE(runUntil([&] { return !icon().isVisible(); }));
    showHUD(HUDPhase::listening());
    EXPECT_TRUE(runUntil([&] { return other_->topmost() == hud()->winId(); }));
    openPanel();  // above it, and so beside the icon
    EXPECT_TRUE(runUntil([&] { return icon().isVisible(); }));
    closePanel();
    EXPECT_TRUE(runUntil([&] { return !icon().isVisible(); }));
    other_->close(film);
    EXPECT_TRUE(runUntil([&] { return icon().isVisible(); }));
}

TEST_F(ViewsDesktopTest, ACompositorMayComeAndGo) {
    constexpr auto selection = "_NET_WM_CM_S0";
    showHUD(HUDPhase::info("texto"));
    const auto areCut = [&](bool cut) {
        return runUntil([&] { return other_->isCut(icon()) == cut && other_->isCut(*hud()) == cut; });
    };
    EXPECT_TRUE(areCut(true));
    other_->own(selection, other_->open({0, 0, 1, 1}));
    EXPECT_TRUE(areCut(false));
    other_->own(selection, XCB_NONE);
    EXPECT_TRUE(areCut(true));
}

TEST_F(ViewsDesktopTest, TheIconLeavesAScreenThatGetsSmaller) {
    ASSERT_TRUE(
        run("xrandr --newmode small 40 800 840 968 1056 600 601 605 628 && "
            "xrandr --addmode screen small && xrandr --output screen --mode small"));
    EXPECT_TRUE(runUntil([&] { return iconIsIn({800, 600}); }));
    EXPECT_FALSE(savedIconOrigin(defaults_)) << "it was not the user";
    ASSERT_TRUE(
        run("xrandr --output screen --mode 1280x800 && xrandr --delmode screen small && "
            "xrandr --rmmode small"));
    EXPECT_TRUE(runUntil([&] { return iconIsIn({1280, 800}); }));
}

TEST_F(ViewsDesktopTest, TheIconComesBackFromAScreenThatIsUnplugged) {
    ASSERT_TRUE(
        run("xrandr --setmonitor left 640/169x800/211+0+0 screen && "
            "xrandr --setmonitor right 640/169x800/211+640+0 none"));
    ASSERT_TRUE(runUntil([] { return QGuiApplication::screens().size() == 2; }));
    ASSERT_TRUE(runUntil([&] { return iconIsIn({640, 800}); })) << "to the main one's corner";
    drag(middle(), {700, 400});
    ASSERT_TRUE(runUntil([&] { return savedIconOrigin(defaults_).has_value(); }));
    showHUD(HUDPhase::info("uno"));
    EXPECT_GT(hud()->geometry().left(), icon().geometry().left()) << "the screen's own middle counts";

    ASSERT_TRUE(run("xrandr --delmonitor right"));
    EXPECT_TRUE(runUntil([&] { return iconIsIn({640, 800}); }));
    EXPECT_TRUE(runUntil([&] { return hud()->geometry().left() < icon().geometry().left(); }));
    ASSERT_TRUE(run("xrandr --setmonitor right 640/169x800/211+640+0 none"));
    EXPECT_TRUE(runUntil([&] { return middle() == QPoint(700, 400); })) << "plugged in again";
    ASSERT_TRUE(run("xrandr --delmonitor right && xrandr --delmonitor left"));
    EXPECT_TRUE(runUntil([] { return QGuiApplication::primaryScreen()->size() == QSize(1280, 800); }));
}

TEST_F(ViewsDesktopTest, TheScaleMayChangeWhileTheyShow) {
    showHUD(HUDPhase::info("uno"));
    openPanel();
    const QSize size = panel()->size();
    toolkit->service->setScale(1.5);
    const QRgb surface = tokens::light.surface;
    // In the composer's margin, at the far end of all that is drawn.
    const auto panelIsRight = [&](qreal scale) {
        // A whole number of pixels is not always one of points.
        const QSize off = panel()->size() - size;
        if (panel()->devicePixelRatio() != scale ||
            std::max(std::abs(off.width()), std::abs(off.height())) > 1)
            return false;
        const QPointF end(panel()->width() - tokens::shadowReach - 6, panel()->height() - 30);
        return screenColor(panel()->geometry().topLeft() * scale + (end * scale).toPoint()) == surface;
    };
    EXPECT_TRUE(runUntil([&] { return panelIsRight(1.5); }));
    // At 24 points from the edges; the letter does not reach as far to the right and down.
    const QPoint centre = QPoint(1280, 800) - QPoint(75, 75);
    for (const QPoint part : {QPoint(30, 0), QPoint(0, 30), QPoint(-72, 0) /* the HUD */}) {
        EXPECT_TRUE(runUntil([&] { return screenColor(centre + part) == surface; })) << part.x();
    }
    closePanel();
    toolkit->service->setScale(1);
    EXPECT_TRUE(runUntil([&] { return iconIsIn({1280, 800}); }));
    EXPECT_TRUE(runUntil([&] { return panel() == nullptr; })) << "one that hides is made anew";
    openPanel();
    EXPECT_TRUE(runUntil([&] { return panelIsRight(1); }));
}

TEST_F(ViewsDesktopTest, LanguageAndThemeChangeWhileTheyShow) {
    bench_->history.add(
        {.id = "1", .app = "Notas", .title = "Hola", .createdAt = loop_->date(), .answer = "Hola."},
        HistoryStore::Persist::no);
    showHUD(HUDPhase::listening());
    openPanel();
    EXPECT_TRUE(shows(*hud(), "Se escribe al terminar de hablar · Esc cancela"));
    EXPECT_TRUE(shows(*panel(), "Buscar en tu historial…"));
    bench_->settings.setAppLanguage("en");
    EXPECT_TRUE(runUntil([&] { return shows(*hud(), "Typed when you finish speaking · Esc cancels"); }));
    EXPECT_TRUE(runUntil([&] { return shows(*panel(), "Search your history…"); }));
    EXPECT_TRUE(runUntil([&] { return shows(*panel(), "Today"); }));
    appearance_.prefersDark.set(true);
    for (QQuickWindow* window : std::initializer_list<QQuickWindow*>{&icon(), panel()}) {
        const QPoint inside(30, window->height() / 2);
        EXPECT_TRUE(runUntil([&] { return qBlue(window->grabWindow().pixel(inside)) < 0x40; }));
    }
}

TEST_F(ViewsDesktopTest, ThePanelShowsWhatItsMicrophoneHearsUntilItIsWritten) {
    openPanel();
    bench_->state.composerRecording.set(true);
    bench_->speech.partial.set("dile a Carlos");
    EXPECT_TRUE(runUntil([&] { return shows(*panel(), "dile a Carlos"); }));
    bench_->state.composerRecording.set(false);
    runFor(0.1);
    EXPECT_TRUE(shows(*panel(), "dile a Carlos")) << "until it is part of the text";
    bench_->state.composerText.set("Dile a Carlos");
    EXPECT_TRUE(runUntil([&] { return !shows(*panel(), "dile a Carlos"); }));
    bench_->speech.partial.set("otro dictado");
    runFor(0.1);
    EXPECT_FALSE(shows(*panel(), "otro dictado")) << "not the composer's";
}

TEST_F(ViewsDesktopTest, TheKeyboardReachesTheLinksOfAnAnswer) {
    bench_->history.add(
        {.id = "1",
         .kind = HistoryKind::pregunta,
         .answer = "Lee [el **contrato**](https://a.example/c) y\n[lo demás](https://b.example)."},
        HistoryStore::Persist::no);
    openPanel();
    press("Down");
    ASSERT_TRUE(runUntil([&] {
        const auto texts = shownTexts(*panel(), QRectF({}, panel()->size()));
        return std::ranges::any_of(texts, [](const auto& one) { return one.text().contains("<a href"); });
    }));
    // The first time it says where the link leads.
    press("Tab Tab Return Return Tab Return Return shift+Tab Return Return");
    press("shift+Tab shift+Tab Tab Tab Return Return");
    const std::vector<std::string> opened{"https://a.example/c", "https://b.example", "https://a.example/c",
                                          "https://a.example/c"};
    EXPECT_TRUE(runUntil([&] { return bench_->urls.opened == opened; }));
}

TEST_F(ViewsDesktopTest, ThePanelStandsBesideTheIconThatIsDraggedOntoIt) {
    openPanel();
    const QRect before = panel()->geometry();
    drag(middle(), before.center());
    const auto overlaps = [&] {
        const QRect card = panel()->geometry().marginsRemoved({24, 24, 24, 24});
        return card.contains(middle());
    };
    EXPECT_TRUE(runUntil([&] { return panel()->geometry() != before && !overlaps(); }));
}

TEST_F(ViewsDesktopTest, InANarrowPanelEverythingCanBeDoneAsInAWideOne) {
    for (const auto* id : {"uno", "dos"}) {
        bench_->history.add({.id = id, .title = id, .answer = id}, HistoryStore::Persist::no);
    }
    int inserted = 0;
    bench_->panel.actions.reinsert = [&](const HistoryItem& item) { inserted += item.id == "uno" ? 1 : 0; };
    defaults_.set("panelSize", Json::array({560, 400}));
    openPanel();
    const auto middleOf = [&](const QString& text) {
        EXPECT_TRUE(runUntil([&] { return shows(*panel(), text); })) << text.toStdString();
        for (const auto& shown : shownTexts(*panel(), QRectF({}, panel()->size()))) {
            if (shown.text() == text) return panel()->geometry().topLeft() + shown.seen.center().toPoint();
        }
        return QPoint();
    };
    hands(at(middleOf("uno")) + "click --repeat 2 --delay 60 1");
    EXPECT_TRUE(runUntil([&] { return inserted == 1; })) << "the first click has brought up the detail";
    press("Delete");
    click(middleOf("Deshacer"));
    EXPECT_TRUE(runUntil([&] { return bench_->history.items().size() == 2; }));
    press("ctrl+f d");
    EXPECT_TRUE(runUntil([&] { return bench_->state.query.get() == "d"; }));
    press("Down Right Left Down");
    EXPECT_TRUE(runUntil([&] { return bench_->state.selectedID.get() == "dos"; }));
    EXPECT_TRUE(bench_->panel.layout.showsList());
}

TEST_F(ViewsDesktopTest, TheCardGrowsWithoutTakingTheKeyboardFromWhoAsked) {
    const auto editor = other_->open({100, 100, 300, 200});
    ASSERT_TRUE(runUntil([&] { return other_->focus() == editor; }));
    openCard();
    EXPECT_TRUE(shows(*card(), "Pensando…"));
    const QRect small = cardFrame();
    EXPECT_FALSE(small.intersects(icon().geometry().adjusted(22, 22, -22, -22)));
    answer(lines(5));
    EXPECT_TRUE(runUntil([&] { return cardFrame().height() > small.height(); }));
    EXPECT_EQ(cardFrame().bottom(), small.bottom()) << "it stays where it stands";
    answer(lines(200));
    EXPECT_TRUE(runUntil([&] { return cardFrame().top() == 8; }));
    runFor(0.3);
    EXPECT_EQ(other_->focus(), editor);
    click({cardFrame().right() + 100 - 460 - 200, 400});  // beside it: it is not there for the pointer
    EXPECT_EQ(other_->focus(), editor);

    click(cardFrame().center());
    ASSERT_TRUE(runUntil([&] { return card()->isActive(); }));
    press("Escape");
    EXPECT_TRUE(runUntil([&] { return !card()->isVisible(); }));
    EXPECT_TRUE(runUntil([&] { return other_->focus() == editor; })) << "given back";
}

TEST_F(ViewsDesktopTest, TheCardStandsAboveAFilmWithoutTheKeyboard) {
    const auto film = other_->open({0, 0, 1280, 800});
    ASSERT_TRUE(runUntil([&] { return other_->focus() == film; }));
    other_->setFullScreen(film, true);
    ASSERT_TRUE(runUntil([&] { return !icon().isVisible(); }));
    openCard();
    const QRgb surface = tokens::light.surface;
    EXPECT_TRUE(runUntil([&] { return screenColor(cardFrame().topRight() + QPoint(-150, 24)) == surface; }));
    EXPECT_EQ(other_->focus(), film);
}

TEST_F(ViewsDesktopTest, TheCardFollowsTheEndUntilTheUserScrollsBack) {
    openCard();
    answer(lines(100));
    EXPECT_TRUE(runUntil([&] { return showsText(*card(), "Línea 100.") && cardFrame().top() == 8; }));
    runFor(0.2);
    hands(at(cardFrame().center()) + "click --repeat 12 --delay 10 4");
    EXPECT_TRUE(runUntil([&] { return !showsText(*card(), "Línea 100."); }));
    const auto seen = textsOf(*card());
    answer(lines(160));
    runFor(0.3);
    EXPECT_TRUE(textsOf(*card()) == seen) << "what is being read stays";
    hands(at(cardFrame().center()) + "click --repeat 80 --delay 10 5");
    EXPECT_TRUE(runUntil([&] { return showsText(*card(), "Línea 160."); }));
    answer(lines(180), true);
    EXPECT_TRUE(runUntil([&] { return showsText(*card(), "Línea 180.") && shows(*card(), "Copiar"); }));
}

TEST_F(ViewsDesktopTest, TheCardStaysWhereItIsDraggedAndIsThereTheNextTime) {
    openCard();
    answer(lines(4), true);
    ASSERT_TRUE(runUntil([&] { return shows(*card(), "Copiar"); }));
    runFor(0.2);  // a window manager may still be at its place
    const QRect before = cardFrame();
    const QPoint head = before.topLeft() + QPoint(200, 24);
    drag(head, head + QPoint(-300, -200));
    EXPECT_TRUE(runUntil([&] { return savedCardPosition(defaults_, "").has_value(); }));
    EXPECT_TRUE(runUntil([&] { return cardFrame() == before.translated(-300, -200); }));
    answer(lines(8), true);
    EXPECT_TRUE(runUntil([&] { return cardFrame().height() > before.height(); }));
    EXPECT_EQ(cardFrame().topLeft(), before.topLeft() + QPoint(-300, -200))
        << "from there it grows downwards";
    bench_->answer.actions.close();
    ASSERT_TRUE(runUntil([&] { return !card()->isVisible(); }));
    openCard();
    EXPECT_TRUE(runUntil([&] { return cardFrame().topLeft() == before.topLeft() + QPoint(-300, -200); }));
}

TEST_F(ViewsDesktopTest, TheCardIsWhollyUsableByKeyboardOnceItIsCalled) {
    std::string inserted;
    bench_->answer.actions.insert = [&](std::string text) { inserted = std::move(text); };
    asked_.sources = {{"Página", "https://a.example/p"}, {"Nota", std::nullopt}};
    openCard();
    answer("Lee [esto](https://b.example).", true);
    ASSERT_TRUE(runUntil([&] { return shows(*card(), "Insertar"); }));
    views_->windows().card->takeKeyboard();
    ASSERT_TRUE(runUntil([&] { return card()->isActive(); }));
    // Enter alone types nothing anywhere; a link says first where it leads.
    press("Return Tab Return Return Tab Return");
    const std::vector<std::string> opened{"https://b.example", "https://a.example/p"};
    EXPECT_TRUE(runUntil([&] { return bench_->urls.opened == opened; }));
    EXPECT_EQ(inserted, "");
    press("ctrl+c");
    ASSERT_TRUE(runUntil([&] { return !bench_->pasteboard.log.empty(); }));
    EXPECT_EQ(bench_->pasteboard.log.back(), "setString " + asked_.answer);
    press("Tab Return");
    EXPECT_TRUE(runUntil([&] { return inserted == asked_.answer; }));
}

TEST_F(ViewsDesktopTest, AtRestNoFrameIsDrawn) {
    showHUD(HUDPhase::done("Escrito en Notas"));
    bench_->state.hud.set(HUDPhase::hidden());
    ASSERT_TRUE(runUntil([&] { return !hud()->isVisible(); }));
    openPanel();
    bench_->state.focusRequest.set(AppState::FocusTarget::composer);  // whose cursor stands still
    runFor(0.5);
    int frames = 0;
    QObject receiver;
    for (QQuickWindow* window : std::initializer_list<QQuickWindow*>{&icon(), hud(), panel()}) {
        QObject::connect(window, &QQuickWindow::frameSwapped, &receiver, [&] { ++frames; });
    }
    bench_->speech.level.set(0.5F);
    runFor(1.5);
    EXPECT_EQ(frames, 0);
    bench_->state.hud.set(HUDPhase::listening());
    EXPECT_TRUE(runUntil([&] { return frames > 2; }));
}

}  // namespace
}  // namespace dorix::testing
