#include "adapters/atspi/PrivateSession.h"
#include "linux/atspi/AccessibilityBus.h"
#include "linux/atspi/AtspiAccessibility.h"
#include "linux/qt/QtMainLoop.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTimer>
#include <algorithm>
#include <fstream>

namespace dorix {
namespace {

using Text = std::expected<std::string, AXError>;

class AtspiTest : public testing::Test {
 protected:
    void SetUp() override {
        if (!qEnvironmentVariableIsSet("DISPLAY")) {
            if (qEnvironmentVariableIsSet("CI")) FAIL() << "no display";
            GTEST_SKIP() << "no display";
        }
        session = std::make_unique<PrivateSession>();
        setSessionBus(session->address());
        loop = std::make_unique<QtMainLoop>();
    }
    void TearDown() override {
        accessibility.reset();
        editor.reset();
        loop.reset();
        session.reset();
    }

    static void setSessionBus(const std::string& address) {
        qputenv("DBUS_SESSION_BUS_ADDRESS", QByteArray::fromStdString(address));
    }

    void start() {
        accessibility = std::make_unique<AtspiAccessibility>(
            *loop, *loop, [this](std::int32_t) -> std::optional<std::string> { return systemTitle; });
    }
    bool becomesAvailable() {
        return waitUntil([this] { return accessibility->isAvailable(); });
    }

    /// An editor that holds `text`, with the focus in it.
    void startEditor(const std::string& text) {
        const auto file = session->folder() + "/nota.txt";
        std::ofstream(file) << text;
        editor =
            std::make_unique<ChildProcess>(std::vector<std::string>{"mousepad", "--disable-server", file},
                                           session->applicationEnvironment());
    }
    void startWithEditor(const std::string& text) {
        start();
        ASSERT_TRUE(becomesAvailable());
        startEditor(text);
        ASSERT_TRUE(waitUntil([this] { return focusString("AXRole") == "AXTextArea"; }));
    }
    void press(const std::string& keys) const {
        EXPECT_EQ(ChildProcess({"xdotool", "key", keys}, {}).wait(), 0);
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

    /// Runs the main loop until it holds; false after 15 s.
    template <typename Condition>
    bool waitUntil(Condition condition) const {
        const double end = loop->now() + 15;
        QTimer tick;
        tick.start(20);
        while (!condition()) {
            if (loop->now() > end) return false;
            QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        }
        return true;
    }

    std::unique_ptr<PrivateSession> session;
    std::unique_ptr<QtMainLoop> loop;
    std::optional<std::string> systemTitle;
    std::unique_ptr<AtspiAccessibility> accessibility;
    std::unique_ptr<ChildProcess> editor;
};

TEST_F(AtspiTest, TellsOfAnEditor) {
    startWithEditor("uno dos");
    const auto focus = application()->element("AXFocusedUIElement");
    ASSERT_TRUE(focus);
    EXPECT_EQ((*focus)->isAttributeSettable("AXValue"), true);
    EXPECT_EQ((*focus)->string("AXValue"), "uno dos");
    EXPECT_EQ((*focus)->string("AXSelectedText"), "");
    EXPECT_TRUE((*focus)->element("AXParent"));
    EXPECT_EQ((*focus)->string("AXNothing").error(), AXError::attributeUnsupported);
    EXPECT_TRUE(title().value_or("").contains("nota.txt"));

    press("ctrl+a");
    EXPECT_TRUE(waitUntil([this] { return focusString("AXSelectedText") == "uno dos"; }));
}

TEST_F(AtspiTest, ABusThatIsNotToldOfIsAskedForAgain) {
    qputenv("SYSTEMD_BUS_TIMEOUT", "300ms");
    const auto launcher = BusConnection::openSession(*loop, *loop, [] {});
    ASSERT_TRUE(launcher->awaitReady(5));
    int asked = 0;
    const auto swallow = [](sd_bus_message*, void* count, sd_bus_error*) {
        return ++*static_cast<int*>(count);
    };
    // NOLINTNEXTLINE(modernize-avoid-c-arrays): what sd-bus takes
    const sd_bus_vtable table[] = {SD_BUS_VTABLE_START(0),
                                   SD_BUS_METHOD("GetAddress", "", "s", swallow, SD_BUS_VTABLE_UNPRIVILEGED),
                                   SD_BUS_VTABLE_END};
    launcher->addObject("/org/a11y/bus", "org.a11y.Bus", table, &asked);
    const auto takeName = launcher->newCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                            "org.freedesktop.DBus", "RequestName");
    sd_bus_message_append(takeName.get(), "su", "org.a11y.Bus", 0);
    ASSERT_TRUE(launcher->call(takeName, 5));

