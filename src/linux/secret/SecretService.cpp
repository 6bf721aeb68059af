#include "linux/secret/SecretService.h"

#include <libsecret/secret.h>

#include <chrono>
#include <stdexcept>
#include <utility>

namespace dorix {

namespace {

constexpr unsigned patience = 3000;  // milliseconds, for all that a call asks
constexpr double rest = 60;          // seconds

struct Release {
    void operator()(GMainContext* context) const { g_main_context_unref(context); }
    void operator()(GMainLoop* loop) const { g_main_loop_unref(loop); }
    void operator()(GHashTable* table) const { g_hash_table_unref(table); }
    void operator()(SecretValue* value) const { secret_value_unref(value); }
    void operator()(GError* error) const { g_error_free(error); }
    void operator()(GList* objects) const { g_list_free_full(objects, g_object_unref); }
    void operator()(void* object) const { g_object_unref(object); }
};
template <typename T>
using Owned = std::unique_ptr<T, Release>;

/// It is there, but cannot do this now.
class Refusal : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};
/// It is not there, or does not answer.
class Failure : public std::runtime_error {
 public:
    explicit Failure(const GError& error)
        : std::runtime_error(error.message),
          isSilence(g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_CANCELLED) != FALSE) {}

    const bool isSilence;  // it took too long
};

const SecretSchema* schema() {
    static const auto* const made =
        secret_schema_new("es.pelmora.dorix", SECRET_SCHEMA_NONE, "service", SECRET_SCHEMA_ATTRIBUTE_STRING,
                          "account", SECRET_SCHEMA_ATTRIBUTE_STRING, nullptr);
    return made;
}

Owned<GHashTable> attributes(const std::string& service, const std::string& account) {
    return Owned<GHashTable>(
        secret_attributes_build(schema(), "service", service.c_str(), "account", account.c_str(), nullptr));
}

double steadyNow() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

SecretItem* itemOf(const GList* entry) { return static_cast<SecretItem*>(entry->data); }

}  // namespace

struct SecretService::Connection {
    Connection() = default;
    ~Connection() {
        service.reset();
        // What the library leaves to be done later holds the bus, and one that is held stays closed for all
        // once it has gone.
        while (g_main_context_iteration(context.get(), FALSE)) continue;
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // The objects below tell their news in this context; it is gone through during calls.
    const Owned<GMainContext> context{g_main_context_new()};
    Owned<GDBusConnection> bus;
    Owned<::SecretService> service;
};

/// What a call asks of the library, one thing after the other, until its time is up. For as long as it lives
/// the library's answers come in the connection's context.
class SecretService::Call {
 public:
    explicit Call(GMainContext* context) : context_(context), loop_(g_main_loop_new(context, FALSE)) {
        g_main_context_push_thread_default(context_);
        g_source_set_callback(timeout_, &Call::onTimeout, cancellable_.get(), nullptr);
        g_source_attach(timeout_, context_);
    }
    ~Call() {
        g_source_destroy(timeout_);
        g_source_unref(timeout_);
        g_main_context_pop_thread_default(context_);
    }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    /// `begin` gets what the library's functions take last, `finish` the result and a place for an error.
    template <typename Begin, typename Finish>
    auto wait(Begin begin, Finish finish) {
        begin(cancellable_.get(), &Call::onResult, this);
        g_main_loop_run(loop_.get());
        const Owned<GAsyncResult> result(std::exchange(result_, nullptr));
        GError* error = nullptr;
        auto value = finish(result.get(), &error);
        if (error != nullptr) throw Failure(*Owned<GError>(error));
        return value;
    }

 private:
    static gboolean onTimeout(void* cancellable) {
        g_cancellable_cancel(static_cast<GCancellable*>(cancellable));
        return G_SOURCE_REMOVE;
    }
    static void onResult(GObject*, GAsyncResult* result, void* call) {
        auto& self = *static_cast<Call*>(call);
        self.result_ = static_cast<GAsyncResult*>(g_object_ref(result));
        g_main_loop_quit(self.loop_.get());
    }

