// Signing with the private key of the deployment that the tests are built with.
#ifndef TESTS_HARNESS_SIGNING_H
#define TESTS_HARNESS_SIGNING_H

#include <string>

namespace harness {

/// What goes into the signature's padding.
enum class Content {
    Digest,      // the raw SHA-1 digest: the right one
    DigestInfo,  // the digest in its DigestInfo wrapper
    Nothing,
};

/// Hex text of the signature over `data`.
std::string sign(const std::string& data, Content content = Content::Digest);

/// A signature by a key that was made just now.
std::string signWithForeignKey(const std::string& data);

}  // namespace harness

#endif
