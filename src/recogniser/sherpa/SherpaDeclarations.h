#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// The C interface of sherpa-onnx 1.13.8, as far as it is used here, declared from what that library was seen
/// to read and write on x86-64. The records carry no version and have grown with every one: no other library
/// may be called through them. Zero means the library's default everywhere. It copies what it is given.
namespace dorix::recogniser::sherpa {

constexpr const char* version = "1.13.8";

struct Features {
    std::int32_t sampleRate;
    std::int32_t dimension;
};

struct Transducer {
    const char* encoder;
    const char* decoder;
    const char* joiner;
};

struct Homophones {
    const char* dictionary;
    const char* lexicon;
    const char* ruleFsts;
};

struct OnlineModel {
    Transducer transducer;
    std::array<const char*, 3> otherKinds;
    const char* tokens;
    std::int32_t threads;
    const char* provider;
    std::int32_t debug;
    const char* type;
    const char* modelingUnit;
    const char* bpeVocabulary;
    const char* tokensText;
    std::int32_t tokensTextSize;
    std::array<const char*, 2> moreKinds;
};

struct OnlineRecognizerConfig {
    Features features;
    OnlineModel model;
    const char* decodingMethod;
    std::int32_t activePaths;
    std::int32_t endpointDetection;
    float silenceBeforeWords;  // seconds until an end point, where nothing was understood
    float silenceAfterWords;   // seconds since the last token
    float longestUtterance;    // seconds
    const char* hotwordsFile;
    float hotwordsScore;
    const char* graph;
    std::int32_t graphMaxActive;
    const char* ruleFsts;
    const char* ruleFars;
    float blankPenalty;
    const char* hotwordsText;
    std::int32_t hotwordsTextSize;
    Homophones homophones;
};

struct OnlineResult {
    const char* text;
    const char* tokens;
    const char* const* tokenList;
    const float* timestamps;
    std::int32_t count;
    const char* json;
};

struct Whisper {
    const char* encoder;
    const char* decoder;
    const char* language;
    const char* task;
    std::int32_t tailPaddings;
    std::int32_t tokenTimestamps;
    std::int32_t segmentTimestamps;
};

struct OfflineModel {
    Transducer transducer;
    const char* paraformer;
    const char* nemoCtc;
    Whisper whisper;
    const char* tdnn;
    const char* tokens;
    std::int32_t threads;
    std::int32_t debug;
    const char* provider;
    const char* type;
    const char* modelingUnit;
    const char* bpeVocabulary;
    std::array<const char*, 45> otherKinds;  // all of them zero, also those that are no pointers
};

struct OfflineRecognizerConfig {
    Features features;
    OfflineModel model;
    const char* languageModel;
    float languageModelScale;
    const char* decodingMethod;
    std::int32_t activePaths;
    const char* hotwordsFile;
    float hotwordsScore;
    const char* ruleFsts;
    const char* ruleFars;
    float blankPenalty;
    Homophones homophones;
};

/// Of which there is more behind.
struct OfflineResult {
    const char* text;
};

static_assert(sizeof(void*) == 8);

static_assert(sizeof(OnlineModel) == 136);
static_assert(offsetof(OnlineModel, tokens) == 48);
static_assert(offsetof(OnlineModel, threads) == 56);
static_assert(offsetof(OnlineModel, provider) == 64);
static_assert(offsetof(OnlineModel, debug) == 72);
static_assert(offsetof(OnlineModel, type) == 80);
static_assert(offsetof(OnlineModel, modelingUnit) == 88);
static_assert(offsetof(OnlineModel, bpeVocabulary) == 96);
static_assert(offsetof(OnlineModel, tokensText) == 104);
static_assert(offsetof(OnlineModel, tokensTextSize) == 112);
static_assert(offsetof(OnlineModel, moreKinds) == 120);

static_assert(sizeof(OnlineRecognizerConfig) == 272);
static_assert(offsetof(OnlineRecognizerConfig, features) == 0);
static_assert(offsetof(OnlineRecognizerConfig, model) == 8);
static_assert(offsetof(OnlineRecognizerConfig, decodingMethod) == 144);
static_assert(offsetof(OnlineRecognizerConfig, activePaths) == 152);
static_assert(offsetof(OnlineRecognizerConfig, endpointDetection) == 156);
static_assert(offsetof(OnlineRecognizerConfig, silenceBeforeWords) == 160);
static_assert(offsetof(OnlineRecognizerConfig, silenceAfterWords) == 164);
static_assert(offsetof(OnlineRecognizerConfig, longestUtterance) == 168);
static_assert(offsetof(OnlineRecognizerConfig, hotwordsFile) == 176);
static_assert(offsetof(OnlineRecognizerConfig, hotwordsScore) == 184);
static_assert(offsetof(OnlineRecognizerConfig, graph) == 192);
static_assert(offsetof(OnlineRecognizerConfig, graphMaxActive) == 200);
static_assert(offsetof(OnlineRecognizerConfig, ruleFsts) == 208);
static_assert(offsetof(OnlineRecognizerConfig, ruleFars) == 216);
static_assert(offsetof(OnlineRecognizerConfig, blankPenalty) == 224);
static_assert(offsetof(OnlineRecognizerConfig, hotwordsText) == 232);
static_assert(offsetof(OnlineRecognizerConfig, hotwordsTextSize) == 240);
static_assert(offsetof(OnlineRecognizerConfig, homophones) == 248);

static_assert(sizeof(OnlineResult) == 48);
static_assert(offsetof(OnlineResult, tokenList) == 16);
static_assert(offsetof(OnlineResult, timestamps) == 24);
static_assert(offsetof(OnlineResult, count) == 32);
static_assert(offsetof(OnlineResult, json) == 40);

static_assert(sizeof(OfflineModel) == 504);
static_assert(offsetof(OfflineModel, paraformer) == 24);
static_assert(offsetof(OfflineModel, nemoCtc) == 32);
static_assert(offsetof(OfflineModel, whisper) == 40);
static_assert(offsetof(Whisper, language) == 16);
static_assert(offsetof(Whisper, task) == 24);
static_assert(offsetof(Whisper, tailPaddings) == 32);
static_assert(offsetof(Whisper, tokenTimestamps) == 36);
static_assert(offsetof(Whisper, segmentTimestamps) == 40);
static_assert(offsetof(OfflineModel, tdnn) == 88);
static_assert(offsetof(OfflineModel, tokens) == 96);
static_assert(offsetof(OfflineModel, threads) == 104);
static_assert(offsetof(OfflineModel, debug) == 108);
static_assert(offsetof(OfflineModel, provider) == 112);
static_assert(offsetof(OfflineModel, type) == 120);
static_assert(offsetof(OfflineModel, modelingUnit) == 128);
static_assert(offsetof(OfflineModel, bpeVocabulary) == 136);
static_assert(offsetof(OfflineModel, otherKinds) == 144);

static_assert(sizeof(OfflineRecognizerConfig) == 608);
static_assert(offsetof(OfflineRecognizerConfig, model) == 8);
static_assert(offsetof(OfflineRecognizerConfig, languageModel) == 512);
static_assert(offsetof(OfflineRecognizerConfig, languageModelScale) == 520);
static_assert(offsetof(OfflineRecognizerConfig, decodingMethod) == 528);
static_assert(offsetof(OfflineRecognizerConfig, activePaths) == 536);
static_assert(offsetof(OfflineRecognizerConfig, hotwordsFile) == 544);
static_assert(offsetof(OfflineRecognizerConfig, hotwordsScore) == 552);
static_assert(offsetof(OfflineRecognizerConfig, ruleFsts) == 560);
static_assert(offsetof(OfflineRecognizerConfig, ruleFars) == 568);
static_assert(offsetof(OfflineRecognizerConfig, blankPenalty) == 576);
static_assert(offsetof(OfflineRecognizerConfig, homophones) == 584);

// Handles.
struct OnlineRecognizer;
struct OnlineStream;
struct OfflineRecognizer;
struct OfflineStream;

/// The functions, named as the library names them behind "SherpaOnnx". They work on the calling thread and
/// come back when they are done. Any of them may throw; with a model of another kind some end the process.
struct Functions {
    const char* (*GetVersionStr)() = nullptr;

