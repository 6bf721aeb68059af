#include "recogniser/pocketsphinx/PocketsphinxDecoder.h"

#include "base/Error.h"
#include "base/text/Text.h"

#include <pocketsphinx.h>
#include <sphinxbase/cmn.h>
#include <sphinxbase/err.h>
#include <sphinxbase/feat.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <initializer_list>
#include <map>
#include <set>
#include <string_view>
#include <vector>

namespace dorix::recogniser {

namespace {
constexpr std::size_t longestComplaint = 200;

/// What the library last complained of on this thread.
std::string& lastComplaint() {
    thread_local std::string complaint;
    return complaint;
}

/// The library quotes what it has read, which in a damaged model is anything at all.
std::string inOneLine(std::string_view complaint) {
    std::string line(text::trim(complaint));
    std::ranges::replace_if(line, [](char c) { return c < ' ' || c > '~'; }, '?');
    if (line.size() > longestComplaint) line = line.substr(0, longestComplaint) + "...";
    return line;
}

void keepComplaint(void*, err_lvl_t level, const char* format, ...) {
    if (level < ERR_ERROR) return;
    std::array<char, 512> line{};
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(line.data(), line.size(), format, arguments);
    va_end(arguments);
    lastComplaint() = inOneLine(line.data());
    // A damaged model is fatal to the library, which would end the program next. Unwinding its frames loses
    // what they had allocated, once.
    if (level == ERR_FATAL) throw MessageError("pocketsphinx: " + lastComplaint());
}

/// The library writes a page about itself to standard error otherwise.
void silenceLibrary() {
    err_set_logfp(nullptr);
    err_set_callback(keepComplaint, nullptr);
}

[[noreturn]] void fail(const char* step) {
    throw MessageError("pocketsphinx: " + (lastComplaint().empty() ? std::string(step) : lastComplaint()));
}

/// How it searches, where the model does not say otherwise.
std::map<std::string, std::string> searchOptions() {
    return {
        // The search that keeps up with the speaker looks wider than by default: there is time while one
        // talks.
        {"beam", "1e-60"},
        {"wbeam", "1e-40"},
        {"pl_window", "0"},
        // The second pass is what the speaker waits for at the end: it looks less far around the words of the
        // first.
        {"fwdflatsfwin", "15"},
    };
}

/// What a model may say: nothing that names a file or changes what is written where.
bool isAllowed(const std::string& option) {
    static const std::set<std::string> allowed{
        "beam",         "wbeam",       "pbeam",        "lpbeam", "lponlybeam",    "topn",    "pl_window",
        "fwdflatsfwin", "fwdflatbeam", "fwdflatwbeam", "lw",     "fwdflatlw",     "wip",     "pip",
        "silprob",      "maxwpf",      "maxhmmpf",     "ds",     "vad_threshold", "fillprob"};
    return allowed.contains(option);
}

std::vector<std::string> optionsFor(const ModelRequest& model) {
    auto search = searchOptions();
    for (const auto& [option, value] : model.parameters) {
        if (!isAllowed(option))
            throw MessageError("pocketsphinx: no parameter is called " + inOneLine(option));
        search.insert_or_assign(option, value);
    }
    std::vector<std::string> words{"dorix"};
    const auto add = [&words](std::initializer_list<std::string> more) { words.insert(words.end(), more); };
    add({"-hmm", model.file("acoustic"), "-lm", model.file("language"), "-dict", model.file("dictionary")});
    // Sound comes as it is spoken, not as a whole.
    add({"-cmn", "live"});
    for (const auto& [option, value] : search) add({"-" + option, value});
    return words;
}

/// Sentence ends ("<s>"), noises ("[NOISE]", "++UM++") are no words.
bool isFiller(std::string_view word) {
    return word.starts_with('<') || word.starts_with('[') || word.starts_with("++");
}

/// "the(2)" is a second way to say "the".
std::string_view withoutVariant(std::string_view word) { return word.substr(0, word.find('(')); }

/// Gives the model's own idea of an average voice and microphone the weight of five seconds heard. Without it
/// the first utterance alone sets the average, and after a short one, a tap of the key, a fifth of the words
/// is wrong.
void weighAverageVoice(ps_decoder_s* decoder) {
    cmn_t* average = ps_get_feat(decoder)->cmn_struct;
    std::vector<mfcc_t> means(static_cast<std::size_t>(average->veclen));
    cmn_live_get(average, means.data());
    cmn_live_set(average, means.data());
}
}  // namespace

void PocketsphinxDecoder::Free::operator()(ps_decoder_s* decoder) const { ps_free(decoder); }
void PocketsphinxDecoder::Free::operator()(cmd_ln_s* options) const { cmd_ln_free_r(options); }

PocketsphinxDecoder::PocketsphinxDecoder(const ModelRequest& model) {
    silenceLibrary();
    lastComplaint().clear();
    auto words = optionsFor(model);
    std::vector<char*> arguments(words.size());
    std::ranges::transform(words, arguments.begin(), [](auto& word) { return word.data(); });
    options_.reset(
        cmd_ln_parse_r(nullptr, ps_args(), static_cast<std::int32_t>(arguments.size()), arguments.data(), 1));
    if (!options_) fail("options");
    decoder_.reset(ps_init(options_.get()));
    if (!decoder_) fail("model");
    weighAverageVoice(decoder_.get());
}

PocketsphinxDecoder::~PocketsphinxDecoder() = default;

void PocketsphinxDecoder::beginStream() {
    if (ps_start_stream(decoder_.get()) < 0) fail("stream");
}

void PocketsphinxDecoder::beginUtterance() {
    if (ps_start_utt(decoder_.get()) < 0) fail("utterance");
    isUtteranceOpen_ = true;
}

void PocketsphinxDecoder::process(std::span<const std::int16_t> samples) {
    if (ps_process_raw(decoder_.get(), samples.data(), samples.size(), 0, 0) < 0) fail("decoding");
}

bool PocketsphinxDecoder::isInSpeech() const { return ps_get_in_speech(decoder_.get()) != 0; }

void PocketsphinxDecoder::endUtterance() {
    isUtteranceOpen_ = false;
    if (ps_end_utt(decoder_.get()) < 0) fail("end of utterance");
}

void PocketsphinxDecoder::abandonUtterance() noexcept {
    if (!isUtteranceOpen_) return;
    isUtteranceOpen_ = false;
    try {
        ps_end_utt(decoder_.get());
    } catch (const MessageError&) {
        // Of what nobody wants.
    }
}

std::string PocketsphinxDecoder::hypothesis() const {
    const char* found = ps_get_hyp(decoder_.get(), nullptr);
    std::vector<std::string_view> kept;
    for (const auto word : text::words(found ? found : "")) {
        if (!isFiller(word)) kept.push_back(withoutVariant(word));
    }
    return text::join(kept, " ");
}

}  // namespace dorix::recogniser
