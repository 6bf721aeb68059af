#include "context/TextSelection.h"

#include "base/async/Sleep.h"
#include "base/text/Text.h"
#include "context/AppContext.h"
#include "context/UserClipboard.h"
#include "platform/Accessibility.h"
#include "platform/InputEvents.h"
#include "platform/KeyCodes.h"

#include <utility>

namespace dorix {

namespace {

constexpr double copyPoll = 0.025;
constexpr int copyTries = 12;

std::optional<SelectedText> unlessBlank(SelectedText selected) {
    if (text::trim(selected.text).empty()) return std::nullopt;
    return selected;
}

bool canBeWritten(const AXUIElement& element) {
    return isEditableRole(element.string("AXRole").value_or("")) ||
           element.isAttributeSettable("AXValue").value_or(false);
}

}  // namespace

Task<std::optional<SelectedText>> TextSelection::selection(std::optional<RunningApplication> app,
                                                           bool insist) {
    if (!app) co_return std::nullopt;
    // An empty answer is an answer: nothing is selected, and a copy would bring something else.
    if (auto told = ask(*app)) co_return unlessBlank(std::move(*told));
    if (!insist) co_return std::nullopt;
    co_return co_await tasks_.spawn(copyProbe(*std::move(app))).throughStop();
}

/// The selection as accessibility tells it, blank or not; none when it does not.
std::optional<SelectedText> TextSelection::ask(const RunningApplication& app) {
    const auto application = accessibility_.createApplication(app.processIdentifier);
    const auto focused = application->element("AXFocusedUIElement");
    if (!focused) return std::nullopt;
    auto selected = (*focused)->string("AXSelectedText");
    if (!selected) return std::nullopt;
    if (text::trim(*selected).empty()) return SelectedText{std::move(*selected), std::nullopt};
    return SelectedText{std::move(*selected), canBeWritten(**focused)};
}

Task<std::optional<SelectedText>> TextSelection::copyProbe(RunningApplication app) {
    const auto borrowed = co_await clipboard_.borrow();
    auto before = co_await clipboard_.read();
    using enum Pasteboard::Reading::State;
    if (before.state == partial || before.state == unreadable) co_return std::nullopt;
    const auto count = pasteboard_.changeCount();
    const auto still = [&] { return pasteboard_.changeCount() == count && workspace_.isFrontmost(app); };
    if (!co_await poster_.postCommandKey(keycode::c, still)) co_return std::nullopt;
    for (int tries = 0; tries < copyTries; ++tries) {
        co_await sleepThrough(copyPoll);
        if (pasteboard_.changeCount() == count) continue;
        const auto copy = pasteboard_.changeCount();
        auto copied = co_await pasteboard_.string();
        if (pasteboard_.changeCount() == copy) clipboard_.restore(std::move(before));
        co_return unlessBlank(SelectedText{std::move(copied).value_or(""), std::nullopt});
    }
    co_return std::nullopt;
}

}  // namespace dorix
