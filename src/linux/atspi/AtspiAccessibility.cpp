#include "linux/atspi/AtspiAccessibility.h"

#include "base/text/Url.h"
#include "linux/atspi/AccessibilityBus.h"
#include "linux/atspi/AtspiClient.h"
#include "linux/atspi/FocusFinder.h"

#include <algorithm>
#include <utility>

namespace dorix {

namespace {

/// What the elements of one look at an application share.
struct AtspiLook {
    /// Weak: elements may outlive the adapter, and then give apiDisabled.
    std::weak_ptr<AccessibilityBus> bus;
    const Executor& clock;
    double deadline = 0;
    std::int32_t process = 0;
    AtspiAccessibility::WindowTitle windowTitle;
    AtspiAccessibility::FileOfTitle fileOfTitle;
};

using atspi::Role;
using atspi::State;
using Look = std::shared_ptr<const AtspiLook>;
template <typename T>
using Answer = std::expected<T, AXError>;
using Value = Answer<AXValue>;

AXUIElementRef applicationElement(Look look);

/// Of a longer text only this much is read.
constexpr std::int32_t maxCharacters = 100'000;

/// How far up a document is looked for from the focus.
constexpr int maxDocumentDepth = 40;

/// Stands in a text for an object within it, whose own text is elsewhere.
constexpr std::string_view embeddedObject = "\uFFFC";

std::unexpected<AXError> unsupported() { return std::unexpected(AXError::attributeUnsupported); }

template <typename T>
Value asValue(Answer<T> answer) {
    if (!answer) return std::unexpected(answer.error());
    return AXValue(std::move(*answer));
}

AtspiClient clientOf(const AtspiLook& look) {
    const auto bus = look.bus.lock();
    return {bus ? bus->connection() : nullptr, look.clock, look.deadline};
}

Answer<std::string> documentAddress(AtspiClient& client, const ObjectRef& document) {
    auto address = client.documentAttribute(document, "DocURL");
    if (!address) address = client.documentAttribute(document, "URI");
    return address;
}

/// A control, a page, anything below a window. What it is and which states it is in are asked once.
class ObjectElement final : public AXUIElement {
 public:
    ObjectElement(Look look, ObjectRef object) : look_(std::move(look)), object_(std::move(object)) {}

    Value copyAttributeValue(std::string_view attribute) const override {
        auto client = clientOf(*look_);
        if (attribute == "AXRole") return asValue(axRole(client));
        if (attribute == "AXSubrole") return subrole(client);
        if (attribute == "AXParent") return parent(client);
        if (attribute == "AXTitle") return asValue(client.name(object_));
        if (attribute == "AXValue") return asValue(value(client));
        if (attribute == "AXSelectedText") return asValue(selectedText(client));
        if (attribute == "AXTextBeforeCursor") return asValue(textBeforeCursor(client));
        if (attribute == "AXURL") return asValue(documentAddress(client, object_));
        return unsupported();
    }

    Answer<bool> isAttributeSettable(std::string_view attribute) const override {
        if (attribute != "AXValue") return false;
        auto client = clientOf(*look_);
        const auto states = statesOf(client);
        if (!states) return std::unexpected(states.error());
        return atspi::has(*states, State::editable) && !atspi::has(*states, State::readOnly);
    }

 private:
    Answer<Role> roleOf(AtspiClient& client) const {
        if (!role_) role_ = client.role(object_);
        return *role_;
    }

    Answer<atspi::StateSet> statesOf(AtspiClient& client) const {
        if (!states_) states_ = client.states(object_);
        return *states_;
    }

    Answer<std::string> axRole(AtspiClient& client) const {
        const auto role = roleOf(client);
        if (!role) return std::unexpected(role.error());
        const auto states = statesOf(client);
        if (!states) return std::unexpected(states.error());
        const auto name = atspi::axRole(*role, *states);
        const bool mayBeSearch = name == "AXTextField" && *role != Role::passwordText;
        if (mayBeSearch && client.isSearchField(object_).value_or(false)) return "AXSearchField";
        return std::string(name);
    }

