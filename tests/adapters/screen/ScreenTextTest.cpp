#include "adapters/harness/EventLoop.h"
#include "adapters/harness/XServer.h"
#include "context/JpegPicture.h"
#include "context/WindowCapture.h"
#include "fakes/FakeDesktop.h"
#include "fakes/TemporaryFolder.h"
#include "linux/process/LinuxHelperProcesses.h"
#include "linux/x11/X11ScreenContent.h"

#include <gtest/gtest.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace dorix {
namespace {

constexpr const char* letter = R"(Querida Marta:

Te escribo para confirmar la reunión del próximo miércoles, 14 de octubre, a las 10:30,
en la sala grande de la tercera planta. Vendrán también Íñigo Álvarez y Begoña Ruiz, del
departamento de compras, que quieren revisar el presupuesto antes de que acabe el año.

El informe que enviaste ayer me parece muy completo. Solo cambiaría dos cosas: en la
página 7 falta la tabla con los gastos de viaje (1.245,60 €), y en el resumen convendría
explicar por qué las ventas bajaron un 12 % durante el segundo trimestre.

The quarterly figures look better than we expected. Please send the updated spreadsheet
to the finance team before Friday, and let me know whether you need any help with the
slides. We should also agree on the next steps for the migration project: who talks to
the customers, when the old servers are switched off, and how we keep a backup.

¿Podrías reservar una mesa para doce personas? Después de la presentación nos gustaría
comer juntos; el restaurante de la plaza suele estar lleno, así que cuanto antes, mejor.
Si surge algún problema, llámame al 612 345 678 o escríbeme antes del lunes.
)";

/// What stands between blanks and marks, and how often.
std::map<std::string, int> wordsOf(const std::string& text) {
    std::map<std::string, int> words;
    std::string word;
    for (const char c : text + " ") {
        const bool isMark = (c >= 0 && c <= '/') || (c >= ':' && c <= '@');
        if (!isMark) {
            word += c;
        } else if (!word.empty()) {
            ++words[std::exchange(word, {})];
        }
    }
    return words;
}

/// Of the letter's words those that were read, in hundredths.
double partRead(const std::string& text) {
    const auto read = wordsOf(text);
    double found = 0;
    double all = 0;
    for (const auto& [word, times] : wordsOf(letter)) {
        const auto known = read.find(word);
        found += known == read.end() ? 0 : std::min(times, known->second);
        all += times;
    }
    return 100 * found / all;
}

class ScreenTextTest : public testing::Test {
 protected:
    ScreenTextTest() { std::ofstream(folder.path() / "letter.txt") << letter; }

    /// The picture of an application, once it has drawn the letter.
    ScreenCapture::Shot shotOf(const OtherProgram& application) {
        ScreenCapture::Shot shot;
        const RunningApplication front{.processIdentifier = application.pid()};
        const auto hasWindow = [&] {
            const auto windows = loop.result(screen.contents()).windows;
            return std::ranges::find(windows, application.pid(), &ScreenContent::Window::ownerProcess) !=
                   windows.end();
        };
        EXPECT_TRUE(loop.runUntil(hasWindow, 30));
        if (isLarge) fillScreen(application);
        constexpr std::size_t withText = 60'000;  // bytes
        EXPECT_TRUE(loop.runUntil(
            [&] {
                shot = loop.result(capture.capture(front));
                return shot.jpeg.size() > withText;
            },
            30));
        return shot;
    }

    void fillScreen(const OtherProgram& application) {
        for (const auto& window : loop.result(screen.contents()).windows) {
            if (window.ownerProcess != application.pid() || window.extent.width < 120) continue;
            auto* const display = xcb_connect(server.display().c_str(), nullptr);
            const std::array<std::uint32_t, 4> place{0, 0, 1920, 1080};
            xcb_configure_window(display, static_cast<xcb_window_t>(window.number),
                                 XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                                     XCB_CONFIG_WINDOW_HEIGHT,
                                 place.data());
            std::free(xcb_get_input_focus_reply(display, xcb_get_input_focus(display), nullptr));
            xcb_disconnect(display);
        }
        loop.runFor(1);
    }

