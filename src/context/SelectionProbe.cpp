#include "context/SelectionProbe.h"

#include <utility>

namespace dorix {

Task<bool> isAnotherSelected(SelectionProbe& probe, std::optional<RunningApplication> app, std::string text) {
    const auto now = co_await probe.selection(std::move(app), false);
    co_return now && now->text != text;
}

}  // namespace dorix
