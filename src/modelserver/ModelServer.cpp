#include "modelserver/ModelServer.h"

#include "base/async/Sleep.h"
#include "base/text/Text.h"
#include "base/text/Url.h"
#include "localdata/Language.h"
#include "localdata/SettingsStore.h"
#include "modelserver/ChatAnswer.h"
#include "modelserver/KnownServers.h"

#include <algorithm>
#include <array>
#include <limits>
#include <span>
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
constexpr double embeddingTimeout = 20;
/// The caller has a limit of its own, which is shorter.
constexpr double contentTimeout = 60;
/// Somebody waits who sees that it is worked on, and a slow processor takes its time to read a page.
constexpr double textTimeout = 180;

/// Models that servers list beside those that write, by a part of their names.
constexpr std::array<std::string_view, 6> notWriters{"embed", "bge-", "minilm", "rerank", "whisper", "tts"};

/// Models that make vectors of texts, likewise.
constexpr std::array<std::string_view, 5> embedders{"embed", "bge-", "minilm", "e5-", "gte-"};

bool hasPart(const std::string& model, std::span<const std::string_view> parts) {
    const auto name = text::lowercase(model);
    return std::ranges::any_of(parts, [&](const auto part) { return name.contains(part); });
}

bool canWrite(const std::string& model) { return !hasPart(model, notWriters); }

bool canEmbed(const std::string& model) { return hasPart(model, embedders) && !model.contains("rerank"); }

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

std::string urlAt(int port) { return "http://127.0.0.1:" + std::to_string(port); }

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
        const auto text = co_await answer({.model = {},
                                           .instructions = instructions_,
                                           .prompt = std::move(prompt),
                                           .schema = schema,
                                           .temperature = options.temperature,
                                           .mostTokens = {}},
                                          contentTimeout);
        auto content = contentIn(text, schema);
        if (!content) throw ModelServerError(Kind::invalid);
        co_return *std::move(content);
    }

    Task<std::string> respond(std::string prompt, CutText cut) override {
        const auto text = co_await answer({.model = {},
                                           .instructions = instructions_,
                                           .prompt = std::move(prompt),
                                           .schema = {},
                                           .temperature = {},
                                           .mostTokens = {},
                                           .cut = cut},
                                          textTimeout);
        const auto said = withoutThought(text);
        if (!said) throw ModelServerError(Kind::invalid);
        co_return std::string(*said);
    }

 private:
    Task<std::string> answer(ModelClient::Chat chat, double timeout) {
        struct Mark {
            bool& flag;
            ~Mark() { flag = false; }
        };
        isResponding_ = true;
        const Mark untilItsEnd{isResponding_};
        co_return co_await server_.write(std::move(chat), timeout);
    }

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
      isTrusted_(std::move(isTrusted)),
      client_(http),
      keptKey_(keychain, keyAccount),
      lookedAt_(-std::numeric_limits<double>::infinity()),
      tasks_(executor) {
    subscriptions_.push_back(settings_.modelServer.subscribe([this](const auto&) {
        state_.set({});  // the server of before is given nothing more
        key_.set("");
        look();
    }));
    for (auto* setting : {&settings_.modelServerModel, &settings_.modelServerEmbedder})
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
    const auto url = settings_.modelServer.get();
    if (url.empty()) co_return co_await foundHere();
    co_await keptKey_.read(url);
    key_.set(keptKey_.of(url));
    co_return co_await stateOf(named(url));
}

Task<ModelServer::State> ModelServer::foundHere() {
    State best;
    for (const int port : knownModelPorts) {
        if (!isTrusted_(port)) continue;
        auto state = co_await stateOf({.url = urlAt(port), .key = {}});
        // Anybody may listen there who is something else altogether.
        if (state.availability == otherwise) continue;
        if (rank(state.availability) > rank(best.availability)) best = std::move(state);
        if (best.availability == available) break;
    }
    co_return best;
}

void ModelServer::useKey(const std::string& key) {
    key_.set(key);
    tasks_.spawn(keptKey_.save(settings_.modelServer.get(), key));
    look();
}

ModelEndpoint ModelServer::named(std::string url) const {
    const auto host = hostOf(url);
    const bool isPrivate = schemeOf(url) == "https" || (host && isThisComputer(*host));
    auto key = isPrivate ? keptKey_.of(url) : "";
    return {.url = std::move(url), .key = std::move(key)};
}

/// Since the look at it another user's program may have taken the port.
bool ModelServer::isStillTrusted(const std::string& found) const {
    return std::ranges::any_of(knownModelPorts,
                               [&](int port) { return urlAt(port) == found && isTrusted_(port); });
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
    const auto named = settings_.modelServerEmbedder.get();
    const auto embedder = std::ranges::find_if(
        models, [&](const auto& model) { return named.empty() ? canEmbed(model) : isNamed(model, named); });
    state.embedder = embedder == models.end() ? "" : *embedder;
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
    chat.model = state_.get().model;
    try {
        co_return co_await client_.chat(endpoint(), std::move(chat), timeout);
    } catch (const ModelServerError&) {
        look();  // it is another one by now, or none
        throw;
    }
}

/// Who is known by now, if they may still be asked.
ModelEndpoint ModelServer::endpoint() const {
    const auto& server = state_.get().server;
    const bool isNamed = !settings_.modelServer.get().empty();
    if (isNamed ? server.empty() : !isStillTrusted(server)) throw ModelServerError(Kind::unreachable);
    return isNamed ? named(server) : ModelEndpoint{.url = server, .key = {}};
}

std::string ModelServer::embedder() const {
    const auto host = hostOf(state_.get().server);
    return host && isThisComputer(*host) ? state_.get().embedder : "";
}

Task<std::vector<float>> ModelServer::embed(std::string text) {
    try {
        co_return co_await client_.embedding(endpoint(), embedder(), std::move(text), embeddingTimeout);
    } catch (const ModelServerError&) {
        look();  // it is another one by now, or none
        throw;
    }
}

std::optional<std::string> ModelServer::farHost() const {
    auto host = hostOf(settings_.modelServer.get());
    return host && isThisComputer(*host) ? std::nullopt : host;
}

std::optional<std::string> ModelServer::notice() const {
    const bool isTold = settings_.modelServerTold.get() == settings_.modelServer.get();
    return isTold ? std::nullopt : farHost();
}

void ModelServer::noticeShown() { settings_.modelServerTold.set(settings_.modelServer.get()); }

}  // namespace dorix
