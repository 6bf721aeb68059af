#include "linux/keeper/ClipboardKeeper.h"

#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>

namespace dorix {

namespace {

// The memory holds, for each entry, the lengths of its type and of its bytes, and then both.
using Length = std::uint64_t;

bool writeWhole(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const auto written = ::write(fd, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

bool writeEntry(int fd, std::string_view type, std::string_view data) {
    const std::array<Length, 2> lengths{type.size(), data.size()};
    return writeWhole(fd, {reinterpret_cast<const char*>(lengths.data()), sizeof lengths}) &&
           writeWhole(fd, type) && writeWhole(fd, data);
}

FileDescriptor memoryOf(const ClipboardKeeper::Entries& entries) {
    FileDescriptor memory(::memfd_create("dorix-clipboard", MFD_CLOEXEC));
    for (const auto& [type, data] : entries) {
        if (!memory || !writeEntry(memory.get(), type, data)) return FileDescriptor();
    }
    return memory;
}

/// The file's pages, mapped to be read.
class Mapping {
 public:
    explicit Mapping(int fd) {
        struct stat status{};
        if (::fstat(fd, &status) != 0 || status.st_size <= 0) return;
        size_ = static_cast<std::size_t>(status.st_size);
        void* const start = ::mmap(nullptr, size_, PROT_READ, MAP_PRIVATE, fd, 0);
        if (start != MAP_FAILED) start_ = start;
    }
    ~Mapping() {
        if (start_ != nullptr) ::munmap(start_, size_);
    }
    Mapping(const Mapping&) = delete;
    Mapping& operator=(const Mapping&) = delete;

    std::string_view bytes() const {
        return start_ == nullptr ? std::string_view()
                                 : std::string_view(static_cast<const char*>(start_), size_);
    }

 private:
    void* start_ = nullptr;
    std::size_t size_ = 0;
};

union Control {
    cmsghdr header;
    std::array<char, CMSG_SPACE(sizeof(int))> bytes;
};

}  // namespace

ClipboardKeeper::ClipboardKeeper() {
    std::array<int, 2> ends{-1, -1};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) return;
    ours_ = FileDescriptor(ends[0]);
    theirs_ = FileDescriptor(ends[1]);
}

void ClipboardKeeper::keep(const Entries& entries) {
    const auto memory = memoryOf(entries);
    // Of no memory for it, nothing is kept rather than half.
    send(memory.get());
}

void ClipboardKeeper::forget() { send(-1); }

/// One message for each: with the memory, or without if there is nothing to keep.
void ClipboardKeeper::send(int memory) const {
    char something = 0;
    iovec content{&something, 1};
    Control control{};
    msghdr message{};
    message.msg_iov = &content;
    message.msg_iovlen = 1;
    if (memory >= 0) {
        message.msg_control = control.bytes.data();
        message.msg_controllen = control.bytes.size();
        auto* const header = CMSG_FIRSTHDR(&message);
        header->cmsg_level = SOL_SOCKET;
        header->cmsg_type = SCM_RIGHTS;
        header->cmsg_len = CMSG_LEN(sizeof memory);
        std::memcpy(CMSG_DATA(header), &memory, sizeof memory);
    }
    ::sendmsg(ours_.get(), &message, MSG_DONTWAIT | MSG_NOSIGNAL);
}

bool KeptClipboard::receive() {
    for (;;) {
        char something = 0;
        iovec content{&something, 1};
        Control control{};
        msghdr message{};
        message.msg_iov = &content;
        message.msg_iovlen = 1;
        message.msg_control = control.bytes.data();
        message.msg_controllen = control.bytes.size();
        const auto received = ::recvmsg(end_.get(), &message, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
        if (received < 0 && errno == EINTR) continue;
        if (received <= 0) return received < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
        memory_ = FileDescriptor();
        const auto* const header = CMSG_FIRSTHDR(&message);
        if (header == nullptr || header->cmsg_type != SCM_RIGHTS) continue;
        int memory = -1;
        std::memcpy(&memory, CMSG_DATA(header), sizeof memory);
        memory_ = FileDescriptor(memory);
    }
}

std::optional<Pasteboard::Item> KeptClipboard::item() const {
    if (!memory_) return std::nullopt;
    const Mapping mapping(memory_.get());
    auto rest = mapping.bytes();
    Pasteboard::Item item;
    while (!rest.empty()) {
        std::array<Length, 2> lengths{};
        if (rest.size() < sizeof lengths) return std::nullopt;
        std::memcpy(lengths.data(), rest.data(), sizeof lengths);
        rest.remove_prefix(sizeof lengths);
        const auto [type, data] = lengths;
        if (type > rest.size() || data > rest.size() - type) return std::nullopt;
        item.emplace_back(rest.substr(0, type), rest.substr(type, data));
        rest.remove_prefix(type + data);
    }
    return item.empty() ? std::nullopt : std::optional(std::move(item));
}

}  // namespace dorix
