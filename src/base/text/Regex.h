#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace dorix {

/// A regular expression in ICU's syntax, compiled once; matching is unanchored. Any thread: a call keeps no
/// state behind. A pattern that does not compile is a mistake of the program and ends it.
class Regex {
 public:
    enum class Case { sensitive, ignored };

    explicit Regex(std::string_view pattern, Case letterCase = Case::sensitive);
    ~Regex();
    Regex(const Regex&) = delete;
    Regex& operator=(const Regex&) = delete;

    /// Whether the pattern is found anywhere in `text`.
    bool matches(std::string_view text) const;

    /// The text with every match replaced by `replacement`, in which "$1" names a group.
    std::string replaceAll(std::string_view text, std::string_view replacement) const;

 private:
    struct Compiled;
    std::unique_ptr<Compiled> compiled_;
};

}  // namespace dorix
