#include "assistant/GrowingText.h"

namespace dorix {

namespace {
/// Bytes that are shown in a second. A text of 400,000 characters is then shown sixty times a second.
constexpr double shownPerSecond = 25e6;
}  // namespace

void GrowingText::grow(std::string_view whole) {
    text_.append(whole.substr(text_.size()));
    if (timer_.isActive()) return;
    const double wait = nextAt_ - executor_.now();
    if (wait <= 0) return show();
    timer_.once(wait, [this] { show(); });
}

void GrowingText::flush() {
    if (timer_.isActive()) show();
}

void GrowingText::show() {
    timer_.stop();
    nextAt_ = executor_.now() + static_cast<double>(text_.size()) / shownPerSecond;
    show_(text_);
}

}  // namespace dorix
