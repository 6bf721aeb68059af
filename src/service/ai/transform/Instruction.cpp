#include "service/ai/transform/Instruction.h"

#include "base/text/Text.h"
#include "service/ai/WordSet.h"
#include "service/ai/extraction/Terms.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

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
    {"sobrantes", trim},
    {"extra", trim},
    {"sobran", trim},
    {"trailing", trim},
    {"leading", trim},
    {"vacias", trim},
    {"blanco", trim},
    {"blank", trim},
    {"empty", trim},
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
    {"number", number},
    {"numbers", number},
    {"enumera", number},
    {"numeros", number},
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
    static const WordSet set({
        "a",         "al",        "ahora",     "con",     "como",       "convierte",  "conviertelo",
        "convierte", "convertir", "crea",      "cambia",  "cambialo",   "de",         "del",
        "deja",      "dejalo",    "e",         "el",      "elementos",  "en",         "esta",
        "estas",     "este",      "esto",      "estos",   "escribe",    "escribelo",  "favor",
        "haz",       "hazlo",     "hazme",     "la",      "las",        "letras",     "linea",
        "lineas",    "lo",        "los",       "me",      "orden",      "palabras",   "pasa",
        "pasalo",    "pasar",     "pon",       "ponlo",   "ponme",      "poner",      "por",
        "por",       "puedes",    "puntos",    "que",     "seleccion",  "sola",       "texto",
        "texto",     "toda",      "todas",     "todo",    "todos",      "transforma", "transformalo",
        "una",       "un",        "usando",    "y",       "espacios",   "espacio",    "mas",
        "formato",   "all",       "and",       "as",      "by",         "can",        "case",
        "change",    "convert",   "each",      "every",   "everything", "format",     "in",
        "into",      "it",        "items",     "letters", "line",       "lines",      "make",
        "of",        "on",        "one",       "order",   "please",     "points",     "point",
        "put",       "selected",  "selection", "space",   "spaces",     "text",       "the",
        "them",      "these",     "this",      "to",      "together",   "turn",       "whitespace",
        "with",      "words",     "write",     "you",     "an",
    });
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

/// "Quita las viñetas" and "remove duplicates"; nothing else can be removed without reading it.
std::vector<Operation> removal(std::vector<Operation> operations) {
    for (auto& operation : operations) {
        if (operation == bullets || operation == number) operation = unmark;
        if (operation != unmark && operation != trim && operation != deduplicate) return {};
    }
    return operations;
}

}  // namespace

std::vector<Operation> operationsOf(std::string_view instruction) {
    const auto folded = text::fold(instruction);
    const auto words = foldedWords(folded);
    if (words.size() > mostWords) return {};
    std::vector<Operation> operations;
    bool removes = false;
    // "En una sola línea" and "on one line".
    if (folded.find("una sola linea") != std::string::npos || folded.find("one line") != std::string::npos)
        operations.push_back(join);
    for (const auto word : words) {
        if (const auto operation = operationOf(word)) {
            operations.push_back(*operation);
        } else if (removingVerbs().contains(word)) {
            removes = true;
        } else if (!companions().contains(word)) {
            return {};
        }
    }
    if (removes) operations = removal(std::move(operations));
    std::ranges::sort(operations);
    const auto repeated = std::ranges::unique(operations);
    operations.erase(repeated.begin(), repeated.end());
    if (holds(operations, number)) std::erase(operations, bullets);
    const bool contradicts = (holds(operations, upper) && holds(operations, lower)) ||
                             (holds(operations, join) && operations.size() > 1 && !holds(operations, trim));
    return contradicts ? std::vector<Operation>() : operations;
}

}  // namespace dorix::service
