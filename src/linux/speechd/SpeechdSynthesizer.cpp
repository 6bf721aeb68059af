#include "linux/speechd/SpeechdSynthesizer.h"

#include "base/Error.h"
#include "base/Log.h"
#include "base/async/Timeout.h"
#include "linux/speechd/SpeechdVoices.h"
#include "linux/speechd/SpokenPieces.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

namespace dorix {

namespace {

constexpr double voicesLast = 600;       // seconds
constexpr double stepsOfDouble = 60;     // of the server's rate, from -100 to 100, to read twice as fast
constexpr double patience = 60;          // seconds, for something to be heard of a piece,
constexpr double byteLasts = 0.2;        // and so many more for each of its bytes
constexpr double longWait = 3;           // seconds; a server that is dying says so sooner
constexpr double leftAlone = 10;         // seconds, for one that was waited for in vain
constexpr double aftermath = 2;          // seconds, of one that was cut off
constexpr std::size_t piecesAtOnce = 2;  // with the server, so that there is no gap between them
constexpr const char* speaksErrors = "dummy";  // the module that stands in where none works

/// The answer's first line.
std::string told(const SsipReply& reply) { return reply.lines.empty() ? "" : reply.lines.front(); }

/// One of the server's words: what is none cannot be said to it.
bool isWord(std::string_view text) {
    return !text.empty() && std::ranges::all_of(text, [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-';
    });
}

/// In which the user has the server read.
Task<int> ownRate(SsipConnection& server) {
    const auto text = told(co_await server.ask("GET RATE"));
    int rate = 0;
    std::from_chars(text.data(), text.data() + text.size(), rate);
    co_return rate;
}

/// What the server does not know of these it leaves as it is.
Task<void> prepare(SsipConnection& server, const SpeechUtterance& utterance) {
    co_await server.ask("SET SELF NOTIFICATION ALL ON");
    // A text that holds commands to the voice is read as it stands.
    if (!(co_await server.ask("SET SELF SSML_MODE OFF")).isOk()) throw MessageError("it wants mark-up");
    // Others that speak meanwhile, such as a screen reader, wait as we wait for them.
    co_await server.ask("SET SELF PRIORITY MESSAGE");
    const auto [module, name] = moduleAndName(utterance.voice ? utterance.voice->identifier : "");
    if (!module.empty()) co_await server.ask("SET SELF OUTPUT_MODULE " + module);
    if (isWord(utterance.language)) co_await server.ask("SET SELF LANGUAGE " + utterance.language);
    if (!name.empty()) co_await server.ask("SET SELF SYNTHESIS_VOICE " + name);
    const double faster = stepsOfDouble * std::log2(utterance.rate / defaultSpeechRate);
    const int rate = co_await ownRate(server) + static_cast<int>(std::lround(faster));
    co_await server.ask("SET SELF RATE " + std::to_string(std::clamp(rate, -100, 100)));
}

/// Waits until the oldest piece that the server has is read; false when it will not be.
Task<bool> pieceRead(SsipConnection& server, double seconds) {
    bool isPaused = false;
    while (true) {
        auto event =
            isPaused ? co_await server.nextEvent() : co_await withTimeout(server.nextEvent(), seconds);
        if (!event) throw MessageError("nothing is heard of it");
        if (*event == SsipEvent::end || *event == SsipEvent::cancel) co_return *event == SsipEvent::end;
        isPaused = *event == SsipEvent::pause || (isPaused && *event != SsipEvent::resume);
    }
}

}  // namespace

SpeechdSynthesizer::SpeechdSynthesizer(Executor& main, FdWatcher& watcher)
    : main_(main), watcher_(watcher), server_(watcher), listings_(main) {}

Task<std::unique_ptr<SsipConnection>> SpeechdSynthesizer::connect() {
    // Who has waited for its voices in vain, and speaks without, does not wait for the same once more.
    if (main_.now() < leftAloneUntil_) throw MessageError("speech-dispatcher does not answer");
    const double began = main_.now();
    const auto takesLong = [this, began] { return main_.now() - began > longWait; };
    auto server = co_await tryToConnect();
    // The socket of one that is dying may still take a connection.
    if (!server && !takesLong()) server = co_await tryToConnect();
    if (server) co_return server;
    if (!takesLong()) throw MessageError("speech-dispatcher is not there");
    leftAloneUntil_ = main_.now() + leftAlone;
    throw MessageError("speech-dispatcher does not answer");
}

Task<std::unique_ptr<SsipConnection>> SpeechdSynthesizer::tryToConnect() {
    auto socket = co_await server_.connect();
    if (!socket) co_return nullptr;
    auto server = std::make_unique<SsipConnection>(watcher_, std::move(socket));
    try {
        co_await server->ask("SET SELF CLIENT_NAME \"dorix:dorix:main\"");
        co_return server;
    } catch (const Error&) {
        co_return nullptr;
    }
}

Task<std::vector<SpeechSynthesisVoice>> SpeechdSynthesizer::speechVoices() {
    if (!voices_ || (voices_->isDone() && main_.now() > voicesUntil_)) {
        voices_ = listings_.spawn(listedVoices());
        voicesUntil_ = main_.now() + voicesLast;
    }
    auto voices = co_await *voices_;
    if (voices.empty()) voices_.reset();
    co_return voices;
}

Task<SpeechdSynthesizer::Voices> SpeechdSynthesizer::listedVoices() {
    Voices voices;
    try {
        const auto server = co_await connect();
        auto modules = (co_await server->ask("LIST OUTPUT_MODULES")).lines;
        const auto own = told(co_await server->ask("GET OUTPUT_MODULE"));
        std::erase(modules, own);
        modules.insert(modules.begin(), own);
        std::erase(modules, speaksErrors);
        for (const auto& module : modules) {
            if (!(co_await server->ask("SET SELF OUTPUT_MODULE " + module)).isOk()) continue;
            const auto listed = co_await server->ask("LIST SYNTHESIS_VOICES");
            if (listed.isOk()) std::ranges::move(voicesOf(module, listed.lines), std::back_inserter(voices));
        }
    } catch (const Error&) {
        // Whoever speaks without voices says in the log why.
        co_return Voices();
    }
    co_return voices;
}

void SpeechdSynthesizer::stopSpeaking() {
    if (std::exchange(isReading_, false)) cutOffAt_ = main_.now();
    reading_.reset();
}

void SpeechdSynthesizer::speak(SpeechUtterance utterance) {
    stopSpeaking();
    isReading_ = true;
    reading_.emplace(main_).spawn(read(std::move(utterance)));
}

Task<void> SpeechdSynthesizer::read(SpeechUtterance utterance) {
    const auto number = utterance.number;
    bool isRead = false;
    try {
        isRead = co_await readAloud(utterance);
        // The server may stop what it reads by then when it notices that the one before has gone.
        if (!isRead && cutOffAt_ && main_.now() - *cutOffAt_ < aftermath)
            isRead = co_await readAloud(utterance);
    } catch (const Error& error) {
        logLine(std::string("no se pudo leer en voz alta: ") + error.what());
    }
    isReading_ = false;
    // Whoever is told may speak again, and thereby end this task.
    const auto tell = isRead ? onFinish : onCancel;
    if (tell) tell(number);
}

Task<bool> SpeechdSynthesizer::readAloud(const SpeechUtterance& utterance) {
    const auto server = co_await connect();
    co_await prepare(*server, utterance);
    SpokenPieces pieces(utterance.text);
    std::size_t waiting = 0;
    auto piece = pieces.next();
    double lasts = patience;
    while (piece || waiting > 0) {
        if (piece && waiting < piecesAtOnce) {
            lasts = patience + byteLasts * static_cast<double>(piece->size());
            co_await server->say(std::move(*piece));
            piece = pieces.next();
            ++waiting;
        } else if (co_await pieceRead(*server, lasts)) {
            --waiting;
        } else {
            co_return false;
        }
    }
    co_return true;
}

}  // namespace dorix
