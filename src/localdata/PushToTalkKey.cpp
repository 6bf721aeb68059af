#include "localdata/PushToTalkKey.h"

#include <algorithm>

namespace dorix {

namespace {

struct Row {
    PushToTalkKey key;
    std::string_view storedName;
    std::string_view label;
};

constexpr std::array rows{
    Row{PushToTalkKey::rightOption, "rightOption", "⌥ Opción derecha"},
    Row{PushToTalkKey::rightCommand, "rightCommand", "⌘ Comando derecha"},
    Row{PushToTalkKey::rightControl, "rightControl", "⌃ Control derecha"},
    Row{PushToTalkKey::fn, "fn", "fn / 🌐"},
};

const Row& rowOf(PushToTalkKey key) { return *std::ranges::find(rows, key, &Row::key); }

}  // namespace

std::string_view storedName(PushToTalkKey key) { return rowOf(key).storedName; }

std::optional<PushToTalkKey> pushToTalkKey(std::string_view storedName) {
    const auto* row = std::ranges::find(rows, storedName, &Row::storedName);
    if (row == rows.end()) return std::nullopt;
    return row->key;
}

std::string_view label(PushToTalkKey key) { return rowOf(key).label; }

}  // namespace dorix
