#include "service/ai/writing/Numbers.h"

#include "service/ai/WordSet.h"
#include "service/ai/writing/SpokenNumber.h"
#include "service/ai/writing/WritingWords.h"

#include <optional>
#include <string>
#include <string_view>

namespace dorix::service {

namespace {

constexpr std::size_t leastDigitsInARow = 4;
constexpr std::size_t mostDigitsInARow = 20;

/// What becomes of so many words.
struct Written {
    std::string text;
    std::size_t words = 0;
};

std::string grouped(std::int64_t value, std::string_view separator) {
    auto digits = std::to_string(value);
    if (digits.size() < 5) return digits;  // 1250, as a year or a port
    for (std::size_t at = digits.size() - 3;; at -= 3) {
        digits.insert(at, separator);
        if (at <= 3) return digits;
    }
}

/// Looks for numbers in a dictation of one language.
class Numbers {
 public:
    Numbers(const Tokens& tokens, bool isSpanish, Register manner)
        : tokens_(tokens), isSpanish_(isSpanish), isGrouped_(manner == Register::prose) {}

    std::optional<Written> at(std::size_t at) const {
        if (auto row = digits(at)) return row;
        if (!isSpanish_) {
            if (auto year = englishYear(at)) return year;
        }
        const auto number = numberAt(at);
        if (!number) return std::nullopt;
        if (auto decimal = withDecimals(at, *number)) return decimal;
        if (auto time = hour(at, *number)) return time;
        const bool isPart = isNumber(at - 1) || isNumber(at + number->words);
        if (beginsSentence(tokens_, at) || isPart || !wantsDigits(at, *number)) return std::nullopt;
        return Written{.text = digitsOf(number->value), .words = number->words};
    }

 private:
    std::string digitsOf(std::int64_t value) const {
        // A blank that no line breaks at, in Spanish (RAE, "Ortografía", VIII 2.1.1).
        if (!isGrouped_) return std::to_string(value);
        return grouped(value, isSpanish_ ? "\xC2\xA0" : ",");
    }

    std::optional<SpokenNumber> numberAt(std::size_t at) const {
        return isSpanish_ ? spanishNumberAt(tokens_, at) : englishNumberAt(tokens_, at);
    }

    /// Beside another number there is more to it: "nineteen eighty four", "four dollars fifty".
    bool isNumber(std::size_t at) const { return at < tokens_.size() && numberAt(at).has_value(); }

    std::string_view key(std::size_t at) const {
        return at < tokens_.size() ? std::string_view(tokens_[at].key) : std::string_view();
    }
    std::string_view keyBefore(std::size_t at) const { return at == 0 ? std::string_view() : key(at - 1); }

    /// Whether the words from one to the other are said in one breath.
    bool runsOn(std::size_t begin, std::size_t end) const {
        for (auto at = begin; at + 1 < end; ++at) {
            if (at + 1 >= tokens_.size() || tokens_[at].endsClause() || tokens_[at + 1].gap != Gap::blank)
                return false;
        }
        return end <= tokens_.size();
    }

    /// "Seis cuatro nueve tres": a telephone's number, or what else is said digit by digit.
    std::optional<Written> digits(std::size_t at) const {
        Written row;
        for (auto digit = digitAt(tokens_, at); digit && row.words < mostDigitsInARow;
             digit = digitAt(tokens_, at + row.words)) {
            row.text += std::to_string(*digit);
            ++row.words;
            if (tokens_[at + row.words - 1].endsClause()) break;
        }
        if (row.words < leastDigitsInARow || counts(row.text)) return std::nullopt;
        return row;
    }

    /// "Uno dos tres cuatro" counts, and is no number.
    static bool counts(std::string_view digits) {
        for (std::size_t i = 1; i < digits.size(); ++i) {
            if (digits[i] != digits[i - 1] + 1) return false;
        }
        return true;
    }

