#include <cstdint>
#include <cstring>

#include "api/result/last_error.h"
#include "install/records.h"
#include "support/files.h"
#include "support/log_file.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/product.h"
#include "support/text.h"
#include "velnor/capi.h"
#include "velnor_deployment.h"

namespace velnor {
namespace {

constexpr char kFunction[] = "_vn_generateGuid";
constexpr uint32_t kGuidLength = 32;

// Follows the GUID at once; "%s" are the web and the support address.
constexpr char kHeaderFormat[] =
    "\n"
    "#\n"
    "# This file contains a random number that Velnor uses to uniquely identify\n"
    "# the Velnor Corvane Interface running on your computer.  This number\n"
    "# is known only by your computer and our servers, and there is no way to use\n"
    "# this number to obtain personally identifiable information about you.  This\n"
    "# number is not shared with customers, not sold to marketing firms, and is\n"
    "# not used for any reason other than to manage Corvane content delivery.\n"
    "#\n"
    "# If you delete this file or change this number, your ability to receive the\n"
    "# content you request on various sites cannot be assured, and the Velnor\n"
    "# Corvane Interface might behave in an unpredictable fashion.  Please do not\n"
    "# modify or remove this file.\n"
    "#\n"
    "# For more information about Velnor Technologies, the Corvane service, or other\n"
    "# details, please visit our website at:\n"
    "#\n"
    "#     %s\n"
    "#\n"
    "# Should you wish to discontinue your use of the Velnor Corvane Interface\n"
    "# you may uninstall the software normally as other system software on your\n"
    "# operating system or via the uninstall executable in this directory.\n"
    "#\n"
    "# If you have any questions that the above resources cannot address, please\n"
    "# contact us directly at %s.\n"
    "#\n"
    "# Thank you for using Velnor Corvane, we look forward to serving you.\n"
    "#\n"
    "#                                                    Velnor Client Engineering\n";

// 1394 bytes with addresses of 75 bytes together; only the addresses differ between deployments.
constexpr size_t kAddressesSize =
    sizeof deployment::kWebAddress - 1 + sizeof deployment::kSupportAddress - 1;
constexpr size_t kHeaderSize = sizeof kHeaderFormat - 1 - 2 * (sizeof "%s" - 1) + kAddressesSize;
static_assert(kHeaderSize - kAddressesSize == 1394 - 75);

enum class RandomBytes { Missing, Present };

RandomBytes readRandomBytes(uint8_t* bytes, size_t size) {
    const File random = openFile("/dev/urandom", "r");
    if (!random) {
        VN_LOG_ERROR(kFunction, "Could not open /dev/urandom");
        return RandomBytes::Missing;
    }
    // Unbuffered: a stream's buffer would draw some thousand bytes for the few that are needed.
    std::setvbuf(random.get(), nullptr, _IONBF, 0);
    if (std::fread(bytes, 1, size, random.get()) != size) {
        VN_LOG_ERROR(kFunction, "Short read from /dev/urandom");
    }
    return RandomBytes::Present;
}

// Appends: what stands in a guid.ini that is too short may be all that is left of an identity.
bool save(const char* path, const char* guid) {
    OwnedText header;
    OwnedText text;
    if (_vn_snprintf(header.out(), kHeaderSize + 1, kHeaderFormat, deployment::kWebAddress,
                     deployment::kSupportAddress) == 0) {
        return false;
    }
    const int32_t size = _vn_snprintf(text.out(), 0, "%s%s", guid, header.get());
    return size != 0 && _vn_writeFile(path, text.get(), static_cast<uint32_t>(size), "a") != 0;
}

void generate(const char* path, char* guid) {
    uint8_t bytes[kGuidLength / 2] = {};
    if (readRandomBytes(bytes, sizeof bytes) == RandomBytes::Missing) {
        std::memset(guid, '0', kGuidLength);
        return;
    }
    for (size_t i = 0; i < sizeof bytes; ++i) std::snprintf(guid + 2 * i, 3, "%02x", bytes[i]);
    if (save(path, guid)) {
        VN_LOG_INFO(kFunction, "Saved GUID \"%s\" to disk", guid);
    } else {
        VN_LOG_ERROR(kFunction, "Could not save GUID \"%s\" to disk", guid);
    }
}

}  // namespace
}  // namespace velnor

char* _vn_generateGuid() {
    velnor::OwnedText guid(static_cast<char*>(_vn_malloc(velnor::kGuidLength + 1)));
    if (!guid) {
        VN_LOG_ERROR(velnor::kFunction, "Could not allocate enough memory for guid. Exiting");
        _vn_setLastError(INSTALL_ERROR_INSUFFICIENTMEMORY);
        return nullptr;
    }
    char installPath[velnor::kPathSize];
    char path[velnor::kPathSize];
    if (_vn_getInstallPath(installPath, sizeof installPath) == 0 ||
        !velnor::formatPath(path, "%s/%s", installPath, velnor::kGuidFile)) {
        return nullptr;
    }
    std::memset(guid.get(), 0, velnor::kGuidLength + 1);
    if (_vn_readFile(path, guid.get(), velnor::kGuidLength, "r") == velnor::kGuidLength) {
        VN_LOG_INFO(velnor::kFunction, "GUID \"%s\" loaded from existing guid.ini file",
                    guid.get());
        return guid.release();
    }
    std::memset(guid.get(), 0, velnor::kGuidLength + 1);
    velnor::generate(path, guid.get());
    return guid.release();
}
