#include "service/ai/writing/SpokenCode.h"

#include "base/text/Case.h"
#include "service/ai/WordSet.h"

#include <string>
#include <string_view>

namespace dorix::service {

namespace {

constexpr std::size_t longestShortOption = 2;  // "-m", "-it"

std::string_view keyAt(const Tokens& tokens, std::size_t at) {
    return at < tokens.size() ? std::string_view(tokens[at].key) : std::string_view();
}

/// Whether the words from `at` on up to `end` are said in one breath.
bool runsOn(const Tokens& tokens, std::size_t at, std::size_t end) {
    if (end > tokens.size()) return false;
    for (; at + 1 < end; ++at) {
        if (tokens[at].endsClause() || tokens[at + 1].gap != Gap::blank) return false;
    }
    return true;
}

bool isDash(std::string_view key) {
    static const WordSet set({"dash", "hyphen", "minus", "guion", "menos"});
    return set.contains(key);
}

bool isSlash(std::string_view key) { return key == "slash" || key == "barra"; }

/// Puts a sign before a word.
Token signedWord(const Token& first, const Token& word, std::string_view sign) {
    Token token = word;
    token.gap = first.gap;
    token.opening = first.opening;
    token.text = std::string(sign) + word.text;
    token.key = keyOf(token.text);
    return token;
}

/// Reads a technical dictation word by word.
class Code {
 public:
    explicit Code(const Tokens& tokens) : tokens_(tokens), isCommand_(isCommandLine(tokens)) {}

    Tokens written() {
        for (at_ = 0; at_ < tokens_.size();) {
            if (isCommand_ && takeOption()) continue;
            if (takePath()) continue;
            written_.push_back(tokens_[at_++]);
        }
        return std::move(written_);
    }

 private:
    bool takeOption() {
        if (at_ == 0 || !isDash(keyAt(tokens_, at_))) return false;
        const bool isLong = isDash(keyAt(tokens_, at_ + 1));
        const auto word = at_ + (isLong ? 2 : 1);
        if (!runsOn(tokens_, at_, word + 1)) return false;
        if (!isLong && tokens_[word].text.size() > longestShortOption) return false;
        written_.push_back(signedWord(tokens_[at_], tokens_[word], isLong ? "--" : "-"));
        at_ = word + 1;
        return true;
    }

    /// "Slash var slash log"; a single one only behind the program's name or an option.
    bool takePath() {
        std::string path;
        auto end = at_;
        while (isSlash(keyAt(tokens_, end)) && runsOn(tokens_, at_, end + 2) &&
               !isSlash(keyAt(tokens_, end + 1))) {
            path += "/" + tokens_[end + 1].text;
            end += 2;
        }
        const auto parts = (end - at_) / 2;
        const bool isArgument =
            isCommand_ && (at_ == 1 || (at_ > 1 && written_.back().text.starts_with('-')));
        if (parts < 2 && !(parts == 1 && isArgument)) return false;
        Token token = tokens_[end - 1];
        token.gap = tokens_[at_].gap;
        token.text = path;
        token.key = keyOf(path);
        written_.push_back(std::move(token));
        at_ = end;
        return true;
    }

    const Tokens& tokens_;
    bool isCommand_;
    std::size_t at_ = 0;
    Tokens written_;
};

/// "Comentario esta función…", but not "comment out this line" nor "comentario de Ana".
bool announcesComment(const Tokens& tokens) {
    static const WordSet names({"comentario", "comment"});
    static const WordSet notBehind({"out", "on", "in", "of", "from", "by", "for", "about", "the", "this",
                                    "de", "del", "en", "sobre", "para", "a", "al", "que"});
    return tokens.size() > 2 && names.contains(tokens.front().key) && !notBehind.contains(tokens[1].key) &&
           tokens[1].gap == Gap::blank && !tokens.front().endsSentence();
}

}  // namespace

bool isCommandLine(const Tokens& tokens) {
    static const WordSet programs({"apt", "bash",   "cat",       "cd",   "chmod", "chown", "cmake",
                                   "cp",  "curl",   "docker",    "echo", "git",   "grep",  "kubectl",
                                   "ls",  "make",   "mkdir",     "mv",   "ninja", "npm",   "npx",
                                   "pip", "pytest", "python",    "rm",   "rsync", "scp",   "sed",
                                   "ssh", "sudo",   "systemctl", "tar",  "touch", "wget",  "yarn"});
    static const WordSet alsoWords({"make", "touch", "cat", "echo", "python", "docker", "git"});
    static const WordSet behindWords({"sure", "the", "it", "a", "is", "has", "was", "es", "no", "me", "this",
                                      "that", "el", "la", "tiene", "ha", "does", "doesn't", "can"});
    if (tokens.size() < 2 || !programs.contains(tokens.front().key) || tokens.front().endsClause())
        return false;
    return !alsoWords.contains(tokens.front().key) || !behindWords.contains(tokens[1].key);
}

Tokens withSpokenCode(const Tokens& tokens, Spoken spoken) {
    auto written = Code(tokens).written();
    if (written.empty()) return written;
    if (announcesComment(written)) {
        written.front().text = "//";
        written.front().closing.clear();
        written.front().key.clear();
    } else if (spoken.english && written.front().key == "todo" && written.size() > 2) {
        written.front().text = "TODO";
        if (!written.front().endsClause()) written.front().closing = ":";
    }
    return written;
}

}  // namespace dorix::service
