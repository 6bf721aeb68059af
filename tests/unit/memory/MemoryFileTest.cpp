#include "base/text/Text.h"
#include "fakes/TemporaryFolder.h"
#include "memory/store/MemoryFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <csignal>
#include <fstream>
#include <limits>
#include <map>
#include <random>
#include <set>
#include <thread>

namespace dorix {
namespace {

using Vector = std::vector<float>;

class Random {
 public:
    explicit Random(unsigned seed) : bits_(seed) {}

    int below(int end) { return std::uniform_int_distribution(0, end - 1)(bits_); }
    /// Of unit length; close to one of a few, as texts of a kind are.
    Vector vector(std::size_t dimension) {
        Vector made(dimension);
        std::normal_distribution<float> number;
        for (auto& one : made) one = number(bits_);
        made[static_cast<std::size_t>(below(4))] += 20;
        float sum = 0;
        for (const auto one : made) sum += one * one;
        for (auto& one : made) one /= std::sqrt(sum);
        return made;
    }
    std::string text() {
        static const std::array words{"factura", "reforma", "cocina", "contrato", "Velmar", "reunión",
                                      "jueves",  "oferta",  "plazo",  "anexo",    "obra",   "pedido"};
        std::string text;
        for (int i = 0; i < 6; ++i)
            text += std::string(words.at(static_cast<std::size_t>(below(words.size())))) + " ";
        return text;
    }

 private:
    std::mt19937 bits_;
};

/// What the file is to find, told the plain way: by looking at everything.
class PlainMemory {
 public:
    void upsert(const MemoryDocument& document) { documents_[document.path] = document; }
    void remove(const std::string& path) { documents_.erase(path); }

    /// The texts of the 40 that are nearest.
    std::set<std::string> nearest(const Vector& query) const {
        std::vector<std::pair<float, std::string>> similar;
        for (const auto& [path, document] : documents_) {
            for (const auto& chunk : document.chunks) {
                if (!chunk.vec || chunk.vec->size() != query.size()) continue;
                float sum = 0;
                for (std::size_t i = 0; i < query.size(); ++i) sum += (*chunk.vec)[i] * query[i];
                similar.emplace_back(-sum, chunk.text);
            }
        }
        std::ranges::sort(similar);
        similar.resize(std::min<std::size_t>(similar.size(), 40));
        std::set<std::string> texts;
        for (const auto& [similarity, text] : similar) texts.insert(text);
        return texts;
    }

 private:
    std::map<std::string, MemoryDocument> documents_;
};

class MemoryFileTest : public testing::Test {
 protected:
    std::vector<std::string> found(const std::string& query, const std::optional<Vector>& vector = {}) {
        std::vector<std::string> texts;
        for (const auto& hit : file.search(query, vector, 100)) texts.push_back(hit.text);
        return texts;
    }
    static MemoryDocument document(const std::string& path, std::vector<MemoryChunk> chunks) {
        return {.path = path, .title = path, .kind = "file", .modified = 5, .chunks = std::move(chunks)};
    }

