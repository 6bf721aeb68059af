#include "linux/recent/RecentFileList.h"

#include "base/text/Text.h"
#include "base/text/Url.h"

#include <algorithm>
#include <pugixml.hpp>
#include <utility>

namespace dorix {

namespace {

namespace fs = std::filesystem;

struct Entry {
    std::string_view used;  // in a form whose order is that of time
    const char* address = "";
};

Entry entryOf(const pugi::xml_node& bookmark) {
    const std::string_view modified = bookmark.attribute("modified").value();
    const std::string_view visited = bookmark.attribute("visited").value();
    return {.used = std::max(modified, visited), .address = bookmark.attribute("href").value()};
}

bool isPrivate(const pugi::xml_node& bookmark) {
    for (const auto metadata : bookmark.child("info").children("metadata")) {
        if (metadata.child("bookmark:private")) return true;
    }
    return false;
}

bool belongsToWord(std::string_view character) {
    if (character.empty()) return false;
    const bool isDigit = character.front() >= '0' && character.front() <= '9';
    return isDigit || character == "_" || !text::letterRuns(character).empty();
}

/// A name may hold blanks: where one stands before it, the word before that may be its beginning.
bool mayBeginAfter(std::string_view before) {
    const auto last = text::lastCharacter(before);
    if (belongsToWord(last) || last == "-" || last == ".") return false;
    if (last != " ") return true;
    before.remove_suffix(last.size());
    return !belongsToWord(text::lastCharacter(before));
}

bool mayEndBefore(std::string_view after) {
    const auto next = text::prefix(after, 1);
    if (next == ".") return !belongsToWord(text::prefix(after.substr(next.size()), 1));
    return next != "-" && !belongsToWord(next);
}

bool stands(std::string_view name, std::string_view title) {
    for (auto at = title.find(name); at != std::string_view::npos; at = title.find(name, at + 1)) {
        if (mayBeginAfter(title.substr(0, at)) && mayEndBefore(title.substr(at + name.size()))) return true;
    }
    return false;
}

/// As titles write it.
std::string shownFolder(const fs::path& folder, const fs::path& home) {
    const auto whole = folder.string();
    const auto above = home.string();
    if (whole == above) return "~";
    return whole.starts_with(above + "/") ? "~" + whole.substr(above.size()) : whole;
}

/// Whether something in it begins as the path of a folder does.
bool tellsFolder(std::string_view title) {
    for (std::size_t at = 0; at + 1 < title.size(); ++at) {
        const bool begins = at == 0 || std::string_view(" ([*").contains(title[at - 1]);
        const bool isRoot = title[at] == '/' && title[at + 1] != ' ';
        const bool isHome = title[at] == '~' && std::string_view("/)] ").contains(title[at + 1]);
        if (begins && (isRoot || isHome)) return true;
    }
    return false;
}

bool tellsThisFolder(std::string_view title, std::string_view folder, const std::string& name) {
    for (auto at = title.find(folder); at != std::string_view::npos; at = title.find(folder, at + 1)) {
        const auto after = title.substr(at + folder.size());
        if (after.empty() || std::string_view(" )]").contains(after.front())) return true;
        if (after.starts_with("/" + name)) return true;
    }
    return false;
}

bool tellsFolderOf(std::string_view title, const fs::path& file, const fs::path& home) {
    const auto folder = file.parent_path();
    const auto name = file.filename().string();
    return tellsThisFolder(title, folder.string(), name) ||
           tellsThisFolder(title, shownFolder(folder, home), name);
}

}  // namespace

std::vector<fs::path> parseRecentFiles(std::string contents, std::size_t limit) {
    pugi::xml_document document;
    if (!document.load_buffer_inplace(contents.data(), contents.size())) return {};
    std::vector<Entry> entries;
    for (const auto bookmark : document.child("xbel").children("bookmark")) {
        if (!isPrivate(bookmark)) entries.push_back(entryOf(bookmark));
    }
    std::ranges::sort(entries, std::ranges::greater(), &Entry::used);
    std::vector<fs::path> files;
    for (const auto& entry : entries) {
        if (files.size() == limit) break;
        if (auto path = pathOfFileURL(entry.address)) files.push_back(std::move(*path));
    }
    return files;
}

std::optional<fs::path> fileNamedIn(std::string_view title, const std::vector<fs::path>& files,
                                    const fs::path& home) {
    const bool needsFolder = tellsFolder(title);
    const fs::path* best = nullptr;
    bool isOnly = true;
    for (const auto& file : files) {
        const auto name = file.filename();
        if (!name.has_extension() || !stands(name.string(), title)) continue;
        if (needsFolder && !tellsFolderOf(title, file, home)) continue;
        const auto length = [](const fs::path& of) { return of.filename().native().size(); };
        if (best == nullptr || length(file) > length(*best)) {
            best = &file;
            isOnly = true;
        } else if (length(file) == length(*best) && file != *best) {
            isOnly = false;
        }
    }
    return best != nullptr && isOnly ? std::optional(*best) : std::nullopt;
}

std::optional<fs::path> fileThatIs(std::string_view title, const fs::path& home) {
    title = text::trimAny(title, "* ");
    const auto path = title.starts_with("~/") ? home / title.substr(2) : fs::path(title);
    const auto extension = path.extension().string();
    const auto isLetterOrDigit = [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    };
    // A folder's name may end in a version.
    const bool isFile = path.is_absolute() && extension.size() > 1 && extension[1] > '9' &&
                        std::ranges::all_of(extension.substr(1), isLetterOrDigit);
    return isFile ? std::optional(path) : std::nullopt;
}

}  // namespace dorix
