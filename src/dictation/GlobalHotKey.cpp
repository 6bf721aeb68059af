#include "dictation/GlobalHotKey.h"

#include "base/Log.h"

#include <string>
#include <utility>

namespace dorix {

HotKeyTable::HotKeyTable(Executor& executor, HotKeyRegistrar& registrar)
    : executor_(executor),
      registrar_(registrar),
      callbacks_(std::make_shared<std::unordered_map<std::uint32_t, Callbacks>>()) {
    registrar_.installEventHandler([this](HotKeyID key, std::uint32_t kind) { dispatch(key.id, kind); });
}

void HotKeyTable::dispatch(std::uint32_t id, std::uint32_t kind) {
    executor_.post([weak = std::weak_ptr(callbacks_), id, kind] {
        const auto callbacks = weak.lock();
        if (!callbacks) return;
        const auto entry = callbacks->find(id);
        if (entry == callbacks->end()) return;
        // A copy: the callback may take its own hot key down.
        const auto called =
            kind == HotKeyRegistrar::eventReleased ? entry->second.released : entry->second.pressed;
        called();
    });
}

std::unique_ptr<GlobalHotKey> GlobalHotKey::make(HotKeyTable& table, std::uint16_t keyCode,
                                                 std::uint32_t modifiers, std::uint32_t id,
                                                 HotKeyTable::Callbacks callbacks) {
    (*table.callbacks_)[id] = std::move(callbacks);
    const auto ref = table.registrar_.registerHotKey(keyCode, modifiers, {signature, id});
    if (!ref) {
        logLine("no se pudo registrar el atajo global (" + std::to_string(ref.error()) + ")");
        table.callbacks_->erase(id);
        return nullptr;
    }
    return std::unique_ptr<GlobalHotKey>(new GlobalHotKey(table, *ref, id));
}

GlobalHotKey::~GlobalHotKey() {
    table_.registrar_.unregisterHotKey(ref_);
    table_.callbacks_->erase(id_);
}

}  // namespace dorix
