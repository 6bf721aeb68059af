#include "service/ai/transform/Instruction.h"

#include "base/text/Text.h"
#include "service/ai/WordSet.h"
#include "service/ai/extraction/Terms.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <utility>

namespace dorix::service {

namespace {

using enum Operation;

constexpr std::size_t mostWords = 16;

struct Keyword {
    std::string_view word;
    Operation operation;
};

constexpr auto keywords = std::to_array<Keyword>({
    {"recorta", trim},
    {"trim", trim},
    {"sobrantes", squeeze},
    {"extra", squeeze},
    {"sobran", squeeze},
    {"trailing", trimEnd},
    {"leading", trimStart},
    {"vacias", dropEmpty},
    {"blanco", dropEmpty},
    {"blank", dropEmpty},
    {"empty", dropEmpty},
    {"duplicados", deduplicate},
    {"duplicadas", deduplicate},
    {"repetidos", deduplicate},
    {"repetidas", deduplicate},
    {"duplicates", deduplicate},
    {"repeated", deduplicate},
    {"duplicate", deduplicate},
    {"ordena", sort},
    {"ordenalo", sort},
    {"ordenala", sort},
    {"ordenalas", sort},
    {"ordenalos", sort},
    {"ordenar", sort},
    {"ordenado", sort},
    {"ordenada", sort},
    {"alfabeticamente", sort},
    {"alfabetico", sort},
    {"sort", sort},
    {"sorted", sort},
    {"alphabetically", sort},
    {"alphabetical", sort},
    {"alphabetize", sort},
    {"inverso", reverse},
    {"inversa", reverse},
    {"reves", reverse},
    {"descendente", reverse},
    {"reverse", reverse},
    {"reversed", reverse},
    {"descending", reverse},
    {"invierte", reverse},
    {"mayusculas", upper},
    {"mayuscula", upper},
    {"uppercase", upper},
    {"caps", upper},
    {"upper", upper},
    {"capitals", upper},
    {"minusculas", lower},
    {"minuscula", lower},
    {"lowercase", lower},
    {"lower", lower},
    {"lista", bullets},
    {"list", bullets},
    {"listado", bullets},
    {"vinetas", bullets},
    {"vineta", bullets},
    {"bullets", bullets},
    {"bullet", bullets},
    {"bulleted", bullets},
    {"numera", number},
    {"numeralas", number},
    {"numeralos", number},
    {"numerala", number},
    {"numeralo", number},
    {"numerar", number},
    {"numerada", number},
    {"numerado", number},
    {"numeradas", number},
    {"numbered", number},
    {"numbering", number},
    {"enumera", number},
    {"numeracion", number},
    {"une", join},
    {"unelo", join},
    {"unelas", join},
    {"unir", join},
    {"junta", join},
    {"juntalo", join},
    {"juntalas", join},
    {"juntar", join},
    {"join", join},
    {"single", join},
});

/// Words that go with any of them and change nothing.
const WordSet& companions() {
    static const WordSet set({"a",           "al",         "ahora",        "con",    "como",     "convierte",
                              "conviertelo", "convertir",  "crea",         "cambia", "cambialo", "de",
                              "del",         "deja",       "dejalo",       "e",      "el",       "elementos",
                              "en",          "esta",       "estas",        "este",   "esto",     "estos",
                              "escribe",     "escribelo",  "favor",        "haz",    "hazlo",    "hazme",
                              "la",          "las",        "linea",        "lineas", "lo",       "los",
                              "me",          "orden",      "pasa",         "pasalo", "pasar",    "pon",
                              "ponlo",       "ponme",      "poner",        "por",    "puedes",   "puntos",
                              "que",         "seleccion",  "sola",         "toda",   "todas",    "todo",
                              "todos",       "transforma", "transformalo", "una",    "un",       "usando",
                              "y",           "mas",        "formato",      "all",    "and",      "as",
                              "by",          "can",        "case",         "change", "convert",  "each",
                              "every",       "everything", "format",       "in",     "into",     "it",
                              "items",       "line",       "lines",        "make",   "of",       "on",
                              "one",         "order",      "please",       "points", "point",    "put",
                              "selected",    "selection",  "the",          "them",   "these",    "this",
                              "to",          "together",   "turn",         "with",   "write",    "you",
                              "an"});
    return set;
}

/// Those that name what is in the lines. All of it can be put in capitals; else it is not the lines that are
/// meant ("quita las palabras repetidas"), or something is to become of them ("convierte la lista en texto").
const WordSet& contents() {
    static const WordSet set({"letras", "letters", "palabras", "text", "texto", "words"});
    return set;
}

const WordSet& blanks() {
    static const WordSet set({"espacio", "espacios", "space", "spaces", "whitespace"});
    return set;
}

const WordSet& removingVerbs() {
    static const WordSet set(
        {"quita", "quitale", "quitar", "elimina", "eliminar", "borra", "remove", "delete", "strip", "drop"});
    return set;
}

std::optional<Operation> operationOf(std::string_view word) {
    const auto row = std::ranges::find(keywords, word, &Keyword::word);
    if (row == keywords.end()) return std::nullopt;
    return row->operation;
}

bool holds(const std::vector<Operation>& operations, Operation operation) {
    return std::ranges::find(operations, operation) != operations.end();
}

/// Whether the word is about the list that is there, as in "ordena la lista", and none is to be made.
bool namesList(std::string_view word, std::string_view last) {
    static const WordSet names({"lista", "list", "listado"});
    static const WordSet definites({"el", "esta", "este", "la", "the", "this"});
    return names.contains(word) && definites.contains(last);
}

/// What else an instruction says, beside its operations.
struct Saying {
    std::vector<Operation> operations;
    bool namesList = false;
    bool removes = false;
    bool namesBlanks = false;
    bool namesContents = false;
};

/// Nothing when a word's part in it is not known.
std::optional<Saying> sayingOf(const std::vector<std::string_view>& words) {
    Saying saying;
    std::string_view last;
    for (const auto word : words) {
        if (namesList(word, std::exchange(last, word))) {
            saying.namesList = true;
        } else if (const auto operation = operationOf(word)) {
            saying.operations.push_back(*operation);
        } else if (removingVerbs().contains(word)) {
            saying.removes = true;
        } else if (blanks().contains(word)) {
            saying.namesBlanks = true;
        } else if (contents().contains(word)) {
            saying.namesContents = true;
        } else if (!companions().contains(word)) {
            return std::nullopt;
        }
    }
    // "Haz la lista".
    if (saying.namesList && saying.operations.empty()) saying.operations.push_back(bullets);
    return saying;
}

bool isOfBlanks(Operation operation) {
    return operation == trimStart || operation == trimEnd || operation == trim || operation == squeeze;
}

bool isOfCase(Operation operation) { return operation == upper || operation == lower; }

/// "Quita las viñetas" and "remove duplicates"; nothing else can be removed without reading it.
std::vector<Operation> removal(std::vector<Operation> operations) {
    for (auto& operation : operations) {
        if (operation == bullets || operation == number) operation = unmark;
        const bool removes = operation == unmark || operation == dropEmpty || operation == deduplicate;
        if (!removes && !isOfBlanks(operation)) return {};
    }
    return operations;
}

/// Whether it is clear what becomes of blanks and of lines, and nobody wants more of them.
bool isClear(const Saying& saying) {
    const auto& operations = saying.operations;
    const bool trims = std::ranges::any_of(operations, isOfBlanks);
    const bool drops = holds(operations, dropEmpty);
    const bool takesAway = trims || drops || holds(operations, deduplicate);
    if (takesAway && !saying.removes && !holds(operations, trim)) return false;
    if (trims && !saying.namesBlanks) return false;           // "recorta esto" may be to make it shorter
    if (drops && saying.namesBlanks && !trims) return false;  // all blanks, or those of the empty lines
    return !saying.namesContents || std::ranges::all_of(operations, isOfCase);
}

bool contradicts(const std::vector<Operation>& operations) {
    const auto goesWithJoin = [](Operation operation) { return operation == join || isOfBlanks(operation); };
    return (holds(operations, upper) && holds(operations, lower)) ||
           (holds(operations, join) && !std::ranges::all_of(operations, goesWithJoin));
}

}  // namespace

std::vector<Operation> operationsOf(std::string_view instruction) {
    const auto folded = text::fold(instruction);
    const auto words = foldedWords(folded);
    if (words.size() > mostWords) return {};
    auto saying = sayingOf(words);
    if (!saying) return {};
    auto& operations = saying->operations;
    // "En una sola línea" and "on one line".
    if (folded.find("una sola linea") != std::string::npos || folded.find("one line") != std::string::npos)
        operations.push_back(join);
    if (!isClear(*saying)) return {};
    if (saying->removes) operations = removal(std::move(operations));
    std::ranges::sort(operations);
    const auto repeated = std::ranges::unique(operations);
    operations.erase(repeated.begin(), repeated.end());
    // The side that is named, alone.
    if (holds(operations, trimStart) || holds(operations, trimEnd)) {
        std::erase(operations, trim);
        std::erase(operations, squeeze);
    }
    if (holds(operations, number)) std::erase(operations, bullets);
    return contradicts(operations) ? std::vector<Operation>() : std::move(operations);
}

}  // namespace dorix::service
