#include "service/ai/writing/AskRule.h"

#include "service/ai/WordSet.h"

#include <algorithm>

namespace dorix::service {

namespace {

const WordSet& orders() {
    static const WordSet set({
        "resume",    "resumeme", "explica",   "explicame", "dime",    "busca", "buscame", "encuentra",
        "analiza",   "traduce",  "traduceme", "calcula",   "compara", "lista", "enumera", "cuentame",
        "muestrame", "ensename", "summarize", "summarise", "explain", "tell",  "find",    "search",
        "analyze",   "analyse",  "translate", "calculate", "compare", "list",  "show",
    });
    return set;
}

const WordSet& questionWords() {
    static const WordSet set({
        "que",     "cual",   "cuales",  "quien", "quienes", "como", "cuando", "donde", "cuanto",
        "cuantos", "cuanta", "cuantas", "what",  "which",   "who",  "whose",  "how",   "when",
        "where",   "why",    "is",      "are",   "does",    "do",   "did",    "can",   "could",
    });
    return set;
}

bool isAddressed(const Tokens& tokens) {
    const auto behind = std::size_t{tokens.front().key == "oye" || tokens.front().key == "hey" ? 1U : 0U};
    return behind + 1 < tokens.size() && tokens[behind].key == "dorix";
}

}  // namespace

bool isForAssistant(const WriteRequest& request, const Tokens& tokens) {
    if (tokens.empty() || request.editableFocus.value_or(false)) return false;
    if (isAddressed(tokens)) return true;
    if (request.editableFocus != false) return false;  // nobody knows: what was said is worth more as a text
    const auto& first = tokens.front();
    const bool asks = first.opening.starts_with("¿") || tokens.back().closing.find('?') != std::string::npos;
    return asks || orders().contains(first.key) || questionWords().contains(first.key) ||
           isPhraseAt(tokens, 0, "por que");
}

}  // namespace dorix::service