    Value subrole(AtspiClient& client) const {
        const auto secret = isSecret(client);
        if (!secret) return std::unexpected(secret.error());
        if (!*secret) return unsupported();
        return AXValue(std::string("AXSecureTextField"));
    }

    Value parent(AtspiClient& client) const {
        auto parent = client.parent(object_);
        if (!parent) return std::unexpected(parent.error());
        return std::make_shared<ObjectElement>(look_, std::move(*parent));
    }

    Answer<bool> isSecret(AtspiClient& client) const {
        const auto role = roleOf(client);
        if (!role) return std::unexpected(role.error());
        return *role == Role::passwordText;
    }

    Answer<std::string> value(AtspiClient& client) const {
        const auto secret = isSecret(client);
        if (!secret) return std::unexpected(secret.error());
        if (*secret) return unsupported();
        const auto length = client.textLength(object_);
        if (!length) return std::unexpected(length.error());
        return client.text(object_, {0, std::min(*length, maxCharacters)});
    }

    /// Empty when nothing is selected. An error when it is not to be had this way, where a copy may do.
    Answer<std::string> selectedText(AtspiClient& client) const {
        const auto secret = isSecret(client);
        if (!secret) return std::unexpected(secret.error());
        // A secret is never read; as nothing selected it is not worth a copy either.
        if (*secret) return std::string();
        const auto range = client.selection(object_);
        if (!range && range.error() == AXError::noValue) {
            // What is selected in a page is often told by the paragraphs within only.
            return atspi::isDocument(*roleOf(client)) ? Answer<std::string>(unsupported()) : std::string();
        }
        if (!range) return std::unexpected(range.error());
        auto text = client.text(object_, *range);
        if (text && text->contains(embeddedObject)) return unsupported();
        return text;
    }

    /// A terminal's text is not the user's alone, and where there are objects in it their own text counts.
    Answer<std::string> textBeforeCursor(AtspiClient& client) const {
        const auto role = roleOf(client);
        if (!role) return std::unexpected(role.error());
        if (*role == Role::passwordText || *role == Role::terminal) return unsupported();
        const auto selected = client.selection(object_);
        const auto place = selected ? Answer<std::int32_t>(selected->start) : client.caret(object_);
        if (!place) return std::unexpected(place.error());
        if (*place == 0) return std::string();
        auto text = client.text(object_, {std::max(0, *place - 2), *place});
        if (text && (text->empty() || text->contains(embeddedObject))) return unsupported();
        return text;
    }

    const Look look_;
    const ObjectRef object_;
    mutable std::optional<Answer<Role>> role_;
    mutable std::optional<Answer<atspi::StateSet>> states_;
};

Answer<ObjectRef> applicationOf(AtspiClient& client, const AtspiLook& look) {
    const auto bus = look.bus.lock();
    if (!bus || !bus->connection()) return std::unexpected(AXError::apiDisabled);
    return bus->applications().find(client, look.process);
}

/// The finder for the application, handed to `find`; or the reason why there is none.
template <typename Find>
Answer<ObjectRef> findIn(AtspiClient& client, const AtspiLook& look, Find find) {
    const auto bus = look.bus.lock();
    if (!bus || !bus->connection()) return std::unexpected(AXError::apiDisabled);
    auto application = bus->applications().find(client, look.process);
    if (!application) return std::unexpected(application.error());
    FocusFinder finder(client, bus->focus(), bus->applications(), std::move(*application));
    return find(finder);
}

Answer<ObjectRef> focusIn(AtspiClient& client, const AtspiLook& look) {
    return findIn(client, look, [](FocusFinder& finder) { return finder.focusedElement(); });
}

/// The active window of the application. Its title is known to the window system even where the application
/// tells nothing.
class WindowElement final : public AXUIElement {
 public:
    WindowElement(Look look, Answer<ObjectRef> window) : look_(std::move(look)), window_(std::move(window)) {}

    Value copyAttributeValue(std::string_view attribute) const override {
        auto client = clientOf(*look_);
        if (attribute == "AXTitle") return asValue(title(client));
        if (attribute == "AXRole") return AXValue(std::string("AXWindow"));
        if (attribute == "AXParent") return applicationElement(look_);
        if (attribute == "AXDocument") return asValue(document(client));
        return unsupported();
    }

