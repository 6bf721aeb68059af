#include "writing/WritingRouter.h"

#include "base/Error.h"
#include "base/Log.h"
#include "cloud/AccountStore.h"
#include "localdata/Language.h"
#include "localdata/SettingsStore.h"
#include "routing/IntentRules.h"

#include <cstddef>
#include <exception>
#include <optional>
#include <utility>

namespace dorix {

namespace {
/// What is no longer is not worth a model's delay, nor that it may invent a sentence around it.
constexpr std::size_t wordsByRule = 2;
}  // namespace

WritingRouter::WritingRouter(SettingsStore& settings, AccountStore& account, DorixAPI& api,
                             LocalPolisher& local)
    : settings_(settings), account_(account), api_(api), cloud_(api), local_(local) {}

bool WritingRouter::cloudEnabled() const {
    return settings_.engine.get() == WritingEngine::automatic && account_.loggedIn.get();
}

void WritingRouter::connect() {
    if (cloudEnabled()) api_.connect();
}

std::vector<TextPolisher*> WritingRouter::polishers() {
    std::vector<TextPolisher*> chain;
    if (cloudEnabled()) chain.push_back(&cloud_);
    if (local_.isAvailable()) chain.push_back(&local_);
    chain.push_back(&basic_);
    return chain;
}

Task<PolishResult> WritingRouter::polish(PolishRequest request) {
    if (wordCount(request.transcript) <= wordsByRule) co_return co_await byRule(std::move(request));
    for (auto* engine : polishers()) {
        try {
            co_return co_await engine->polish(request);
        } catch (...) {
            logLine(engine->name() +
                    " falló: " + describedIn(LogLanguage::spanish, std::current_exception()));
        }
    }
    co_return co_await byRule(std::move(request));
}

Task<WriteOrAsk> WritingRouter::writeOrAsk(PolishRequest request) {
    if (cloudEnabled()) {
        try {
            auto written = co_await cloud_.write(request, ServerPolisher::AllowAsk::yes);
            if (!written) co_return Ask{};
            co_return *std::move(written);
        } catch (...) {  // NOLINT(bugprone-empty-catch)
            // Then it is decided by rule; if it is to be written the service is asked, and told of, once
            // more.
        }
    }
    if (request.editableFocus == false || IntentRules::refersToScreen(request.transcript)) co_return Ask{};
    co_return co_await polish(std::move(request));
}

Task<PolishResult> WritingRouter::byRule(PolishRequest request) {
    try {
        co_return co_await basic_.polish(request);
    } catch (...) {  // NOLINT(bugprone-empty-catch)
        // The words as they were heard are a text too.
    }
    co_return PolishResult{
        .title = tr("Dictado"), .text = std::move(request.transcript), .engine = basic_.name()};
}

}  // namespace dorix
