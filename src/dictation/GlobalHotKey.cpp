#include "dictation/GlobalHotKey.h"

#include "base/Log.h"

#include <string>
#include <utility>

namespace dorix {

HotKeyTable::HotKeyTable(Executor& executor, HotKeyRegistrar& registrar) : registrar_(registrar) {
    registrar_.installEventHandler(
        [&executor, weak = std::weak_ptr(callbacks_)](HotKeyID key, std::uint32_t kind, double time) {
            executor.post([weak, id = key.id, kind, time] {
                if (const auto callbacks = weak.lock()) call(*callbacks, id, kind, time);
            });
        });
}

void HotKeyTable::call(const Table& callbacks, std::uint32_t id, std::uint32_t kind, double time) {
    const auto entry = callbacks.find(id);
    if (entry == callbacks.end()) return;
    // A copy: the callback may take its own hot key down.
    const auto called =
        kind == HotKeyRegistrar::eventReleased ? entry->second.released : entry->second.pressed;
    called(time);
}

std::unique_ptr<GlobalHotKey> GlobalHotKey::make(HotKeyTable& table, std::uint16_t keyCode,
                                                 std::uint32_t modifiers, std::uint32_t id,
                                                 HotKeyTable::Callbacks callbacks, Refusal refusal) {
    (*table.callbacks_)[id] = std::move(callbacks);
    const auto ref = table.registrar_.registerHotKey(keyCode, modifiers, {signature, id});
    if (!ref) {
        if (refusal == Refusal::logged)
            logLine("no se pudo registrar el atajo global (" + std::to_string(ref.error()) +
                    "): " + chordName(keyCode, modifiers));
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
