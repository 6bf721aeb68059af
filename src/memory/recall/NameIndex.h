#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace dorix {

/// The names of many files, each once, in little memory: a file knows its folder, so no path is kept. Names
/// are any bytes. One thread at a time.
class NameIndex {
 public:
    using Folder = std::uint32_t;
    enum class Match { all, any };  // of the tokens

    /// `root` is where the paths begin.
    explicit NameIndex(std::string root) : root_(std::move(root)) {}

    static constexpr Folder rootFolder = 0;

    void addFile(Folder in, std::string_view name) { add(in, name, rootFolder); }
    Folder addFolder(Folder in, std::string_view name);
    /// Everything directly in a folder of another index, which must have come one after the other there.
    /// Tells of each folder: what it is there, and here.
    void copy(const NameIndex& other, Folder from, Folder to,
              const std::function<void(Folder, Folder)>& onFolder);

    /// When the list of a folder had changed last, as far as that is known for sure; otherwise 0. Called when
    /// all that is directly in it has been added.
    void listed(Folder folder, std::size_t first, double changed);
    double changed(Folder folder) const { return folders_[folder].changed; }
    /// The folders directly in one that was listed, by their names.
    std::unordered_map<std::string_view, Folder> foldersIn(Folder folder) const;

    std::size_t size() const { return entries_.size(); }
    /// No more fit in.
    bool isFull() const;
    std::string pathOf(Folder folder) const;

    /// The paths of the first `most` whose names hold the tokens, which are folded; without regard to case
    /// and accents. Folders too.
    std::vector<std::string> find(std::span<const std::string> tokens, Match match, std::size_t most) const;

 private:
    struct Entry {
        Folder in;
        std::uint32_t name;    // where it begins in names_
        std::uint32_t folded;  // likewise
        Folder self;           // the root where it is a file
    };
    struct Contents {
        std::uint32_t entry = 0;  // of the folder itself; the root has none
        std::uint32_t first = 0;  // of those in it
        std::uint32_t end = 0;
        double changed = 0;
    };

    void add(Folder in, std::string_view name, Folder self);
    std::string_view name(std::size_t entry) const;
    std::string_view folded(std::size_t entry) const;

    const std::string root_;
    std::string names_;
    std::string folded_;
    std::vector<Entry> entries_;
    std::vector<Contents> folders_{1};
};

}  // namespace dorix
