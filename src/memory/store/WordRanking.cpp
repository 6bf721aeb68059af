#include "memory/store/WordRanking.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <queue>
#include <span>
#include <utility>

namespace dorix {

namespace {

constexpr const char* pointerType = "dorix word ranking";

// BM25 with the constants of FTS5.
constexpr double saturation = 1.2;
constexpr double lengthWeight = 0.75;
constexpr double leastRarity = 1e-6;  // of a word that half of the rows have
constexpr double mostOfWord = saturation + 1;

/// What so many mentions of a word count in a row of that length, by its rarity. In the order in which FTS5
/// computes it, to the last bit.
double part(double rarity, double mentions, double length, double meanLength) {
    return rarity * (mentions * (saturation + 1.0) /
                     (mentions + saturation * (1 - lengthWeight + lengthWeight * length / meanLength)));
}

/// What FTS5 calls for each row of a statement, and what comes of it. A phrase of the expression is a word.
class RowVisitor {
 public:
    RowVisitor() = default;
    virtual ~RowVisitor() = default;
    RowVisitor(const RowVisitor&) = delete;
    RowVisitor& operator=(const RowVisitor&) = delete;

    /// An error code of SQLite's, which ends the statement.
    virtual int visit(const Fts5ExtensionApi& api, Fts5Context* row) = 0;
};

/// How frequent the words are, in the order of the expression. Looks at one row only.
class Frequencies final : public RowVisitor {
 public:
    int visit(const Fts5ExtensionApi& api, Fts5Context* row) override {
        sqlite3_int64 tokens = 0;
        int result = api.xRowCount(row, &rows_);
        if (result == SQLITE_OK) result = api.xColumnTotalSize(row, -1, &tokens);
        meanLength_ = static_cast<double>(tokens) / static_cast<double>(rows_);
        for (int word = 0; result == SQLITE_OK && word < api.xPhraseCount(row); ++word) {
            counted_ = 0;
            result = api.xQueryPhrase(row, word, this, countRow);
            counts_.push_back(counted_);
        }
        return result;
    }

    /// Otherwise there is no row with any of the words.
    bool isKnown() const { return rows_ > 0; }
    double meanLength() const { return meanLength_; }
    /// Rows with the word; of one that half of them have, not all are counted.
    sqlite3_int64 count(std::size_t word) const { return counts_[word]; }
    double rarity(std::size_t word) const {
        const auto without = static_cast<double>(rows_ - counts_[word]) + 0.5;
        const auto logarithm = std::log(without / (static_cast<double>(counts_[word]) + 0.5));
        return logarithm <= 0 ? leastRarity : logarithm;
    }

 private:
    static int countRow(const Fts5ExtensionApi* /*api*/, Fts5Context* /*row*/, void* self) {
        auto& frequencies = *static_cast<Frequencies*>(self);
        ++frequencies.counted_;
        return 2 * frequencies.counted_ < frequencies.rows_ ? SQLITE_OK : SQLITE_DONE;
    }

    sqlite3_int64 rows_ = 0;
    sqlite3_int64 counted_ = 0;
    double meanLength_ = 0;
    std::vector<sqlite3_int64> counts_;
};

/// The best rows so far.
class Best final : public RowVisitor {
 public:
    /// The words' phrases begin at `firstPhrase` in the expression. Rows below `floor` are not taken.
    Best(std::span<const double> rarities, double meanLength, int firstPhrase, std::size_t count,
         double floor)
        : rarities_(rarities),
          meanLength_(meanLength),
          firstPhrase_(firstPhrase),
          count_(count),
          floor_(floor),
          mentions_(rarities.size()) {}

    int visit(const Fts5ExtensionApi& api, Fts5Context* row) override {
        countMentions(api, row);
        // The length is looked up only where the row would come in if it were as short as can be.
        if (score(0) < least()) return SQLITE_OK;
        int length = 0;
        const int result = api.xColumnSize(row, -1, &length);
        if (result == SQLITE_OK) take({score(length), -api.xRowid(row)});
        return result;
    }

