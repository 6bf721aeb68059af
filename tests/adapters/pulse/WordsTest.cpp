#include "adapters/pulse/SoundServer.h"
#include "fakes/ToneSpeech.h"
#include "linux/process/LinuxHelperProcesses.h"
#include "recognition/Frames.h"
#include "speech/SampleConverter.h"
#include "speech/SpeechEngine.h"
#include "speech/models/SpeechModels.h"
#include "speech/recogniser/LocalRecognition.h"
#include "speech/recogniser/ModelChoice.h"

#include <gmock/gmock.h>

#include <fstream>
#include <random>

namespace dorix {
namespace {

namespace fs = std::filesystem;

constexpr AudioFormat recogniserFormat{16000, 1};

/// As a server with 16 bits a sample passes it on without a change.
std::vector<float> inSixteenBits(std::vector<float> samples) {
    for (float& sample : samples) sample = std::round(sample * 32767) / 32768;
    return samples;
}

std::vector<float> silence(AudioFormat format, double seconds) {
    return std::vector<float>(static_cast<std::size_t>(format.sampleRate * seconds) *
                              static_cast<std::size_t>(format.channelCount));
}

std::vector<float> joined(std::initializer_list<std::vector<float>> parts) {
    std::vector<float> whole;
    for (const auto& part : parts) whole.insert(whole.end(), part.begin(), part.end());
    return whole;
}

/// Speaks with a synthetic voice, 16 kHz.
std::vector<float> say(const std::string& text) {
    const TemporaryFolder folder;
    const std::string file = folder.path() / "said.wav";
    EXPECT_EQ(OtherProgram({"flite", "-voice", "slt", "-t", text, "-o", file}).wait(), 0);
    std::ifstream wave(file, std::ios::binary);
    wave.seekg(44);  // the header
    std::vector<float> samples;
    std::int16_t sample = 0;
    while (wave.read(reinterpret_cast<char*>(&sample), sizeof sample))
        samples.push_back(static_cast<float>(sample) / 32768);
    return samples;
}

bool isSound(float sample) { return sample != 0; }

/// Without the silence at both ends.
std::vector<float> trimmed(const std::vector<float>& samples) {
    const auto first = std::ranges::find_if(samples, isSound);
    const auto last = std::find_if(samples.rbegin(), samples.rend(), isSound).base();
    return first < last ? std::vector<float>(first, last) : std::vector<float>();
}

bool endsWith(const std::vector<float>& samples, const std::vector<float>& end) {
    return samples.size() >= end.size() && std::equal(end.rbegin(), end.rend(), samples.rbegin());
}

/// A microphone that keeps what it delivers.
class Overheard final : public AudioEngine {
 public:
    Overheard(std::unique_ptr<AudioEngine> engine, Recording& recording)
        : engine_(std::move(engine)), recording_(recording) {}

    AudioFormat inputFormat() const override { return engine_->inputFormat(); }
    void installTap(std::size_t size, AudioFormat format, TapBlock block) override {
        engine_->installTap(size, format, [this, block = std::move(block)](const AudioBuffer& buffer) {
            recording_.take(buffer);
            block(buffer);
        });
    }
    void removeTap() override { engine_->removeTap(); }
    void onConfigurationChange(std::function<void()> observer) override {
        engine_->onConfigurationChange(std::move(observer));
    }
    void start() override { engine_->start(); }
    void stop() override { engine_->stop(); }
    bool isRunning() const override { return engine_->isRunning(); }

 private:
    const std::unique_ptr<AudioEngine> engine_;
    Recording& recording_;
};

struct OverheardFactory final : AudioEngineFactory {
    OverheardFactory(AudioEngineFactory& from, Recording& into) : factory(from), recording(into) {}
    const Observable<std::vector<AudioInput>>& inputs() const override { return factory.inputs(); }
    void useInput(std::string id) override { factory.useInput(std::move(id)); }
    std::unique_ptr<AudioEngine> makeEngine() override {
        return std::make_unique<Overheard>(factory.makeEngine(), recording);
    }
    AudioEngineFactory& factory;
    Recording& recording;
};

/// Recognisers whose sound is kept: that of the newest utterance.
class OverheardProcesses final : public HelperProcesses {
 public:
    explicit OverheardProcesses(HelperProcesses& processes) : processes_(processes) {}