    /// "Nineteen thirty seven".
    std::optional<Written> englishYear(std::size_t at) const {
        static const WordSet before({"in",      "since",    "until",     "till",    "of",       "from",
                                     "to",      "by",       "year",      "before",  "after",    "around",
                                     "january", "february", "march",     "april",   "may",      "june",
                                     "july",    "august",   "september", "october", "november", "december"});
        const auto century = teens(at);
        if (!century || !before.contains(keyBefore(at)) || !runsOn(at, at + 2)) return std::nullopt;
        const auto rest = englishNumberAt(tokens_, at + 1);
        if (!rest || rest->value < 10 || rest->value > 99) return std::nullopt;
        return Written{.text = std::to_string(*century * 100 + rest->value), .words = 1 + rest->words};
    }

    std::optional<std::int64_t> teens(std::size_t at) const {
        if (key(at) == "twenty") return 20;
        const auto number = englishNumberAt(tokens_, at);
        const bool isCentury = number && number->words == 1 && number->value >= 16 && number->value <= 19;
        return isCentury ? std::optional(number->value) : std::nullopt;
    }

    /// "Doce coma cinco por ciento", "three point two". In Spanish "punto" ends sentences as well, and "coma"
    /// separates the items of a list: what stands around them has to tell.
    std::optional<Written> withDecimals(std::size_t at, const SpokenNumber& number) const {
        static const WordSet versions({"version", "python", "release", "v"});
        const auto mark = at + number.words;
        if (!runsOn(at, mark + 2)) return std::nullopt;
        const auto rest = fraction(mark + 1);
        if (!rest) return std::nullopt;
        const bool isMeasured = isUnit(mark + 1 + rest->words);
        const bool isVersion = versions.contains(keyBefore(at));
        std::string_view sign;
        if (!isSpanish_ && key(mark) == "point") sign = ".";
        if (isSpanish_ && key(mark) == "punto" && (isVersion || isMeasured)) sign = ".";
        if (isSpanish_ && key(mark) == "coma" && isMeasured) sign = ",";
        if (sign.empty()) return std::nullopt;
        return Written{.text = std::to_string(number.value) + std::string(sign) + rest->text,
                       .words = number.words + 1 + rest->words};
    }

    /// Behind the mark: a number, or digits one by one.
    std::optional<Written> fraction(std::size_t at) const {
        Written row;
        for (auto digit = digitAt(tokens_, at); digit; digit = digitAt(tokens_, at + row.words)) {
            row.text += std::to_string(*digit);
            ++row.words;
            if (row.words == mostDigitsInARow || tokens_[at + row.words - 1].endsClause()) break;
        }
        if (row.words > 0) return row;
        const auto number = numberAt(at);
        if (!number || number->value > 99) return std::nullopt;
        return Written{.text = std::to_string(number->value), .words = number->words};
    }

    /// "At three thirty", "a las ocho y veinte". Halves and quarters stay words, which they read best in.
    std::optional<Written> hour(std::size_t at, const SpokenNumber& number) const {
        const auto last = keyBefore(at);
        if (isSpanish_) {
            const auto minutes = at + 2 <= tokens_.size() && key(at + 1) == "y" && runsOn(at, at + 3)
                                     ? spanishNumberAt(tokens_, at + 2)
                                     : std::nullopt;
            const bool isHour = (last == "las" || last == "la") && number.words == 1 && number.value <= 24;
            if (!isHour || !minutes || minutes->value < 5 || minutes->value > 59 ||
                isUnit(at + 2 + minutes->words))
                return std::nullopt;
            return time(number.value, minutes->value, 2 + minutes->words);
        }
        static const WordSet before(
            {"at", "from", "to", "until", "till", "by", "around", "about", "before", "after"});
        const auto hourOnly =
            digitAt(tokens_, at).value_or(number.words == 1 ? static_cast<int>(number.value) : 0);
        if (!before.contains(last) || hourOnly < 1 || hourOnly > 12 || !runsOn(at, at + 2))
            return std::nullopt;
        const auto minutes = englishNumberAt(tokens_, at + 1);
        if (!minutes || minutes->value < 10 || minutes->value > 59 || isUnit(at + 1 + minutes->words))
            return std::nullopt;
        return time(hourOnly, minutes->value, 1 + minutes->words);
    }

    static Written time(std::int64_t hours, std::int64_t minutes, std::size_t words) {
        const auto rest = std::to_string(minutes);
        return {.text = std::to_string(hours) + (rest.size() == 1 ? ":0" : ":") + rest, .words = words};
    }

