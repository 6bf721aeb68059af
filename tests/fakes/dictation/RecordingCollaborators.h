#pragma once

#include "actions/Actions.h"
#include "assistant/Assistant.h"
#include "base/Error.h"
#include "base/async/Sleep.h"
#include "context/SelectionProbe.h"
#include "learning/Teaching.h"
#include "meeting/Meeting.h"
#include "memory/DocumentReader.h"
#include "writing/BasicPolisher.h"
#include "writing/TextPolisher.h"

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace dorix {

/// A window that takes as long to capture as it is told.
class FakeScreenCapture final : public ScreenCapture {
 public:
    double duration = 0.2;
    std::string error;  // not empty: the capture fails
    std::string words;  // that can be read in it
    int begun = 0;
    int cancelled = 0;

    Task<Shot> capture(std::optional<RunningApplication>) override {
        ++begun;
        try {
            co_await sleep(duration);
        } catch (const Cancelled&) {
            ++cancelled;
            throw;
        }
        if (!error.empty()) throw MessageError(error);
        co_return Shot{.jpeg = "jpeg"};
    }

    Task<std::string> text(Shot) override { co_return words; }
};

/// A selection that the test makes up, found whether the probe insists or not.
class FakeSelection final : public SelectionProbe {
 public:
    std::optional<SelectedText> selected;
    std::vector<bool> insisted;             // for each probe
    std::function<void()> onProbe = [] {};  // before it tells

    Task<std::optional<SelectedText>> selection(std::optional<RunningApplication>, bool insist) override {
        insisted.push_back(insist);
        onProbe();
        co_return selected;
    }
};

class RecordingAssistant final : public Assistant {
 public:
    std::vector<Assistant::Request> asked;
    std::vector<std::string> log;  // of the other calls
    std::string transformError;    // not empty: transform fails with these words
    bool cancelsTransform = false;

    void ask(Assistant::Request request) override { asked.push_back(std::move(request)); }
    void recap(std::string question, AppContext) override { log.push_back("recap " + question); }
    void searchMemory(std::string question, AppContext) override { log.push_back("search " + question); }
    Task<Rewrite> transform(std::string instruction, std::string selected) override {
        log.push_back("transform " + instruction);
        if (cancelsTransform) throw Cancelled();
        if (!transformError.empty()) throw MessageError(transformError);
        co_return Rewrite{.text = "<" + selected + ">", .engine = "motor"};
    }
    std::string askFromComposer(std::string text, AppContext target, bool withScreen) override {
        log.push_back("compose " + text + " in " + target.displayName + (withScreen ? " with screen" : ""));
        return "id";
    }
};

class RecordingMeeting final : public Meeting {
 public:
    bool live = false;
    std::vector<std::string> log;

    bool isLive() const override { return live; }
    void start() override { log.emplace_back("start"); }
    void finish() override { log.emplace_back("finish"); }
};

class RecordingActions final : public Actions {
 public:
    std::vector<std::string> proposed;

    void propose(std::string instruction, AppContext) override { proposed.push_back(std::move(instruction)); }
};

class RecordingTeaching final : public Teaching {
 public:
    bool teaching = false;
    std::vector<std::string> log;

    bool isTeaching() const override { return teaching; }
    void startTeaching() override { log.emplace_back("start"); }
    void finishTeaching() override { log.emplace_back("finish"); }
};

/// Documents by their path.
class FakeDocumentReader final : public DocumentReader {
 public:
    std::vector<std::pair<std::filesystem::path, std::string>> documents;
    double duration = 0;  // seconds that one takes

    bool reads(std::string_view extension) const override { return extension == "txt"; }
    Task<std::optional<std::string>> text(std::filesystem::path file, std::size_t limit) override {
        if (duration > 0) co_await sleep(duration);
        for (const auto& [path, text] : documents) {
            if (path == file) co_return text.substr(0, limit);
        }
        co_return std::nullopt;
    }
};

/// Writes by rule and keeps what it was asked.
class RecordingWriter final : public Writer {
 public:
    Task<PolishResult> polish(PolishRequest request) override {
        requests.push_back(request);
        if (duration > 0) co_await sleep(duration);
        if (breaks) throw std::runtime_error("the writer broke");
        co_return polisher_.polished(request.transcript);
    }
    Task<PolishResult> byRule(PolishRequest request) override {
        co_return polisher_.polished(request.transcript);
    }
    Task<WriteOrAsk> writeOrAsk(PolishRequest request) override {
        judged.push_back(request);
        if (judgement == Judgement::ask) co_return Ask{};
        co_return polisher_.polished(request.transcript);
    }
    bool cloudEnabled() const override { return cloud; }
    void prewarm(PolishRequest request) override { prewarmed.push_back(std::move(request)); }
    void connect() override { ++connections; }

    enum class Judgement { write, ask };

    bool cloud = false;
    double duration = 0;  // seconds that a text takes
    bool breaks = false;  // it fails, which no writer may
    Judgement judgement = Judgement::write;
    std::vector<PolishRequest> judged;
    std::vector<PolishRequest> requests;
    std::vector<PolishRequest> prewarmed;
    int connections = 0;

 private:
    BasicPolisher polisher_;
};

}  // namespace dorix
