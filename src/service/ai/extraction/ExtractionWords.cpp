#include "service/ai/extraction/ExtractionWords.h"

#include <array>

namespace dorix::service::words {

// clang-format off
const WordSet& stopWords() {
    static const WordSet set({
        "a", "acerca", "tener", "haber", "poder", "podemos", "tienes", "haces", "hacemos", "estoy", "deben", "cuyo", "cuya", "again", "up", "during", "through", "durante", "ahi", "al", "algo", "algun", "alguna", "alguno", "aqui", "asi", "aun", "aunque", "ayudame",
        "cada", "como", "con", "cual", "cuales", "cuando", "cuanta", "cuantas", "cuanto", "cuantos", "da", "dame",
        "de", "debe", "debo", "decia", "decir", "decirme", "del", "desde", "di", "dice", "dicen", "dijo", "dime",
        "donde", "e", "el", "ella", "ellas", "ello", "ellos", "en", "encuentra", "entre", "era", "eran", "eres",
        "es", "esa", "ese", "eso", "esta", "estaba", "estan", "estas", "este", "esto", "estos", "favor", "fue",
        "fueron", "ha", "habia", "han", "has", "hasta", "hay", "he", "ir", "la", "las", "le", "les", "lo", "los",
        "hace", "hacer", "hago", "mas", "me", "mi", "mis", "mucho", "necesito", "quiero", "muy", "nada", "ni", "no", "nos", "nuestra", "nuestro", "o", "oye",
        "para", "pero", "pone", "por", "porque", "puede", "puedes", "puedo", "pues", "que", "quien", "quienes",
        "sabes", "se", "sea", "segun", "ser", "si", "sin", "sobre", "somos", "son", "soy", "su", "sus", "tal",
        "tambien", "te", "tengo", "tenemos", "tenia", "tiene", "tienen", "tu", "tus", "u", "un", "una", "unas",
        "uno", "unos", "va", "van", "y", "ya", "yo", "documento", "documentos", "texto", "archivo", "correo",
        "about", "am", "an", "and", "any", "are", "as", "at", "be", "been", "being", "but", "by", "can", "could",
        "did", "do", "does", "document", "file", "find", "for", "from", "get", "give", "got", "had", "know", "need", "want", "has", "have", "her", "here", "him",
        "his", "how", "i", "if", "in", "into", "is", "it", "its", "long", "many", "me", "much", "my", "not", "of",
        "on", "or", "our", "please", "say", "says", "said", "shall", "she", "should", "show", "tell", "text",
        "than", "that", "the", "their", "them", "then", "there", "these", "they", "this", "those", "to", "us",
        "was", "we", "were", "what", "whats", "when", "where", "which", "who", "whom", "whose", "why", "will",
        "with", "would", "you", "your",
    });
    return set;
}

std::span<const std::string_view> endings() {
    static constexpr auto rows = std::to_array<std::string_view>({
        "amientos", "imientos", "amiento", "imiento", "aciones", "ations", "amente", "iendo", "ieron", "iones",
        "ation", "ingly", "adas", "ados", "idas", "idos", "ando", "aron", "aban", "amos", "emos", "imos", "aste",
        "iste", "cion", "ment", "mente", "ada", "ado", "ida", "ido", "aba", "ara", "era", "ion", "ing", "ies",
        "ar", "er", "ir", "as", "os", "es", "an", "en", "ed", "ly", "or", "a", "o", "e", "s", "y",
    });
    return rows;
}

const WordSet& composingVerbs() {
    static const WordSet set({
        "escribe", "escribeme", "redacta", "redactame", "compon", "inventa", "traduce", "traduceme", "mejora",
        "corrige", "reescribe", "responde", "contesta", "explica", "explicame", "opina", "aconseja", "propon",
        "genera", "crea", "imagina", "analiza", "compara", "write", "draft", "compose", "invent", "translate",
        "improve", "rewrite", "rephrase", "reply", "respond", "explain", "suggest", "propose", "generate",
        "create", "imagine", "analyze", "analyse", "compare", "brainstorm", "proofread",
    });
    return set;
}

const WordSet& summaryVerbs() {
    static const WordSet set({"resume", "resumeme", "resumelo", "resumir", "resumen", "sintetiza", "summarize",
                              "summarise", "summary", "recap", "tldr"});
    return set;
}

std::span<const std::string_view> summaryPhrases() {
    static constexpr auto rows = std::to_array<std::string_view>({
        "de que trata", "de que va", "de que habla", "puntos clave", "ideas principales", "lo mas importante",
        "puntos principales", "what is this about", "what's this about", "what is it about", "key points",
        "main points", "main ideas", "the gist",
    });
    return rows;
}

const WordSet& timeWords() {
    static const WordSet set({
        "lunes", "martes", "miercoles", "jueves", "viernes", "sabado", "domingo", "enero", "febrero", "marzo",
        "abril", "mayo", "junio", "julio", "agosto", "septiembre", "octubre", "noviembre", "diciembre", "hoy",
        "manana", "ayer", "mediodia", "medianoche", "monday", "tuesday", "wednesday", "thursday", "friday",
        "saturday", "sunday", "january", "february", "march", "april", "june", "july", "august", "september",
        "october", "november", "december", "today", "tomorrow", "yesterday", "noon", "midnight",
    });
    return set;
}

const WordSet& amountWords() {
    static const WordSet set({
        "dos", "tres", "cuatro", "cinco", "seis", "siete", "ocho", "nueve", "diez", "once", "doce", "quince",
        "veinte", "treinta", "cuarenta", "cincuenta", "cien", "mil", "millon", "millones", "two", "three", "four",
        "five", "six", "seven", "eight", "nine", "ten", "eleven", "twelve", "fifteen", "twenty", "thirty", "forty",
        "fifty", "hundred", "thousand", "million", "gratis", "free", "ninguno", "none",
    });
    return set;
}
// clang-format on

}  // namespace dorix::service::words
