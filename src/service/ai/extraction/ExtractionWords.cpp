#include "service/ai/extraction/ExtractionWords.h"

#include <array>

namespace dorix::service::words {

// clang-format off
const WordSet& stopWords() {
    static const WordSet set({
        "a", "acerca", "ahi", "al", "algo", "algun", "alguna", "alguno", "aqui", "asi", "aun", "aunque", "ayudame",
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

std::span<const std::span<const std::string_view>> synonyms() {
    static constexpr auto expire = std::to_array<std::string_view>({
        "vence", "vencer", "vencimiento", "caduca", "caducar", "caducidad", "expira", "expirar", "expire",
        "expires", "expiry", "expiration"});
    static constexpr auto cost = std::to_array<std::string_view>({
        "cuesta", "cuestan", "costar", "coste", "costes", "costo", "vale", "valen", "precio", "precios", "importe",
        "tarifa", "cost", "costs", "price", "prices", "fee", "amount", "priced"});
    static constexpr auto begin = std::to_array<std::string_view>({
        "empieza", "empezar", "empezo", "empezamos", "comienza", "comenzar", "inicio", "inicia", "arranca",
        "arranque", "start", "starts", "started", "begin", "begins", "kickoff"});
    static constexpr auto end = std::to_array<std::string_view>({
        "termina", "terminar", "acaba", "acabar", "finaliza", "finalizar", "fin", "final", "end", "ends", "finish",
        "finishes", "over"});
    static constexpr auto meeting = std::to_array<std::string_view>({
        "reunion", "reuniones", "reunimos", "reunirnos", "quedamos", "quedada", "meeting", "meetings", "meet"});
    static constexpr auto deliver = std::to_array<std::string_view>({
        "entrega", "entregar", "entregas", "entregamos", "envio", "envia", "enviar", "deliver", "delivery",
        "delivered", "ship", "ships", "shipping", "shipped"});
    static constexpr auto pay = std::to_array<std::string_view>({
        "paga", "pagar", "pago", "pagos", "abona", "abonar", "pay", "pays", "payment", "payments", "paid"});
    static constexpr auto boss = std::to_array<std::string_view>({
        "responsable", "encargado", "encargada", "encarga", "dirige", "lleva", "lidera", "jefe", "jefa",
        "responsible", "charge", "leads", "lead", "owner", "owns", "manager", "manages"});
    static constexpr auto deadline = std::to_array<std::string_view>({
        "plazo", "plazos", "limite", "deadline", "deadlines", "due"});
    static constexpr auto live = std::to_array<std::string_view>({
        "vive", "direccion", "domicilio", "ubicada", "ubicado", "sede", "address", "located", "office", "oficina"});
    static constexpr auto phone = std::to_array<std::string_view>({
        "telefono", "movil", "numero", "llamar", "phone", "mobile", "call"});
    static constexpr auto decide = std::to_array<std::string_view>({
        "decidio", "decidimos", "decidieron", "decision", "decisiones", "acordo", "acordamos", "acordaron",
        "acuerdo", "acuerdos", "decide", "decided", "agreed", "agree", "agreement"});
    static constexpr std::array<std::span<const std::string_view>, 12> rows{
        expire, cost, begin, end, meeting, deliver, pay, boss, deadline, live, phone, decide};
    return rows;
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

const WordSet& timeQuestions() {
    static const WordSet set({"cuando", "when", "fecha", "hora", "dia", "date", "day", "plazo", "deadline"});
    return set;
}

const WordSet& amountQuestions() {
    static const WordSet set({"cuanto", "cuanta", "cuantos", "cuantas", "much", "many", "importe", "precio", "coste",
                              "price", "cost", "telefono", "phone", "porcentaje", "percentage"});
    return set;
}

const WordSet& personQuestions() {
    static const WordSet set({"quien", "quienes", "who", "whom", "whose"});
    return set;
}

const WordSet& timeWords() {
    static const WordSet set({
        "lunes", "martes", "miercoles", "jueves", "viernes", "sabado", "domingo", "enero", "febrero", "marzo",
        "abril", "mayo", "junio", "julio", "agosto", "septiembre", "octubre", "noviembre", "diciembre", "hoy",
        "manana", "ayer", "mediodia", "medianoche", "monday", "tuesday", "wednesday", "thursday", "friday",
        "saturday", "sunday", "january", "february", "march", "april", "june", "july", "august", "september",
        "october", "november", "december", "today", "tomorrow", "yesterday", "noon", "midnight", "trimestre",
        "quarter", "minutos", "horas", "dias", "semanas", "meses", "anos", "minutes", "hours", "days", "weeks",
        "months", "years",
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
