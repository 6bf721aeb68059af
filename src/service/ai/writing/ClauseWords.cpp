#include "service/ai/writing/ClauseWords.h"

#include <array>

namespace dorix::service::words {

// clang-format off
const WordSet& subjects() {
    static const WordSet set({"i", "i'm", "i'll", "i've", "i'd", "we", "we're", "we'll", "we've", "we'd", "he", "he's",
                              "he'll", "she", "she's", "she'll", "they", "they're", "they'll", "they've", "it's", "it'll",
                              "that's", "there's", "you're", "you'll", "you've", "you'd", "yo", "nosotros", "nosotras",
                              "vosotros", "vosotras"});
    return set;
}

const WordSet& spanishOwnVerbs() {
    static const WordSet set({
        "acabo", "agradecemos", "agradezco", "buscamos", "busco", "confirmo", "creemos", "creo", "cumplimos", "cumplo",
        "damos", "debemos", "debes", "debo", "dije", "doy", "eres", "espero", "estamos", "estaré", "estoy", "estuve",
        "estuvimos", "estábamos", "estáis", "estás", "fui", "fuimos", "habéis", "hacemos", "hago", "has", "he", "hemos",
        "hice", "hicimos", "iré", "llego", "llevamos", "llevo", "mando", "necesitamos", "necesitas", "necesito",
        "podemos", "podréis", "podrías", "podéis", "ponemos", "pongo", "prefiero", "proponemos", "propongo", "pude",
        "pudimos", "puedes", "puedo", "quedo", "queremos", "quieres", "quiero", "quería", "queríamos", "quise", "queréis", "sabemos", "sabes",
        "salgo", "seguimos", "siento", "sigo", "sois", "solicito", "somos", "soy", "supongo", "sé", "tendremos",
        "tendré", "tenemos", "tengo", "tenéis", "tienes", "trabajamos", "tuve", "tuvimos", "vais", "vamos", "vas",
        "vemos", "vengo", "veo", "vienes", "vine", "vivimos", "vivo", "voy",
    });
    return set;
}

const WordSet& spanishThirdVerbs() {
    static const WordSet set({
        "cuesta", "cuestan", "debe", "deben", "dice", "dicen", "era", "eran", "es", "estaba", "estaban", "estará",
        "está", "están", "fue", "fueron", "funciona", "funcionan", "ha", "habrá", "habría", "había", "han",
        "hay", "importa", "llega", "llegan", "necesita", "necesitan", "parece", "parecen", "pasa", "podría", "podrían", "puede",
        "pueden", "quiere", "quieren", "sale", "salen", "será", "serán", "sería", "serían", "sirve", "son", "tendrá",
        "tenía", "tenían", "tiene", "tienen", "va", "van", "viene", "vienen",
    });
    return set;
}

const WordSet& spanishDependentVerbs() {
    static const WordSet set({"esté", "estén", "estés", "estéis", "haya", "hayan", "hayas", "hayáis", "pueda", "puedan",
                              "puedas", "podáis", "sea", "sean", "seas", "seáis", "tenga", "tengan", "tengas", "tengáis",
                              "vaya", "vayan", "vayas", "fuera", "fueran", "hubiera", "pudiera", "tuviera", "vengas",
                              "vengan", "llegue", "llegues", "lleguen"});
    return set;
}

const WordSet& spanishAskingVerbs() {
    static const WordSet set({"sabe", "sabr", "sabi", "se", "dime", "dino", "deci", "dice", "dijo", "diga", "digo",
                              "preg", "ente", "enti", "imag", "recu", "expl", "cuen", "aver", "conf", "avis", "duda", "depe",
                              "ver", "mira", "vere", "pens", "olvi", "ense", "acla", "indi", "veri", "elig", "sele", "dete", "most", "mues", "info"});
    return set;
}

const WordSet& spanishClitics() {
    static const WordSet set({"me", "te", "se", "le", "les", "nos", "os"});
    return set;
}

const WordSet& spanishArticleClitics() {
    static const WordSet set({"lo", "la", "los", "las"});
    return set;
}

const WordSet& spanishLinks() {
    static const WordSet set({"que", "si", "cuando", "porque", "pero", "como", "donde", "adonde", "aunque", "mientras",
                              "sino", "quien", "quienes", "cual", "cuales", "cuyo", "cuya", "cuanto", "cuantos", "pues",
                              "segun", "apenas", "conforme", "siempre", "menos", "salvo", "excepto"});
    return set;
}

const WordSet& englishLinks() {
    static const WordSet set({"that", "because", "if", "when", "while", "as", "since", "until", "till", "before",
                              "after", "where", "what", "who", "whom", "whose", "which", "how", "why", "whether", "than",
                              "although", "though", "once", "unless", "but", "like", "cause", "whenever", "wherever",
                              "whatever", "except", "where's", "what's", "who's", "how's"});
    return set;
}

const WordSet& englishClauseHeads() {
    static const WordSet set({
        "afraid", "all", "anyone", "anything", "assume", "assumed", "assuming", "believe", "bet", "case", "check", "confirm",
        "day", "decide", "decided", "doubt", "ensure", "everyone", "everything", "feel", "felt", "find", "first", "fear",
        "forget", "forgot", "found", "glad", "guess", "happy", "hear", "heard", "hope", "hoped", "hoping", "imagine", "imply",
        "knew", "know", "knowing", "knows", "last", "love", "mean", "means", "meant", "minute", "moment", "next", "nothing",
        "notice", "noticed", "now", "one", "ones", "only", "people", "place", "pretend", "prove", "promise", "promised",
        "realise", "realised", "realize", "realized", "reason", "remember", "said", "saw", "say", "saying", "says", "see",
        "seems", "show", "shows", "so", "someone", "something", "sorry", "such", "suggest", "suppose", "sure", "tell",
        "telling", "thing", "things", "think", "thinking", "thinks", "thought", "time", "times", "told", "understand", "way",
        "wish", "worried", "yes",
    });
    return set;
}

const WordSet& englishAuxiliaries() {
    static const WordSet set({"am", "is", "are", "was", "were", "isn't", "aren't", "wasn't", "weren't", "has", "hasn't",
                              "haven't", "have", "had", "hadn't", "do", "does", "doesn't", "did", "didn't", "don't", "will",
                              "won't", "would", "wouldn't", "can", "can't", "could", "couldn't", "should", "shouldn't",
                              "may", "might", "must", "shall"});
    return set;
}

const WordSet& englishPasts() {
    static const WordSet set({"came", "went", "took", "made", "got", "gave", "sent", "wrote", "began", "became", "brought",
                              "bought", "chose", "drove", "fell", "forgot", "grew", "held", "kept", "knew", "lost", "ran",
                              "sold", "spoke", "stood", "taught", "threw", "understood", "woke", "won", "wore"});
    return set;
}

std::span<const std::string_view> spanishFormulas() {
    static constexpr auto rows = std::to_array<std::string_view>({
        "gracias por", "muchas gracias por", "mil gracias por", "enhorabuena", "felicidades", "feliz cumpleanos",
        "perdona por", "perdon por", "disculpa por", "disculpe por", "disculpad", "buen viaje", "buen trabajo",
    });
    return rows;
}

std::span<const std::string_view> englishFormulas() {
    static constexpr auto rows = std::to_array<std::string_view>({
        "thank you for", "thank you to", "thank you so much", "thanks for", "thanks to", "thanks so much", "sorry for",
        "sorry about", "apologies for", "no worries", "no problem", "great work", "great job", "good job", "nice work",
        "congratulations", "congrats", "happy birthday", "good luck", "never mind", "just a quick note",
    });
    return rows;
}

std::span<const std::string_view> spanishIntroductions() {
    static constexpr auto rows = std::to_array<std::string_view>({
        "sin embargo", "no obstante", "por lo tanto", "por tanto", "en conclusion", "en resumen", "en definitiva",
        "por ejemplo", "por otro lado", "por otra parte", "en primer lugar", "en segundo lugar", "por ultimo",
        "en cualquier caso", "de todas formas", "de todos modos", "en realidad", "pensandolo bien", "oye", "jajaja",
        "jaja", "por cierto", "en cambio", "a proposito", "ademas", "asimismo", "finalmente",
    });
    return rows;
}

std::span<const std::string_view> englishIntroductions() {
    static constexpr auto rows = std::to_array<std::string_view>({
        "however", "therefore", "moreover", "furthermore", "nevertheless", "in summary", "in conclusion", "in addition",
        "for example", "for instance", "on the other hand", "on the one hand", "on second thought", "in other words",
        "as a result", "in fact", "by the way", "in any case", "of course", "unfortunately", "meanwhile", "basically",
        "finally", "haha", "that said", "in the meantime",
    });
    return rows;
}

std::span<const std::string_view> turns() {
    static constexpr auto rows = std::to_array<std::string_view>({
        "sin embargo", "no obstante", "por otro lado", "por otra parte", "por cierto", "en cambio", "however",
        "nevertheless", "furthermore", "on the other hand", "by the way", "in conclusion", "en conclusion",
    });
    return rows;
}

std::span<const std::string_view> englishStarts() {
    static constexpr auto rows = std::to_array<std::string_view>({
        "please", "let me", "let us", "let's", "send me", "call me", "ping me", "give me", "tell me", "text me",
        "see you", "talk to you soon", "looking forward", "hope you", "take your time", "take care", "keep in mind",
        "have a great", "have a nice", "have a good", "thanks for", "thank you for", "don't worry", "don't forget",
        "no rush", "call you",
    });
    return rows;
}

std::span<const std::string_view> smallTalk() {
    static constexpr auto rows = std::to_array<std::string_view>({
        "que tal", "que tal todo", "que tal estas", "que tal va todo", "que tal te va", "como estas", "como va",
        "como va todo", "como vas", "como te va", "como esta usted", "how are you", "how are you doing", "how's it going",
        "how are things", "how's everything",
    });
    return rows;
}
// clang-format on

}  // namespace dorix::service::words
