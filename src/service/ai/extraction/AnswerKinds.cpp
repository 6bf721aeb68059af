#include "service/ai/extraction/AnswerKinds.h"

#include "service/ai/extraction/ExtractionWords.h"
#include "service/ai/extraction/Terms.h"

#include <algorithm>
#include <array>
#include <string>

namespace dorix::service {

namespace {

struct Sign {
    std::string_view phrase;
    Kinds kinds;
};

// The first that a question holds counts.
constexpr auto signs = std::to_array<Sign>({
    {"telefono", kinds::phone},
    {"phone number", kinds::phone},
    {"what number", kinds::phone},
    {"cada cuanto", kinds::often | kinds::duration},
    {"con que frecuencia", kinds::often | kinds::duration},
    {"cuantas veces", kinds::often | kinds::number},
    {"how often", kinds::often | kinds::duration},
    {"how many times", kinds::often | kinds::number},
    {"cuanto tiempo", kinds::duration},
    {"cuanto tarda", kinds::duration},
    {"cuanto tardan", kinds::duration},
    {"cuanto dura", kinds::duration},
    {"cuanto duran", kinds::duration},
    {"cuanta antelacion", kinds::duration},
    {"que plazo", kinds::duration | kinds::time},
    {"que antelacion", kinds::duration},
    {"how long", kinds::duration},
    {"how fast", kinds::duration},
    {"how soon", kinds::duration | kinds::time},
    {"how much notice", kinds::duration},
    {"how much time", kinds::duration},
    {"how far in advance", kinds::duration},
    {"how many days", kinds::duration | kinds::number},
    {"cuantos dias", kinds::duration | kinds::number},
    {"que hora", kinds::time},
    {"cuando", kinds::time | kinds::duration},
    {"que dia", kinds::time},
    {"que fecha", kinds::time},
    {"what time", kinds::time},
    {"when", kinds::time | kinds::duration},
    {"what day", kinds::time},
    {"which day", kinds::time},
    {"what date", kinds::time},
    {"deadline", kinds::time | kinds::duration},
    {"porcentaje", kinds::percent},
    {"percentage", kinds::percent},
    {"que temperatura", kinds::degrees},
    {"what temperature", kinds::degrees},
    {"how hot", kinds::degrees},
    {"how warm", kinds::degrees},
    {"how cold", kinds::degrees},
    {"cuantos", kinds::number},
    {"cuantas", kinds::number},
    {"how many", kinds::number},
    {"quien", kinds::person},
    {"quienes", kinds::person},
    {"who", kinds::person},
    {"whom", kinds::person},
    {"whose", kinds::person},
    {"donde", kinds::place},
    {"adonde", kinds::place},
    {"where", kinds::place},
    {"por que", kinds::reason},
    {"motivo", kinds::reason},
    {"why", kinds::reason},
    {"reason", kinds::reason},
});

/// By these, "how much" means money, and the question for one of them too.
const WordSet& moneyWords() {
    static const WordSet set(
        {"cuesta",  "cuestan",  "costo", "cuestas", "precio", "importe", "coste",    "tarifa",
         "vale",    "valen",    "pago",  "paga",    "pagan",  "pagar",   "pagamos",  "pagaremos",
         "cobra",   "cobran",   "debo",  "debemos", "sueldo", "salario", "gana",     "ganan",
         "cobro",   "alquiler", "renta", "cuota",   "prima",  "multa",   "fianza",   "franquicia",
         "cost",    "costs",    "price", "pay",     "pays",   "paid",    "owe",      "owes",
         "rent",    "fee",      "fine",  "premium", "salary", "earn",    "earns",    "charge",
         "charged", "deposit",  "worth", "spend",   "spent",  "gastado", "gastamos", "gasto",
         "dinero",  "money"});
    return set;
}

const WordSet& durationUnits() {
    static const WordSet set({"segundo",       "segundos", "minuto",  "minutos", "hora",    "horas",  "dia",
                              "dias",          "semana",   "semanas", "mes",     "meses",   "ano",    "anos",
                              "mensualidades", "second",   "seconds", "minute",  "minutes", "hour",   "hours",
                              "day",           "days",     "week",    "weeks",   "month",   "months", "year",
                              "years",         "h",        "min"});
    return set;
}

const WordSet& currencies() {
    static const WordSet set({"euro",  "euros", "dolar",  "dolares", "libra",  "libras", "centimos",
                              "peso",  "pesos", "dollar", "dollars", "pound",  "pounds", "pence",
                              "cents", "eur",   "usd",    "gbp",     "gratis", "free"});
    return set;
}

const WordSet& frequencies() {
    static const WordSet set({"cada", "todos", "todas", "diario", "diaria", "semanal", "mensual", "anual",
                              "veces", "vez", "every", "daily", "weekly", "monthly", "yearly", "once",
                              "twice", "each", "times"});
    return set;
}

const WordSet& places() {
    static const WordSet set(
        {"calle",  "avenida",   "plaza",  "sala",   "planta",    "oficina",  "edificio", "nave",   "taller",
         "tienda", "recepcion", "sotano", "street", "road",      "avenue",   "square",   "room",   "floor",
         "office", "building",  "hall",   "desk",   "reception", "basement", "junto",    "detras", "dentro",
         "debajo", "behind",    "inside", "under",  "opposite",  "next",     "page",     "pagina"});
    return set;
}

const WordSet& reasons() {
    static const WordSet set({"porque", "debido", "causa", "motivo", "puesto", "ya", "para", "por", "because",
                              "due", "since", "so", "as", "reason", "owing", "after", "tras"});
    return set;
}

bool hasPhrase(std::string_view padded, std::string_view phrase) {
    for (auto at = padded.find(phrase); at != std::string_view::npos; at = padded.find(phrase, at + 1)) {
        if (at > 0 && padded[at - 1] == ' ' && padded[at + phrase.size()] == ' ') return true;
    }
    return false;
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool hasDigit(std::string_view text) { return std::ranges::any_of(text, isDigit); }

bool isNumber(std::string_view word) { return hasDigit(word) || words::amountWords().contains(word); }

/// "2026", but not "2000 boxes": years of this and the last century.
bool isYear(std::string_view word) {
    return word.size() == 4 && hasDigit(word) && (word.starts_with("19") || word.starts_with("20"));
}

/// "7:40".
bool hasClock(std::string_view text) {
    for (auto at = text.find(':'); at != std::string_view::npos; at = text.find(':', at + 1)) {
        if (at > 0 && at + 2 < text.size() && isDigit(text[at - 1]) && isDigit(text[at + 1]) &&
            isDigit(text[at + 2]))
            return true;
    }
    return false;
}

/// Six digits or more, with nothing but blanks, stops and dashes between them.
bool hasPhoneNumber(std::string_view text) {
    constexpr int shortest = 6;
    int digits = 0;
    for (const char c : text) {
        if (isDigit(c) && ++digits >= shortest) return true;
        if (!isDigit(c) && c != ' ' && c != '-' && c != '.' && c != '+') digits = 0;
    }
    return false;
}

bool hasCurrencySign(std::string_view text) {
    return text.find('$') != std::string_view::npos || text.find("€") != std::string_view::npos ||
           text.find("£") != std::string_view::npos;
}

/// "12.50", "681,23": two digits behind a point or comma.
bool hasPrice(std::string_view text) {
    for (std::size_t at = 1; at + 2 < text.size(); ++at) {
        if (text[at] != '.' && text[at] != ',') continue;
        const bool isLonger = at + 3 < text.size() && isDigit(text[at + 3]);
        if (isDigit(text[at - 1]) && isDigit(text[at + 1]) && isDigit(text[at + 2]) && !isLonger) return true;
    }
    return false;
}

/// "at ten", "las nueve", "día 5", and May, which is a verb too where no number is beside it.
bool isTimeBehind(std::string_view before, std::string_view word) {
    if (word == "may") return isNumber(before);
    return isNumber(word) && (before == "at" || before == "las" || before == "dia" || before == "may");
}

Kinds kindsOfWord(std::string_view word, bool follows) {
    Kinds kinds = 0;
    if (words::timeWords().contains(word) || isYear(word)) kinds |= kinds::time;
    if (durationUnits().contains(word) && follows) kinds |= kinds::duration;
    if (currencies().contains(word)) kinds |= kinds::money;
    if (frequencies().contains(word)) kinds |= kinds::often;
    if (isNumber(word)) kinds |= kinds::number;
    if (places().contains(word)) kinds |= kinds::place;
    if (reasons().contains(word)) kinds |= kinds::reason;
    if (word == "grados" || word == "degrees") kinds |= kinds::degrees;
    if (word == "percent") kinds |= kinds::percent;
    return kinds;
}

}  // namespace

Kinds kindsAsked(std::string_view foldedQuestion) {
    std::string padded = " ";
    bool isAboutMoney = false;
    for (const auto word : foldedWords(foldedQuestion)) {
        padded += std::string(word) + " ";
        isAboutMoney |= moneyWords().contains(word);
    }
    for (const auto& sign : signs) {
        if (hasPhrase(padded, sign.phrase)) return sign.kinds;
    }
    if (isAboutMoney) return kinds::money;
    const bool isAmount =
        hasPhrase(padded, "cuanto") || hasPhrase(padded, "cuanta") || hasPhrase(padded, "how much");
    return isAmount ? kinds::number | kinds::money : Kinds(0);
}

Kinds kindsIn(std::string_view text, const std::vector<std::string_view>& foldedWords, bool namesSomebody) {
    constexpr std::size_t reach = 3;
    Kinds kinds = namesSomebody ? kinds::person | kinds::place : Kinds(0);
    std::size_t sinceNumber = reach + 1;
    std::string_view before;
    for (const auto word : foldedWords) {
        kinds |= kindsOfWord(word, sinceNumber <= reach);
        if (isTimeBehind(before, word)) kinds |= kinds::time;
        sinceNumber = isNumber(word) ? 0 : sinceNumber + 1;
        before = word;
    }
    if (hasClock(text)) kinds |= kinds::time;
    if (hasCurrencySign(text) || hasPrice(text)) kinds |= kinds::money;
    if (text.find('%') != std::string_view::npos) kinds |= kinds::percent;
    if (text.find("°") != std::string_view::npos) kinds |= kinds::degrees;
    if (hasPhoneNumber(text)) kinds |= kinds::phone;
    return kinds;
}

}  // namespace dorix::service
