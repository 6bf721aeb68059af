#include "linux/files/LinuxFileTree.h"

#include "base/text/Text.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <memory>

namespace dorix {

namespace {

constexpr std::array<std::string_view, 18> networkTypes{
    "nfs",       "nfs4",  "cifs",   "smb3",     "smbfs",  "afs",    "ceph",   "9p",       "ncpfs",
    "glusterfs", "davfs", "autofs", "virtiofs", "vboxsf", "vmhgfs", "lustre", "orangefs", "coda"};

// A program fills what is mounted as "fuse", mostly from the network or a telephone; what is called "fuseblk"
// lies on a disk, and so does what these show.
constexpr std::array<std::string_view, 16> localPrograms{
    "bindfs", "mergerfs",   "fuse-overlayfs", "unionfs", "gocryptfs",  "encfs",
    "cryfs",  "securefs",   "veracrypt",      "ntfs-3g", "squashfuse", "snapfuse",
    "lxcfs",  "ratarmount", "archivemount",   "fuse-zip"};

bool isOfNetwork(std::string_view type) {
    constexpr std::string_view program = "fuse.";
    if (type.starts_with(program))
        return std::ranges::find(localPrograms, type.substr(program.size())) == localPrograms.end();
    return type == "fuse" || std::ranges::find(networkTypes, type) != networkTypes.end();
}

struct Closer {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

/// What a file system does not say of an entry by itself has to be asked of the file.
FileTree::Kind kindOf(int folder, const dirent& entry) {
    auto type = entry.d_type;
    struct stat status{};
    if (type == DT_UNKNOWN && ::fstatat(folder, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0)
        type = static_cast<unsigned char>(IFTODT(status.st_mode));
    if (type == DT_REG) return FileTree::Kind::file;
    return type == DT_DIR ? FileTree::Kind::folder : FileTree::Kind::other;
}

double modificationOf(const struct stat& status) {
    constexpr double nanoseconds = 1e-9;
    return static_cast<double>(status.st_mtim.tv_sec) +
           static_cast<double>(status.st_mtim.tv_nsec) * nanoseconds;
}

/// The table writes blanks and the like as octal numbers: "\040".
std::string unescaped(std::string_view field) {
    constexpr std::size_t digits = 3;
    constexpr int base = 8;
    std::string plain;
    for (std::size_t i = 0; i < field.size(); ++i) {
        if (field[i] != '\\' || i + digits >= field.size()) {
            plain += field[i];
            continue;
        }
        int code = 0;
        for (std::size_t digit = 1; digit <= digits; ++digit) code = code * base + (field[i + digit] - '0');
        plain += static_cast<char>(code);
        i += digits;
    }
    return plain;
}

}  // namespace

double LinuxFileTree::list(const std::string& folder, const Visitor& visit) {
    // Not what has become a link meanwhile.
    const int descriptor =
        ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) return 0;
    const std::unique_ptr<DIR, Closer> entries(::fdopendir(descriptor));
    if (!entries) {
        ::close(descriptor);
        return 0;
    }
    struct stat status{};
    const double before = ::fstat(descriptor, &status) == 0 ? modificationOf(status) : 0;
    // Each folder is read by one thread.
    while (const auto* entry = ::readdir(entries.get())) {  // NOLINT(concurrency-mt-unsafe)
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") visit(name, kindOf(descriptor, *entry));
    }
    return before;
}

double LinuxFileTree::changed(const std::string& folder) {
    struct stat status{};
    const bool isThere = ::lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
    return isThere ? modificationOf(status) : 0;
}

std::vector<std::string> LinuxFileTree::networkMounts() {
    constexpr std::size_t mountPoint = 4;  // fields from the left
    constexpr std::string_view separator = " - ";
    std::vector<std::string> found;
    std::ifstream table(mounts_);
    for (std::string line; std::getline(table, line);) {
        const auto type = line.find(separator);
        const auto fields = text::split(line, ' ');
        if (fields.size() <= mountPoint) continue;
        if (type == std::string::npos || !fields[mountPoint].starts_with('/')) continue;
        const auto name = text::split(std::string_view(line).substr(type + separator.size()), ' ').front();
        if (isOfNetwork(name)) found.push_back(unescaped(fields[mountPoint]));
    }
    return found;
}

}  // namespace dorix
