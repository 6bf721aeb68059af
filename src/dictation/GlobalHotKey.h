#pragma once

#include "base/async/Executor.h"
#include "platform/HotKeyRegistrar.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <unordered_map>

namespace dorix {

/// The callbacks of all hot keys by number, behind the system's one handler. Made once; main executor.
class HotKeyTable {
 public:
    struct Callbacks {
        /// With when it happened, on the executor's clock.
        std::function<void(double)> pressed;
        std::function<void(double)> released;
    };

    /// Installs the handler, which stays harmlessly behind. Both must outlive the table.
    HotKeyTable(Executor& executor, HotKeyRegistrar& registrar);
    HotKeyTable(const HotKeyTable&) = delete;
    HotKeyTable& operator=(const HotKeyTable&) = delete;

 private:
    friend class GlobalHotKey;

    using Table = std::unordered_map<std::uint32_t, Callbacks>;

    static void call(const Table& callbacks, std::uint32_t id, std::uint32_t kind, double time);

    HotKeyRegistrar& registrar_;
    // Shared with the handler and its calls on their way, which may find their hot key or the whole table
    // gone.
    std::shared_ptr<Table> callbacks_ = std::make_shared<Table>();
};

/// A system-wide chord with a pressed and a released signal, registered as long as it lives. Main executor.
class GlobalHotKey {
 public:
    /// "DRX!", as a big-endian four-character code.
    static constexpr std::uint32_t signature = 0x44525821;

    /// Whether a refusal leaves a line in the log.
    enum class Refusal { logged, silent };

    /// Nothing when the system refuses the chord. `modifiers` are hot-key modifier bits; `id` is unique in
    /// the program.
    static std::unique_ptr<GlobalHotKey> make(HotKeyTable& table, std::uint16_t keyCode,
                                              std::uint32_t modifiers, std::uint32_t id,
                                              HotKeyTable::Callbacks callbacks,
                                              Refusal refusal = Refusal::logged);

    ~GlobalHotKey();
    /// Whether the chord still comes to us.
    bool isDelivered() const { return table_.registrar_.isDelivered(ref_); }
    GlobalHotKey(const GlobalHotKey&) = delete;
    GlobalHotKey& operator=(const GlobalHotKey&) = delete;

 private:
    GlobalHotKey(HotKeyTable& table, HotKeyRegistrar::Ref ref, std::uint32_t id)
        : table_(table), ref_(ref), id_(id) {}

    HotKeyTable& table_;
    HotKeyRegistrar::Ref ref_;
    std::uint32_t id_;
};

}  // namespace dorix
