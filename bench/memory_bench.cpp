// The search of the memory, beside FAISS over the same vectors with one thread.
//
//     memory_bench [CHUNKS [DIMENSION]]
//
// Documents of ten chunks, with words of Zipf's frequencies and vectors about a thousand topics; questions
// have six words that are none of the 200 most frequent, which are those of any text, and a vector. Others,
// of which only the words are looked for, have those as well. Then a year of use: on each working day
// documents are put in anew, others come, some go, there are new answers in the history, and what is worked
// with is noted.

#include "base/async/Executor.h"
#include "fakes/TemporaryFolder.h"
#include "memory/store/MemoryFile.h"

#include <faiss/IndexFlat.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace dorix;
using Vector = std::vector<float>;
using Clock = std::chrono::steady_clock;

constexpr int topics = 1000;
constexpr int vocabulary = 30'000;
constexpr int chunksOfDocument = 10;
constexpr int wordsOfChunk = 120;
constexpr std::size_t hits = 8;
constexpr int commonWords = 200;
constexpr int wordsOfQuestion = 6;

// Of a year.
constexpr int workingDays = 250;
constexpr int changedOfDay = 40;
constexpr int newOfDay = 10;
constexpr int answersOfDay = 20;
constexpr int activityOfDay = 400;  // rows

void normalise(Vector& vector) {
    float sum = 0;
    for (const auto number : vector) sum += number * number;
    for (auto& number : vector) number /= std::sqrt(sum);
}

class Texts {
 public:
    explicit Texts(std::size_t dimension) : dimension_(dimension) {
        std::vector<double> weights;
        for (int rank = 1; rank <= vocabulary; ++rank) weights.push_back(1.0 / rank);
        word_ = std::discrete_distribution<int>(weights.begin(), weights.end());
        rareWord_ = std::discrete_distribution<int>(weights.begin() + commonWords, weights.end());
        for (int topic = 0; topic < topics; ++topic) centres_.push_back(direction(1));
    }

    /// About one of the topics, as far off as texts of one topic are.
    Vector vector() {
        auto made = direction(1);
        const auto& centre = centres_[static_cast<std::size_t>(bits_() % topics)];
        for (std::size_t i = 0; i < dimension_; ++i) made[i] += centre[i];
        normalise(made);
        return made;
    }
    std::string words(int count) {
        std::string text;
        for (int i = 0; i < count; ++i) text += "palabra" + std::to_string(word_(bits_)) + " ";
        return text;
    }
    /// Of words as texts have them, up to the most frequent.
    std::string ordinaryQuestion() { return words(wordsOfQuestion); }
    std::string question() {
        std::string text;
        for (int i = 0; i < wordsOfQuestion; ++i)
            text += "palabra" + std::to_string(commonWords + rareWord_(bits_)) + " ";
        return text;
    }
    MemoryDocument answer(int number) {
        return {.path = "dorix://historial/" + std::to_string(number),
                .title = words(5),
                .kind = "history",
                .modified = 1,
                .chunks = {{words(wordsOfChunk), vector()}}};
    }
    MemoryDocument document(int number) {
        MemoryDocument made{.path = "/documents/" + std::to_string(number) + ".pdf",
                            .title = std::to_string(number) + ".pdf",
                            .kind = "file",
                            .modified = 1,
                            .chunks = {}};
        for (int i = 0; i < chunksOfDocument; ++i) made.chunks.push_back({words(wordsOfChunk), vector()});
        return made;
    }

 private:
    Vector direction(float length) {
        Vector made(dimension_);
        for (auto& number : made) number = normal_(bits_);
        normalise(made);
        for (auto& number : made) number *= length;
        return made;
    }

    const std::size_t dimension_;
    std::mt19937 bits_{1};
    std::normal_distribution<float> normal_;
    std::discrete_distribution<int> word_;
    std::discrete_distribution<int> rareWord_;
    std::vector<Vector> centres_;
};

