#include "service/ai/extraction/MeetingWords.h"

#include <array>

namespace dorix::service::words {

// clang-format off
std::span<const std::string_view> decisionCues() {
    static constexpr auto rows = std::to_array<std::string_view>({
        "acordamos", "hemos acordado", "queda acordado", "se acuerda", "se acordo", "decidimos", "hemos decidido",
        "queda decidido", "esta decidido", "se decide", "se decidio", "decision es", "queda aprobado",
        "queda aprobada", "aprobamos", "se aprueba", "se aprobo", "damos por aprobado", "nos quedamos con",
        "vamos con", "vamos a ir con", "lo dejamos en", "lo dejamos para", "quedamos en", "queda en que",
        "descartamos", "optamos por", "elegimos", "cerramos entonces", "entonces hacemos", "lo aplazamos",
        "aplazamos", "retrasamos", "adelantamos", "cancelamos", "seguimos adelante con",
        "we agreed", "we have agreed", "we've agreed", "it is agreed", "it's agreed", "we decided", "we have decided",
        "we've decided", "it is decided", "it's decided", "decision is", "let's go with", "let us go with",
        "we'll go with", "we will go with", "we're going with", "we are going with", "is approved", "we approved",
        "we approve", "settled on", "we settle on", "we chose", "we choose", "we'll stick with", "we postpone",
        "let's postpone", "we'll postpone", "let's move the", "we cancel", "let's cancel", "we drop", "let's drop",
        "going ahead with", "go ahead with",
    });
    return rows;
}

std::span<const std::string_view> promiseCues() {
    static constexpr auto rows = std::to_array<std::string_view>({
        "me encargo", "me encargare", "me ocupo", "me ocupare", "lo hago yo", "yo lo hago", "yo preparo", "yo reviso",
        "yo hablo", "yo llamo", "yo escribo", "yo mando", "yo envio", "te mando", "os mando", "te envio", "os envio",
        "lo mando", "lo envio", "te lo paso", "os lo paso", "te paso", "os paso", "voy a", "dejame", "lo reviso",
        "lo preparo", "te confirmo", "os confirmo", "i'll", "i will", "i'm going to", "i am going to", "i can send",
        "i can do", "i can prepare", "let me", "leave it to me", "leave that to me", "i take care", "i'm on it",
    });
    return rows;
}

std::span<const std::string_view> requestCues() {
    static constexpr auto rows = std::to_array<std::string_view>({
        "puedes", "podrias", "podeis", "podriais", "tienes que", "teneis que", "necesito que", "encargate", "encargaos",
        "acuerdate de", "acordaos de", "no te olvides de", "no olvides", "mandame", "enviame", "pasame", "mandanos",
        "envianos", "te encargas", "os encargais", "te toca", "can you", "could you", "would you", "will you",
        "you need to", "you have to", "you should", "please", "don't forget", "make sure", "send me", "send us",
        "remember to", "i need you to",
    });
    return rows;
}

std::span<const std::string_view> assignmentCues() {
    static constexpr auto rows = std::to_array<std::string_view>({
        "se encarga", "se encargara", "se ocupa", "se ocupara", "va a preparar", "va a enviar", "va a mandar",
        "va a revisar", "va a hablar", "va a llamar", "va a hacer", "va a escribir", "tiene que", "prepara", "preparara",
        "enviara", "mandara", "revisara", "llamara", "hablara", "entregara", "le toca a", "responsable es", "will send",
        "will prepare", "will take", "will write", "will call", "will check", "will review", "will talk", "will speak",
        "will deliver", "will do", "will handle", "will set up", "will update", "will contact", "takes care", "has to",
        "needs to", "is going to", "is responsible for", "owns", "is in charge of",
    });
    return rows;
}

std::span<const std::string_view> dutyCues() {
    static constexpr auto rows = std::to_array<std::string_view>({
        "hay que", "habra que", "habria que", "tenemos que", "queda pendiente", "pendiente de", "falta por",
        "we need to", "we have to", "we must", "action item", "to do is", "next step is", "still open is",
    });
    return rows;
}

std::span<const std::string_view> idleCues() {
    static constexpr auto rows = std::to_array<std::string_view>({
        "voy a ser", "voy a decir", "voy a deciros", "voy a compartir", "voy a ver", "hay que ver", "hay que decir",
        "hay que tener en cuenta", "dejame pensar", "dejame ver", "dejame decir", "puedes oirme", "puedes repetir",
        "podeis oirme", "podeis verme", "me puedes oir", "puedes explicar", "tengo que irme", "i'll be honest",
        "let me see", "let me think", "let me share", "let me say", "let me know", "i'll share my", "can you hear",
        "can you see", "could you repeat", "can you repeat", "will be", "i will say", "i'll say", "have to say",
        "have to go", "have to leave", "i'll leave", "need to think", "please go ahead", "go ahead please",
    });
    return rows;
}

const WordSet& cueNegations() {
    static const WordSet set({"no", "nunca", "ni", "tampoco", "aun", "todavia", "sin", "si", "cuando", "not", "never", "don't",
                              "haven't", "hasn't", "didn't", "won't", "if", "unless", "yet", "before", "until"});
    return set;
}

const WordSet& timeLeads() {
    static const WordSet set({"para", "antes", "despues", "del", "de", "el", "la", "los", "este", "esta", "proximo",
                              "proxima", "hasta", "a", "las", "desde", "por", "the", "on", "by", "before", "after", "next",
                              "this", "until", "till", "at", "from", "end", "fin", "finales", "principios", "mediados", "of",
                              "around", "sobre", "in", "en", "partir", "second", "first", "early", "late"});
    return set;
}

const WordSet& timeFollowers() {
    static const WordSet set({"de", "del", "a", "las", "la", "por", "que", "viene", "proximo", "proxima", "at", "in", "the",
                              "of", "tarde", "noche", "morning", "afternoon", "evening", "night", "mediodia", "noon",
                              "pm", "am", "sharp", "en", "punto", "o'clock", "y", "media", "cuarto"});
    return set;
}
// clang-format on

}  // namespace dorix::service::words
