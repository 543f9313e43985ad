// Passwords on Linux: the Secret Service, through libsecret, in the schema that desktops use for
// network passwords (attributes server, port, protocol and user).
#include <libsecret/secret.h>

#include <cstring>
#include <memory>

#include "platform/keychain.h"
#include "support/text_copy.h"

namespace velnor::platform {
namespace {

struct ItemsDeleter {
    void operator()(GList* items) const { g_list_free_full(items, g_object_unref); }
};
struct AttributesDeleter {
    void operator()(GHashTable* attributes) const { g_hash_table_unref(attributes); }
};
struct SecretDeleter {
    void operator()(SecretValue* value) const { secret_value_unref(value); }
};

using Items = std::unique_ptr<GList, ItemsDeleter>;

Items findItems(const char* server, uint16_t port, ProxyProtocol protocol) {
    return Items(secret_password_search_sync(
        SECRET_SCHEMA_COMPAT_NETWORK,
        static_cast<SecretSearchFlags>(SECRET_SEARCH_UNLOCK | SECRET_SEARCH_LOAD_SECRETS), nullptr,
        nullptr, "server", server, "port", static_cast<int>(port), "protocol",
        protocol == ProxyProtocol::Https ? "https" : "http", nullptr));
}

OwnedText copyIfAny(const char* text) { return text != nullptr ? copyText(text) : OwnedText(); }

}  // namespace

bool findProxyPassword(const char* server, uint16_t port, ProxyProtocol protocol,
                       Credentials* credentials) {
    const Items items = findItems(server, port, protocol);
    if (!items) return false;
    auto* item = SECRET_RETRIEVABLE(items->data);
    const std::unique_ptr<SecretValue, SecretDeleter> secret(
        secret_retrievable_retrieve_secret_sync(item, nullptr, nullptr));
    const std::unique_ptr<GHashTable, AttributesDeleter> attributes(
        secret_retrievable_get_attributes(item));
    if (!secret || !attributes) return false;
    credentials->user =
        copyIfAny(static_cast<const char*>(g_hash_table_lookup(attributes.get(), "user")));
    credentials->password = copyIfAny(secret_value_get_text(secret.get()));
    return credentials->user && credentials->password;
}

}  // namespace velnor::platform