    std::string read(const ScreenCapture::Shot& shot) { return loop.result(capture.text(shot), 60); }

    /// In a home of its own, in which the usual letters have 11 points.
    Variables environment() {
        return {{"DISPLAY", server.display()},
                {"HOME", folder.path().string()},
                {"XDG_CONFIG_HOME", folder.path().string()},
                {"DBUS_SESSION_BUS_ADDRESS", ""},
                {"NO_AT_BRIDGE", "1"},
                {"LC_ALL", "C.UTF-8"}};
    }

    EventLoop loop;
    const XServer server{"1920x1080x24"};
    TemporaryFolder folder;
    X11ScreenContent screen{server.display()};
    SerialExecutor worker;
    FakePrivacyGrants grants;
    LinuxHelperProcesses helpers{loop.main, DORIX_PROGRAM};
    WindowCapture capture{{.executor = loop.main,
                           .worker = worker,
                           .grants = grants,
                           .screen = screen,
                           .helpers = helpers,
                           .ownProcess = ::getpid(),
                           .languages = [] { return std::vector<std::string>{"es-ES", "es", "en-US"}; }}};
    bool isLarge = false;
};

TEST_F(ScreenTextTest, AnEditorsTextIsReadInAWindowOfAnySize) {
    const auto file = (folder.path() / "letter.txt").string();
    const OtherProgram editor({"mousepad", "--disable-server", file}, environment());
    isLarge = true;
    const auto text = read(shotOf(editor));
    EXPECT_GE(partRead(text), 95) << text;
    EXPECT_FALSE(text.contains("\n\n"));
}

TEST_F(ScreenTextTest, LightLettersOnADarkGroundAreReadLikewise) {
    const auto file = (folder.path() / "letter.txt").string();
    const OtherProgram terminal(
        {"xterm", "-fa", "DejaVu Sans Mono", "-fs", "11", "-bg", "#202020", "-fg", "#e0e0e0", "-geometry",
         "92x30", "-e", "sh", "-c", "cat '" + file + "'; sleep 1000"},
        environment());
    const auto text = read(shotOf(terminal));
    EXPECT_GE(partRead(text), 95) << text;
}

TEST_F(ScreenTextTest, WhatIsNoPictureHasNoTextAndCostsNothingElse) {
    constexpr int width = 200;
    constexpr int height = 100;
    const ScreenImage black{
        .width = width,
        .height = height,
        .pixels = {new std::uint8_t[4 * width * height](), std::default_delete<const std::uint8_t[]>()}};
    const auto good = jpegOf(black, 0.8);
    auto huge = good;
    const auto size = huge.find("\xFF\xC0") + 5;
    huge.replace(size, 4, "\xFF\xFF\xFF\xFF");
    std::vector<std::string> pictures{"", "no picture", good.substr(0, good.size() / 2), huge,
                                      std::string(20UZ << 20U, '\xFF')};
    for (std::size_t i = 2; i < good.size(); i += good.size() / 10) {
        pictures.push_back(good);
        pictures.back()[i] = static_cast<char>(pictures.back()[i] ^ 0x55);
    }
    for (const auto& picture : pictures) EXPECT_EQ(read({.jpeg = picture}), "");
    const auto helper = [] {
        const auto id = std::to_string(::getpid());
        std::ifstream list("/proc/" + id + "/task/" + id + "/children");
        return std::vector<pid_t>{std::istream_iterator<pid_t>(list), {}};
    };
    const auto before = helper();
    EXPECT_EQ(read({.jpeg = good}), "");
    EXPECT_EQ(helper(), before) << "the helper has outlived them all";
}

}  // namespace
}  // namespace dorix
