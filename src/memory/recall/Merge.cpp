#include "memory/recall/Merge.h"

#include "base/text/Regex.h"
#include "base/text/Text.h"
#include "routing/Utterance.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <string>
#include <utility>

namespace dorix {

namespace {

constexpr std::size_t mostMessages = 10;  // where messages alone are asked for
constexpr std::size_t mostMessagesBeside = 4;
constexpr std::size_t tellingCharacters = 40;

void cut(std::vector<MemoryHit>& hits, std::size_t most) { hits.resize(std::min(hits.size(), most)); }

}  // namespace

bool speaksOfSlack(std::string_view query) {
    static const Regex pattern(R"(\bslack\b|\bcanal\b|\bchannel\b|#[a-z0-9])");
    return pattern.matches(Utterance(query).normalised());
}

std::vector<MemoryHit> merged(FoundMemory found, std::string_view query, std::size_t limit,
                              bool isSlackConnected) {
    if (isSlackConnected && speaksOfSlack(query)) {
        cut(found.slack, mostMessages);
        return std::move(found.slack);
    }
    cut(found.slack, mostMessagesBeside);
    const auto most = limit + found.slack.size();
    std::vector<MemoryHit> hits;
    std::set<std::string> seen;
    for (auto* leg : {&found.names, &found.slack, &found.index}) {
        for (auto& hit : *leg) {
            const auto key = hit.path + std::string(text::prefix(hit.text, tellingCharacters));
            if (seen.insert(key).second) hits.push_back(std::move(hit));
        }
    }
    cut(hits, most);
    return hits;
}

}  // namespace dorix
