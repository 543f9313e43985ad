#include <cstddef>

#include "api/handle.h"
#include "api/outcome.h"
#include "api/request_path.h"
#include "api/result/last_error.h"
#include "support/files.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/product.h"
#include "support/text.h"
#include "support/text_extraction.h"

// The layout is known to programs that are already built.
static_assert(sizeof(void*) != 8 ||
              (sizeof(ClientAttributes) == 64 && offsetof(ClientAttributes, reserved) == 0 &&
               offsetof(ClientAttributes, isonline) == 8 &&
               offsetof(ClientAttributes, sharerate) == 16 &&
               offsetof(ClientAttributes, downloadrate) == 24 &&
               offsetof(ClientAttributes, version) == 32 &&
               offsetof(ClientAttributes, acceptedeula) == 36 &&
               offsetof(ClientAttributes, executableversion) == 40 &&
               offsetof(ClientAttributes, configurationversion) == 48 &&
               offsetof(ClientAttributes, guid) == 56));

namespace velnor {
namespace {

constexpr uint32_t kGuidLength = 32;

// The other members stay: they are overwritten when the record is filled the next time.
void release(ClientAttributes* attributes) {
    _vn_free(&attributes->executableversion);
    _vn_free(&attributes->configurationversion);
    _vn_free(&attributes->guid);
}

// From the installation and not from the client; absent without one.
Found readGuid(OwnedText* guid) {
    const OwnedText path(_vn_getInstallPathForFile(kGuidFile));
    if (!path) return Found::NoMemory;
    char text[kGuidLength + 1] = {};
    if (_vn_readFile(path.get(), text, kGuidLength, "r") == 0) return Found::Absent;
    *guid = copyText(text);
    return *guid ? Found::Here : Found::NoMemory;
}

// False when there is no memory for a text.
bool fill(ClientAttributes* attributes, const JSONReply& reply) {
    OwnedText executable;
    OwnedText configuration;
    OwnedText guid;
    if (reply.text("executableversion", &executable) == Found::NoMemory ||
        reply.text("configurationversion", &configuration) == Found::NoMemory ||
        readGuid(&guid) == Found::NoMemory) {
        return false;
    }
    attributes->isonline = reply.isTrue("isonline") ? 1 : 0;
    attributes->sharerate = reply.number("sharerate");
    attributes->downloadrate = reply.number("downloadrate");
    attributes->version = static_cast<int32_t>(reply.number("version"));
    attributes->acceptedeula = reply.isTrue("acceptedeula") ? 1 : 0;
    attributes->executableversion = executable.release();
    attributes->configurationversion = configuration.release();
    attributes->guid = guid.release();
    return true;
}

}  // namespace
}  // namespace velnor

int32_t vn_getAttributes(ApiHandle* handle, int32_t cid, ClientAttributes* attributes,
                         uint32_t reserved) {
    if (handle == nullptr || cid < 0 || attributes == nullptr || reserved != 0) {
        return velnor::refuseArguments();
    }
    _vn_setLastError(INSTALL_ERROR_INTERNAL);
    velnor::RequestPath request("getClientAttributes", cid);
    request.add("&complete");
    const auto reply = velnor::ask(handle, cid, request.get());
    if (!reply) return -1;
    velnor::release(attributes);
    if (velnor::fill(attributes, reply->json) && !reply->json.outOfMemory()) {
        return velnor::conclude(INSTALL_ERROR_OK);
    }
    velnor::release(attributes);
    return velnor::conclude(INSTALL_ERROR_INSUFFICIENTMEMORY);
}

int32_t vn_cleanAttributes(ApiHandle* handle, ClientAttributes* attributes, uint32_t reserved) {
    if (handle == nullptr || attributes == nullptr || reserved != 0) {
        return velnor::refuseArguments();
    }
    velnor::release(attributes);
    return 0;
}
