#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace dorix::service {

/// A selected text line by line, with the line ends that it came with. Pure; any thread.
class Lines {
 public:
    enum class Marks : std::uint8_t { bullets, numbers };

    explicit Lines(std::string_view text);

    /// Makes lines of the things that a single line names: sentences, or what stands between commas. Whether
    /// there are two lines at least, now or already before.
    bool splitItems();

    /// No lines without words.
    void dropEmpty();
    void unmark();
    void deduplicate();
    /// As a dictionary has them, without regard to case and accents, whatever bullet is before them.
    void sort();
    void reverse();
    void mark(Marks marks);
    void join();
    void forEach(const std::function<std::string(std::string_view)>& change);

    std::string text() const;

 private:
    std::vector<std::string> lines_;
    std::string ending_;      // of a line
    bool endsInOne_ = false;  // whether the last line has one too
};

}  // namespace dorix::service
