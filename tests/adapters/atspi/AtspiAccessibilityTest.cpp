#include "adapters/harness/SessionBus.h"
#include "base/text/Url.h"
#include "linux/atspi/AccessibilityBus.h"
#include "linux/atspi/AtspiAccessibility.h"
#include "linux/recent/RecentFiles.h"

#include <fstream>

namespace dorix {
namespace {

using Text = std::expected<std::string, AXError>;

class AtspiTest : public testing::Test {
 protected:
    void start() {
        accessibility = std::make_unique<AtspiAccessibility>(
            loop.main, loop.main, [this](std::int32_t) -> std::optional<std::string> { return systemTitle; },
            [this](const std::string& title) { return recent.namedIn(title); });
        ASSERT_TRUE(waitUntil([this] { return accessibility->isAvailable(); }));
    }

    /// Where the session has its accessibility bus, which is started by the question.
    std::string accessibilityAddress() {
        const auto reply = BusPeer(loop).call("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress");
        return reply ? nextString(reply->get()) : "";
    }
    pid_t accessibilityBus() {
        BusPeer peer(loop, accessibilityAddress());
        const char* name = "org.freedesktop.DBus";
        const auto reply =
            peer.call(name, "/org/freedesktop/DBus", name, "GetConnectionUnixProcessID", "s", name);
        std::uint32_t process = 0;
        if (reply) sd_bus_message_read(reply->get(), "u", &process);
        return static_cast<pid_t>(process);
    }

    /// An editor that holds `text`, with the focus in it.
    void startEditor(const std::string& text) {
        const std::string folder = session.folder().path();
        std::ofstream(folder + "/nota.txt") << text;
        editor.emplace(std::vector<std::string>{"mousepad", "--disable-server", folder + "/nota.txt"},
                       Variables{{"AT_SPI_BUS_ADDRESS", accessibilityAddress()},
                                 {"XDG_RUNTIME_DIR", folder},
                                 {"HOME", folder},
                                 {"XDG_DATA_HOME", ""},
                                 {"GSETTINGS_BACKEND", "memory"},
                                 {"NO_AT_BRIDGE", ""}});
        ASSERT_TRUE(waitUntil([&] { return focusString("AXValue") == text; }));
    }
    void startWithEditor() {
        start();
        startEditor("uno dos");
    }
    bool isFocusedSoon(const char* role) {
        return waitUntil([&] { return focusString("AXRole") == role; });
    }
    static void press(const std::string& keys) {
        EXPECT_EQ(OtherProgram({"xdotool", "key", keys}).wait(), 0);
    }

    AXUIElementRef application() const { return accessibility->createApplication(editor->pid(), 0.25); }
    Text focusString(std::string_view attribute) const {
        const auto focus = application()->element("AXFocusedUIElement");
        return focus ? (*focus)->string(attribute) : Text(std::unexpected(focus.error()));
    }
    Text title() const {
        const auto window = application()->element("AXFocusedWindow");
        return window ? (*window)->string("AXTitle") : Text(std::unexpected(window.error()));
    }
    AXError focusError() const {
        const auto focus = application()->copyAttributeValue("AXFocusedUIElement");
        return focus ? AXError{} : focus.error();
    }
    bool waitUntil(const std::function<bool()>& condition) { return loop.runUntil(condition, 30); }

