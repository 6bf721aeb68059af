#include "modelserver/ModelServer.h"

#include "base/async/Sleep.h"
#include "base/text/Text.h"
#include "base/text/Url.h"
#include "localdata/Language.h"
#include "localdata/SettingsStore.h"
#include "modelserver/ChatAnswer.h"
#include "modelserver/KnownServers.h"
#include "platform/Keychain.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace dorix {

namespace {

using enum SystemLanguageModel::Availability;
using Kind = ModelServerError::Kind;

// Seconds.
constexpr double lookTimeout = 2;  // on this computer
constexpr double farTimeout = 10;
constexpr double trueFor = 60;       // of a server that can write
constexpr double untrueFor = 5;      // of none: it may come up any time
constexpr double loadTimeout = 120;  // a model from a slow disk
/// The caller has a limit of its own, which is shorter.
constexpr double answerTimeout = 60;

/// Models that servers list beside those that write, by a part of their names.
constexpr std::array<std::string_view, 6> notWriters{"embed", "bge-", "minilm", "rerank", "whisper", "tts"};

bool canWrite(const std::string& model) {
    const auto name = text::lowercase(model);
    return std::ranges::none_of(notWriters, [&](const auto part) { return name.contains(part); });
}

/// Some servers list a model with the tag that it has when none is named.
bool isNamed(const std::string& listed, const std::string& wanted) {
    return listed == wanted || listed == wanted + ":latest";
}

SystemLanguageModel::Availability reasonFor(Kind kind) {
    switch (kind) {
        case Kind::unreachable:
            return deviceNotEligible;
        case Kind::loading:
            return modelNotReady;
        default:
            return otherwise;
    }
}

/// How much is to be told of a server that cannot write: of one that is about to before one that never will.
int rank(SystemLanguageModel::Availability availability) {
    constexpr std::array worstFirst{deviceNotEligible, otherwise, appleIntelligenceNotEnabled, modelNotReady,
                                    available};
    return static_cast<int>(std::ranges::find(worstFirst, availability) - worstFirst.begin());
}

}  // namespace

/// One conversation. It asks whichever server is known by then.
class ModelServer::Session final : public LanguageModelSession {
 public:
    Session(ModelServer& server, std::string instructions)
        : server_(server), instructions_(std::move(instructions)), tasks_(server.executor_) {}

    void prewarm() override { tasks_.spawn(load()); }
    bool isResponding() const override { return isResponding_; }

    Task<GeneratedContent> respond(std::string prompt, GenerationSchema schema,
                                   GenerationOptions options) override {
        struct Mark {
            bool& flag;
            ~Mark() { flag = false; }
        };
        isResponding_ = true;
        const Mark untilItsEnd{isResponding_};
        const auto text = co_await server_.write({.model = {},
                                                  .instructions = instructions_,
                                                  .prompt = std::move(prompt),
                                                  .schema = schema,
                                                  .temperature = options.temperature,
                                                  .mostTokens = {}},
                                                 answerTimeout);
        auto content = contentIn(text, schema);
        if (!content) throw LanguageModelError(tr("El modelo local no ha respondido lo que se le pidió."));
        co_return *std::move(content);
    }

 private:
    /// There is no call for it: a server loads a model when it is asked something, and remembers how a
    /// conversation began. One word is the least that it can be asked for.
    Task<void> load() {
        try {
            co_await server_.write({.model = {},
                                    .instructions = instructions_,
                                    .prompt = ".",
                                    .schema = {},
                                    .temperature = {},
                                    .mostTokens = 1},
                                   loadTimeout);
        } catch (const LanguageModelError&) {  // NOLINT(bugprone-empty-catch)
            // The answer will tell.
        }
    }

    ModelServer& server_;
    const std::string instructions_;
    bool isResponding_ = false;
    TaskScope tasks_;
};

