#include "settings/SettingsForm.h"

#include "base/text/Text.h"
#include "localdata/InLanguage.h"
#include "localdata/Language.h"

#include <algorithm>
#include <utility>

namespace dorix {

SettingsForm::SettingsForm(const Parts& parts)
    : test_(parts.executor, parts.speechInput, parts.speech.audio),
      general_(parts.settings, parts.keys, parts.speech.models, parts.speech.installs,
               [this] { showSection("speech"); }),
      writing_(parts.settings, parts.account, parts.own, parts.models, parts.showAccount),
      speech_(parts.speech, test_),
      memory_(parts.memory),
      account_(parts.account, parts.own, parts.showAccount),
      privacy_(parts.privacy) {
    memory_.ownWindow = [this] { return ownWindow(); };
    for (auto* one : sections_) one->onChanged = [this] { refresh(); };
    subscriptions_.push_back(
        parts.settings.languageObserver().code.subscribe([this](const auto&) { refresh(); }));
}

SettingsForm::~SettingsForm() = default;

std::vector<std::string> SettingsForm::titles() const {
    std::vector<std::string> titles;
    for (const auto* one : sections_) titles.push_back(one->title());
    return titles;
}

void SettingsForm::open() {
    isOpen_ = true;
    follow();
    refresh();
}

void SettingsForm::close() {
    settle();
    isOpen_ = false;
    keyboard_ = Keyboard::elsewhere;
    setQuery("");
    follow();
    rows_.clear();
}

void SettingsForm::showSection(std::string_view id) {
    const auto* const found = std::ranges::find(sections_, id, &SettingsSection::id);
    showSection(static_cast<std::size_t>(found - sections_.begin()));
}

void SettingsForm::showSection(std::size_t index) {
    if (index >= sections_.size()) return;
    settle();
    setQuery("");
    section.set(index);
    follow();
    refresh();
}

void SettingsForm::search(const std::string& text) {
    settle();
    setQuery(text);
    follow();
    refresh();
}

void SettingsForm::setQuery(const std::string& text) {
    if (text != query.get()) found_.clear();
    query.set(text);
}

bool SettingsForm::stepBack() {
    const bool gaveUp = std::ranges::any_of(sections_, [](auto* one) { return one->stepBack(); });
    if (!gaveUp && !query.get().empty()) {
        search("");
        return true;
    }
    return gaveUp;
}

bool SettingsForm::refusesDictation() const {
    return keyboard_ == Keyboard::secretField ||
           (keyboard_ == Keyboard::rows && find("general.key-test") != nullptr);
}

bool SettingsForm::isInSight(std::size_t index) const {
    return isOpen_ && (!query.get().empty() || index == section.get());
}

/// Tells the pages which of them have come into sight and which have left it.
void SettingsForm::follow() {
    for (std::size_t i = 0; i < sections_.size(); ++i) {
        const bool inSight = isInSight(i);
        if (std::exchange(shown_.at(i), inSight) == inSight) continue;
        inSight ? sections_.at(i)->shown() : sections_.at(i)->hidden();
    }
}

void SettingsForm::refresh() {
    if (!isOpen_) return;
    auto rows = query.get().empty() ? sections_.at(section.get())->rows() : found();
    if (rows == rows_) {
        rows_ = std::move(rows);  // what they do may be another thing
        return;
    }
    rows_ = std::move(rows);
    changed_.notify();
}

/// All that is said of each row, folded. Rows whose texts stand in another language are the same rows.
std::vector<std::string> SettingsForm::wordsOf(SettingsSection& one, const SettingsRows& rows) const {
    std::vector<std::string> result;
    std::string above = one.title();
    for (const auto& row : rows) {
        std::string all = row.label + "\n" + row.description + "\n" + row.status;
        for (const auto& option : row.options) all += "\n" + option.label + "\n" + option.note;
        for (const auto& button : row.buttons) all += "\n" + button.label;
        if (row.kind == SettingsRow::Kind::heading) above = one.title() + "\n" + row.label;
        result.push_back(text::fold(all + "\n" + above + "\n" + words(all)));
    }
    return result;
}

SettingsRows SettingsForm::found() {
    const std::string folded = text::fold(query.get());
    const auto wanted = text::words(folded);
    SettingsRows result;
    for (auto* one : sections_) {
        const auto rows = one->rows();
        std::vector<std::vector<std::string>> known;
        for (const char* language : {"es", "en"}) {
            const InLanguage guard(language);
            known.push_back(wordsOf(*one, one->rows()));
        }
        bool isNamed = false;
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const auto has = [&](const std::vector<std::string>& of) {
                return i < of.size() &&
                       std::ranges::all_of(wanted, [&](auto word) { return of[i].contains(word); });
            };
            if (rows[i].kind == SettingsRow::Kind::heading) continue;
            if (!found_.contains(rows[i].id) && !std::ranges::any_of(known, has)) continue;
            found_.insert(rows[i].id);
            if (!std::exchange(isNamed, true))
                result.push_back(settingsrow::heading("found." + one->id(), one->title()));
            result.push_back(rows[i]);
        }
    }
    return result;
}

const SettingsRow* SettingsForm::find(const std::string& id) const {
    const auto row = std::ranges::find(rows_, id, &SettingsRow::id);
    return row == rows_.end() ? nullptr : &*row;
}

// What a row does may make others of the rows: it is done by a copy.

void SettingsForm::toggle(const std::string& row, bool on) {
    if (const auto* found = find(row)) auto(found->actions).toggle(on);
}

void SettingsForm::choose(const std::string& row, const std::string& option) {
    if (const auto* found = find(row)) auto(found->actions).choose(option);
}

void SettingsForm::edit(const std::string& row, const std::string& text) {
    draft_ = Draft{.row = row, .text = text};
    if (const auto* found = find(row)) auto(found->actions).edit(text);
}

void SettingsForm::commit(const std::string& row, const std::string& text) {
    draft_.reset();
    if (const auto* found = find(row)) auto(found->actions).commit(text);
}

void SettingsForm::settle() {
    if (const auto draft = std::exchange(draft_, std::nullopt)) commit(draft->row, draft->text);
}

void SettingsForm::press(const std::string& row, const std::string& button) {
    if (const auto* found = find(row)) auto(found->actions).press(button);
}

}  // namespace dorix