    bool isInstalled(const std::string& name) const override { return processes_.isInstalled(name); }
    std::unique_ptr<HelperProcess> launch(const std::string& name, Listener listener) override {
        auto process = processes_.launch(name, std::move(listener));
        return process ? std::make_unique<Process>(std::move(process), given) : nullptr;
    }

    std::vector<float> given;

 private:
    class Process final : public HelperProcess {
     public:
        Process(std::unique_ptr<HelperProcess> process, std::vector<float>& given)
            : process_(std::move(process)), given_(given) {}
        void send(std::string bytes) override {
            reader_.take(bytes);
            while (const auto frame = reader_.next()) note(*frame);
            process_->send(std::move(bytes));
        }

     private:
        void note(const Frame& frame) {
            if (frame.kind == Frame::Kind::begin) given_.clear();
            if (frame.kind != Frame::Kind::audio) return;
            const auto samples = samplesIn(frame.body);
            given_.insert(given_.end(), samples->begin(), samples->end());
        }

        const std::unique_ptr<HelperProcess> process_;
        std::vector<float>& given_;
        FrameReader reader_;
    };

    HelperProcesses& processes_;
};

/// The program's microphone and recogniser, in front of which sentences are spoken.
class WordsTest : public SoundTest {
 protected:
    /// From the key to the first word, and from the last word to the key.
    static constexpr double lead = 0.1;
    static constexpr double trail = 0.05;

    /// There are words to compare with where the engine is that understands tones.
    static bool understandsTones() { return fs::exists(DORIX_SPEECH_ENGINES "/sherpa-onnx-1.13.8"); }
    static std::string language() { return understandsTones() ? "es" : "en"; }

    void prepare() {
        scope.spawn(engine.prepare(language()));
        ASSERT_TRUE(loop.runUntil([&] { return engine.modelReady.get(); }, 60));
        engine.onAudioLost = [this] { ++lost; };
    }
    /// A microphone of this format, to which `sink` speaks.
    void plugIn(const std::string& sink, AudioFormat format) {
        ASSERT_TRUE(server.control({"load-module", "module-null-sink", "sink_name=" + sink, "norewinds=1",
                                    "rate=" + std::to_string(std::lround(format.sampleRate)),
                                    "channels=" + std::to_string(format.channelCount)}));
        ASSERT_TRUE(server.control({"load-module", "module-remap-source", "master=" + sink + ".monitor",
                                    "source_name=" + sink + "in"}));
        useSource(sink + "in");
        ASSERT_TRUE(loop.runUntil([&] { return inputFormat() == format; }));
    }

    void press() {
        captured.clear();
        scope.spawn(engine.start(language()));
    }
    std::string release() { return loop.result(engine.stop(), 60); }

    /// What is played before a sentence tells when its words come.
    void beginToPlay(const std::vector<float>& said, AudioFormat format, const std::string& sink) {
        const std::vector<float> mark(silence(format, 0.05).size(), 0.5F);
        observed.clear();
        observer = record(observed);
        server.play(joined({mark, silence(format, 1), said, silence(format, 1)}), format, sink);
        EXPECT_TRUE(loop.runUntil([&] { return !observed.sound().empty(); }));
        const auto rate = [](AudioFormat of) { return of.sampleRate * of.channelCount; };
        saidAt = std::numeric_limits<double>::infinity();
        // The buffer that comes soonest behind its sound tells best.
        for (int look = 0; look < 50; ++look) {
            const double since = static_cast<double>(observed.sound().size()) / rate(observer->inputFormat());
            saidAt = std::min(saidAt, loop.main.now() - since + 1.05);
            loop.runFor(0.01);
        }
        saidUntil = saidAt + static_cast<double>(said.size()) / rate(format);
    }
    void runTo(double time) {
        loop.runUntil([&] { return loop.main.now() >= time; });
    }

