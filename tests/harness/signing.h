// Signing with the private key of the deployment that the tests are built with.
#ifndef TESTS_HARNESS_SIGNING_H
#define TESTS_HARNESS_SIGNING_H

#include <string>

namespace harness {

/// Hex text of the maker's signature over `data`.
std::string sign(const std::string& data);

}  // namespace harness

#endif