double milliseconds(const std::function<void()>& work) {
    const auto start = Clock::now();
    work();
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

void tell(const char* what, std::vector<double> times) {
    std::ranges::sort(times);
    const auto at = [&](double part) {
        return times[static_cast<std::size_t>(part * static_cast<double>(times.size() - 1))];
    };
    std::printf("%-44s median %7.2f ms, 95 %% %7.2f ms\n", what, at(0.5), at(0.95));
    std::fflush(stdout);
}

void tellSearches(const char* when, MemoryFile& file, Texts& texts) {
    std::vector<double> words;
    std::vector<double> ordinary;
    std::vector<double> vectors;
    std::vector<double> both;
    std::vector<double> bothOrdinary;
    for (int i = 0; i < 200; ++i) {
        const auto question = texts.question();
        const auto vector = texts.vector();
        const auto frequent = texts.ordinaryQuestion();
        words.push_back(milliseconds([&] { file.search(question, {}, hits); }));
        ordinary.push_back(milliseconds([&] { file.search(frequent, {}, hits); }));
        vectors.push_back(milliseconds([&] { file.search("", vector, hits); }));
        both.push_back(milliseconds([&] { file.search(question, vector, hits); }));
        bothOrdinary.push_back(milliseconds([&] { file.search(frequent, vector, hits); }));
    }
    std::printf("%s\n", when);
    tell("    words", words);
    tell("    words, with the most frequent among them", ordinary);
    tell("    vectors", vectors);
    tell("    both", both);
    tell("    both, with the most frequent among them", bothOrdinary);
}

/// As many documents go as come.
void useForAYear(MemoryFile& file, Texts& texts, int documents) {
    std::mt19937 bits(7);
    int oldest = 0;
    int next = documents;
    for (int day = 0; day < workingDays; ++day) {
        for (int i = 0; i < changedOfDay; ++i) {
            const auto number = std::uniform_int_distribution(oldest, next - 1)(bits);
            file.upsert(texts.document(number), day);
        }
        for (int i = 0; i < newOfDay; ++i) {
            file.removeDoc(texts.document(oldest++).path);
            file.upsert(texts.document(next++), day);
        }
        for (int i = 0; i < answersOfDay; ++i) file.upsert(texts.answer(day * answersOfDay + i), day);
        for (int i = 0; i < activityOfDay; ++i) {
            file.recordActivity(
                {.time = day + i * 0.001, .app = "Editor", .title = texts.words(5), .document = {}},
                "editor");
        }
        file.pruneActivity(day - 30);
        while (file.mergeWords()) {
        }
    }
}

}  // namespace

int main(int count, char** arguments) {
    const int chunks = count > 1 ? std::atoi(arguments[1]) : 200'000;
    const auto dimension = static_cast<std::size_t>(count > 2 ? std::atoi(arguments[2]) : 512);
    const int documents = chunks / chunksOfDocument;
    TemporaryFolder folder;
    Texts texts(dimension);
    faiss::IndexFlatIP reference(static_cast<faiss::Index::idx_t>(dimension));
    {
        MemoryFile file(folder.path() / "memory.sqlite");
        double putting = 0;
        for (int number = 0; number < documents; ++number) {
            const auto document = texts.document(number);
            for (const auto& chunk : document.chunks) reference.add(1, chunk.vec->data());
            putting += milliseconds([&] { file.upsert(document, 1); });
        }
        std::printf("%d chunks of %zu numbers put in: %.2f ms a document\n", chunks, dimension,
                    putting / documents);
    }
    MemoryFile file(folder.path() / "memory.sqlite");
    double longest = 0;
    const auto loading = milliseconds([&] {
        for (bool more = true; more;)
            longest = std::max(longest, milliseconds([&] { more = file.loadVectors(2000); }));
    });
    std::printf("vectors loaded in %.0f ms, %.1f ms at a time at most\n", loading, longest);
    std::vector<double> scans;
    for (int i = 0; i < 200; ++i) {
        const auto vector = texts.vector();
        std::vector<float> similarities(40);
        std::vector<faiss::Index::idx_t> ids(40);
        scans.push_back(
            milliseconds([&] { reference.search(1, vector.data(), 40, similarities.data(), ids.data()); }));
    }
    tell("FAISS IndexFlatIP, 40 nearest", scans);
    tellSearches("the memory", file, texts);
    useForAYear(file, texts, documents);
    tellSearches("after a year of use", file, texts);
}