ModelServer::ModelServer(Executor& executor, SettingsStore& settings, HttpClient& http, Keychain& keychain,
                         IsTrusted isTrusted)
    : executor_(executor),
      settings_(settings),
      keychain_(keychain),
      isTrusted_(std::move(isTrusted)),
      client_(http),
      lookedAt_(-std::numeric_limits<double>::infinity()),
      tasks_(executor) {
    for (auto* setting : {&settings_.modelServer, &settings_.modelServerModel})
        subscriptions_.push_back(setting->subscribe([this](const auto&) { look(); }));
}

void ModelServer::look() {
    if (looking_) looking_->cancel();
    looking_ = tasks_.spawn(lookAround());
}

Task<void> ModelServer::lookAround() {
    lookedAt_ = executor_.now();
    co_await sleep(0);  // whoever gave the occasion goes on first
    const auto state = co_await found();
    lookedAt_ = executor_.now();
    state_.set(state);
}

Task<ModelServer::State> ModelServer::found() {
    const auto named = settings_.modelServer.get();
    if (named.empty()) co_return co_await foundHere();
    key_ = (co_await keychain_.read(keyAccount)).value_or("");
    co_return co_await stateOf({.url = named, .key = key_});
}

Task<ModelServer::State> ModelServer::foundHere() {
    State best;
    for (const int port : knownModelPorts) {
        if (!isTrusted_(port)) continue;
        auto state = co_await stateOf({.url = "http://127.0.0.1:" + std::to_string(port), .key = {}});
        // Anybody may listen there who is something else altogether.
        if (state.availability == otherwise) continue;
        if (rank(state.availability) > rank(best.availability)) best = std::move(state);
        if (best.availability == available) break;
    }
    co_return best;
}

Task<ModelServer::State> ModelServer::stateOf(ModelEndpoint at) {
    State state{.server = at.url};
    const auto host = hostOf(at.url);
    const double timeout = host && isThisComputer(*host) ? lookTimeout : farTimeout;
    try {
        co_return withModel(state, co_await client_.models(at, timeout));
    } catch (const ModelServerError& error) {
        state.availability = reasonFor(error.kind());
    }
    co_return state;
}

ModelServer::State ModelServer::withModel(State state, const std::vector<std::string>& models) const {
    const auto wanted = settings_.modelServerModel.get();
    const auto chosen = std::ranges::find_if(
        models, [&](const auto& model) { return wanted.empty() ? canWrite(model) : isNamed(model, wanted); });
    state.availability = chosen == models.end() ? appleIntelligenceNotEnabled : available;
    state.model = chosen == models.end() ? wanted : *chosen;
    return state;
}

SystemLanguageModel::Availability ModelServer::availability() {
    const auto known = state_.get().availability;
    const double age = executor_.now() - lookedAt_;
    if (!isLooking() && age >= (known == available ? trueFor : untrueFor)) look();
    return known == available && notice() ? otherwise : known;
}

std::unique_ptr<LanguageModelSession> ModelServer::makeSession(std::string instructions) {
    return std::make_unique<Session>(*this, std::move(instructions));
}

Task<std::string> ModelServer::write(ModelClient::Chat chat, double timeout) {
    const auto state = state_.get();
    const bool isNamed = !settings_.modelServer.get().empty();
    chat.model = state.model;
    try {
        co_return co_await client_.chat({.url = state.server, .key = isNamed ? key_ : ""}, std::move(chat),
                                        timeout);
    } catch (const ModelServerError&) {
        look();  // it is another one by now, or none
        throw;
    }
}

std::optional<std::string> ModelServer::notice() const {
    const auto address = settings_.modelServer.get();
    auto host = hostOf(address);
    if (!host || isThisComputer(*host) || settings_.modelServerTold.get() == address) return std::nullopt;
    return host;
}

void ModelServer::noticeShown() { settings_.modelServerTold.set(settings_.modelServer.get()); }

}  // namespace dorix
