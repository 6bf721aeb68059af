#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace re2 {
class RE2;
}

namespace dorix {

/// Regular expressions that are looked for together, in one pass whose time is linear in the text, whatever
/// the text: a backtracking search takes time that grows with its square on patterns like
/// "\badd\b.*\bcalendar\b". They are written in ICU's syntax and answer as ICU's do, but for one thing: the
/// dot takes line ends too. Patterns keep to what both engines know, and to lower case. Any thread.
class PatternSet {
 public:
    /// Of at least one pattern. One that does not compile is a mistake of the program and ends it.
    explicit PatternSet(std::span<const std::string_view> patterns);
    ~PatternSet();
    PatternSet(const PatternSet&) = delete;
    PatternSet& operator=(const PatternSet&) = delete;

    /// A folded UTF-8 text as `matches` takes it: each character beyond ASCII becomes one that no pattern
    /// names, and that \b takes for a part of a word where ICU takes the original for one. ASCII stays as it
    /// is.
    static std::string ascii(std::string_view text);

    /// Whether one of the patterns is found anywhere in an ASCII text.
    bool matches(std::string_view ascii) const;

 private:
    std::unique_ptr<re2::RE2> any_;
};

}  // namespace dorix
