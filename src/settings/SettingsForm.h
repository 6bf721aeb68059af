#pragma once

#include "settings/AboutSection.h"
#include "settings/AccountSection.h"
#include "settings/GeneralSection.h"
#include "settings/MemorySection.h"
#include "settings/MicrophoneTest.h"
#include "settings/PrivacySection.h"
#include "settings/SpeechSection.h"
#include "settings/WritingSection.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

/// What the settings' window shows and does: a page of rows, or those of all pages that have the words that
/// are looked for. Every change counts at once and is kept. Main executor.
class SettingsForm {
 public:
    struct Parts {
        Executor& executor;
        SettingsStore& settings;
        KeyEventMonitors& keys;
        const AccountStore& account;
        const OwnService& own;
        ModelServer* models;  // null where the system has a language model of its own
        SpeechInput& speechInput;
        SpeechSection::Parts speech;
        MemorySection::Parts memory;
        PrivacySection::Parts privacy;
        std::function<void()> showAccount;
    };

    explicit SettingsForm(const Parts& parts);
    ~SettingsForm();
    SettingsForm(const SettingsForm&) = delete;
    SettingsForm& operator=(const SettingsForm&) = delete;

    /// The words that a text is shown in on this desktop; by them it is found.
    std::function<std::string(const std::string&)> words = [](const std::string& text) { return text; };

    /// The window above which dialogs of the desktop stand, as the adapters know it.
    std::function<std::uint64_t()> ownWindow = [] { return 0; };
    /// Where the keyboard is.
    enum class Keyboard { elsewhere, rows, field, secretField };
    /// What stands before the cursor, while the keyboard is in a field.
    std::function<std::string()> beforeCursor = [] { return std::string(); };

    /// Which page, by its place.
    Observable<std::size_t> section;
    /// What is looked for; nothing while it is empty.
    Observable<std::string> query;

    /// In their order, in the app language.
    std::vector<std::string> titles() const;
    /// The rows to be shown.
    const SettingsRows& rows() const { return rows_; }
    /// Told after rows() has become another.
    Subscription observe(std::function<void()> observer) { return changed_.add(std::move(observer)); }
    /// Of the microphone, while a row shows it: 0 to 1.
    const Observable<float>& level() const { return test_.level; }
    /// The test of the microphone, which others may end.
    MicrophoneTest& microphoneTest() { return test_; }

    /// The window opens and closes. It opens where it was closed.
    void open();
    void close();
    /// Goes to a page by its place or its id, whether the window is open or not.
    void showSection(std::size_t index);
    void showSection(std::string_view id);
    void search(const std::string& text);
    /// Gives up what waits for the user's second word, or the search; false when there is neither.
    bool stepBack();

    void setKeyboard(Keyboard at) { keyboard_ = at; }
    /// Whether what is dictated goes into a field of the window.
    bool takesDictation() const { return keyboard_ == Keyboard::field; }
    /// Whether the hold key is only tried out, or would speak out a secret: it begins no dictation then.
    bool refusesDictation() const;

    /// Works the row of that id, if it is shown. What is being edited counts, as if the user were through
    /// with it, before another page, a search or the end of the window takes its row away.
    void toggle(const std::string& row, bool on);
    void choose(const std::string& row, const std::string& option);
    void edit(const std::string& row, const std::string& text);
    void commit(const std::string& row, const std::string& text);
    void press(const std::string& row, const std::string& button);

 private:
    void refresh();
    void follow();
    void settle();
    void setQuery(const std::string& text);
    bool isInSight(std::size_t index) const;
    SettingsRows found();
    std::vector<std::string> wordsOf(SettingsSection& section, const SettingsRows& rows) const;
    const SettingsRow* find(const std::string& id) const;

    MicrophoneTest test_;
    GeneralSection general_;
    WritingSection writing_;
    SpeechSection speech_;
    MemorySection memory_;
    AccountSection account_;
    PrivacySection privacy_;
    AboutSection about_;
    const std::array<SettingsSection*, 7> sections_{&general_, &writing_, &speech_, &memory_,
                                                    &account_, &privacy_, &about_};
    std::array<bool, 7> shown_{};
    bool isOpen_ = false;
    Keyboard keyboard_ = Keyboard::elsewhere;
    SettingsRows rows_;
    std::set<std::string> found_;  // rows that the search has once found: they stay, whatever becomes of them
    struct Draft {
        std::string row;
        std::string text;
    };
    std::optional<Draft> draft_;  // what is being edited
    Observers<> changed_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace dorix
