// Passwords on Linux: the Secret Service, through libsecret, in the schema that desktops use for
// network passwords (attributes server, port, protocol and user).
#include <libsecret/secret.h>

#include <cstring>
#include <exception>
#include <memory>
#include <utility>

#include "platform/keychain.h"
#include "platform/linux/bounded_call.h"
#include "support/text.h"

namespace velnor::platform {
namespace {

// A person may be typing the keyring's password meanwhile.
constexpr std::chrono::minutes kLimit{2};

struct ItemsDeleter {
    void operator()(GList* items) const { g_list_free_full(items, g_object_unref); }
};
struct AttributesDeleter {
    void operator()(GHashTable* attributes) const { g_hash_table_unref(attributes); }
};
struct SecretDeleter {
    void operator()(SecretValue* value) const { secret_value_unref(value); }
};

struct CancellableDeleter {
    void operator()(GCancellable* cancellable) const { g_object_unref(cancellable); }
};

using Items = std::unique_ptr<GList, ItemsDeleter>;

OwnedText copyIfAny(const char* text) { return text != nullptr ? copyText(text) : OwnedText(); }

// One look-up, which outlives its caller when the service does not answer.
struct Search {
    OwnedText server;
    int port;
    const char* protocol;
    std::unique_ptr<GCancellable, CancellableDeleter> cancellable{g_cancellable_new()};
    Credentials found;

    void run() {
        constexpr int kFlags = SECRET_SEARCH_UNLOCK | SECRET_SEARCH_LOAD_SECRETS;
        const Items items(secret_password_search_sync(
            SECRET_SCHEMA_COMPAT_NETWORK, static_cast<SecretSearchFlags>(kFlags), cancellable.get(),
            nullptr, "server", server.get(), "port", port, "protocol", protocol, nullptr));
        if (!items) return;
        auto* item = SECRET_RETRIEVABLE(items->data);
        const std::unique_ptr<SecretValue, SecretDeleter> secret(
            secret_retrievable_retrieve_secret_sync(item, cancellable.get(), nullptr));
        const std::unique_ptr<GHashTable, AttributesDeleter> attributes(
            secret_retrievable_get_attributes(item));
        if (!secret || !attributes) return;
        found.user =
            copyIfAny(static_cast<const char*>(g_hash_table_lookup(attributes.get(), "user")));
        found.password = copyIfAny(secret_value_get_text(secret.get()));
    }
};

}  // namespace

bool findProxyPassword(const char* server, uint16_t port, ProxyProtocol protocol,
                       Credentials* credentials) try {
    const auto search = std::make_shared<Search>();
    search->server = copyText(server);
    search->port = port;
    search->protocol = protocol == ProxyProtocol::Https ? "https" : "http";
    if (!search->server) return false;
    const Call call = runWithin(kLimit, [search] { search->run(); });
    if (call == Call::TimedOut) g_cancellable_cancel(search->cancellable.get());
    if (call != Call::Done) return false;
    *credentials = std::move(search->found);
    return credentials->user && credentials->password;
} catch (const std::exception&) {
    return false;
}

}  // namespace velnor::platform
