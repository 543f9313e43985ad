#include "common/signing_key.h"

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <cerrno>
#include <new>
#include <stdexcept>
#include <system_error>

#include "support/encodings.h"
#include "support/owned.h"

namespace deploy {
namespace {

constexpr unsigned kBits = 1024;

struct BioDeleter {
    void operator()(BIO* bio) const { BIO_free_all(bio); }
};
using Bio = std::unique_ptr<BIO, BioDeleter>;

struct ContextDeleter {
    void operator()(EVP_PKEY_CTX* context) const { EVP_PKEY_CTX_free(context); }
};
using Context = std::unique_ptr<EVP_PKEY_CTX, ContextDeleter>;

const unsigned char* bytes(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

unsigned char* bytes(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

void require(bool succeeded, const char* action) {
    if (succeeded) return;
    const char* reason = ERR_reason_error_string(ERR_get_error());
    throw std::runtime_error(std::string("cannot ") + action + ": " +
                             (reason != nullptr ? reason : "unknown OpenSSL error"));
}

std::string sha1(std::string_view data) {
    std::string digest(EVP_MAX_MD_SIZE, '\0');
    unsigned size = 0;
    require(EVP_Digest(data.data(), data.size(), bytes(digest), &size, EVP_sha1(), nullptr) == 1,
            "compute a SHA-1 digest");
    digest.resize(size);
    return digest;
}

}  // namespace

std::string toHex(std::string_view text) {
    const velnor::OwnedText hex(_vn_toHex(bytes(text), static_cast<uint32_t>(text.size())));
    if (!hex) throw std::bad_alloc();
    return hex.get();
}

void SigningKey::Deleter::operator()(evp_pkey_st* key) const { EVP_PKEY_free(key); }

SigningKey::SigningKey(evp_pkey_st* key) : key_(key) {}

SigningKey SigningKey::generate() {
    SigningKey key(EVP_RSA_gen(kBits));
    require(key.key_ != nullptr, "generate a key");
    return key;
}

SigningKey SigningKey::load(const std::string& path) {
    const Bio file(BIO_new_file(path.c_str(), "r"));
    if (!file) {
        throw std::system_error(errno, std::generic_category(), "cannot read the key " + path);
    }
    SigningKey key(PEM_read_bio_PrivateKey(file.get(), nullptr, nullptr, nullptr));
    if (!key.key_ || EVP_PKEY_get_base_id(key.key_.get()) != EVP_PKEY_RSA) {
        throw std::runtime_error(path +
                                 " holds no RSA private key in PEM form; give the file that "
                                 "vn-keygen made");
    }
    return key;
}

void SigningKey::writePrivate(const std::function<void(std::string_view)>& write) const {
    const Bio memory(BIO_new(BIO_s_secmem()));  // wiped when it goes
    require(memory && PEM_write_bio_PKCS8PrivateKey(memory.get(), key_.get(), nullptr, nullptr, 0,
                                                    nullptr, nullptr) == 1,
            "encode the private key");
    char* pem = nullptr;
    const long size = BIO_get_mem_data(memory.get(), &pem);
    write({pem, static_cast<size_t>(size)});
}

std::string SigningKey::publicDer() const {
    const int size = i2d_PUBKEY(key_.get(), nullptr);
    require(size > 0, "encode the public key");
    std::string der(static_cast<size_t>(size), '\0');
    unsigned char* end = bytes(der);
    require(i2d_PUBKEY(key_.get(), &end) == size, "encode the public key");
    return der;
}

std::string SigningKey::sign(std::string_view data) const {
    const std::string digest = sha1(data);
    const Context context(EVP_PKEY_CTX_new(key_.get(), nullptr));
    size_t size = 0;
    // No signature digest is set, because that is what would add the DigestInfo.
    require(context && EVP_PKEY_sign_init(context.get()) == 1 &&
                EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING) == 1 &&
                EVP_PKEY_sign(context.get(), nullptr, &size, bytes(digest), digest.size()) == 1,
            "prepare a signature");
    std::string signature(size, '\0');
    require(
        EVP_PKEY_sign(context.get(), bytes(signature), &size, bytes(digest), digest.size()) == 1,
        "sign");
    signature.resize(size);
    return signature;
}

}  // namespace deploy
