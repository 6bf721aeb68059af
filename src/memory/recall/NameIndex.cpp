#include "memory/recall/NameIndex.h"

#include "base/text/Text.h"

#include <algorithm>
#include <utility>

namespace dorix {

namespace {
/// Of either kind of names: what is counted in 32 bits, and far more than a home has.
constexpr std::size_t mostBytes = 1UZ << 30;
}  // namespace

bool NameIndex::isFull() const { return std::max(names_.size(), folded_.size()) > mostBytes; }

void NameIndex::add(Folder in, std::string_view name, Folder self) {
    entries_.push_back({.in = in,
                        .name = static_cast<std::uint32_t>(names_.size()),
                        .folded = static_cast<std::uint32_t>(folded_.size()),
                        .self = self});
    names_ += name;
    folded_ += text::fold(name);
}

NameIndex::Folder NameIndex::addFolder(Folder in, std::string_view name) {
    const auto self = static_cast<Folder>(folders_.size());
    folders_.push_back({.entry = static_cast<std::uint32_t>(entries_.size())});
    add(in, name, self);
    return self;
}

void NameIndex::copy(const NameIndex& other, Folder from, Folder to,
                     const std::function<void(Folder, Folder)>& onFolder) {
    const auto first = entries_.size();
    const auto& contents = other.folders_[from];
    for (auto entry = contents.first; entry < contents.end; ++entry) {
        const auto theirs = other.entries_[entry].self;
        const auto ours = theirs == rootFolder ? rootFolder : static_cast<Folder>(folders_.size());
        if (ours != rootFolder) folders_.push_back({.entry = static_cast<std::uint32_t>(entries_.size())});
        entries_.push_back({.in = to,
                            .name = static_cast<std::uint32_t>(names_.size()),
                            .folded = static_cast<std::uint32_t>(folded_.size()),
                            .self = ours});
        names_ += other.name(entry);
        folded_ += other.folded(entry);
        if (ours != rootFolder) onFolder(theirs, ours);
    }
    listed(to, first, contents.changed);
}

void NameIndex::listed(Folder folder, std::size_t first, double changed) {
    auto& contents = folders_[folder];
    contents.first = static_cast<std::uint32_t>(first);
    contents.end = static_cast<std::uint32_t>(entries_.size());
    contents.changed = changed;
}

std::unordered_map<std::string_view, NameIndex::Folder> NameIndex::foldersIn(Folder folder) const {
    std::unordered_map<std::string_view, Folder> found;
    for (auto entry = folders_[folder].first; entry < folders_[folder].end; ++entry) {
        if (entries_[entry].self != rootFolder) found.emplace(name(entry), entries_[entry].self);
    }
    return found;
}

std::string_view NameIndex::name(std::size_t entry) const {
    const auto end = entry + 1 < entries_.size() ? entries_[entry + 1].name : names_.size();
    return std::string_view(names_).substr(entries_[entry].name, end - entries_[entry].name);
}

std::string_view NameIndex::folded(std::size_t entry) const {
    const auto end = entry + 1 < entries_.size() ? entries_[entry + 1].folded : folded_.size();
    return std::string_view(folded_).substr(entries_[entry].folded, end - entries_[entry].folded);
}

std::string NameIndex::pathOf(Folder folder) const {
    std::vector<std::string_view> names;
    for (; folder != rootFolder; folder = entries_[folders_[folder].entry].in)
        names.push_back(name(folders_[folder].entry));
    std::string path = root_;
    for (auto at = names.rbegin(); at != names.rend(); ++at) path.append("/").append(*at);
    return path;
}

std::vector<std::string> NameIndex::find(std::span<const std::string> tokens, Match match,
                                         std::size_t most) const {
    std::vector<std::string> found;
    for (std::size_t entry = 0; entry < entries_.size() && found.size() < most; ++entry) {
        const auto holds = [name = folded(entry)](const std::string& token) { return name.contains(token); };
        const bool fits =
            match == Match::all ? std::ranges::all_of(tokens, holds) : std::ranges::any_of(tokens, holds);
        if (fits) found.push_back(pathOf(entries_[entry].in) + "/" + std::string(name(entry)));
    }
    return found;
}

}  // namespace dorix
