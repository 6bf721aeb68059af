#include "base/async/ManualExecutor.h"
#include "base/async/TaskScope.h"
#include "context/WindowCapture.h"
#include "fakes/FakeDesktop.h"
#include "fakes/FakeScreenContent.h"

#include <gmock/gmock.h>

#include <optional>
#include <string>

namespace dorix {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Window = ScreenContent::Window;

constexpr std::int32_t ours = 42;
constexpr std::int32_t theirs = 7;

class WindowCaptureTest : public testing::Test {
 protected:
    WindowCaptureTest() { screen.there.displays = {{.number = 5, .extent = {1280, 800, 1}}}; }

    /// The last picture asked for, or what the capture failed with.
    std::string taken(std::optional<RunningApplication> app) {
        std::string outcome = "nothing came";
        TaskScope tasks(executor);
        tasks.spawn(take(std::move(app), outcome));
        executor.runPosted();
        return outcome;
    }
    std::string taken() { return taken(RunningApplication{.processIdentifier = theirs}); }

    static Window window(std::uint64_t number, ScreenContent::Extent extent) {
        return {.number = number, .ownerProcess = theirs, .extent = extent};
    }

    ManualExecutor executor;
    FakePrivacyGrants grants;
    FakeScreenContent screen;
    UnavailableHelperProcesses helpers;
    WindowCapture capture{{.executor = executor,
                           .worker = executor,
                           .grants = grants,
                           .screen = screen,
                           .helpers = helpers,
                           .ownProcess = ours,
                           .languages = [] { return std::vector<std::string>{"es-ES"}; }}};

 private:
    Task<void> take(std::optional<RunningApplication> app, std::string& outcome) {
        try {
            const auto shot = co_await capture.capture(std::move(app));
            const bool isJpeg = shot.jpeg.starts_with("\xFF\xD8\xFF") && shot.jpeg.ends_with("\xFF\xD9");
            outcome = isJpeg ? screen.log.back() : "no JPEG";
            EXPECT_EQ(co_await capture.text(shot), "");
        } catch (const Error& error) {
            outcome = error.localizedDescription();
        }
    }
};

TEST_F(WindowCaptureTest, ThePictureIsAsLargeAsTheWindowUpTo1568Pixels) {
    const auto takenOf = [&](ScreenContent::Extent extent) {
        screen.there.windows = {window(1, extent)};
        return taken();
    };
    EXPECT_EQ(takenOf({800, 600, 1}), "window 1 800x600");
    EXPECT_EQ(takenOf({3136, 2000, 1}), "window 1 1568x1000");
    EXPECT_EQ(takenOf({1000, 700, 2}), "window 1 1568x1097");
    EXPECT_EQ(takenOf({400, 300, 2}), "window 1 800x600");
    EXPECT_EQ(takenOf({121, 40'000, 1}), "window 1 4x1568");
    for (const double resolution : {110, 132, 168}) {
        const double scale = resolution / 96;
        EXPECT_EQ(takenOf({1541 / scale, 1003 / scale, scale}), "window 1 1541x1003");
    }
}

TEST_F(WindowCaptureTest, TheFrontWindowIsTheFirstOfTheApplicationThatIsNoPalette) {
    auto floating = window(2, {600, 400, 1});
    floating.layer = 3;
    auto others = window(3, {600, 400, 1});
    others.ownerProcess = ours;
    screen.there.windows = {
        window(1, {120, 500, 1}), floating, others, window(4, {500, 80, 1}), window(5, {121, 81, 1}),
        window(6, {600, 400, 1})};
    EXPECT_EQ(taken(), "window 5 121x81");
    // The one that the user was in comes first, also where it is kept above others; a palette does not.
    const auto takenIn = [&](std::uint64_t number) {
        return taken(RunningApplication{.processIdentifier = theirs, .windowNumber = number});
    };
    EXPECT_EQ(takenIn(6), "window 6 600x400");
    EXPECT_EQ(takenIn(2), "window 2 600x400");
    EXPECT_EQ(takenIn(1), "window 5 121x81");
    EXPECT_EQ(takenIn(3), "window 5 121x81");
    // One of another computer has no process here.
    for (auto& each : screen.there.windows) each.ownerProcess = 0;
    EXPECT_EQ(taken(RunningApplication{.processIdentifier = 0, .windowNumber = 6}), "window 6 600x400");
}

TEST_F(WindowCaptureTest, WithoutSuchAWindowItIsTheFirstDisplayWithoutOurs) {
    const std::string display = "display 5 without 42 1280x800";
    EXPECT_EQ(taken(std::nullopt), display);
    screen.there.windows = {window(1, {100, 400, 1})};
    EXPECT_EQ(taken(), display);
    screen.there.windows = {window(1, {600, 400, 1}), window(2, {600, 400, 1})};
    screen.there.windows[0].isShareable = false;
    EXPECT_EQ(taken(), display);
    EXPECT_EQ(taken(RunningApplication()), display);
    screen.there.displays = {{.number = 5, .extent = {3840, 2160, 1}}, {.number = 6, .extent = {10, 10, 1}}};
    EXPECT_EQ(taken(std::nullopt), "display 5 without 42 1568x882");
}

TEST_F(WindowCaptureTest, FailuresSayWhatIsMissing) {
    screen.gives = false;
    EXPECT_EQ(taken(), "No se pudo capturar la ventana.");
    screen.there.displays.clear();
    EXPECT_EQ(taken(), "No se pudo capturar la ventana.");
    screen.log.clear();
    grants.screen = false;
    EXPECT_EQ(taken(),
              "Para ver la pantalla, activa «Grabación de pantalla» para DORIX en Ajustes del Sistema.");
    EXPECT_THAT(screen.log, IsEmpty());
}

}  // namespace
}  // namespace dorix