    Answer<bool> isAttributeSettable(std::string_view) const override { return false; }

 private:
    Answer<std::string> title(AtspiClient& client) const {
        auto name = window_ ? client.name(*window_) : Answer<std::string>(std::unexpected(window_.error()));
        if (name && !name->empty()) return name;
        if (auto title = look_->windowTitle(look_->process)) return std::move(*title);
        return name ? std::unexpected(AXError::noValue) : std::unexpected(name.error());
    }

    /// What the application tells, and otherwise what the desktop knows. A page is told by its own address.
    Answer<std::string> document(AtspiClient& client) const {
        auto told = documentAtFocus(client);
        if (told && !told->empty()) return told;
        if (const auto shown = title(client)) {
            if (const auto file = look_->fileOfTitle(*shown)) return fileURL(*file);
        }
        return told;
    }

    /// The address of the document that the focus is in.
    Answer<std::string> documentAtFocus(AtspiClient& client) const {
        auto object = focusIn(client, *look_);
        for (int depth = 0; object && depth < maxDocumentDepth; ++depth) {
            const auto role = client.role(*object);
            if (!role) return std::unexpected(role.error());
            if (atspi::isDocument(*role)) return documentAddress(client, *object);
            object = client.parent(*object);
        }
        return std::unexpected(object ? AXError::noValue : object.error());
    }

    const Look look_;
    const Answer<ObjectRef> window_;
};

class ApplicationElement final : public AXUIElement {
 public:
    explicit ApplicationElement(Look look) : look_(std::move(look)) {}

    Value copyAttributeValue(std::string_view attribute) const override {
        auto client = clientOf(*look_);
        if (attribute == "AXFocusedWindow") return focusedWindow(client);
        if (attribute == "AXFocusedUIElement") return focusedElement(client);
        if (attribute == "AXRole") return AXValue(std::string("AXApplication"));
        if (attribute == "AXTitle") return title(client);
        return unsupported();
    }

    Answer<bool> isAttributeSettable(std::string_view) const override { return false; }

 private:
    Value focusedWindow(AtspiClient& client) const {
        auto window = findIn(client, *look_, [](FocusFinder& finder) { return finder.activeWindow(); });
        if (!window && !look_->windowTitle(look_->process)) return std::unexpected(window.error());
        return std::make_shared<WindowElement>(look_, std::move(window));
    }

    Value focusedElement(AtspiClient& client) const {
        auto focus = focusIn(client, *look_);
        if (!focus) return std::unexpected(focus.error());
        return std::make_shared<ObjectElement>(look_, std::move(*focus));
    }

    Value title(AtspiClient& client) const {
        const auto application = applicationOf(client, *look_);
        if (!application) return std::unexpected(application.error());
        return asValue(client.name(*application));
    }

    const Look look_;
};

AXUIElementRef applicationElement(Look look) { return std::make_shared<ApplicationElement>(std::move(look)); }

}  // namespace

AtspiAccessibility::AtspiAccessibility(Executor& executor, FdWatcher& watcher, WindowTitle windowTitle,
                                       FileOfTitle fileOfTitle)
    : executor_(executor),
      windowTitle_(std::move(windowTitle)),
      fileOfTitle_(std::move(fileOfTitle)),
      bus_(std::make_shared<AccessibilityBus>(executor, watcher)) {
    bus_->connect();
}

AtspiAccessibility::~AtspiAccessibility() = default;

AXUIElementRef AtspiAccessibility::createApplication(std::int32_t processIdentifier, double budget) {
    // Events that wait in the socket count: the focus may have moved just now.
    if (auto* connection = bus_->connection()) connection->pump();
    bus_->connect();
    return applicationElement(std::make_shared<AtspiLook>(
        AtspiLook{bus_, executor_, executor_.now() + budget, processIdentifier, windowTitle_, fileOfTitle_}));
}

bool AtspiAccessibility::isAvailable() const { return bus_->connection() != nullptr && bus_->isEnabled(); }

void AtspiAccessibility::switchOn() { bus_->switchOn(); }

}  // namespace dorix