    EventLoop loop;
    SessionBus session{SessionBus::Services::installed};
    std::optional<std::string> systemTitle;
    RecentFiles recent{loop.main, session.folder().path() / ".local/share/recently-used.xbel",
                       session.folder().path()};
    std::unique_ptr<AtspiAccessibility> accessibility;
    std::optional<OtherProgram> editor;
};

TEST_F(AtspiTest, TellsOfAnEditor) {
    startWithEditor();
    const auto focus = application()->element("AXFocusedUIElement");
    ASSERT_TRUE(focus);
    EXPECT_EQ((*focus)->isAttributeSettable("AXValue"), true);
    EXPECT_EQ((*focus)->string("AXValue"), "uno dos");
    EXPECT_EQ((*focus)->string("AXSelectedText"), "");
    EXPECT_TRUE((*focus)->element("AXParent"));
    EXPECT_EQ((*focus)->string("AXNothing").error(), AXError::attributeUnsupported);
    EXPECT_TRUE(title().value_or("").contains("nota.txt"));
    EXPECT_TRUE(waitUntil([this] {
        const auto window = application()->element("AXFocusedWindow");
        return window && (*window)->string("AXDocument") == fileURL(session.folder().path() / "nota.txt");
    })) << "it does not tell, but the desktop knows what it has opened";

    press("ctrl+a");
    EXPECT_TRUE(waitUntil([this] { return focusString("AXSelectedText") == "uno dos"; }));
}

TEST_F(AtspiTest, TellsWhatStandsBeforeTheCursorOrTheSelection) {
    start();
    startEditor("uno dós");
    const auto isBefore = [this](const char* text) {
        return waitUntil([&] { return focusString("AXTextBeforeCursor") == text; });
    };
    EXPECT_TRUE(isBefore("")) << "at the beginning";
    press("Right");
    EXPECT_TRUE(isBefore("u"));
    press("ctrl+End");
    EXPECT_TRUE(isBefore("ós"));
    press("ctrl+shift+Left");
    EXPECT_TRUE(isBefore("o ")) << "what is selected will be replaced";
    press("ctrl+f");
    EXPECT_TRUE(isFocusedSoon("AXTextField"));
    press("ctrl+a");
    EXPECT_TRUE(isBefore("")) << "of the field, not of the text that was there before";
}

TEST_F(AtspiTest, ABusThatIsNotToldOfIsAskedForAgain) {
    const Environment impatient({{"SYSTEMD_BUS_TIMEOUT", "300ms"}});
    const SessionBus bare;
    int asked = 0;
    const BusPeer launcher(loop, "org.a11y.Bus", "/org/a11y/bus",
                           {{"GetAddress", [&](auto*) { return ++asked; }}});
    AccessibilityBus bus(loop.main, loop.main);
    EXPECT_TRUE(waitUntil([&] {
        bus.connect();
        return asked == 2;
    }));
}

TEST_F(AtspiTest, FollowsTheFocusAndFindsOneThatWasThereBefore) {
    startWithEditor();
    press("ctrl+f");
    EXPECT_TRUE(isFocusedSoon("AXTextField"));
    press("Escape");
    EXPECT_TRUE(isFocusedSoon("AXTextArea"));
    press("F10");
    EXPECT_TRUE(waitUntil([this] { return focusError() == AXError::noValue; }))
        << "nothing to type in in a menu";
    press("Escape");
    EXPECT_TRUE(isFocusedSoon("AXTextArea"));

    start();
    EXPECT_EQ(focusString("AXValue"), "uno dos");
    EXPECT_TRUE(title().value_or("").contains("nota.txt"));
}

TEST_F(AtspiTest, AnApplicationOffTheBusIsUnknown) {
    start();
    editor.emplace(std::vector<std::string>{"sleep", "1000"});
    EXPECT_EQ(focusError(), AXError::cannotComplete);
    EXPECT_EQ(title(), std::unexpected(AXError::cannotComplete));
    systemTitle = "Del sistema";
    EXPECT_EQ(title(), "Del sistema");
}

TEST_F(AtspiTest, ASlowApplicationCostsItsBudgetAndNoMore) {
    startWithEditor();
    systemTitle = "Del sistema";
    editor->signal(SIGSTOP);
    const double begun = loop.main.now();
    const auto element = application();
    const auto window = element->element("AXFocusedWindow");
    ASSERT_TRUE(window);
    EXPECT_EQ((*window)->string("AXTitle"), "Del sistema");
    EXPECT_EQ(element->copyAttributeValue("AXFocusedUIElement").error(), AXError::cannotComplete);
    EXPECT_LT(loop.main.now() - begun, 1);
    editor->signal(SIGCONT);
    EXPECT_TRUE(isFocusedSoon("AXTextArea"));

    // The time of all questions together is bounded, however long each takes.
    const auto later = application();
    const auto focus = later->element("AXFocusedUIElement");
    ASSERT_TRUE(focus);
    loop.runFor(0.25);
    EXPECT_EQ((*focus)->string("AXSelectedText").error(), AXError::cannotComplete);
    EXPECT_EQ((*focus)->isAttributeSettable("AXValue").error(), AXError::cannotComplete);
}

TEST_F(AtspiTest, ABusThatDiesIsFoundAgain) {
    startWithEditor();
    const auto old = application()->element("AXFocusedUIElement");
    ASSERT_TRUE(old);
    const pid_t bus = accessibilityBus();
    // Held, the session cannot start the bus anew before the loss has been looked at.
    session.daemon().signal(SIGSTOP);
    ::kill(bus, SIGKILL);
    ASSERT_TRUE(waitUntil([this] { return !accessibility->isAvailable(); }));
    EXPECT_EQ(focusError(), AXError::apiDisabled);
    EXPECT_EQ((*old)->string("AXRole").error(), AXError::apiDisabled);
    session.daemon().signal(SIGCONT);
    ASSERT_TRUE(waitUntil([this] { return accessibility->isAvailable(); }));

    startEditor("tres");
    const auto element = application();
    const auto focus = element->element("AXFocusedUIElement");
    accessibility.reset();
    EXPECT_EQ((*focus)->string("AXSelectedText").error(), AXError::apiDisabled)
        << "it may outlive the adapter";
    EXPECT_EQ(element->copyAttributeValue("AXFocusedUIElement").error(), AXError::apiDisabled);
}

TEST_F(AtspiTest, ASessionThatComesLateIsTakenUp) {
    std::optional<Environment> none(Variables{{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus"}});
    AtspiAccessibility early(
        loop.main, loop.main, [](auto) { return std::nullopt; }, [](const auto&) { return std::nullopt; });
    EXPECT_FALSE(early.isAvailable());
    const auto element = early.createApplication(1, 0.25);
    EXPECT_EQ(element->copyAttributeValue("AXFocusedUIElement").error(), AXError::apiDisabled);
    EXPECT_EQ(element->copyAttributeValue("AXFocusedWindow").error(), AXError::apiDisabled);

    none.reset();
    early.createApplication(1, 0.25);
    EXPECT_TRUE(waitUntil([&] { return early.isAvailable(); }));
}

}  // namespace
}  // namespace dorix
