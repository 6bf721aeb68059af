#include "service/ai/writing/SpokenMarks.h"

#include <array>

namespace dorix::service {

namespace {

using Words = std::span<const std::string_view>;
using enum SpokenMark::Effect;
using enum SpokenMark::Certainty;

constexpr auto before = std::to_array<std::string_view>({
    "pon",   "poner", "ponen", "puso",   "pone",    "usa", "usar", "falta", "sin",     "con",
    "entre", "add",   "use",   "insert", "missing", "on",  "in",   "with",  "without",
});
constexpr auto behind = std::to_array<std::string_view>({"de", "del", "of", "a", "for"});

constexpr auto beforeComa = std::to_array<std::string_view>({
    "que", "se",  "lo",    "la",     "le",    "en",     "el",    "un",  "una", "no",
    "me",  "te",  "ya",    "cuando", "quien", "estado", "del",   "al",  "de",  "nos",
    "los", "las", "ojala", "mas",    "poner", "pon",    "falta", "sin", "con", "usted",
});
constexpr auto behindComa = std::to_array<std::string_view>({
    "algo",
    "mas",
    "menos",
    "bien",
    "mucho",
    "poco",
    "fruta",
    "frutas",
    "verdura",
    "verduras",
    "carne",
    "sano",
    "inducido",
    "etilico",
    "profundo",
    "diabetico",
    "flotante",
});
constexpr auto behindComma =
    std::to_array<std::string_view>({"splice", "separated", "delimited", "operator"});
constexpr auto beforePunto = std::to_array<std::string_view>({
    "el",     "un",      "al",     "del",    "en",     "a",         "de",      "y",
    "ni",     "que",     "cada",   "ese",    "este",   "aquel",     "algun",   "ningun",
    "otro",   "mismo",   "cierto", "su",     "mi",     "tu",        "nuestro", "vuestro",
    "buen",   "mal",     "mejor",  "peor",   "gran",   "unico",     "primer",  "segundo",
    "tercer", "tercero", "cuarto", "quinto", "ultimo", "siguiente", "medio",   "por",
    "con",    "sin",     "hasta",  "lo",     "buscar", "encontrar", "uno",
});
constexpr auto behindPunto = std::to_array<std::string_view>({
    "de",    "del",    "com",  "es",    "org",     "net",   "info",  "clave",  "fuerte",
    "debil", "muerto", "fijo", "medio", "critico", "ciego", "comun", "limpio", "por",
    "a",     "en",     "que",  "donde", "uno",     "dos",   "tres",  "cuatro", "cinco",
});
constexpr auto beforePeriod = std::to_array<std::string_view>({
    "the",   "a",     "an",     "this",    "that",   "each",    "every",   "trial", "time",
    "grace", "first", "second", "last",    "next",   "same",    "long",    "short", "per",
    "my",    "her",   "late",   "waiting", "notice", "cooling", "billing", "test",
});
constexpr auto behindPeriod = std::to_array<std::string_view>({
    "of",
    "from",
    "between",
    "for",
    "in",
    "piece",
    "drama",
    "when",
    "before",
    "after",
    "during",
    "is",
    "was",
    "ends",
});
constexpr auto beforeStop = std::to_array<std::string_view>({"to", "came", "come", "comes", "coming", "at"});
constexpr auto beforeDosPuntos = std::to_array<std::string_view>({
    "por",
    "los",
    "estos",
    "esos",
    "hay",
    "tengo",
    "con",
    "en",
    "de",
    "unos",
    "otros",
    "gana",
    "ganamos",
    "son",
});

// clang-format off
constexpr auto rows = std::to_array<SpokenMark>({
    {"punto y aparte", line, ".", clear, before, behind},
    {"punto y seguido", closing, ".", clear, before, behind},
    {"punto y coma", closing, ";", clear, before, behind},
    {"punto final", closing, ".", clear, before, behind},
    {"punto", closing, ".", likely, beforePunto, behindPunto},
    {"puntos suspensivos", closing, "…", clear, before, behind},
    {"dos puntos", closing, ":", weak, beforeDosPuntos, behind},
    {"coma", closing, ",", likely, beforeComa, behindComa},
    {"nueva linea", line, "", clear, before, behind},
    {"salto de linea", line, "", clear, before, behind},
    {"nuevo parrafo", paragraph, "", clear, before, behind},
    {"signo de interrogacion", closing, "?", clear, before, behind},
    {"cierra interrogacion", closing, "?", clear, before, behind},
    {"cerrar interrogacion", closing, "?", clear, before, behind},
    {"abre interrogacion", opening, "¿", clear, before, behind},
    {"abrir interrogacion", opening, "¿", clear, before, behind},
    {"signo de exclamacion", closing, "!", clear, before, behind},
    {"cierra exclamacion", closing, "!", clear, before, behind},
    {"cerrar exclamacion", closing, "!", clear, before, behind},
    {"abre exclamacion", opening, "¡", clear, before, behind},
    {"abrir exclamacion", opening, "¡", clear, before, behind},
    {"abre parentesis", opening, "(", clear, before, behind},
    {"abrir parentesis", opening, "(", clear, before, behind},
    {"cierra parentesis", closing, ")", clear, before, behind},
    {"cerrar parentesis", closing, ")", clear, before, behind},
    {"abre comillas", opening, "«", clear, before, behind},
    {"abrir comillas", opening, "«", clear, before, behind},
    {"cierra comillas", closing, "»", clear, before, behind},
    {"cerrar comillas", closing, "»", clear, before, behind},
    {"comma", closing, ",", likely, before, behindComma},
    {"full stop", closing, ".", clear, beforeStop, behind},
    {"period", closing, ".", likely, beforePeriod, behindPeriod},
    {"question mark", closing, "?", clear, before, behind},
    {"exclamation mark", closing, "!", clear, before, behind},
    {"exclamation point", closing, "!", clear, before, behind},
    {"semicolon", closing, ";", clear, before, behind},
    {"colon", closing, ":", weak, before, behind},
    {"new line", line, "", clear, before, behind},
    {"newline", line, "", clear, before, behind},
    {"new paragraph", paragraph, "", clear, before, behind},
    {"open parenthesis", opening, "(", clear, before, behind},
    {"close parenthesis", closing, ")", clear, before, behind},
    {"open quotes", opening, "“", clear, before, behind},
    {"open quote", opening, "“", clear, before, behind},
    {"close quotes", closing, "”", clear, before, behind},
    {"close quote", closing, "”", clear, before, behind},
});
// clang-format on

}  // namespace

std::span<const SpokenMark> spokenMarks() { return rows; }

}  // namespace dorix::service