    const OnlineRecognizer* (*CreateOnlineRecognizer)(const OnlineRecognizerConfig*) = nullptr;
    void (*DestroyOnlineRecognizer)(const OnlineRecognizer*) = nullptr;
    const OnlineStream* (*CreateOnlineStream)(const OnlineRecognizer*) = nullptr;
    void (*DestroyOnlineStream)(const OnlineStream*) = nullptr;
    void (*OnlineStreamSetOption)(const OnlineStream*, const char* key, const char* value) = nullptr;
    void (*OnlineStreamAcceptWaveform)(const OnlineStream*, std::int32_t sampleRate, const float* samples,
                                       std::int32_t count) = nullptr;
    std::int32_t (*IsOnlineStreamReady)(const OnlineRecognizer*, const OnlineStream*) = nullptr;
    void (*DecodeOnlineStream)(const OnlineRecognizer*, const OnlineStream*) = nullptr;  // when ready only
    const OnlineResult* (*GetOnlineStreamResult)(const OnlineRecognizer*, const OnlineStream*) = nullptr;
    void (*DestroyOnlineRecognizerResult)(const OnlineResult*) = nullptr;
    std::int32_t (*OnlineStreamIsEndpoint)(const OnlineRecognizer*, const OnlineStream*) = nullptr;
    void (*OnlineStreamReset)(const OnlineRecognizer*, const OnlineStream*) = nullptr;
    void (*OnlineStreamInputFinished)(const OnlineStream*) = nullptr;

    const OfflineRecognizer* (*CreateOfflineRecognizer)(const OfflineRecognizerConfig*) = nullptr;
    void (*DestroyOfflineRecognizer)(const OfflineRecognizer*) = nullptr;
    const OfflineStream* (*CreateOfflineStream)(const OfflineRecognizer*) = nullptr;
    void (*DestroyOfflineStream)(const OfflineStream*) = nullptr;
    void (*AcceptWaveformOffline)(const OfflineStream*, std::int32_t sampleRate, const float* samples,
                                  std::int32_t count) = nullptr;  // once, with all of it
    void (*DecodeOfflineStream)(const OfflineRecognizer*, const OfflineStream*) = nullptr;
    const OfflineResult* (*GetOfflineStreamResult)(const OfflineStream*) = nullptr;
    void (*DestroyOfflineRecognizerResult)(const OfflineResult*) = nullptr;
};

}  // namespace dorix::recogniser::sherpa
