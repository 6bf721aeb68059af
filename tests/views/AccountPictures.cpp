#include "views/AccountBench.h"
#include "views/Exhibit.h"
#include "views/Tokens.h"
#include "views/account/AccountWindow.h"

namespace dorix::testing {

namespace {

/// The account's window over a service that answers what the state is to show.
class AccountExhibit final : public Exhibit {
 public:
    explicit AccountExhibit(const Style& style) : Exhibit(style) { executor.runPosted(); }
    ~AccountExhibit() override { windows.clear(); }

    void answer(int status, const std::string& body) {
        executor.runPosted();
        account_.http.last().respond(status, body);
        executor.runPosted();
    }
    void signIn() {
        form.sendCode("marta.iglesias@velmar.example");
        answer(200, R"({"ok":true})");
        form.verify("123 456");
        answer(200, R"({"token":"t","profile":{"email":"marta.iglesias@velmar.example"}})");
    }
    void show() {
        auto window = std::make_unique<AccountWindow>(context, bench.settings, form);
        window->fit();
        hang(std::move(window), tokens::cardRadius);
    }

 private:
    AccountBench account_{executor, defaults};

 public:
    AccountForm& form = account_.form;
};

Picture picture(std::string name, void (*reach)(AccountExhibit&), std::vector<Style> styles) {
    return {.name = std::move(name),
            .show =
                [reach](const Style& style) {
                    auto exhibit = std::make_unique<AccountExhibit>(style);
                    reach(*exhibit);
                    exhibit->show();
                    return exhibit;
                },
            .styles = std::move(styles)};
}

}  // namespace

std::vector<Picture> accountPictures() {
    const Style light;
    const Style dark{.dark = true};
    const Style english{.language = "en"};
    return {picture("account-email", [](AccountExhibit&) {}, {light, {.composited = false}}),
            picture("account-code",
                    [](AccountExhibit& exhibit) {
                        exhibit.form.sendCode("marta.iglesias@velmar.example");
                        exhibit.answer(200, R"({"ok":true})");
                        exhibit.form.verify("12");
                    },
                    {light, dark}),
            picture("account-resent",
                    [](AccountExhibit& exhibit) {
                        exhibit.form.sendCode("marta.iglesias@velmar.example");
                        exhibit.answer(200, R"({"ok":true})");
                        exhibit.form.resendCode();
                        exhibit.answer(200, R"({"ok":true})");
                    },
                    {light}),
            picture("account-signed-in", [](AccountExhibit& exhibit) { exhibit.signIn(); }, {english}),
            picture("account-server", [](AccountExhibit& exhibit) { exhibit.form.chooseServer(); }, {dark})};
}

}  // namespace dorix::testing
