#include "memory/recall/FileNames.h"

#include "base/text/Pieces.h"
#include "base/text/Text.h"

#include <algorithm>
#include <array>
#include <tuple>

namespace dorix {

namespace {

constexpr std::size_t shortestToken = 3;
constexpr std::size_t mostFiles = 4;

constexpr std::array<std::string_view, 68> stopWords{
    "que",        "los",     "las",      "del",     "con",       "por",         "para",        "una",
    "uno",        "unos",    "unas",     "donde",   "esta",      "estaba",      "como",        "cual",
    "quien",      "sobre",   "busca",    "buscame", "encuentra", "encuentrame", "localiza",    "documento",
    "documentos", "archivo", "archivos", "fichero", "tengo",     "referente",   "relacionado", "llamado",
    "llama",      "mas",     "este",     "ese",     "eso",       "the",         "and",         "for",
    "with",       "find",    "file",     "mi",      "mis",       "algo",        "alguno",      "alguna",
    "what",       "where",   "did",      "say",     "said",      "about",       "search",      "look",
    "from",       "that",    "this",     "have",    "any",       "files",       "document",    "documents",
    "called",     "named",   "folder",   "show"};

bool isStopWord(std::string_view token) { return std::ranges::find(stopWords, token) != stopWords.end(); }

bool isOutOfTheWay(std::string_view path) {
    return path.contains("/Library/") || path.contains("/.") || path.contains(".app/") ||
           path.ends_with(".app");
}

std::string_view nameOf(std::string_view path) { return path.substr(path.rfind('/') + 1); }

}  // namespace

std::vector<std::string> fileNameTokens(std::string_view query) {
    std::vector<std::string> tokens;
    const auto folded = text::fold(query);
    for (const auto token : text::alphanumericRuns(folded)) {
        if (text::length(token) >= shortestToken && !isStopWord(token)) tokens.emplace_back(token);
    }
    return tokens;
}

std::size_t requiredTokens(std::size_t tokens) { return tokens <= 2 ? tokens : (tokens + 1) / 2; }

std::size_t tokensIn(std::string_view name, std::span<const std::string> tokens) {
    const auto folded = text::fold(name);
    return static_cast<std::size_t>(
        std::ranges::count_if(tokens, [&](const auto& token) { return folded.contains(token); }));
}

std::vector<std::string> bestFileNames(std::span<const std::string> paths,
                                       std::span<const std::string> tokens) {
    struct Candidate {
        std::size_t matching;
        std::size_t length;
        const std::string* path;
    };
    std::vector<Candidate> candidates;
    const auto required = requiredTokens(tokens.size());
    for (const auto& path : paths) {
        if (isOutOfTheWay(path)) continue;
        const auto matching = tokensIn(nameOf(path), tokens);
        if (matching >= required) candidates.push_back({matching, text::length(path), &path});
    }
    std::ranges::sort(candidates, [](const auto& a, const auto& b) {
        return std::tuple(b.matching, a.length, a.path) < std::tuple(a.matching, b.length, b.path);
    });
    candidates.resize(std::min(candidates.size(), mostFiles));
    std::vector<std::string> best;
    for (const auto& candidate : candidates) best.push_back(*candidate.path);
    return best;
}

}  // namespace dorix
