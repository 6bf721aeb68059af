#include "service/ai/writing/SpokenNumber.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

namespace dorix::service {

namespace {

struct Row {
    std::string_view word;
    std::int64_t value;
};

// clang-format off
constexpr auto spanishRows = std::to_array<Row>({
    {"uno", 1}, {"una", 1}, {"un", 1}, {"dos", 2}, {"tres", 3}, {"cuatro", 4}, {"cinco", 5}, {"seis", 6}, {"siete", 7},
    {"ocho", 8}, {"nueve", 9}, {"diez", 10}, {"once", 11}, {"doce", 12}, {"trece", 13}, {"catorce", 14}, {"quince", 15},
    {"dieciseis", 16}, {"diecisiete", 17}, {"dieciocho", 18}, {"diecinueve", 19}, {"veinte", 20}, {"veintiuno", 21},
    {"veintiun", 21}, {"veintiuna", 21}, {"veintidos", 22}, {"veintitres", 23}, {"veinticuatro", 24},
    {"veinticinco", 25}, {"veintiseis", 26}, {"veintisiete", 27}, {"veintiocho", 28}, {"veintinueve", 29},
    {"treinta", 30}, {"cuarenta", 40}, {"cincuenta", 50}, {"sesenta", 60}, {"setenta", 70}, {"ochenta", 80},
    {"noventa", 90}, {"cien", 100}, {"ciento", 100}, {"doscientos", 200}, {"doscientas", 200}, {"trescientos", 300},
    {"trescientas", 300}, {"cuatrocientos", 400}, {"cuatrocientas", 400}, {"quinientos", 500}, {"quinientas", 500},
    {"seiscientos", 600}, {"seiscientas", 600}, {"setecientos", 700}, {"setecientas", 700}, {"ochocientos", 800},
    {"ochocientas", 800}, {"novecientos", 900}, {"novecientas", 900},
});

constexpr auto englishRows = std::to_array<Row>({
    {"one", 1}, {"two", 2}, {"three", 3}, {"four", 4}, {"five", 5}, {"six", 6}, {"seven", 7}, {"eight", 8}, {"nine", 9},
    {"ten", 10}, {"eleven", 11}, {"twelve", 12}, {"thirteen", 13}, {"fourteen", 14}, {"fifteen", 15}, {"sixteen", 16},
    {"seventeen", 17}, {"eighteen", 18}, {"nineteen", 19}, {"twenty", 20}, {"thirty", 30}, {"forty", 40}, {"fifty", 50},
    {"sixty", 60}, {"seventy", 70}, {"eighty", 80}, {"ninety", 90},
});
// clang-format on

std::optional<std::int64_t> valueOf(std::span<const Row> rows, std::string_view word) {
    const auto row = std::ranges::find(rows, word, &Row::word);
    if (row == rows.end()) return std::nullopt;
    return row->value;
}

/// Reads the words of one number, one part after the other.
class Reader {
 public:
    Reader(const Tokens& tokens, std::size_t at, std::span<const Row> rows)
        : tokens_(tokens), rows_(rows), begin_(at), at_(at) {}

    bool isOpen() const {
        if (at_ >= tokens_.size()) return false;
        const bool isFirst = at_ == begin_;
        const auto& token = tokens_[at_];
        return isFirst ||
               (!tokens_[at_ - 1].endsClause() && token.opening.empty() && token.gap == Gap::blank);
    }

    /// Takes a word whose value is from `least` up to `most`.
    std::int64_t take(std::int64_t least, std::int64_t most) {
        const auto value = isOpen() ? valueOf(rows_, tokens_[at_].key) : std::nullopt;
        if (!value || *value < least || *value > most) return 0;
        ++at_;
        return *value;
    }

    bool takeWord(std::string_view word) {
        const bool isThere = isOpen() && tokens_[at_].key == word;
        if (isThere) ++at_;
        return isThere;
    }

    std::size_t at() const { return at_; }
    void goBack(std::size_t at) { at_ = at; }
    std::size_t words() const { return at_ - begin_; }

 private:
    const Tokens& tokens_;
    std::span<const Row> rows_;
    std::size_t begin_;
    std::size_t at_;
};

/// Behind "treinta" a further word may add to it, with "y".
std::int64_t spanishBelowHundred(Reader& reader) {
    if (const auto small = reader.take(1, 29)) return small;
    const auto tens = reader.take(30, 90);
    const auto behind = reader.at();
    if (tens == 0 || !reader.takeWord("y")) return tens;
    const auto unit = reader.take(1, 9);
    if (unit == 0) reader.goBack(behind);
    return tens + unit;
}

std::int64_t spanishBelowThousand(Reader& reader) {
    const auto hundreds = reader.take(100, 900);
    return hundreds + spanishBelowHundred(reader);
}

std::int64_t englishBelowHundred(Reader& reader) {
    const auto tens = reader.take(20, 90);
    if (tens > 0) return tens + reader.take(1, 9);
    return reader.take(1, 19);
}

/// What may follow a hundred or a thousand, with or without "and".
template <typename Read>
std::int64_t englishRest(Reader& reader, Read read) {
    const auto before = reader.at();
    const bool hasAnd = reader.takeWord("and");
    const auto rest = read(reader);
    if (rest == 0 && hasAnd) reader.goBack(before);
    return rest;
}

std::int64_t englishBelowThousand(Reader& reader) {
    const auto first = englishBelowHundred(reader);
    if (first == 0 || !reader.takeWord("hundred")) return first;
    return 100 * first + englishRest(reader, englishBelowHundred);
}

std::optional<SpokenNumber> found(std::int64_t value, const Reader& reader) {
    if (value == 0) return std::nullopt;
    return SpokenNumber{.value = value, .words = reader.words()};
}

}  // namespace

std::optional<SpokenNumber> spanishNumberAt(const Tokens& tokens, std::size_t at) {
    Reader reader(tokens, at, spanishRows);
    auto value = spanishBelowThousand(reader);
    if (value == 1 && reader.words() == 1 && tokens[at].key != "uno") {
        if (!reader.takeWord("millon")) return std::nullopt;
        value = 1'000'000 + spanishBelowThousand(reader);
    } else if (value > 0 && reader.takeWord("millones")) {
        value = value * 1'000'000 + spanishBelowThousand(reader);
    }
    const auto below = value % 1'000'000;
    const auto before = reader.at();
    if (reader.takeWord("mil")) {
        if (below == 1)
            reader.goBack(before);
        else
            value = value - below + std::max<std::int64_t>(below, 1) * 1'000 + spanishBelowThousand(reader);
    }
    return found(value, reader);
}

std::optional<SpokenNumber> englishNumberAt(const Tokens& tokens, std::size_t at) {
    Reader reader(tokens, at, englishRows);
    auto value = englishBelowThousand(reader);
    if (value == 0) return std::nullopt;
    if (reader.takeWord("million")) value = value * 1'000'000 + englishRest(reader, englishBelowThousand);
    const auto below = value % 1'000'000;
    if (below > 0 && reader.takeWord("thousand"))
        value = value - below + below * 1'000 + englishRest(reader, englishBelowThousand);
    return found(value, reader);
}

std::optional<int> digitAt(const Tokens& tokens, std::size_t at) {
    if (at >= tokens.size()) return std::nullopt;
    const auto& key = tokens[at].key;
    if (key == "cero" || key == "zero" || key == "oh") return 0;
    auto value = valueOf(spanishRows, key);
    if (!value) value = valueOf(englishRows, key);
    if (!value || *value > 9 || key == "un" || key == "una") return std::nullopt;
    return static_cast<int>(*value);
}

}  // namespace dorix::service
