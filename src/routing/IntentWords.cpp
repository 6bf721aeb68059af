#include "routing/IntentWords.h"

#include <array>

namespace dorix::intentwords {

namespace {

// clang-format off
constexpr auto fillerPrefixRows = std::to_array<std::string_view>({
    "eh ", "em ", "bueno ", "vale ", "oye ", "a ver ", "por favor ", "dorix ", "um ", "uh ", "hey ", "okay ",
    "ok ", "please ", "dorix ",
});

constexpr auto recapPhraseRows = std::to_array<std::string_view>({
    "donde lo dejamos", "donde lo deje", "en que estaba", "en que me quede", "en que estuve", "que hice ayer",
    "que tengo pendiente", "que me queda pendiente", "resumen de ayer", "resumeme ayer", "where did we leave",
    "what was i working on", "resume mi dia", "resumeme mi dia", "resumen de mi dia", "que he hecho hoy",
    "que hice hoy", "where did i leave off", "where was i", "where were we", "what was i doing",
    "what did i do today", "what did i do yesterday", "what have i done today", "summarize my day",
    "summarise my day", "summary of my day", "recap my day", "recap of my day", "recap yesterday",
    "recap of yesterday", "summarize yesterday", "what do i have pending", "what's pending", "whats pending",
    "what's left to do", "whats left to do", "what am i missing",
});

constexpr auto selectionVerbRows = std::to_array<std::string_view>({
    "explicamelo", "explicalo", "resumelo", "resumemelo", "traducelo", "traducela", "mejoralo", "corrigelo",
    "reescribelo", "analizalo", "revisalo", "contestalo", "acortalo", "simplificalo", "conviertelo", "pasalo",
    "ponlo", "hazlo", "hazla", "ponla",
});

constexpr auto selectionPhraseRows = std::to_array<std::string_view>({
    " esto", " este texto", " esta frase", " este parrafo", " este correo", " este mensaje",
    " lo seleccionado", " la seleccion", " this", " the selection", " the selected text", " selected text",
});

constexpr auto transformVerbRows = std::to_array<std::string_view>({
    "traduce", "traducelo", "traducela", "traducir", "mejora", "mejoralo", "corrige", "corrigelo",
    "reescribe", "reescribelo", "redactalo", "redacta", "hazlo", "hazla", "ponlo", "ponla", "pasalo",
    "pasala", "conviertelo", "conviertela", "convierte", "acorta", "acortalo", "alarga", "simplifica",
    "simplificalo", "quita", "elimina", "cambia", "ordena", "formaliza", "translate", "rewrite", "make it",
    "fix", "improve", "shorten", "translate it", "rephrase", "reword", "correct", "proofread", "polish",
    "simplify", "make this", "turn it into", "turn this into", "convert", "expand", "lengthen", "format",
    "summarize it",
});

constexpr auto transformPhraseRows = std::to_array<std::string_view>({
    "al ingles", "en ingles", "al frances", "en frances", "al italiano", "en italiano", "al espanol",
    "en espanol", "mas formal", "mas corto", "mas breve", "mas comercial", "mas cercano", "mas profesional",
    "mas claro", "sin errores", "con vinetas", "en una lista", "into english", "to english", "in english",
    "into spanish", "to spanish", "in spanish", "into french", "to french", "in french", "into italian",
    "to italian", "more formal", "more casual", "more friendly", "shorter", "more concise",
    "more professional", "clearer", "without mistakes", "as a list", "bullet points", "as bullets",
});

constexpr auto replyOpeningRows = std::to_array<std::string_view>({
    "respondele", "responde que", "respondeles", "contestale", "contesta que", "contestales", "dile que",
    "dile a", "diles que", "reply", "tell him", "tell her", "tell them", "respond that", "respond saying",
    "answer that", "answer him", "answer her", "answer them", "write back",
});

constexpr auto selectionOpeningRows = std::to_array<std::string_view>({
    "explica", "resume", "resumeme", "analiza", "comprueba si", "investiga", "extrae", "que significa",
    "que quiere decir", "que opinas", "que responderias", "contesta a esto", "responde a esto", "explain",
    "summarize", "analyze", "analyse", "what does this mean", "what does that mean", "what does it mean",
    "what do you think", "check if", "extract", "how should i reply", "how should i respond",
    "how would you reply", "how would you respond", "answer this",
});

constexpr auto screenPhraseRows = std::to_array<std::string_view>({
    " aqui", " esto", " esta pantalla", " este correo", " este documento", " este grafico", " esta web",
    " esta pagina", " este pdf", " me estan pidiendo", " me piden", " que veo", " lo que veo", " here",
    " this screen", " this email", " this document", " this chart", " this website", " this page",
    " this pdf", " on screen", " on my screen", " what i see", " what i'm looking at", " what im looking at",
    " are they asking", " they're asking", " theyre asking", " is asking me",
});

constexpr auto screenQuestionOpeningRows = std::to_array<std::string_view>({
    "que ", "cual", "cuanto", "explica", "resume", "resumeme", "analiza", "dime que", "como funciona",
    "hay algun", "hay alguna", "por que", "de que", "what", "which", "how much", "how many", "how does",
    "how do", "explain", "summarize", "analyze", "tell me what", "is there", "are there", "why", "who",
});
// clang-format on

}  // namespace

std::span<const std::string_view> fillerPrefixes() { return fillerPrefixRows; }
std::span<const std::string_view> recapPhrases() { return recapPhraseRows; }
std::span<const std::string_view> selectionVerbs() { return selectionVerbRows; }
std::span<const std::string_view> selectionPhrases() { return selectionPhraseRows; }
std::span<const std::string_view> transformVerbs() { return transformVerbRows; }
std::span<const std::string_view> transformPhrases() { return transformPhraseRows; }
std::span<const std::string_view> replyOpenings() { return replyOpeningRows; }
std::span<const std::string_view> selectionOpenings() { return selectionOpeningRows; }
std::span<const std::string_view> screenPhrases() { return screenPhraseRows; }
std::span<const std::string_view> screenQuestionOpenings() { return screenQuestionOpeningRows; }

}  // namespace dorix::intentwords