    void beginToSay(const ToneSpeech& speech) {
        beginToPlay(inSixteenBits(speech.samples()), recogniserFormat, "mic");
        runTo(saidAt - lead);
        press();
    }

    /// Holds the key as the first and the last word allow, and lets go; the transcript. A machine so busy
    /// that the key comes late has to try again.
    std::string dictate(const std::vector<float>& said, AudioFormat format = recogniserFormat,
                        const std::string& sink = "mic") {
        for (int attempt = 0; attempt < 3; ++attempt) {
            beginToPlay(said, format, sink);
            runTo(saidAt - lead);
            if (loop.main.now() < saidAt - lead + 0.03) break;
            loop.runUntil([&] { return loop.main.now() > saidUntil + 1; });
        }
        press();
        runTo(saidUntil + trail);
        auto text = release();
        observer.reset();
        return text;
    }

    /// That the recogniser was given what was captured, which is what was said.
    void expectEverySample(const std::vector<float>& said, AudioFormat format) {
        const auto heard = captured.samples();
        const auto sound = trimmed(heard);
        ASSERT_EQ(sound.size(), trimmed(said).size());
        EXPECT_TRUE(std::ranges::equal(sound, trimmed(said)));
        const auto expected =
            format == recogniserFormat ? heard : *SampleConverter(format, recogniserFormat).convert(heard);
        ASSERT_EQ(processes.given.size(), expected.size());
        float worst = 0;
        for (std::size_t i = 0; i < expected.size(); ++i)
            worst = std::max(worst, std::abs(processes.given[i] - expected[i]));
        EXPECT_LT(worst, format == recogniserFormat ? 1e-9 : 1e-4);
    }

    /// Seconds that were heard at the beginning and at the end.
    struct Parts {
        double first = 0;
        double last = 0;
    };
    /// How much of the beginning and of the end of what was said was heard: in one piece each, and nothing
    /// else.
    static Parts partsOf(const std::vector<float>& said, const std::vector<float>& samples) {
        const auto heard = trimmed(samples);
        const auto whole = trimmed(said);
        const auto begins = std::ranges::mismatch(heard, whole).in1 - heard.begin();
        const auto ends =
            std::mismatch(heard.rbegin(), heard.rend() - begins, whole.rbegin(), whole.rend() - begins)
                .first -
            heard.rbegin();
        EXPECT_TRUE(std::none_of(heard.begin() + begins, heard.end() - ends, isSound))
            << "heard twice, or torn";
        return {.first = static_cast<double>(begins) / 16000, .last = static_cast<double>(ends) / 16000};
    }
    /// That the recogniser was given the beginning and the end of what was said, and understood the words
    /// that lie whole in them.
    void expectParts(const ToneSpeech& speech, const std::string& text, Parts least) {
        const auto said = inSixteenBits(speech.samples());
        const auto delivered = partsOf(said, captured.samples());
        const auto [first, last] = partsOf(said, processes.given);
        EXPECT_EQ(delivered.first, first);
        EXPECT_EQ(delivered.last, last);
        EXPECT_GE(first, least.first);
        EXPECT_GE(last, least.last);
        if (!understandsTones()) return;
        const double length = static_cast<double>(said.size()) / ToneSpeech::sampleRate;
        EXPECT_THAT(" " + text, testing::StartsWith(speech.textWithin(0, first)));
        EXPECT_THAT(text, testing::EndsWith(speech.textWithin(length - last, length)));
    }

    /// What the recogniser makes of the whole file.
    std::string atOnce(const std::vector<float>& samples) {
        const auto analyzer = recognition.makeAnalyzer(language());
        const AsyncStream<AnalyzerInput> input;
        input.push({samples});
        input.finish();
        scope.spawn(analyzer->start(input));
        return loop.result(lastOf(analyzer->results()), 60);
    }
    static Task<std::string> lastOf(AsyncStream<TranscriptionResult> results) {
        std::string text;
        while (const auto result = co_await results.next()) text = result->text;
        co_return text;
    }

