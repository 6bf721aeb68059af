// How long the program itself takes from a transcript to the stroke of the paste chord, while an image of 20
// MB and a list of files are on the clipboard: the text is polished and put there, what is in front is
// compared, the chord struck. Beside it: a key struck by a bare client of the display. In $DISPLAY, with a
// window manager.

#include "adapters/harness/XDesktop.h"
#include "context/TextInsertion.h"
#include "context/UserClipboard.h"
#include "linux/apps/DesktopEntries.h"
#include "linux/x11/X11EventPoster.h"
#include "linux/x11/X11Pasteboard.h"
#include "linux/x11/X11SelectionServer.h"
#include "linux/x11/X11Workspace.h"
#include "writing/BasicPolisher.h"

#include <xcb/xtest.h>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace dorix {
namespace {

constexpr int dictations = 200;
constexpr std::size_t imageBytes = 20'000'000;

void print(const char* what, std::vector<double> seconds) {
    std::ranges::sort(seconds);
    const auto at = [&](double part) {
        return 1000 * seconds[static_cast<std::size_t>(part * static_cast<double>(seconds.size() - 1))];
    };
    std::printf("%-34s p50 %.2f ms, p95 %.2f ms, p99 %.2f ms, worst %.2f ms\n", what, at(0.5), at(0.95),
                at(0.99), at(1));
}

/// Everything on one main loop, as in the program.
struct Desktop {
    EventLoop loop;
    std::unique_ptr<X11Connection> connection = connectTo(loop);
    std::unique_ptr<X11Connection> other = connectTo(loop);
    X11Keyboard keyboard{*connection};
    X11KeyInput input{*connection, keyboard};
    X11Windows windows{*connection};
    OtherApplication editor{loop, "editor", "Editor", OtherApplication::Belongs::toAnother};
    DesktopEntries entries{loop.main};
    X11Workspace workspace{windows, entries};
    X11Pasteboard pasteboard{*connection};
    X11EventPoster poster{*connection, keyboard, input, windows, &pasteboard};
    UserClipboard clipboard{loop.main, pasteboard};
    TextInserter inserter{{loop.main, clipboard, pasteboard, poster, workspace}};
    X11SelectionServer owner{*other, [](const auto&) {}};

    bool awaitKey(const char* key) {
        return loop.runUntil([&] { return editor.count(key) > 0; }, 5);
    }

    void copyImageAndFiles() {
        SelectionContents contents;
        contents.put(other->atom("image/png"), {other->atom("image/png"), 8, std::string(imageBytes, 'x')});
        contents.put(other->atom("text/uri-list"), {other->atom("text/uri-list"), 8, "file:///a\r\n"});
        owner.take(other->atom("CLIPBOARD"), std::move(contents));
    }

    double dictate(const BasicPolisher& polisher) {
        copyImageAndFiles();
        loop.runFor(0.02);
        clipboard.prepare();
        loop.runFor(0.3);  // while the user talks
        editor.forgetKeys();
        const double start = loop.main.now();
        Insertion insertion{
            .text = polisher.polished("bueno nos vemos mañana a las diez este en la oficina").text};
        insertion.target = workspace.frontmostApplication();
        insertion.hasCursor = false;  // nobody pastes here, which is not waited for
        inserter.insertText(std::move(insertion));
        const double struck = loop.main.now() - start;
        awaitKey("+v/4");
        TaskScope tasks(loop.main);
        const auto settled = tasks.spawn(clipboard.settled());
        loop.runUntil([&] { return settled.isDone(); });
        return struck;
    }

    double strikeBare() {
        const auto key = keyboard.keyForSymbol('a');
        editor.forgetKeys();
        const double start = loop.main.now();
        xcb_test_fake_input(other->get(), XCB_KEY_PRESS, *key, 0, XCB_NONE, 0, 0, 0);
        xcb_test_fake_input(other->get(), XCB_KEY_RELEASE, *key, 0, XCB_NONE, 0, 0, 0);
        other->reply(xcb_get_input_focus_reply, xcb_get_input_focus(other->get()));
        return loop.main.now() - start;
    }
};

int run() {
    Desktop desktop;
    desktop.loop.runUntil([&] { return desktop.windows.frontWindow() == desktop.editor.window(); });
    const BasicPolisher polisher;
    std::vector<double> own;
    std::vector<double> bare;
    for (int i = 0; i < dictations; ++i) {
        own.push_back(desktop.dictate(polisher));
        bare.push_back(desktop.strikeBare());
    }
    print("transcript to keystroke", own);
    print("a key struck by a bare client", bare);
    return 0;
}

}  // namespace
}  // namespace dorix

int main() { return dorix::run(); }