    /// What a row must score to come in.
    double least() const { return best_.size() == count_ ? std::max(floor_, best_.top().first) : floor_; }

    /// Best first; they are taken out.
    std::vector<std::int64_t> taken() {
        std::vector<std::int64_t> rows(best_.size());
        for (auto row = rows.rbegin(); row != rows.rend(); ++row, best_.pop()) *row = -best_.top().second;
        return rows;
    }

 private:
    using Row = std::pair<double, std::int64_t>;  // the score, and the rowid below zero: the older is better

    void countMentions(const Fts5ExtensionApi& api, Fts5Context* row) {
        for (std::size_t word = 0; word < mentions_.size(); ++word) {
            Fts5PhraseIter at;
            int column = 0;
            int offset = 0;
            int mentions = 0;
            api.xPhraseFirst(row, firstPhrase_ + static_cast<int>(word), &at, &column, &offset);
            for (; column >= 0; ++mentions) api.xPhraseNext(row, &at, &column, &offset);
            mentions_[word] = mentions;
        }
    }

    double score(int length) const {
        double sum = 0;
        for (std::size_t word = 0; word < mentions_.size(); ++word)
            sum += part(rarities_[word], mentions_[word], length, meanLength_);
        return sum;
    }

    void take(Row row) {
        if (row.first < floor_) return;
        if (best_.size() == count_) {
            if (row < best_.top()) return;
            best_.pop();
        }
        best_.push(row);
    }

    const std::span<const double> rarities_;
    const double meanLength_;
    const int firstPhrase_;
    const std::size_t count_;
    const double floor_;
    std::vector<int> mentions_;
    std::priority_queue<Row, std::vector<Row>, std::greater<>> best_;
};

void callVisitor(const Fts5ExtensionApi* api, Fts5Context* row, sqlite3_context* context, int count,
                 sqlite3_value** arguments) {
    auto* const visitor =
        count == 1 ? static_cast<RowVisitor*>(sqlite3_value_pointer(arguments[0], pointerType)) : nullptr;
    const int result = visitor != nullptr ? visitor->visit(*api, row) : SQLITE_MISUSE;
    if (result != SQLITE_OK) sqlite3_result_error_code(context, result);
}

/// Shows the rows that the expression matches to the visitor, up to the `most`th; false after an error.
bool visitRows(sqlite3* db, const std::string& expression, RowVisitor& visitor, std::int64_t most = -1) {
    const auto statement = sqlite::prepare(
        db, "SELECT visit_row(chunks_fts, ?) FROM chunks_fts WHERE chunks_fts MATCH ? LIMIT ?");
    if (!statement) return false;
    sqlite3_bind_pointer(statement.get(), 1, &visitor, pointerType, nullptr);
    sqlite::bindText(statement.get(), 2, expression);
    sqlite3_bind_int64(statement.get(), 3, most);
    int result = sqlite3_step(statement.get());
    while (result == SQLITE_ROW) result = sqlite3_step(statement.get());
    return result == SQLITE_DONE;
}

std::string anyOf(const std::vector<std::string>& words) {
    std::string expression;
    for (const auto& word : words) {
        if (!expression.empty()) expression += " OR ";
        expression.append("\"").append(word).append("\"");
    }
    return expression;
}

/// Words that are in some row, in the question's order: in another one the same mentions might sum up to
/// another score.
struct Words {
    std::vector<std::string> words;
    std::vector<double> rarities;
};

/// A search for rows with words whose frequencies are known.
class Ranking {
 public:
    Ranking(sqlite3* db, const std::vector<std::string>& words, const Frequencies& frequencies)
        : db_(db), meanLength_(frequencies.meanLength()) {
        for (std::size_t word = 0; word < words.size(); ++word) {
            if (frequencies.count(word) == 0) continue;
            counts_.push_back(frequencies.count(word));
            all_.words.push_back(words[word]);
            all_.rarities.push_back(frequencies.rarity(word));
        }
        rarestFirst_.resize(counts_.size());
        std::iota(rarestFirst_.begin(), rarestFirst_.end(), 0UZ);
        std::ranges::sort(rarestFirst_, {},
                          [this](std::size_t word) { return std::pair(counts_[word], word); });
    }

