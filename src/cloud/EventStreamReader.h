#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace dorix {

/// Reads an answer that arrives as server-sent events, wherever its bytes are cut: the text so far, event by
/// event. What is no event of ours is passed over. Time and memory are linear in what comes. One thread at a
/// time.
class EventStreamReader {
 public:
    /// Gets all the text so far, for the length of the call.
    using OnText = std::function<void(std::string_view text)>;

    /// In bytes, of one line and of the whole text: far beyond what anybody reads, and beyond the largest
    /// document that a question may hold (400,000 characters, six bytes each when all are escaped), while a
    /// service that never comes to an end does not fill the memory.
    static constexpr std::size_t longestAnswer = 32UZ * 1024 * 1024;

    explicit EventStreamReader(OnText onText = nullptr, std::size_t longest = longestAnswer)
        : onText_(std::move(onText)), longest_(longest) {}

    /// Takes the next bytes. Throws APIError when the service says that it has failed, or says too much, and
    /// whatever the callback throws; the reader is of no use after that.
    void read(std::string_view bytes);

    /// The bytes have ended: gives the text. Throws likewise.
    std::string finish();

 private:
    void takeLine(std::string_view line);
    void append(std::string_view text);
    void extend(std::string& held, std::string_view more) const;

    const OnText onText_;
    const std::size_t longest_;
    std::string line_;  // the beginning of one whose end has not come
    std::string text_;
};

}  // namespace dorix
