#pragma once

namespace dorix {

/// While it lives, texts that this thread asks for are in the language of that code ("es" or "en"), which
/// outlives it; what is stored is not touched. They nest.
class InLanguage {
 public:
    explicit InLanguage(const char* code);
    ~InLanguage();
    InLanguage(const InLanguage&) = delete;
    InLanguage& operator=(const InLanguage&) = delete;

 private:
    const char* const before_;
};

}  // namespace dorix