    Recording captured;
    Recording observed;
    std::unique_ptr<AudioEngine> observer;
    double saidAt = 0;
    double saidUntil = 0;
    int lost = 0;

    OverheardFactory microphone{*factory, captured};
    LinuxHelperProcesses realProcesses{loop.main, DORIX_PROGRAM};
    OverheardProcesses processes{realProcesses};
    const Observable<SpeechModelChoices> choices;
    SpeechModels models{DORIX_TONE_MODELS, DORIX_POCKETSPHINX_MODELDIR, choices};
    LocalRecognition recognition{loop.main, processes, modelChoice(models, DORIX_SPEECH_ENGINES)};
    SpeechEngine engine{loop.main, microphone, recognition};
    TaskScope scope{loop.main};
};

/// A sentence that the smallest microphone can pass on, of pieces below its 4 kHz.
ToneSpeech tones(unsigned seed, int pieces = 9) {
    std::mt19937 random(seed);
    ToneSpeech speech;
    std::size_t last = 0;
    for (int i = 0; i < pieces; ++i) {
        last = (last + std::uniform_int_distribution<std::size_t>(1, 11)(random)) % 12;
        speech.say(ToneSpeech::pieces[last]);
    }
    return speech;
}

TEST_F(WordsTest, EverySampleOfASentenceReachesTheRecogniser) {
    launch();
    prepare();
    for (const auto* sentence :
         {"please send the report to the whole team before noon", "we will be there at ten", "yes",
          "i think we should move the call to next friday morning", "stop",
          "remember to buy milk and bread"}) {
        const auto said = trimmed(say(sentence));
        dictate(said);
        expectEverySample(said, recogniserFormat);
    }
}

/// How alike two sounds are that begin at the same place, from -1 to 1, in the worst tenth of a second of the
/// first.
double likeness(std::span<const float> sound, std::span<const float> other) {
    constexpr std::size_t tenth = 1600;
    double worst = 1;
    for (std::size_t at = 0; at + tenth <= std::min(sound.size(), other.size()); at += tenth) {
        double product = 0;
        double power = 0;
        double otherPower = 0;
        for (std::size_t i = at; i < at + tenth; ++i) {
            product += sound[i] * other[i];
            power += sound[i] * sound[i];
            otherPower += other[i] * other[i];
        }
        if (power > 1e-3) worst = std::min(worst, product / std::sqrt(power * otherPower + 1e-12));
        if (worst < 0.5) break;
    }
    return worst;
}

/// Likewise, but where the two fit best.
double likenessSomewhere(std::span<const float> sound, std::span<const float> within) {
    double best = 0;
    for (std::size_t at = 0; at + sound.size() <= within.size(); ++at)
        best = std::max(best, likeness(sound, within.subspan(at)));
    return best;
}

/// A server that works at a rate of its own gives no sample back as it was. Without a real-time priority it
/// also loses some of the sound now and then; what the program loses is missing each time.
TEST_F(WordsTest, NothingIsMissingWhateverTheServerMakesOfTheSound) {
    launch();
    prepare();
    for (const unsigned seed : {30U, 31U, 32U}) {
        const auto speech = tones(seed);
        const auto said = inSixteenBits(speech.samples());
        bool isWhole = false;
        for (int attempt = 0; attempt < 8 && !isWhole; ++attempt) {
            const auto text = dictate(said);
            isWhole = (!understandsTones() || text == speech.text()) &&
                      likenessSomewhere(said, processes.given) > 0.7;
        }
        EXPECT_TRUE(isWhole) << seed;
    }
}

TEST_F(WordsTest, WordsAreUnderstoodAsOftenAsInTheWholeFileAtAnyRate) {
    launch();
    prepare();
    unsigned seed = 0;
    for (const int rate : {8000, 16000, 44100, 48000, 96000}) {
        for (const int channels : {1, 2}) {
            const AudioFormat format{static_cast<double>(rate), channels};
            const auto sink = "mic" + std::to_string(rate) + "x" + std::to_string(channels);
            SCOPED_TRACE(sink);
            plugIn(sink, format);
            const auto speech = tones(++seed);
            const auto played =
                inSixteenBits(*SampleConverter(recogniserFormat, format).convert(speech.samples()));
            const auto text = dictate(played, format, sink);
            expectEverySample(played, format);
            if (!understandsTones()) continue;
            EXPECT_EQ(text, atOnce(speech.samples()));
            EXPECT_EQ(text, speech.text());
        }
    }
}

TEST_F(WordsTest, AroundAMicrophoneThatGoesAndComesBackEverythingIsKept) {
    launch();
    ASSERT_TRUE(server.control({"unload-module", SoundServer::otherModule}));
    prepare();
    for (const double away : {1.0, 2.4}) {
        const auto speech = tones(20, 30);
        beginToSay(speech);
        runTo(saidAt + 2.05);  // in the middle of a word
        ASSERT_TRUE(server.control({"unload-module", "module-remap-source"}));
        runTo(saidAt + 2.05 + away);
        ASSERT_TRUE(server.control(
            {"load-module", "module-remap-source", "master=mic.monitor", "source_name=virtmic"}));
        runTo(saidUntil + trail);
        EXPECT_TRUE(engine.lacksSound()) << "half a sentence is not typed";
        expectParts(speech, release(), {.first = 1.9, .last = 8.9 - 2.05 - away - 0.6});
    }
    EXPECT_EQ(lost, 0);
}

TEST_F(WordsTest, AnotherMicrophoneInTheMiddleOfAWordCostsAMomentAtMost) {
    launch();
    prepare();
    ASSERT_TRUE(
        server.control({"load-module", "module-remap-source", "master=mic.monitor", "source_name=twin"}));
    const auto speech = tones(21, 20);
    beginToSay(speech);
    runTo(saidAt + 2.05);
    useSource("twin");
    runTo(saidUntil + trail);
    EXPECT_FALSE(engine.lacksSound());
    const auto text = release();
    const auto heard = partsOf(inSixteenBits(speech.samples()), captured.samples());
    EXPECT_GE(heard.first + heard.last, 5.8);
    expectParts(speech, text, {.first = 2, .last = 0});
}

TEST_F(WordsTest, ASoundServerThatIsStartedAgainIsHeardAgain) {
    launch();
    prepare();
    const auto before = tones(22);
    beginToSay(before);
    runTo(saidUntil + trail);
    observer.reset();
    server.kill();
    server.launch();
    const auto heardSoFar = captured.size();
    ASSERT_TRUE(loop.runUntil([&] { return server.control({"set-default-source", "virtmic"}); }));
    ASSERT_TRUE(loop.runUntil([&] { return captured.size() > heardSoFar; }));
    const auto after = tones(23);
    const auto said = inSixteenBits(after.samples());
    server.play(joined({said, silence(recogniserFormat, 1)}));
    const auto isHeard = [&] { return endsWith(trimmed(captured.samples()), trimmed(said)); };
    ASSERT_TRUE(loop.runUntil(isHeard));
    const auto text = release();
    EXPECT_TRUE(endsWith(trimmed(processes.given), trimmed(said)));
    if (understandsTones()) EXPECT_EQ(text, before.text() + " " + after.text());
    EXPECT_EQ(lost, 0);
}

TEST_F(WordsTest, AMicrophoneThatDeliversNothingIsToldOnce) {
    launch();
    prepare();
    const TemporaryFolder folder;
    const std::string pipe = folder.path() / "nothing";
    ASSERT_TRUE(server.control({"load-module", "module-pipe-source", "source_name=dead", "file=" + pipe,
                                "format=s16le", "rate=16000", "channels=1"}));
    useSource("dead");
    ASSERT_TRUE(loop.runUntil([&] { return inputFormat().channelCount > 0; }));
    press();
    const double since = loop.main.now();
    ASSERT_TRUE(loop.runUntil([&] { return lost > 0; }, 30));
    EXPECT_GE(loop.main.now() - since, 5.9);
    EXPECT_EQ(release(), "");
    loop.runFor(0.5);
    EXPECT_EQ(lost, 1);
}

}  // namespace
}  // namespace dorix
