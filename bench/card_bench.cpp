#include "fakes/FakeDesktop.h"
#include "fakes/FakePasteboard.h"
#include "fakes/MemoryUserDefaults.h"
#include "linux/qt/QtMainLoop.h"
#include "linux/qt/ToolkitDisplay.h"
#include "linux/x11/X11WindowSystem.h"
#include "views/Application.h"
#include "views/Surroundings.h"
#include "views/card/AnswerCardWindow.h"

#include <sys/resource.h>

#include <QCoreApplication>
#include <QEvent>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// How long the answer's card takes to show what has come, and what a long answer costs while it comes:
//
//     tools/desktop/with-desktop build/release/bench/card_bench [CHARACTERS] [CHARACTERS A SECOND] [PARTS A
//     SECOND]
namespace dorix {
namespace {

using Clock = std::chrono::steady_clock;

double milliseconds(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

double processorSeconds() {
    rusage used{};
    ::getrusage(RUSAGE_SELF, &used);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(used.ru_utime) + seconds(used.ru_stime);
}

constexpr double frame = 16;  // ms, at 60 a second

void report(const char* what, std::vector<double> times) {
    if (times.empty()) return;
    std::ranges::sort(times);
    const auto at = [&](double share) {
        return times[static_cast<std::size_t>(share * static_cast<double>(times.size() - 1))];
    };
    const auto late = std::ranges::count_if(times, [](double time) { return time > frame; });
    std::printf("%s: median %.1f ms, p95 %.1f ms, worst %.1f ms, %td over %.0f ms, of %zu\n", what, at(0.5),
                at(0.95), times.back(), late, frame, times.size());
}

/// Sees when a window begins to draw and when what it drew is on the display.
class FrameWatch final : public QObject {
 public:
    explicit FrameWatch(QQuickWindow& window) {
        window.installEventFilter(this);
        connect(&window, &QQuickWindow::frameSwapped, this, [this] {
            const auto now = Clock::now();
            drawing.push_back(milliseconds(now - began_));
            if (awaited_) latencies.push_back(milliseconds(now - *awaited_));
            awaited_.reset();
        });
    }

    /// Something has come that the next frame is to show.
    void expect() {
        if (!awaited_) awaited_ = Clock::now();
    }

    std::vector<double> drawing;
    std::vector<double> latencies;

 private:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::UpdateRequest) began_ = Clock::now();
        return QObject::eventFilter(watched, event);
    }

    Clock::time_point began_ = Clock::now();
    std::optional<Clock::time_point> awaited_;
};

constexpr std::string_view paragraph =
    "El informe de **ventas** crece un 12 % respecto al trimestre anterior, y Ana lo revisa. Marta quiere "
    "verlo antes del *jueves*, con la tabla de `importes` y sin la portada, que se queda como está.\n\n"
    "- El plazo pasa de 30 a **45 días**\n- Las entregas se facturan aparte\n\n";

class CardBench {
 public:
    CardBench()
        : connection_(X11Connection::open(loop_, loop_)),
          windows_(*connection_),
          windowSystem_(*connection_, windows_, finishToolkitRequests),
          surroundings_(loop_, defaults_, appearance_, windowSystem_),
          settings_(defaults_, loginItem_, SystemLanguages{}),
          presenter_({.executor = loop_, .card = card_, .pasteboard = pasteboard_, .urls = urls_}),
          window_(surroundings_.context(), settings_, presenter_),
          frames_(window_) {
        presenter_.actions.close = [] {};
        card_.set(answer_);
        presenter_.show();
        const Rect screen{0, 0, 1280, 800};
        window_.place({1180, 2, 96, 96}, {{.frame = screen, .visibleFrame = screen}});
        window_.open();
        runFor(1);
    }

    /// One part every so often, for so many characters.
    void stream(std::size_t characters, double charactersPerSecond, double partsPerSecond) {
        frames_.drawing.clear();
        frames_.latencies.clear();
        std::vector<double> taking;
        const auto part = static_cast<std::size_t>(charactersPerSecond / partsPerSecond);
        const double before = processorSeconds();
        const double began = loop_.now();
        for (std::size_t parts = 0; answer_.answer.size() < characters; ++parts) {
            runUntil(began + static_cast<double>(parts) / partsPerSecond);
            while (answer_.answer.size() < (parts + 1) * part) {
                answer_.answer += paragraph[answer_.answer.size() % paragraph.size()];
            }
            frames_.expect();
            const auto set = Clock::now();
            card_.set(answer_);
            taking.push_back(milliseconds(Clock::now() - set));
        }
        runFor(0.5);
        const double took = loop_.now() - began;
        report("a part come to its frame on the display", frames_.latencies);
        report("drawing a frame", frames_.drawing);
        report("taking a part in", taking);
        std::printf("%.0f s of processor in %.0f s: %.0f %% of a core\n", processorSeconds() - before, took,
                    100 * (processorSeconds() - before) / took);
    }

 private:
    void runUntil(double time) {
        while (loop_.now() < time) {
            const auto wake = loop_.after(time - loop_.now(), [] {});
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            loop_.cancel(wake);
        }
        QCoreApplication::processEvents();
    }
    void runFor(double seconds) { runUntil(loop_.now() + seconds); }

    QtMainLoop loop_;
    MemoryUserDefaults defaults_;
    FakeLoginItem loginItem_;
    FakePasteboard pasteboard_;
    FakeUrlOpener urls_;
    DesktopAppearance appearance_;
    std::unique_ptr<X11Connection> connection_;
    X11Windows windows_;
    X11WindowSystem windowSystem_;
    Surroundings surroundings_;
    SettingsStore settings_;
    AnswerCardPresenter::Card card_;
    AnswerCardPresenter presenter_;
    AnswerCard answer_{.id = "1", .appName = "Notas", .question = "¿Qué dice el informe?", .streaming = true};
    AnswerCardWindow window_;
    FrameWatch frames_;
};

}  // namespace
}  // namespace dorix

int main(int argc, char** argv) {
    const auto argument = [&](int index, double otherwise) {
        return argc > index ? std::strtod(argv[index], nullptr) : otherwise;
    };
    const auto characters = static_cast<std::size_t>(argument(1, 400'000));
    const double rate = argument(2, 2'000);
    const double parts = argument(3, 40);
    const auto application = dorix::makeApplication(argc, argv, true);
    dorix::CardBench bench;
    bench.stream(characters, rate, parts);
    return EXIT_SUCCESS;
}