    TemporaryFolder folder;
    std::filesystem::path place = folder.path() / "DORIX/memory.sqlite";
    MemoryFile file{place};
};

TEST_F(MemoryFileTest, WordsAreFoundWhateverMarksAndAccentsTheQueryHas) {
    file.upsert(document("/a", {{"La reunión del jueves con Marta", {}}, {"El contrato de Velmar", {}}}), 1);
    EXPECT_THAT(found("¿REUNION?"), testing::ElementsAre("La reunión del jueves con Marta"));
    EXPECT_THAT(found("busca el contrato \"Velmar\" OR NEAR(x) *-"),
                testing::ElementsAre("El contrato de Velmar"));
    EXPECT_THAT(found("¿qué dijo del que los de la?"), testing::IsEmpty());
    file.upsert(document("/a", {{"Otra cosa", {}}}), 2);
    EXPECT_THAT(found("reunión contrato"), testing::IsEmpty());
    EXPECT_EQ(file.counts(), (MemoryCounts{.documents = 1, .chunks = 1}));
    file.upsert(document("/empty", {}), 3);
    EXPECT_EQ(file.docModified("/empty"), 5);
    file.removeDoc("/a");
    EXPECT_EQ(file.counts(), (MemoryCounts{.documents = 1, .chunks = 0}));
    file.recordActivity({.time = 100, .app = "Editor", .title = "uno", .document = {}}, "org.editor");
    file.pruneActivity(100);
    file.upsert(document("/large", {{std::string(1'000'000, 'a'), {}}}), 4);
    file.clearAll();
    const auto log = place.string() + "-wal";
    EXPECT_LT(std::filesystem::file_size(place) + std::filesystem::file_size(log), 200'000U);
    EXPECT_EQ(file.activitySince(100).size(), 1U);
    EXPECT_EQ(file.docPaths("file"), std::vector<std::string>());
    EXPECT_EQ(std::filesystem::status(place).permissions() & std::filesystem::perms::group_all,
              std::filesystem::perms::none);
}

TEST_F(MemoryFileTest, WhatIsNearestIsFoundWhateverCameAndWent) {
    constexpr std::size_t dimension = 100;
    Random random(3);
    PlainMemory plain;
    for (int step = 0; step < 600; ++step) {
        auto made = document("/" + std::to_string(random.below(400)), {});
        if (random.below(5) == 0) {
            file.removeDoc(made.path);
            plain.remove(made.path);
            continue;
        }
        for (int chunk = random.below(5); chunk > 0; --chunk) {
            made.chunks.push_back(
                {std::to_string(step) + " " + std::to_string(chunk), random.vector(dimension)});
        }
        // Of another model, and of none.
        made.chunks.push_back({std::to_string(step) + " other", random.vector(dimension / 2)});
        made.chunks.push_back({std::to_string(step) + " none", {}});
        file.upsert(made, 1);
        plain.upsert(made);
        // Some of it is loaded at the start, while more comes.
        if (step % 10 == 0) file.loadVectors(3);
        if (step % 60 != 59) continue;
        const auto query = random.vector(dimension);
        const auto texts = found("", query);
        EXPECT_EQ(std::set(texts.begin(), texts.end()), plain.nearest(query)) << step;
    }
    // As another process finds it.
    MemoryFile again(place);
    const auto query = random.vector(dimension);
    std::set<std::string> texts;
    for (const auto& hit : again.search("", query, 100)) texts.insert(hit.text);
    EXPECT_EQ(texts, plain.nearest(query));
}

/// What the index of words itself says, best first.
std::vector<std::string> bestByWords(const std::filesystem::path& place, const std::string& match) {
    const auto db = sqlite::openReadOnly(place);
    const auto statement =
        sqlite::prepare(db.get(),
                        "SELECT c.text FROM (SELECT rowid AS id FROM chunks_fts WHERE chunks_fts MATCH ? "
                        "ORDER BY bm25(chunks_fts) LIMIT 40) f JOIN chunks c USING (id)");
    sqlite::bindText(statement.get(), 1, match);
    std::vector<std::string> texts;
    while (sqlite3_step(statement.get()) == SQLITE_ROW)
        texts.push_back(sqlite::columnText(statement.get(), 0).value_or(""));
    return texts;
}

TEST_F(MemoryFileTest, WordsAreRankedAsTheIndexItselfRanksThem) {
    // The number of a word is how often it comes up, from a word of nearly every text to one of a few.
    const std::array chances{90, 60, 45, 30, 15, 8, 4, 2, 1};
    Random random(5);
    for (int number = 0; number < 300; ++number) {
        auto made = document("/" + std::to_string(random.below(280)), {});
        for (int chunk = 0; chunk < 10; ++chunk) {
            std::string text = std::to_string(number) + " " + std::to_string(chunk);
            for (int part = 1 + random.below(6); part > 0; --part) {
                for (const auto chance : chances) {
                    text += " relleno";
                    if (random.below(100) < chance) text += " palabra" + std::to_string(chance);
                }
            }
            made.chunks.push_back({text, {}});
        }
        file.upsert(made, 1);
        while (number % 100 == 99 && file.mergeWords()) {
        }
    }
    for (int question = 0; question < 300; ++question) {
        std::string query;
        std::string match;
        for (int count = 1 + random.below(6); count > 0; --count) {
            const bool isUnknown = random.below(20) == 0;
            const auto chance = chances.at(static_cast<std::size_t>(random.below(chances.size())));
            const auto word = isUnknown ? "nadie" : "palabra" + std::to_string(chance);
            query += word + " ";
            match.append(match.empty() ? "" : " OR ").append(word);
        }
        ASSERT_EQ(found(query), bestByWords(place, match)) << query;
    }
}

TEST_F(MemoryFileTest, AFileThatCannotBeOpenedIsAnEmptyMemory) {
    MemoryFile none(folder.path());
    none.useVectorsOf("a model");
    none.upsert(document("/a", {{"factura", Vector{1, 0}}}), 1);
    none.recordActivity({.time = 1, .app = "Editor", .title = "factura"}, "editor");
    EXPECT_FALSE(none.mergeWords());
    EXPECT_FALSE(none.loadVectors(1));
    EXPECT_THAT(none.search("factura", Vector{1, 0}, 10), testing::IsEmpty());
    EXPECT_EQ(none.docModified("/a"), std::nullopt);
    EXPECT_THAT(none.docsModified("file", true), testing::IsEmpty());
    EXPECT_THAT(none.docPaths("file"), testing::IsEmpty());
    EXPECT_THAT(none.activitySince(0), testing::IsEmpty());
    EXPECT_EQ(none.counts(), MemoryCounts());
    none.removeDoc("/a");
    none.pruneActivity(2);
    none.clearActivity();
    none.clearAll();
}

TEST_F(MemoryFileTest, BothLegsCountAlike) {
    std::vector<MemoryChunk> chunks;
    for (int i = 0; i < 50; ++i) {
        const auto angle = static_cast<float>(i) * 0.02F;
        chunks.push_back({"número " + std::to_string(i), Vector{std::cos(angle), std::sin(angle)}});
    }
    chunks[30].text += " presupuesto";
    file.upsert(document("/numbers", chunks), 1);
    const auto texts = found("presupuesto", Vector{1, 0});
    // Named and thirtieth beats first and not named.
    EXPECT_THAT(texts, testing::SizeIs(40));
    EXPECT_EQ(texts[0], "número 30 presupuesto");
    EXPECT_EQ(texts[1], "número 0");
    const Vector none{std::numeric_limits<float>::quiet_NaN(), 0};
    EXPECT_THAT(found("presupuesto", none), testing::ElementsAre("número 30 presupuesto"));
}

TEST_F(MemoryFileTest, VectorsOfAnotherModelAreNotComparedAndAreMadeAnew) {
    const Vector east{1, 0};
    file.upsert(document("/old", {{"viejo", east}}), 1);
    file.upsert(document("/bare", {{"sin vector", {}}}), 1);
    // Nobody knows what made the first.
    file.useVectorsOf("a");
    EXPECT_THAT(found("", east), testing::IsEmpty());
    EXPECT_EQ(file.docModified("/old"), std::nullopt);
    EXPECT_EQ(file.docModified("/bare"), std::nullopt) << "it was read before a model came";
    file.upsert(document("/old", {{"nuevo", east}}), 2);
    file.upsert(document("/second", {{"otro", east}}), 2);
    EXPECT_THAT(found("", east), testing::ElementsAre("nuevo", "otro"));

    MemoryFile again(place);
    again.useVectorsOf("a");
    EXPECT_EQ(again.docModified("/old"), 5);
    EXPECT_EQ(again.search("", east, 9).size(), 2U);
    again.useVectorsOf("b");
    again.upsert(document("/old", {{"aun mas nuevo", east}}), 3);
    again.removeDoc("/second");
    again.upsert(document("/third", {}), 3);
    EXPECT_EQ(again.docModified("/third"), 5);  // with the id that the second had
    EXPECT_EQ(MemoryFile(place).docModified("/old"), 5);
    EXPECT_EQ(MemoryFile(place).search("", east, 9).size(), 1U);
    EXPECT_EQ(again.search("", east, 9).size(), 1U);
}

TEST_F(MemoryFileTest, AFileThatIsLockedWhileItIsOpenedForgetsWhatItNotedOfADocumentThatGoes) {
    const auto locked = folder.path() / "locked.sqlite";
    MemoryFile(locked).upsert(document("/old", {{"viejo", Vector{1, 0}}}), 1);
    auto other = sqlite::open(locked);
    ASSERT_TRUE(sqlite::exec(other.get(), "PRAGMA locking_mode=EXCLUSIVE; BEGIN EXCLUSIVE"));
    std::thread letsGo([&other] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        other.reset();
    });
    MemoryFile opened(locked);
    letsGo.join();
    opened.useVectorsOf("a");
    opened.removeDoc("/old");
    opened.upsert(document("/new", {}), 2);
    EXPECT_EQ(opened.docModified("/new"), 5) << "it has the id that the old one had";
}

/// Whether the index of words holds just what the chunks do, and no chunk is nobody's.
bool isConsistent(const std::filesystem::path& place) {
    const MemoryFile opens(place);
    const auto db = sqlite::open(place);
    const auto is = [&](const char* sql, int result) {
        const auto statement = sqlite::prepare(db.get(), sql);
        return statement && sqlite3_step(statement.get()) == result;
    };
    return is("INSERT INTO chunks_fts(chunks_fts, rank) VALUES ('integrity-check', 1)", SQLITE_DONE) &&
           is("SELECT 1 FROM docs d WHERE 3 != (SELECT count(*) FROM chunks WHERE doc_id = d.id)",
              SQLITE_DONE) &&
           is("SELECT 1 FROM chunks WHERE doc_id NOT IN (SELECT id FROM docs)", SQLITE_DONE) &&
           is("PRAGMA integrity_check", SQLITE_ROW);
}

void writeUntilKilled(const std::filesystem::path& place, unsigned seed) {
    Random random(seed);
    MemoryFile file(place);
    for (int i = 0; i < 500; ++i) {
        MemoryDocument document{.path = "/" + std::to_string(random.below(60)),
                                .title = "t",
                                .kind = "file",
                                .modified = 1,
                                .chunks = {}};
        for (int chunk = 0; chunk < 3; ++chunk) document.chunks.push_back({random.text(), random.vector(64)});
        file.upsert(document, 1);
    }
}

TEST_F(MemoryFileTest, ADocumentOfWhichAStatementFailsStaysAsItWas) {
    const Vector east{1, 0};
    file.upsert(document("/a", {{"primera parte", east}, {"segunda parte", east}, {"tercera", east}}), 1);
    EXPECT_THAT(found("parte", east), testing::SizeIs(3));
    {
        const auto db = sqlite::open(place);
        ASSERT_TRUE(sqlite::exec(db.get(),
                                 "CREATE TRIGGER broken AFTER INSERT ON chunks WHEN NEW.text LIKE 'rota%' "
                                 "BEGIN SELECT RAISE(FAIL, 'broken'); END"));
    }
    file.upsert(document("/a", {{"parte nueva", east}, {"rota", east}, {"y otra", east}}), 2);
    EXPECT_THAT(found("parte", east),
                testing::UnorderedElementsAre("primera parte", "segunda parte", "tercera"));
    file.upsert(document("/b", {{"rota", east}}), 2);
    EXPECT_EQ(file.docModified("/b"), std::nullopt);
    EXPECT_TRUE(isConsistent(place));
}

TEST_F(MemoryFileTest, AFileThatOthersCouldReadIsTheUsersAloneFromThenOn) {
    using std::filesystem::perms;
    const auto wide = folder.path() / "wide.sqlite";
    std::ofstream(wide).close();
    std::filesystem::permissions(wide, perms::owner_all | perms::group_all | perms::others_all);
    MemoryFile opened(wide);
    opened.upsert(document("/a", {}), 1);
    for (const auto* part : {"", "-wal", "-shm"}) {
        const auto rights = std::filesystem::status(wide.string() + part).permissions();
        EXPECT_EQ(rights & (perms::group_all | perms::others_all), perms::none) << part;
    }
}

TEST_F(MemoryFileTest, AKillAtAnyMomentLeavesWholeDocuments) {
    Random random(11);
    const auto shared = folder.path() / "killed.sqlite";
    for (unsigned round = 0; round < 100; ++round) {
        const auto child = ::fork();
        if (child == 0) {
            writeUntilKilled(shared, round);
            ::_exit(0);
        }
        std::this_thread::sleep_for(std::chrono::microseconds(random.below(60'000)));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        ASSERT_TRUE(isConsistent(shared)) << round;
    }
    EXPECT_GT(MemoryFile(shared).counts().documents, 10);
}

TEST_F(MemoryFileTest, AFullDiskLeavesWholeDocuments) {
    const auto shared = folder.path() / "full.sqlite";
    for (const rlim_t bytes : {150'000UL, 400'000UL, 900'000UL}) {
        const auto child = ::fork();
        if (child == 0) {
            std::signal(SIGXFSZ, SIG_IGN);
            const rlimit limit{bytes, bytes};
            ::setrlimit(RLIMIT_FSIZE, &limit);
            writeUntilKilled(shared, 1);
            ::_exit(0);
        }
        ::waitpid(child, nullptr, 0);
        ASSERT_TRUE(isConsistent(shared)) << bytes;
    }
    EXPECT_GT(MemoryFile(shared).counts().documents, 10);
}

}  // namespace
}  // namespace dorix