    bool isUnit(std::size_t at) const {
        static const WordSet more({"por", "percent", "per", "grados", "degrees", "millones", "million", "mil",
                                   "kilogramos", "centimetros", "milimetros", "gigas", "megas", "puntos",
                                   "points"});
        return at < tokens_.size() && (words::units().contains(key(at)) || more.contains(key(at)));
    }

    bool isMoney(std::size_t at) const {
        static const WordSet money({"euro", "euros", "dolares", "dolar", "pesos", "libras", "dollars",
                                    "dollar", "pounds", "cents", "centimos"});
        return money.contains(key(at));
    }

    /// Not "cuatro euros con cincuenta".
    bool isWholeSum(std::size_t at, const SpokenNumber& number) const {
        return isMoney(at) && number.value % 1'000'000 != 0 && key(at + 1) != "con" && !isNumber(at + 1);
    }

    bool isShare(std::size_t at) const {
        return key(at) == "percent" || isPhraseAt(tokens_, at, "por ciento") ||
               isPhraseAt(tokens_, at, "per cent");
    }

    /// "Quince de abril", "april fifteen", "twelve of may".
    bool isDayOfMonth(std::size_t at, const SpokenNumber& number) const {
        if (number.value > 31) return false;
        const auto next = at + number.words;
        const bool isBefore =
            (key(next) == "de" || key(next) == "of") && words::months().contains(key(next + 1));
        return isBefore || (!isSpanish_ && isMonth(at));
    }

    bool isMonth(std::size_t at) const {
        const auto last = keyBefore(at);
        return words::months().contains(last) && last != "may";
    }

    bool wantsDigits(std::size_t at, const SpokenNumber& number) const {
        const auto next = at + number.words;
        if (!runsOn(at, next)) return false;
        const bool isFollowed = next < tokens_.size() && !tokens_[next - 1].endsClause();
        if (isFollowed && (isShare(next) || isWholeSum(next, number))) return true;
        if (isFollowed && isDayOfMonth(at, number)) return true;
        if (!isSpanish_ && isFollowed && (key(next) == "pm" || key(next) == "am")) return number.value <= 12;
        if (number.value % 1'000'000 == 0) return false;
        return number.words >= 3 || (number.words == 2 && number.value % 100 != 0);
    }

    const Tokens& tokens_;
    bool isSpanish_;
    bool isGrouped_;
};

/// "Twenty second" and "twenty second of July": compound ordinals have a hyphen, unless seconds are meant.
bool isCompoundOrdinal(const Tokens& tokens, std::size_t at) {
    static const WordSet tens({"twenty", "thirty"});
    static const WordSet units(
        {"first", "second", "third", "fourth", "fifth", "sixth", "seventh", "eighth", "ninth"});
    if (at + 1 >= tokens.size() || tokens[at].endsClause() || !tens.contains(tokens[at].key)) return false;
    if (!units.contains(tokens[at + 1].key) || tokens[at + 1].gap != Gap::blank) return false;
    const bool isAfter =
        at > 0 && (tokens[at - 1].key == "the" || words::months().contains(tokens[at - 1].key));
    return isAfter && tokens[at + 1].opening.empty();
}

Token joined(const Tokens& tokens, std::size_t at, std::string text, std::size_t words) {
    auto token = tokens[at];
    token.text = std::move(text);
    token.key = keyOf(token.text);
    token.closing = tokens[at + words - 1].closing;
    return token;
}

}  // namespace

Tokens withNumbers(const Tokens& tokens, Spoken spoken, Register manner) {
    if (spoken.spanish == spoken.english) return tokens;
    const Numbers numbers(tokens, spoken.spanish, manner);
    Tokens written;
    for (std::size_t at = 0; at < tokens.size();) {
        auto number = numbers.at(at);
        if (!number && spoken.english && isCompoundOrdinal(tokens, at))
            number = Written{.text = tokens[at].text + "-" + tokens[at + 1].text, .words = 2};
        if (!number) {
            written.push_back(tokens[at++]);
            continue;
        }
        written.push_back(joined(tokens, at, std::move(number->text), number->words));
        at += number->words;
    }
    return written;
}

}  // namespace dorix::service
