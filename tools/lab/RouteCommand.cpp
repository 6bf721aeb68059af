#include "Command.h"
#include "base/text/Text.h"
#include "fakes/dictation/DictationBench.h"

#include <optional>
#include <string>
#include <utility>

namespace dorix::lab {

namespace {

/// An object under `field`; nothing when it is absent or null.
std::optional<Json> optionalObject(const Json& input, const char* field) {
    const auto found = input.find(field);
    if (found == input.end() || found->is_null()) return std::nullopt;
    if (!found->is_object()) throw BadInput(std::string("field \"") + field + "\" must be an object");
    return *found;
}

DictationBench::Have haveOf(const Json& input) {
    DictationBench::Have have;
    const auto found = input.find("have");
    if (found == input.end() || found->is_null()) return have;
    if (!found->is_array()) throw BadInput("field \"have\" must be a list");
    for (const auto& name : *found) {
        if (name == "assistant") {
            have.assistant = true;
        } else if (name == "meeting") {
            have.meeting = true;
        } else if (name == "actions") {
            have.actions = true;
        } else if (name == "learn") {
            have.teaching = true;
        } else {
            throw BadInput(R"(field "have" names "meeting", "actions", "learn" and "assistant")");
        }
    }
    return have;
}

AppContext contextOf(const Json& input) {
    const Json context = optionalObject(input, "context").value_or(Json::object());
    AppContext result{.bundleID = optionalString(context, "bundleID"),
                      .windowTitle = optionalString(context, "windowTitle"),
                      .hasEditableFocus = optionalBoolean(context, "hasEditableFocus"),
                      .pageURL = optionalString(context, "pageURL")};
    const auto description = describeApp(result.bundleID, std::nullopt, result.windowTitle);
    result.displayName = description.displayName;
    result.tone = description.tone;
    result.icon = description.icon;
    return result;
}

std::optional<SelectedText> selectionOf(const Json& input) {
    const auto selection = optionalObject(input, "selection");
    if (!selection) return std::nullopt;
    const std::string selected = requiredString(*selection, "text");
    if (text::trim(selected).empty()) return std::nullopt;
    return SelectedText{selected, optionalBoolean(*selection, "editable")};
}

bool isLive(const Json& input) { return optionalString(input, "meetingPhase") == "live"; }

void prepare(DictationBench& bench, const Json& input) {
    bench.selection.selected = selectionOf(input);
    bench.grants.screen = optionalBoolean(input, "screenPermission").value_or(false);
    bench.meeting.live = isLive(input);
    bench.teaching.teaching = optionalBoolean(input, "teaching").value_or(false);
    bench.writer.judgement = isSecond(input, "writeOrAsk", {"write", "ask"})
                                 ? RecordingWriter::Judgement::ask
                                 : RecordingWriter::Judgement::write;
    bench.speech.transcript = requiredString(input, "transcript");
    // A dictation over the panel takes the context that the panel remembered.
    bench.controller.panelTarget = contextOf(input);
    bench.state.panelOpen.set(true);
}

Json runRoute(const Json& input) {
    const auto mode = isSecond(input, "mode", {"write", "ask"}) ? DictationController::Mode::ask
                                                                : DictationController::Mode::write;
    DictationBench bench(haveOf(input));
    prepare(bench, input);
    Json outcome;
    bench.flow.roads.onRoute = [&outcome](Route route) { outcome = name(route); };
    if (bench.controller.begin(DictationController::Source::shortcut, mode)) {
        bench.controller.showListening();
        bench.controller.stopAndProcess();
        bench.executor.advanceBy(60);
    }
    const auto& probes = bench.selection.insisted;
    return {{"outcome", outcome},
            {"probeInsisted", probes.empty() ? Json() : Json(probes.back())},
            {"shotCancelled", bench.screen.cancelled > 0}};
}

}  // namespace

std::vector<Command> routeCommands() {
    return {{"route",
             R"({"transcript","mode":"write"|"ask","context":{"bundleID","windowTitle","pageURL",)"
             R"("hasEditableFocus"},"selection":{"text","editable"}|null,"screenPermission",)"
             R"("have":["meeting","actions","learn","assistant"],"meetingPhase","teaching",)"
             R"("writeOrAsk":"write"|"ask"})",
             R"({"outcome","probeInsisted","shotCancelled"}; no outcome: refused, silent or nobody answers)",
             runRoute}};
}

}  // namespace dorix::lab
