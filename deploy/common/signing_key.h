// The maker's RSA key pair, as the installer verifies with it.
#ifndef VELNOR_DEPLOY_COMMON_SIGNING_KEY_H
#define VELNOR_DEPLOY_COMMON_SIGNING_KEY_H

#include <functional>
#include <memory>
#include <string>
#include <string_view>

struct evp_pkey_st;

namespace deploy {

/// Lower-case hex text of `bytes`.
std::string toHex(std::string_view bytes);

class SigningKey {
  public:
    /// A new 1024-bit pair with the exponent 65537.
    static SigningKey generate();

    /// The private key in the PEM file `path`; asks for its passphrase when it has one. Throws
    /// std::runtime_error with a message for the user when there is no RSA key to be had.
    static SigningKey load(const std::string& path);

    /// Hands the private key, PEM text of PKCS #8 (RFC 5958), to `write`; no copy stays in memory.
    void writePrivate(const std::function<void(std::string_view pem)>& write) const;

    /// The public key: DER SubjectPublicKeyInfo (RFC 5280).
    std::string publicDer() const;

    /// The signature over `data`: its raw SHA-1 digest, PKCS #1 v1.5 type 1 padded (RFC 8017,
    /// section 8.2) without a DigestInfo, encrypted with the private key.
    std::string sign(std::string_view data) const;

  private:
    struct Deleter {
        void operator()(evp_pkey_st* key) const;
    };
    explicit SigningKey(evp_pkey_st* key);

    std::unique_ptr<evp_pkey_st, Deleter> key_;
};

}  // namespace deploy

#endif
