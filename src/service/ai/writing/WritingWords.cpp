#include "service/ai/writing/WritingWords.h"

#include <array>

namespace dorix::service::words {

// clang-format off
const WordSet& hesitations() {
    static const WordSet set({"ehm", "ehh", "eeh", "mmm", "mmmm", "hmm", "hmmm", "uhm", "umm", "erm"});
    return set;
}

const WordSet& spanishHesitations() {
    static const WordSet set({"eh", "em", "emm", "eem", "esteee", "mm"});
    return set;
}

const WordSet& englishHesitations() {
    static const WordSet set({"um", "uh", "uhh", "er", "eh", "mm"});
    return set;
}

std::span<const std::string_view> spanishAsides() {
    static constexpr auto rows = std::to_array<std::string_view>({
        "este", "o sea", "a ver", "pues", "vale", "en plan",
    });
    return rows;
}

std::span<const std::string_view> englishAsides() {
    static constexpr auto rows = std::to_array<std::string_view>({"you know", "like", "i mean", "well", "kind of",
                                                                  "sort of", "let's see", "okay", "ok"});
    return rows;
}

std::span<const std::string_view> spanishOpeners() {
    static constexpr auto rows = std::to_array<std::string_view>({"bueno", "pues", "vale", "a ver", "y", "este",
                                                                  "o sea"});
    return rows;
}

std::span<const std::string_view> englishOpeners() {
    static constexpr auto rows = std::to_array<std::string_view>({"well", "okay", "ok", "so", "right", "like",
                                                                  "you know", "i mean", "and"});
    return rows;
}

std::span<const std::string_view> openerPairs() {
    static constexpr auto rows = std::to_array<std::string_view>({"bueno pues", "pues bueno", "vale pues", "okay so",
                                                                  "ok so", "well so", "so yeah"});
    return rows;
}

std::span<const std::string_view> closers() {
    static constexpr auto rows = std::to_array<std::string_view>({"vale", "eh", "okay", "you know"});
    return rows;
}

const WordSet& stutters() {
    static const WordSet set({"el", "los", "las", "un", "una", "de", "del", "en", "con", "para", "por", "que", "y",
                              "al", "su", "mi", "the", "an", "of", "to", "and", "in", "for", "with", "we", "i",
                              "they", "my", "our", "is", "it's", "i'm", "if", "she", "he", "on", "at", "from",
                              "or", "but", "pero", "si", "se", "me", "te", "this", "esta", "este", "nuestro"});
    return set;
}

const WordSet& determiners() {
    static const WordSet set({"el", "la", "los", "las", "un", "una", "unos", "unas", "ese", "esa", "estos",
                              "esos", "esas", "mi", "tu", "su", "mis", "tus", "sus", "nuestro", "nuestra",
                              "cada", "algun", "alguna", "ningun", "ninguna", "otro", "otra", "cualquier", "the",
                              "an", "this", "that", "these", "those", "my", "your", "his", "her", "our", "their",
                              "its", "each", "every", "some", "any", "another", "a"});
    return set;
}

const WordSet& leadWords() {
    static const WordSet set({"el", "la", "los", "las", "un", "una", "a", "al", "de", "del", "en", "para", "por",
                              "con", "sobre", "desde", "hasta", "este", "proximo", "proxima", "the", "an", "at",
                              "in", "on", "to", "from", "for", "by", "with", "until", "till", "next", "this", "my",
                              "mi", "tu", "su"});
    return set;
}

const WordSet& weekdays() {
    static const WordSet set({"lunes", "martes", "miercoles", "jueves", "viernes", "sabado", "domingo", "monday",
                              "tuesday", "wednesday", "thursday", "friday", "saturday", "sunday"});
    return set;
}

const WordSet& months() {
    static const WordSet set({"enero", "febrero", "marzo", "abril", "mayo", "junio", "julio", "agosto",
                              "septiembre", "octubre", "noviembre", "diciembre", "january", "february", "march",
                              "april", "may", "june", "july", "august", "september", "october", "november",
                              "december"});
    return set;
}

const WordSet& relativeDays() {
    static const WordSet set({"hoy", "manana", "ayer", "anteayer", "today", "tomorrow", "yesterday", "tonight"});
    return set;
}

const WordSet& dayParts() {
    static const WordSet set({"manana", "tarde", "noche", "mediodia", "madrugada", "morning", "afternoon",
                              "evening", "night", "noon", "midnight"});
    return set;
}

const WordSet& numbers() {
    static const WordSet set({
        "cero", "una", "uno", "dos", "tres", "cuatro", "cinco", "seis", "siete", "ocho", "nueve", "diez", "once",
        "doce", "trece", "catorce", "quince", "dieciseis", "diecisiete", "dieciocho", "diecinueve", "veinte",
        "veintiuno", "veintidos", "veintitres", "veinticuatro", "veinticinco", "veintiseis", "veintisiete",
        "veintiocho", "veintinueve", "treinta", "cuarenta", "cincuenta", "sesenta", "setenta", "ochenta", "noventa",
        "cien", "ciento", "doscientos", "trescientos", "cuatrocientos", "quinientos", "mil", "millon", "millones",
        "zero", "one", "two", "three", "four", "five", "six", "seven", "eight", "nine", "ten", "eleven", "twelve",
        "thirteen", "fourteen", "fifteen", "sixteen", "seventeen", "eighteen", "nineteen", "twenty", "thirty",
        "forty", "fifty", "sixty", "seventy", "eighty", "ninety", "hundred", "thousand", "million", "noon",
    });
    return set;
}

const WordSet& numberLinks() {
    static const WordSet set({"y", "menos", "media", "cuarto", "and", "half", "o'clock", "pm", "am", "p.m", "a.m"});
    return set;
}

const WordSet& units() {
    static const WordSet set({"euro", "euros", "dolares", "dolar", "pesos", "libras", "minutos", "minuto", "horas",
                              "hora", "dias", "dia", "semanas", "meses", "anos", "veces", "personas", "unidades", "kilos",
                              "gramos", "metros", "kilometros", "litros", "paginas", "dollars", "pounds", "minutes",
                              "hours", "days", "weeks", "months", "years", "times", "people", "units", "pages", "percent", "%"});
    return set;
}

std::span<const Cue> cues() {
    static constexpr auto rows = std::to_array<Cue>({
        {"mejor dicho", true}, {"quiero decir", true}, {"digo", true}, {"perdon", true}, {"corrijo", true},
        {"no perdon", true}, {"no espera", true}, {"no", false}, {"bueno no", true}, {"o mejor", false}, {"mejor", false},
        {"i mean", true}, {"or rather", true}, {"make that", true}, {"no wait", true}, {"no sorry", true},
        {"wait no", true}, {"sorry", true}, {"actually", false}, {"rather", false},
    });
    return rows;
}

std::span<const Strike> strikes() {
    static constexpr auto rows = std::to_array<Strike>({
        {"borra eso", 1}, {"tacha eso", 1}, {"olvida eso", 1}, {"mejor dicho", 2}, {"quiero decir", 2},
        {"perdon", 2}, {"scratch that", 1}, {"strike that", 1}, {"delete that", 1}, {"i mean", 2},
        {"or rather", 2}, {"sorry", 2},
    });
    return rows;
}

const WordSet& negations() {
    static const WordSet set({"no", "nunca", "tampoco", "ni", "ningun", "not", "never", "can't", "cannot", "don't",
                              "won't", "didn't", "isn't", "doesn't", "aren't", "wasn't", "couldn't", "nor"});
    return set;
}

const WordSet& followers() {
    static const WordSet set({"y", "e", "o", "pero", "porque", "cuando", "como", "que", "antes", "despues", "entre",
                              "sin", "esta", "esto", "ese", "esa", "and", "or", "but", "because", "so", "when",
                              "before", "after", "between", "without", "as", "please", "then", "instead"});
    return set;
}

const WordSet& alwaysCapital() {
    static const WordSet set({"i", "i'm", "i'll", "i've", "i'd", "monday", "tuesday", "wednesday", "thursday",
                              "friday", "saturday", "sunday", "january", "february", "april", "june", "july",
                              "august", "september", "october", "november", "december", "english", "spanish"});
    return set;
}

const WordSet& abbreviations() {
    static const WordSet set({"sr", "sra", "srta", "dr", "dra", "d", "etc", "ej", "p.ej", "pag", "num", "art", "av",
                              "ud", "uds", "vs", "mr", "mrs", "ms", "st", "e.g", "i.e", "no", "inc", "ltd", "a.m",
                              "p.m", "aprox", "tel"});
    return set;
}

std::span<const std::string_view> spanishQuestions() {
    static constexpr auto rows = std::to_array<std::string_view>({
        "qué es", "qué son", "qué hora", "qué tal", "qué hay", "qué te", "qué le", "qué se", "qué hacemos",
        "qué haces", "qué hago", "qué piensas", "qué opinas", "qué opinan", "qué quieres", "qué quiere", "qué día",
        "qué pasa", "qué pasó", "qué ha", "qué has", "qué significa", "qué necesitas", "qué tengo", "qué tienes",
        "qué puedo", "qué podemos", "qué habéis", "qué han", "qué vas", "qué vais", "qué estás", "qué estáis", "qué sabes", "qué dice", "qué dijo", "qué falta", "qué tiempo", "qué fecha",
        "a qué hora", "de qué", "por qué", "para qué", "para cuándo", "con quién", "de quién", "a quién",
        "desde cuándo", "hasta cuándo", "dónde", "a dónde", "adónde", "de dónde", "quién", "quiénes", "cuál",
        "cuáles", "cuándo", "cuánto cuesta", "cuánto es", "cuánto vale", "cuánto tarda", "cuánto falta",
        "cuánto tiempo", "cuánto te", "cuánto le", "cuánto os", "cuánto se", "cuánto hay", "cuánto cobras", "cuántos", "cuántas", "cómo estás", "cómo está", "cómo están", "cómo va", "cómo vas",
        "cómo te va", "cómo se", "cómo puedo", "cómo podemos", "cómo hago", "cómo hacemos", "cómo es", "cómo fue",
        "cómo ha", "cómo lo", "cómo quieres", "cómo quedamos", "puedes", "podrías", "podemos quedar", "te parece",
        "te va bien", "os va bien", "le parece", "sabes si", "sabes cuándo", "sabes dónde", "sabes qué",
        "sabes cómo", "sabes por qué", "sabéis si", "sabéis cuándo", "sabéis dónde", "alguien sabe", "alguien puede",
        "alguien ha", "alguien tiene", "alguien quiere", "alguien podría", "podéis", "podríais", "podría usted",
        "me las puedes", "me lo puedes", "me la puedes", "me los puedes", "nos puedes", "le puedes", "te puedo",
        "me podéis", "nos podéis", "lo puedes", "la puedes", "has visto", "habéis visto", "quieres que", "queréis que",
        "os parece", "te apetece", "os apetece", "te importa", "te importaría",
        "tienes tiempo", "me puedes", "me podrías", "nos vemos el lunes o",
    });
    return rows;
}

std::span<const std::string_view> englishQuestions() {
    static constexpr auto rows = std::to_array<std::string_view>({
        "what is", "what are", "what was", "what do", "what does", "what did", "what will", "what would",
        "what can", "what could", "what should", "what time", "what's", "where is", "where are", "where do",
        "where does", "where did", "where can", "where's", "when is", "when are", "when do", "when does",
        "when did", "when will", "when can", "when would", "when should", "who is", "who are", "who did",
        "who was", "who's", "who will", "who can", "why is", "why are", "why do", "why does", "why did",
        "why don't", "why can't", "how is", "how are", "how do", "how does", "how did", "how can", "how could",
        "how would", "how should", "how many", "how long does", "how long will", "how much is", "how much are",
        "how much does", "how much do", "how was", "how about", "which is", "which one", "which of", "can you",
        "can we", "can i", "could you", "could we", "could i", "would you", "will you", "will we", "do you",
        "do we", "do i", "does it", "does he", "does she", "does that", "does this", "did you", "did we",
        "did they", "are you", "are we", "are they", "is it", "is there", "is he", "is she", "is that", "is this",
        "have you", "has anyone", "does anyone", "does anybody", "did anyone", "is anyone", "can anyone",
        "could someone", "can someone", "would it", "would that", "would the", "would next", "would this", "would monday",
        "would tuesday", "would wednesday", "would thursday", "would friday", "does the", "does your", "does my",
        "did the", "did your", "is the", "is your", "is my", "are the", "are your", "was the", "was it", "were you",
        "were they", "have they", "have we", "has the", "has it", "has she", "has he", "could the", "can the",
        "will the", "will it", "will they", "will she", "will he", "won't you", "isn't it", "isn't that", "aren't you",
        "don't you", "didn't you", "should we", "should i", "shall we", "may i",
    });
    return rows;
}

std::span<const std::string_view> greetings() {
    static constexpr auto rows = std::to_array<std::string_view>({
        "hola", "hola buenas", "hola buenos dias", "hola buenas tardes", "hola muy buenas", "muy buenas", "buenos dias", "buenas tardes", "buenas noches", "buenas", "estimado", "estimada",
        "estimados", "estimadas", "querido", "querida", "queridos", "queridas", "hello", "hi", "hey", "dear",
        "good morning", "good afternoon", "good evening", "morning", "afternoon", "evening",
    });
    return rows;
}

std::span<const std::string_view> farewells() {
    static constexpr auto rows = std::to_array<std::string_view>({
        "un saludo cordial", "un cordial saludo", "un saludo", "saludos cordiales", "saludos", "un abrazo", "un fuerte abrazo", "abrazos",
        "muchas gracias", "mil gracias", "gracias", "atentamente", "cordialmente", "best regards", "kind regards",
        "warm regards", "regards", "many thanks", "thank you", "thanks", "best wishes", "yours sincerely",
        "sincerely", "cheers",
    });
    return rows;
}

std::span<const std::string_view> thanks() {
    static constexpr auto rows = std::to_array<std::string_view>({"gracias", "muchas gracias", "mil gracias", "thanks",
                                                                  "many thanks", "thank you"});
    return rows;
}

std::span<const std::span<const std::string_view>> listOrdinals() {
    static constexpr auto spanish = std::to_array<std::string_view>({
        "primero", "segundo", "tercero", "cuarto", "quinto", "sexto", "septimo", "octavo", "noveno", "decimo"});
    static constexpr auto english = std::to_array<std::string_view>({
        "first", "second", "third", "fourth", "fifth", "sixth", "seventh", "eighth", "ninth", "tenth"});
    static constexpr auto adverbs = std::to_array<std::string_view>({
        "firstly", "secondly", "thirdly", "fourthly", "fifthly"});
    static constexpr auto places = std::to_array<std::string_view>({
        "en primer lugar", "en segundo lugar", "en tercer lugar", "en cuarto lugar", "en quinto lugar"});
    static constexpr std::array<std::span<const std::string_view>, 4> rows{spanish, english, adverbs, places};
    return rows;
}

std::span<const std::span<const std::string_view>> listNumbers() {
    static constexpr auto spanish = std::to_array<std::string_view>({
        "uno", "dos", "tres", "cuatro", "cinco", "seis", "siete", "ocho", "nueve", "diez"});
    static constexpr auto english = std::to_array<std::string_view>({
        "one", "two", "three", "four", "five", "six", "seven", "eight", "nine", "ten"});
    static constexpr auto spanishNamed = std::to_array<std::string_view>({
        "numero uno", "numero dos", "numero tres", "numero cuatro", "numero cinco", "numero seis"});
    static constexpr auto englishNamed = std::to_array<std::string_view>({
        "number one", "number two", "number three", "number four", "number five", "number six"});
    static constexpr auto spanishSteps = std::to_array<std::string_view>({
        "paso uno", "paso dos", "paso tres", "paso cuatro", "paso cinco", "paso seis", "paso siete", "paso ocho"});
    static constexpr auto englishSteps = std::to_array<std::string_view>({
        "step one", "step two", "step three", "step four", "step five", "step six", "step seven", "step eight"});
    static constexpr std::array<std::span<const std::string_view>, 6> rows{
        spanishNamed, englishNamed, spanishSteps, englishSteps, spanish, english};
    return rows;
}

std::span<const std::string_view> listLast() {
    static constexpr auto rows = std::to_array<std::string_view>({
        "por ultimo", "y por ultimo", "finalmente", "and finally", "finally", "and lastly", "lastly"});
    return rows;
}

std::span<const std::string_view> bulletWords() {
    static constexpr auto rows = std::to_array<std::string_view>({"bullet point", "bullet", "vineta", "guion"});
    return rows;
}
// clang-format on

}  // namespace dorix::service::words
