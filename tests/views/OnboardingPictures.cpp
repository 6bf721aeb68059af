#include "views/Exhibit.h"
#include "views/OnboardingBench.h"
#include "views/Tokens.h"
#include "views/onboarding/OnboardingWindow.h"

#include <QCoreApplication>

namespace dorix::testing {

namespace {

using Step = Onboarding::Step;

/// The window of the first run on a computer that has what the state says.
class OnboardingExhibit final : public Exhibit {
 public:
    explicit OnboardingExhibit(const Style& style) : Exhibit(style) { bench.state.abilities.set({}); }
    ~OnboardingExhibit() override { windows.clear(); }

    void show(Step step) {
        auto& onboarding = firstRun.onboarding;
        for (onboarding.begin(); onboarding.step().get() != step;) onboarding.next();
        bench.state.practises.set(hasPractised);
        if (hasPractised) onboarding.dictated();
        auto window = std::make_unique<OnboardingWindow>(context, bench.settings, onboarding);
        window->fit();
        // What its rows need is known once they have been laid out, as they are to be drawn.
        window->grabWindow();
        QCoreApplication::processEvents();
        window->fit();
        hang(std::move(window), tokens::cardRadius);
    }

    OnboardingBench firstRun{executor, bench};
    bool hasPractised = false;
};

Picture picture(std::string name, Step step, void (*prepare)(OnboardingExhibit&), std::vector<Style> styles) {
    return {.name = std::move(name),
            .show =
                [step, prepare](const Style& style) {
                    auto exhibit = std::make_unique<OnboardingExhibit>(style);
                    prepare(*exhibit);
                    exhibit->show(step);
                    return exhibit;
                },
            .styles = std::move(styles)};
}

}  // namespace

std::vector<Picture> onboardingPictures() {
    const Style light;
    const Style dark{.dark = true};
    const Style english{.language = "en"};
    const Style darkEnglish{.language = "en", .dark = true};
    const auto nothing = [](OnboardingExhibit&) {};
    return {picture("onboarding-welcome", Step::welcome, nothing, {light, {.composited = false}}),
            picture("onboarding-missing", Step::permissions,
                    [](OnboardingExhibit& exhibit) {
                        exhibit.firstRun.grants.trusted = false;
                        exhibit.firstRun.audio.format.channelCount = 0;
                    },
                    {light, darkEnglish}),
            picture("onboarding-practice", Step::practice,
                    [](OnboardingExhibit& exhibit) { exhibit.hasPractised = true; }, {english}),
            picture("onboarding-key", Step::practice,
                    [](OnboardingExhibit& exhibit) {
                        exhibit.bench.state.keys.set({.shortcut = false, .holdTypes = true});
                    },
                    {dark}),
            picture("onboarding-end", Step::end,
                    [](OnboardingExhibit& exhibit) { exhibit.firstRun.grants.trusted = false; }, {english})};
}

}  // namespace dorix::testing
