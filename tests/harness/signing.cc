#include "harness/signing.h"

#include "common/signing_key.h"

namespace harness {

std::string sign(const std::string& data) {
    return deploy::toHex(deploy::SigningKey::load(SIGNING_KEY).sign(data));
}

}  // namespace harness
