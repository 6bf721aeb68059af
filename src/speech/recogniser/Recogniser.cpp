#include "speech/recogniser/Recogniser.h"

#include "base/Error.h"
#include "base/Log.h"
#include "base/text/Line.h"
#include "base/text/Text.h"
#include "localdata/Language.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <set>
#include <system_error>
#include <utility>

namespace dorix {

namespace {

constexpr int mostFailures = 2;
constexpr double idleSeconds = 600;

// Seconds that the process may say nothing.
constexpr double workingPatience = 3;
// A model that understands at the end has much to do even for one word.
constexpr double wholePatience = 20;
// A server has its own time-outs, after which it may be asked once more.
constexpr double serverPatience = 45;

/// Whether the model understands while one talks, and has little left to do at the end.
bool isStreaming(const ModelRequest& model) {
    static const std::set<std::string> kinds{"embedded", "streaming-transducer"};
    return kinds.contains(model.kind);
}

/// What is loaded may be half a gigabyte on a slow disk, which is read for its checksums as well.
double loadingPatience(const ModelRequest& model) {
    constexpr double bytesPerSecond = 20e6;
    double bytes = 0;
    for (const auto& [role, file] : model.files) {
        std::error_code error;
        const auto size = std::filesystem::file_size(model.folder / file, error);
        if (!error) bytes += static_cast<double>(size);
    }
    return 20 + bytes / bytesPerSecond;
}

bool asksServer(const ModelRequest& model) { return !model.server.address.empty(); }

/// In a line that can be shown, whoever wrote it.
std::string asComplaint(const std::string& why) {
    constexpr std::size_t longest = 200;
    return std::string(text::prefix(text::asLine(why), longest));
}

std::string failureText() { return tr("No se pudo preparar el formato de audio."); }

double patienceAtWork(const SpokenUtterance& utterance) {
    if (isStreaming(utterance.model())) return workingPatience;
    const auto asking = asksServer(utterance.model()) ? serverPatience : 0;
    return asking + workingPatience + 2 * utterance.seconds();
}

double patienceAtEnd(const SpokenUtterance& utterance) {
    if (asksServer(utterance.model())) return serverPatience + 2 * utterance.seconds();
    if (isStreaming(utterance.model())) return workingPatience + 1 + 0.3 * utterance.seconds();
    return wholePatience + 1.5 * utterance.seconds();
}

}  // namespace

Recogniser::Recogniser(Executor& main, HelperProcesses& processes)
    : main_(main), processes_(processes), idle_(main) {}

Recogniser::~Recogniser() {
    const auto error = std::make_exception_ptr(MessageError("recogniser: gone"));
    for (const auto& utterance : queue_) utterance->fail(error);
    if (loading_) loading_->fail(error);
}

Task<void> Recogniser::load(ModelRequest model) {
    const bool isLoaded = link_ && link_->model() == model;
    if (isLoaded && isReady_) co_return;
    if (!isLoaded) {
        if (!queue_.empty()) co_return;
        launch(model);
    }
    if (!loading_) loading_.emplace();
    const auto loaded = *loading_;
    co_await loaded;
}

void Recogniser::launch(const ModelRequest& model) {
    idle_.stop();
    isReady_ = isUnwanted_ = hasBegun_ = hasFinished_ = false;
    stale_ = 0;
    link_.reset();  // two models are never in memory together
    link_ = std::make_unique<RecogniserLink>(
        main_, processes_, model, [this](const Frame& frame) { takeFrame(frame); },
        [this](const std::string& how) { lost(how); });
    watch();
}

void Recogniser::transcribe(std::shared_ptr<SpokenUtterance> utterance) {
    queue_.push_back(std::move(utterance));
    advance();
}

void Recogniser::letGo(const std::filesystem::path& folder) {
    if (!link_ || link_->model().folder != folder) return;
    isUnwanted_ = true;
    advance();
}

void Recogniser::advance() {
    dropUnwanted();
    if (queue_.empty()) return rest();
    idle_.stop();
    auto& utterance = *queue_.front();
    if (!link_ || link_->model() != utterance.model()) launch(utterance.model());
    if (!isReady_) return;
    if (!std::exchange(hasBegun_, true)) {
        utterance.beginAttempt();
        link_->send(Frame::Kind::begin);
    }
    sendSound(utterance);
    watch();
}

/// Nobody says anything.
void Recogniser::rest() {
    if (link_ && isUnwanted_ && !loading_) link_.reset();
    if (!link_) return idle_.stop();
    if (!idle_.isActive()) idle_.once(idleSeconds, [this] { link_.reset(); });
    watch();
}

void Recogniser::dropUnwanted() {
    if (!queue_.empty() && queue_.front()->isDropped() && hasBegun_ && link_) stopWork();
    std::erase_if(queue_, [](const auto& utterance) {
        if (utterance->isDropped()) utterance->fail(nullptr);
        return utterance->isDropped();
    });
}

/// On what nobody wants any more. Who waits for a server does not listen, and has nothing loaded to be lost.
void Recogniser::stopWork() {
    if (hasFinished_ && asksServer(link_->model())) {
        link_.reset();
    } else {
        link_->send(Frame::Kind::drop);
        link_->expectNothing();  // of the time before
        ++stale_;
    }
    hasBegun_ = hasFinished_ = false;
}

void Recogniser::sendSound(SpokenUtterance& utterance) {
    for (auto next = utterance.nextSound(); !next.empty(); next = utterance.nextSound())
        link_->sendAudio(next);
    if (utterance.isAllSent() && !std::exchange(hasFinished_, true)) link_->send(Frame::Kind::finish);
}

void Recogniser::takeFrame(const Frame& frame) {
    switch (frame.kind) {
        case Frame::Kind::ready:
            return ready();
        case Frame::Kind::refused:
            return refused(frame.body);
        default:
            break;
    }
    if (stale_ > 0) {
        if (frame.kind == Frame::Kind::done && --stale_ == 0) advance();
        return;
    }
    if (hasBegun_ && !queue_.empty()) takeFrameOf(*queue_.front(), frame);
}

/// What is told here may be typed into a terminal, and comes of other people's bytes.
void Recogniser::takeFrameOf(SpokenUtterance& utterance, const Frame& frame) {
    switch (frame.kind) {
        case Frame::Kind::heard:
            utterance.heard(countIn(frame.body).value_or(0));
            return advance();
        case Frame::Kind::partial:
        case Frame::Kind::final:
            utterance.understood({text::asLine(frame.body), frame.kind == Frame::Kind::final});
            if (utterance.isTooLong()) lost("dice más de lo que nadie dicta");
            return;
        case Frame::Kind::done:
            // Only all of it is all that was said.
            if (!hasFinished_) return lost("termina antes de tiempo");
            utterance.done();
            return ended();
        default:
            return;
    }
}

void Recogniser::ready() {
    isReady_ = true;
    failedStarts_ = 0;
    if (loading_) std::exchange(loading_, std::nullopt)->complete();
    advance();
}

/// The utterance that the process was at is over.
void Recogniser::ended() {
    queue_.pop_front();
    hasBegun_ = hasFinished_ = false;
    advance();
}

/// What is wrong with a server is for the user; what is wrong with a model, for the log.
void Recogniser::refused(const std::string& why) {
    const auto model = link_->model();
    const bool isForUser = isReady_ && asksServer(model);
    // What a model has made of the process says nothing in our name.
    if (isReady_ && !isForUser) return lost("no quiere seguir");
    link_.reset();
    if (!isForUser) {
        logLine("the recogniser could not be loaded: " + why);
        onRefused(model);
    }
    giveUp(isForUser ? tr(asComplaint(why)) : failureText());
}

/// Of whoever waits for the process now.
void Recogniser::giveUp(const std::string& why) {
    const auto error = std::make_exception_ptr(MessageError(why));
    failedStarts_ = 0;
    if (loading_) std::exchange(loading_, std::nullopt)->fail(error);
    if (queue_.empty()) return;
    auto& utterance = *queue_.front();
    if (asksServer(utterance.model())) onServerFailed(why);
    if (takeReplacement(utterance)) return advance();
    utterance.fail(error);
    ended();
}

bool Recogniser::takeReplacement(SpokenUtterance& utterance) {
    auto other = replacement(utterance.model());
    if (!other || *other == utterance.model() || asksServer(*other)) return false;
    utterance.takeModel(*std::move(other));
    return true;
}

void Recogniser::lost(const std::string& how) {
    const auto model = link_->model();
    const bool wasReady = isReady_;
    link_.reset();
    logLine("the recogniser has failed: " + how);
    // What it was still at when it died was nobody's any more.
    const bool isCharged = std::exchange(stale_, 0) == 0;
    int failures = 0;
    if (isCharged && !queue_.empty()) failures = queue_.front()->countFailure();
    if (isCharged && queue_.empty() && loading_) failures = ++failedStarts_;
    if (failures >= mostFailures) {
        // A model that kills who loads it would do so again.
        if (!wasReady && processes_.isInstalled(RecogniserLink::program)) onRefused(model);
        return giveUp(failureText());
    }
    if (!queue_.empty()) return advance();
    if (loading_) launch(model);
}

/// Whether the process has something to say by now, and how soon.
void Recogniser::watch() {
    if (!isReady_) return link_->expectWithin(loadingPatience(link_->model()));
    if (stale_ > 0) return link_->expectWithin(workingPatience);
    if (queue_.empty() || !hasBegun_) return link_->expectNothing();
    const auto& utterance = *queue_.front();
    if (hasFinished_) return link_->expectWithin(patienceAtEnd(utterance));
    if (utterance.isOutstanding()) return link_->expectWithin(patienceAtWork(utterance));
    link_->expectNothing();
}

}  // namespace dorix
