#include "panel/PanelClipboard.h"

namespace dorix {

namespace {
constexpr double acknowledged = 1.5;  // seconds
}

void PanelClipboard::copy(const HistoryItem& item) {
    if (item.answer.empty()) return;
    pasteboard_.clearContents();
    pasteboard_.setString(item.answer);
    copiedID.set(item.id);
    forget_.once(acknowledged, [this] { copiedID.set(std::nullopt); });
}

}  // namespace dorix