    GMainContext* const context_;
    const Owned<GMainLoop> loop_;
    const Owned<GCancellable> cancellable_{g_cancellable_new()};
    GSource* const timeout_ = g_timeout_source_new(patience);
    GAsyncResult* result_ = nullptr;
};

namespace {

/// The items that are filed so, those that are not locked with their secrets.
template <typename Call>
Owned<GList> search(Call& call, ::SecretService* service, GHashTable* filed) {
    return Owned<GList>(call.wait(
        [&](auto... last) {
            // NOLINTNEXTLINE(clang-analyzer-optin.core.EnumCastOutOfRange): a C enum of bits
            constexpr auto flags = SecretSearchFlags(SECRET_SEARCH_ALL | SECRET_SEARCH_LOAD_SECRETS);
            secret_service_search(service, schema(), filed, flags, last...);
        },
        [&](auto* result, auto** error) { return secret_service_search_finish(service, result, error); }));
}

/// The collection that new secrets go to.
template <typename Call>
Owned<SecretCollection> openCollection(Call& call, ::SecretService* service) {
    Owned<SecretCollection> collection(call.wait(
        [&](auto... last) {
            secret_collection_for_alias(service, SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE, last...);
        },
        [](auto* result, auto** error) { return secret_collection_for_alias_finish(result, error); }));
    if (!collection) throw Refusal("no hay ninguna colección");
    if (secret_collection_get_locked(collection.get())) throw Refusal("la colección está bloqueada");
    return collection;
}

}  // namespace

SecretService::SecretService(std::string service) : service_(std::move(service)) {}

SecretService::~SecretService() = default;

SecretService::Result<void> SecretService::run(const std::function<void(Call&)>& work) {
    if (steadyNow() < restsUntil_) return std::unexpected(whyItRests_);
    try {
        if (!connection_) connection_ = std::make_unique<Connection>();
        Call call(connection_->context.get());
        if (!connection_->service) connect(call);
        isAbsent_ = false;
        work(call);
        return {};
    } catch (const Refusal& refusal) {
        return std::unexpected(refusal.what());
    } catch (const Failure& failure) {
        connection_.reset();
        restsUntil_ = steadyNow() + rest;
        whyItRests_ = failure.what();
        isAbsent_ = !failure.isSilence;
        return std::unexpected(whyItRests_);
    }
}

void SecretService::connect(Call& call) {
    connection_->bus.reset(
        call.wait([](auto... last) { g_bus_get(G_BUS_TYPE_SESSION, last...); },
                  [](auto* result, auto** error) { return g_bus_get_finish(result, error); }));
    // The program outlives its bus.
    g_dbus_connection_set_exit_on_close(connection_->bus.get(), FALSE);
    connection_->service.reset(call.wait(
        [](auto... last) {
            secret_service_open(SECRET_TYPE_SERVICE, nullptr, SECRET_SERVICE_OPEN_SESSION, last...);
        },
        [](auto* result, auto** error) { return secret_service_open_finish(result, error); }));
}

SecretService::Result<std::optional<std::string>> SecretService::read(const std::string& account) {
    std::optional<std::string> found;
    const auto done = run([&](Call& call) {
        const auto items = search(call, connection_->service.get(), attributes(service_, account).get());
        bool isLocked = false;
        for (const auto* entry = items.get(); entry != nullptr && !found; entry = entry->next) {
            const Owned<SecretValue> value(secret_item_get_secret(itemOf(entry)));
            const char* text = value ? secret_value_get_text(value.get()) : nullptr;
            if (text != nullptr && g_utf8_validate(text, -1, nullptr)) found = text;
            isLocked = isLocked || secret_item_get_locked(itemOf(entry));
        }
        if (!found && isLocked) throw Refusal("la colección está bloqueada");
    });
    if (!done) return std::unexpected(done.error());
    return found;
}

SecretService::Result<void> SecretService::save(const std::string& account, const std::string& value) {
    return run([&](Call& call) {
        const auto collection = openCollection(call, connection_->service.get());
        const auto filed = attributes(service_, account);
        const auto label = "DORIX: " + account;
        const Owned<SecretValue> secret(
            secret_value_new(value.c_str(), static_cast<gssize>(value.size()), "text/plain"));
        const Owned<SecretItem> item(call.wait(
            [&](auto... last) {
                secret_item_create(collection.get(), schema(), filed.get(), label.c_str(), secret.get(),
                                   SECRET_ITEM_CREATE_REPLACE, last...);
            },
            [](auto* result, auto** error) { return secret_item_create_finish(result, error); }));
    });
}

SecretService::Result<void> SecretService::remove(const std::string& account) {
    return run([&](Call& call) {
        const auto items = search(call, connection_->service.get(), attributes(service_, account).get());
        for (const auto* entry = items.get(); entry != nullptr; entry = entry->next) {
            auto* item = itemOf(entry);
            if (secret_item_get_locked(item)) throw Refusal("la colección está bloqueada");
            call.wait(
                [&](auto... last) { secret_item_delete(item, last...); },
                [&](auto* result, auto** error) { return secret_item_delete_finish(item, result, error); });
        }
    });
}

}  // namespace dorix