    AccessibilityBus bus(*loop, *loop);
    bus.connect();
    ASSERT_TRUE(waitUntil([&] { return asked == 1; }));
    EXPECT_TRUE(waitUntil([&] {
        bus.connect();
        return asked == 2;
    }));
    qunsetenv("SYSTEMD_BUS_TIMEOUT");
}

TEST_F(AtspiTest, FollowsTheFocus) {
    startWithEditor("uno dos");
    press("ctrl+f");
    EXPECT_TRUE(waitUntil([this] { return focusString("AXRole") == "AXTextField"; }));
    press("Escape");
    EXPECT_TRUE(waitUntil([this] { return focusString("AXRole") == "AXTextArea"; }));
}

TEST_F(AtspiTest, FindsAFocusThatWasThereBefore) {
    startWithEditor("uno dos");
    start();
    ASSERT_TRUE(becomesAvailable());
    EXPECT_EQ(focusString("AXValue"), "uno dos");
    EXPECT_TRUE(title().value_or("").contains("nota.txt"));
}

TEST_F(AtspiTest, AnOpenMenuLeavesNothingToTypeIn) {
    startWithEditor("uno dos");
    press("F10");
    EXPECT_TRUE(waitUntil([this] { return focusError() == AXError::noValue; }));
    press("Escape");
    EXPECT_TRUE(waitUntil([this] { return focusString("AXRole") == "AXTextArea"; }));
}

TEST_F(AtspiTest, AnApplicationOffTheBusIsUnknown) {
    start();
    ASSERT_TRUE(becomesAvailable());
    editor =
        std::make_unique<ChildProcess>(std::vector<std::string>{"cat"}, std::map<std::string, std::string>{});
    EXPECT_EQ(focusError(), AXError::cannotComplete);
    EXPECT_EQ(title(), std::unexpected(AXError::cannotComplete));
    systemTitle = "Del sistema";
    EXPECT_EQ(title(), "Del sistema");
}

TEST_F(AtspiTest, AHungApplicationCostsItsBudgetAndNoMore) {
    startWithEditor("uno dos");
    systemTitle = "Del sistema";
    editor->signal(SIGSTOP);
    const double begun = loop->now();
    const auto element = application();
    const auto window = element->element("AXFocusedWindow");
    ASSERT_TRUE(window);
    EXPECT_EQ((*window)->string("AXTitle"), "Del sistema");
    EXPECT_EQ(element->copyAttributeValue("AXFocusedUIElement").error(), AXError::cannotComplete);
    EXPECT_LT(loop->now() - begun, 0.5);
    editor->signal(SIGCONT);
    EXPECT_TRUE(waitUntil([this] { return focusString("AXRole") == "AXTextArea"; }));
}

TEST_F(AtspiTest, TheTimeOfAllQuestionsTogetherIsBounded) {
    startWithEditor("uno dos");
    const auto element = accessibility->createApplication(editor->pid(), 0.25);
    auto focus = element->element("AXFocusedUIElement");
    ASSERT_TRUE(focus);
    ASSERT_TRUE(waitUntil([&, end = loop->now() + 0.25] { return loop->now() > end; }));
    EXPECT_EQ((*focus)->string("AXSelectedText").error(), AXError::cannotComplete);
    EXPECT_EQ((*focus)->isAttributeSettable("AXValue").error(), AXError::cannotComplete);
}

TEST_F(AtspiTest, ABusThatDiesIsFoundAgain) {
    startWithEditor("uno dos");
    const auto old = application()->element("AXFocusedUIElement");
    ASSERT_TRUE(old);
    const pid_t bus = session->accessibilityBus();
    // Held, the session cannot start the bus anew before the loss has been looked at.
    session->bus().signal(SIGSTOP);
    ::kill(bus, SIGKILL);
    ASSERT_TRUE(waitUntil([this] { return !accessibility->isAvailable(); }));
    EXPECT_EQ(focusError(), AXError::apiDisabled);
    EXPECT_EQ((*old)->string("AXRole").error(), AXError::apiDisabled);
    session->bus().signal(SIGCONT);
    ASSERT_TRUE(becomesAvailable());

    startEditor("tres");
    EXPECT_TRUE(waitUntil([this] { return focusString("AXValue") == "tres"; }));
}

TEST_F(AtspiTest, ASessionThatComesLateIsTakenUp) {
    setSessionBus("unix:path=/nonexistent/bus");
    start();
    EXPECT_FALSE(accessibility->isAvailable());
    const auto element = accessibility->createApplication(1, 0.25);
    EXPECT_EQ(element->copyAttributeValue("AXFocusedUIElement").error(), AXError::apiDisabled);
    EXPECT_EQ(element->copyAttributeValue("AXFocusedWindow").error(), AXError::apiDisabled);

    setSessionBus(session->address());
    accessibility->createApplication(1, 0.25);
    EXPECT_TRUE(becomesAvailable());
}

TEST_F(AtspiTest, ElementsMayOutliveTheAdapter) {
    startWithEditor("uno dos");
    const auto element = application();
    const auto focus = element->element("AXFocusedUIElement");
    accessibility.reset();
    EXPECT_EQ((*focus)->string("AXSelectedText").error(), AXError::apiDisabled);
    EXPECT_EQ(element->copyAttributeValue("AXFocusedUIElement").error(), AXError::apiDisabled);
}

}  // namespace
}  // namespace dorix

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