    /// The rows with the rarest words, by these alone, say how good a row must be at least. Where all of the
    /// other words together are not as good, no row without one of the rarest is among the best.
    std::vector<std::int64_t> best(std::size_t count) const {
        const auto few = rarest(wordsOfRows(count * rowsOfFirstLook));
        const auto found = look(anyOf(few.words), few, 0, count, anything);
        if (few.words.size() == counts_.size()) return found.rows;
        const auto needed = rarest(wordsToReach(found.least));
        if (needed.words.size() == counts_.size())
            return look(anyOf(all_.words), all_, 0, count, found.least).rows;
        return look("(" + anyOf(needed.words) + ") AND (" + anyOf(all_.words) + ")", all_,
                    needed.words.size(), count, found.least)
            .rows;
    }

 private:
    static constexpr std::size_t rowsOfFirstLook = 10;  // for each that is wanted
    static constexpr double anything = -std::numeric_limits<double>::infinity();

    struct Found {
        std::vector<std::int64_t> rows;
        double least = anything;  // what a row must score to be among them
    };

    Words rarest(std::size_t count) const {
        auto chosen =
            std::vector(rarestFirst_.begin(), rarestFirst_.begin() + static_cast<std::ptrdiff_t>(count));
        std::ranges::sort(chosen);
        Words words;
        for (const auto word : chosen) {
            words.words.push_back(all_.words[word]);
            words.rarities.push_back(all_.rarities[word]);
        }
        return words;
    }
    /// How many of the rarest words are in so many rows.
    std::size_t wordsOfRows(std::size_t rows) const {
        std::size_t words = 0;
        for (std::size_t found = 0; words < counts_.size() && found < rows; ++words)
            found += static_cast<std::size_t>(counts_[rarestFirst_[words]]);
        return words;
    }
    /// Of how many of the rarest words a row must have one to have that score.
    std::size_t wordsToReach(double score) const {
        double others = 0;
        auto words = counts_.size();
        while (words > 0) {
            others += mostOfWord * all_.rarities[rarestFirst_[words - 1]];
            if (others >= score) break;
            --words;
        }
        return words;
    }

    Found look(const std::string& expression, const Words& words, std::size_t firstPhrase, std::size_t count,
               double floor) const {
        Best best(words.rarities, meanLength_, static_cast<int>(firstPhrase), count, floor);
        if (!visitRows(db_, expression, best)) return {};
        const auto least = best.least();
        return {.rows = best.taken(), .least = least};
    }

    sqlite3* const db_;
    const double meanLength_;
    Words all_;
    std::vector<sqlite3_int64> counts_;
    std::vector<std::size_t> rarestFirst_;
};

fts5_api* fts5Of(sqlite3* db) {
    fts5_api* api = nullptr;
    const auto statement = sqlite::prepare(db, "SELECT fts5(?)");
    if (!statement) return nullptr;
    sqlite3_bind_pointer(statement.get(), 1, static_cast<void*>(&api), "fts5_api_ptr", nullptr);
    sqlite3_step(statement.get());
    return api;
}

}  // namespace

bool addWordRanking(sqlite3* db) {
    auto* const fts5 = fts5Of(db);
    return fts5 != nullptr &&
           fts5->xCreateFunction(fts5, "visit_row", nullptr, callVisitor, nullptr) == SQLITE_OK;
}

std::vector<std::int64_t> bestByWords(sqlite3* db, const std::vector<std::string>& words, std::size_t count) {
    Frequencies frequencies;
    if (words.empty() || count == 0 || !visitRows(db, anyOf(words), frequencies, 1)) return {};
    return frequencies.isKnown() ? Ranking(db, words, frequencies).best(count) : std::vector<std::int64_t>();
}

}  // namespace dorix
