#include "memory/embedding/UnigramModel.h"

#include "memory/embedding/CodePoints.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ranges>
#include <stdexcept>
#include <utility>

namespace dorix {

namespace {
constexpr double unknownPenalty = 10;
constexpr std::size_t mostPieces = 4'000'000;
constexpr std::size_t longestText = 256UZ * 1024 * 1024;  // bytes of all pieces
constexpr std::size_t unreached = static_cast<std::size_t>(-1);
}  // namespace

/// The last piece on the best way up to a place in the text.
struct UnigramModel::Step {
    double score = 0;  // of the way
    std::size_t from = unreached;
    std::uint32_t piece = PieceTrie::none;

    /// The first of equals stays.
    void improve(double other, std::size_t start, std::uint32_t with) {
        if (from != unreached && other <= score) return;
        *this = {.score = other, .from = start, .piece = with};
    }
};

void UnigramModel::Vocabulary::add(std::string_view piece, double score) {
    if (starts.size() == mostPieces || piece.size() > longestText - text.size())
        throw std::length_error("too many pieces");
    starts.push_back(static_cast<std::uint32_t>(text.size()));
    text += piece;
    scores.push_back(score);
}

std::expected<UnigramModel, std::string> UnigramModel::make(Vocabulary vocabulary,
                                                            std::optional<std::uint64_t> unknown,
                                                            ByteFallback fallback) {
    if (vocabulary.scores.empty()) return std::unexpected("no pieces");
    if (unknown && *unknown >= vocabulary.scores.size()) return std::unexpected("no unknown piece");
    return UnigramModel(vocabulary, static_cast<std::uint32_t>(unknown.value_or(PieceTrie::none)), fallback);
}

UnigramModel::UnigramModel(const Vocabulary& vocabulary, std::uint32_t unknown, ByteFallback fallback)
    : trie_(vocabulary.text, vocabulary.starts),
      scores_(vocabulary.scores),
      unknownScore_(*std::ranges::min_element(scores_) - unknownPenalty),
      unknown_(unknown),
      fallback_(fallback) {}

std::vector<UnigramModel::Step> UnigramModel::bestSteps(std::string_view text) const {
    std::vector<Step> best(text.size() + 1);
    for (std::size_t at = 0; at < text.size();) {
        const auto length = codePointLength(text.substr(at));
        bool isKnown = false;
        PieceTrie::Walk walk(trie_);
        for (auto end = at; end < text.size() && walk.next(text[end]);) {
            ++end;
            const auto piece = walk.piece();
            if (piece == PieceTrie::none) continue;
            best[end].improve(best[at].score + scores_[piece], at, piece);
            isKnown = isKnown || end == at + length;
        }
        if (!isKnown) best[at + length].improve(best[at].score + unknownScore_, at, unknown_);
        at += length;
    }
    return best;
}

void UnigramModel::cut(std::string_view text, std::vector<std::uint32_t>& pieces) const {
    const auto best = bestSteps(text);
    std::vector<std::pair<std::size_t, std::size_t>> spans;  // the last first
    for (auto end = text.size(); end > 0; end = best[end].from) spans.emplace_back(best[end].from, end);
    std::size_t unknownLength = 0;  // of the run that goes on, in bytes
    for (const auto& [begin, end] : spans | std::views::reverse) {
        if (best[end].piece == unknown_) {
            unknownLength += end - begin;
            continue;
        }
        addUnknown(text.substr(begin - unknownLength, unknownLength), pieces);
        unknownLength = 0;
        pieces.push_back(best[end].piece);
    }
    addUnknown(text.substr(text.size() - unknownLength), pieces);
}

/// The pieces of all its bytes, or none.
void UnigramModel::addUnknown(std::string_view unknown, std::vector<std::uint32_t>& pieces) const {
    if (fallback_ == ByteFallback::no) return;
    const auto before = pieces.size();
    for (const char byte : unknown) {
        std::array<char, 8> name{};
        std::snprintf(name.data(), name.size(), "<0x%02X>",
                      static_cast<unsigned>(static_cast<unsigned char>(byte)));
        const auto piece = trie_.find(name.data());
        if (piece == PieceTrie::none) return pieces.resize(before);
        pieces.push_back(piece);
    }
}

}  // namespace dorix
