#include "Command.h"
#include "dictation/PushToTalkMonitor.h"
#include "fakes/FakeKeys.h"
#include "fakes/dictation/DictationBench.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <utility>

namespace dorix::lab {

namespace {

/// Virtual time without the rounding of its sums.
double microseconds(double seconds) { return std::round(seconds * 1e6) / 1e6; }

/// The input's events, which stand in the order of their times.
std::vector<Json> eventsOf(const Json& input) {
    const auto found = input.find("events");
    if (found == input.end() || !found->is_array()) throw BadInput("field \"events\" must be a list");
    auto events = found->get<std::vector<Json>>();
    const auto time = [](const Json& event) {
        const double t = requiredNumber(event, "t");
        if (t < 0) throw BadInput("field \"t\" must not be negative");
        return t;
    };
    for (const auto& event : events) time(event);
    if (!std::ranges::is_sorted(events, {}, time))
        throw BadInput("events must stand in the order of their times");
    return events;
}

/// Until when to run: "until", or the last event.
double endOf(const Json& input, const std::vector<Json>& events) {
    if (input.contains("until")) return requiredNumber(input, "until");
    return events.empty() ? 0 : events.back().at("t").get<double>();
}

// ptt

std::string phaseName(PushToTalkMonitor::Phase phase) {
    switch (phase) {
        case PushToTalkMonitor::Phase::idle:
            return "idle";
        case PushToTalkMonitor::Phase::armed:
            return "armed";
        case PushToTalkMonitor::Phase::active:
            return "active";
    }
    std::unreachable();
}

void typeOn(FakeKeyEventMonitors& keyboard, const Json& event) {
    const auto code = requiredInteger(event, "keyCode");
    const auto bits = event.contains("flags") ? requiredInteger(event, "flags") : 0;
    if (code < 0 || code > std::numeric_limits<std::uint16_t>::max())
        throw BadInput("there is no such key code");
    if (bits < 0) throw BadInput("field \"flags\" must not be negative");
    const auto keyCode = static_cast<std::uint16_t>(code);
    const auto flags = static_cast<std::uint64_t>(bits);
    const auto kind = requiredString(event, "kind");
    if (kind == "flags") {
        keyboard.flags(keyCode, flags);
    } else if (kind == "keyDown") {
        keyboard.keyDown(keyCode, flags);
    } else {
        throw BadInput("unknown kind \"" + kind + "\"");
    }
}

Json runPushToTalk(const Json& input) {
    const auto key = pushToTalkKey(requiredString(input, "key"));
    if (!key) throw BadInput("unknown key");
    const auto events = eventsOf(input);

    ManualExecutor executor;
    FakeKeyEventMonitors keyboard{executor};
    PushToTalkMonitor monitor(executor, keyboard, *key);
    Json callbacks = Json::array();
    const auto record = [&](const char* name) {
        callbacks.push_back({{"t", microseconds(executor.now())}, {"name", name}});
    };
    monitor.onBegin = [&] { record("onBegin"); };
    monitor.onConfirm = [&] { record("onConfirm"); };
    monitor.onEnd = [&] { record("onEnd"); };
    monitor.onCancel = [&] { record("onCancel"); };
    monitor.onEscape = [&] {
        record("onEscape");
        return false;
    };
    monitor.start();
    for (const auto& event : events) {
        executor.advanceTo(event.at("t").get<double>());
        typeOn(keyboard, event);
    }
    executor.advanceTo(endOf(input, events));
    return {{"callbacks", callbacks}, {"phase", phaseName(monitor.phase())}};
}

// dictation

DictationController::Mode modeOf(const Json& event) {
    return isSecond(event, "mode", {"write", "ask"}) ? DictationController::Mode::ask
                                                     : DictationController::Mode::write;
}

DictationController::Source sourceOf(const Json& event) {
    return isSecond(event, "source", {"holdKey", "shortcut"}) ? DictationController::Source::shortcut
                                                              : DictationController::Source::holdKey;
}

/// Writes down what the user sees, once for each step of the program that changes it.
class Trace {
 public:
    explicit Trace(DictationBench& bench) : bench_(bench) {
        const auto changed = [this](const auto&) { noteSoon(); };
        subscriptions_.push_back(bench.state.hud.subscribe(changed));
        subscriptions_.push_back(bench.state.handsFree.subscribe(changed));
        subscriptions_.push_back(bench.controller.busy().subscribe(changed));
        bench.onInserted = [this] { noteSoon(); };
    }

