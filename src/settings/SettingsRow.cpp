#include "settings/SettingsRow.h"

#include <utility>

namespace dorix::settingsrow {

namespace {

SettingsRow row(SettingsRow::Kind kind, std::string id, std::string label, std::string description) {
    SettingsRow row;
    row.kind = kind;
    row.id = std::move(id);
    row.label = std::move(label);
    row.description = std::move(description);
    return row;
}

}  // namespace

using Kind = SettingsRow::Kind;

SettingsRow heading(std::string id, std::string label) {
    return row(Kind::heading, std::move(id), std::move(label), {});
}

SettingsRow toggle(std::string id, std::string label, std::string description, Observable<bool>& setting) {
    auto made = row(Kind::toggle, std::move(id), std::move(label), std::move(description));
    made.isOn = setting.get();
    made.actions.toggle = [&setting](bool on) { setting.set(on); };
    return made;
}

SettingsRow choice(std::string id, std::string label, std::string description,
                   std::vector<SettingsRow::Option> options, std::string chosen,
                   std::function<void(const std::string&)> choose) {
    auto made = row(Kind::choice, std::move(id), std::move(label), std::move(description));
    made.options = std::move(options);
    made.chosen = std::move(chosen);
    made.actions.choose = std::move(choose);
    return made;
}

SettingsRow field(std::string id, std::string label, std::string description,
                  Observable<std::string>& setting) {
    auto made = row(Kind::text, std::move(id), std::move(label), std::move(description));
    made.text = setting.get();
    made.actions.edit = [&setting](const std::string& text) { setting.set(text); };
    return made;
}

SettingsRow secret(std::string id, std::string label, std::string description, std::string text) {
    auto made = row(Kind::text, std::move(id), std::move(label), std::move(description));
    made.text = std::move(text);
    made.isSecret = true;
    return made;
}

SettingsRow item(std::string id, std::string label, std::string description) {
    return row(Kind::item, std::move(id), std::move(label), std::move(description));
}

}  // namespace dorix::settingsrow