    Json entries() const { return entries_; }

 private:
    void noteSoon() {
        if (std::exchange(pending_, true)) return;
        bench_.executor.post([this] {
            pending_ = false;
            note();
        });
    }

    void note() {
        const auto hud = bench_.state.hud.get();
        Json seen = {{"hud", name(hud.kind)},
                     {"text", hud.text},
                     {"handsFree", bench_.state.handsFree.get()},
                     {"busy", bench_.controller.busy().get()},
                     {"inserted", bench_.inserted ? Json(*bench_.inserted) : Json()}};
        if (seen == last_) return;
        last_ = seen;
        seen["t"] = microseconds(bench_.executor.now());
        entries_.push_back(std::move(seen));
    }

    DictationBench& bench_;
    std::vector<Subscription> subscriptions_;
    bool pending_ = false;
    Json last_;
    Json entries_ = Json::array();
};

using Call = std::function<void(DictationBench& bench, const Json& event)>;

const std::map<std::string, Call>& calls() {
    static const std::map<std::string, Call> table{
        {"begin", [](auto& bench, auto& event) { bench.controller.begin(sourceOf(event), modeOf(event)); }},
        {"showListening", [](auto& bench, auto&) { bench.controller.showListening(); }},
        {"stopAndProcess", [](auto& bench, auto&) { bench.controller.stopAndProcess(); }},
        {"cancelRecording", [](auto& bench, auto&) { bench.controller.cancelRecording(); }},
        {"shortcutPressed",
         [](auto& bench, auto& event) { bench.controller.shortcutPressed(modeOf(event)); }},
        {"shortcutReleased", [](auto& bench, auto&) { bench.controller.shortcutReleased(); }},
        {"partial",
         [](auto& bench, auto& event) { bench.speech.partial.set(requiredString(event, "text")); }},
        {"level",
         [](auto& bench, auto& event) {
             bench.speech.level.set(static_cast<float>(requiredNumber(event, "value")));
         }},
        {"audioLost",
         [](auto& bench, auto&) {
             if (bench.speech.onAudioLost) bench.speech.onAudioLost();
         }},
    };
    return table;
}

Json settingsOf(const Json& input) {
    const auto found = input.find("settings");
    if (found == input.end() || found->is_null()) return Json::object();
    if (!found->is_object()) throw BadInput("field \"settings\" must be an object");
    static const Json examples{{"pttKey", ""},          {"language", ""},    {"appLanguage", ""},
                               {"engine", ""},          {"adaptTone", true}, {"playSounds", true},
                               {"signatureName", ""},   {"styleNotes", ""},  {"paused", true},
                               {"onboardingDone", true}};
    for (const auto& [key, value] : found->items()) {
        const auto example = examples.find(key);
        if (example == examples.end()) throw BadInput("unknown setting \"" + key + "\"");
        if (example->type() != value.type()) throw BadInput("setting \"" + key + "\" has another type");
    }
    return *found;
}

Json runDictation(const Json& input) {
    const auto events = eventsOf(input);
    DictationBench bench(settingsOf(input));
    bench.setFocus(optionalBoolean(input, "focus"));
    bench.speech.transcript = optionalString(input, "transcript").value_or("");
    Trace trace(bench);
    for (const auto& event : events) {
        bench.executor.advanceTo(event.at("t").get<double>());
        const auto call = calls().find(requiredString(event, "call"));
        if (call == calls().end()) throw BadInput("unknown call \"" + requiredString(event, "call") + "\"");
        call->second(bench, event);
        bench.executor.runPosted();
    }
    bench.executor.advanceTo(endOf(input, events));
    return {{"trace", trace.entries()}};
}

}  // namespace

std::vector<Command> dictationCommands() {
    return {
        {"ptt", R"({"key","events":[{"t","kind":"flags"|"keyDown","keyCode","flags"}...],"until"})",
         R"({"callbacks":[{"t","name"}...],"phase"})", runPushToTalk},
        {"dictation",
         R"({"settings":{...},"focus":true|false|null,"events":[{"t","call","source","mode","text","value"}...],)"
         R"("transcript","until"})",
         R"({"trace":[{"t","hud","text","handsFree","busy","inserted"}...]})", runDictation},
    };
}

}  // namespace dorix::lab
