// What the client says about itself.
#include <cstddef>

#include "api/handle.h"
#include "api/last_error.h"
#include "api/outcome.h"
#include "api/request_path.h"
#include "support/files.h"
#include "support/memory.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/text_copy.h"
#include "support/text_extraction.h"

using velnor::JSONReply;
using velnor::OwnedText;

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

namespace {

constexpr uint32_t kGuidLength = 32;

// The other members stay: they are overwritten when the record is filled the next time.
void release(ClientAttributes* attributes) {
    _vn_free(&attributes->executableversion);
    _vn_free(&attributes->configurationversion);
    _vn_free(&attributes->guid);
}

// From the installation and not from the client; empty without one.
OwnedText readGuid() {
    const OwnedText path(_vn_getInstallPathForFile("guid.ini"));
    char text[kGuidLength + 1] = {};
    if (!path || _vn_readFile(path.get(), text, kGuidLength, "r") == 0) return {};
    return velnor::copyText(text);
}

void fill(ClientAttributes* attributes, const JSONReply& reply) {
    attributes->isonline = reply.isTrue("isonline") ? 1 : 0;
    attributes->sharerate = reply.number("sharerate");
    attributes->downloadrate = reply.number("downloadrate");
    attributes->version = static_cast<int32_t>(reply.number("version"));
    attributes->acceptedeula = reply.isTrue("acceptedeula") ? 1 : 0;
    attributes->executableversion = reply.text("executableversion").release();
    attributes->configurationversion = reply.text("configurationversion").release();
}

// Notes whether memory was short before a missing guid.ini leaves a code of its own.
bool read(ClientAttributes* attributes, const char* reply) {
    fill(attributes, JSONReply(reply));
    if (_vn_getLastError() == INSTALL_ERROR_INSUFFICIENTMEMORY) return false;
    attributes->guid = readGuid().release();
    return _vn_getLastError() != INSTALL_ERROR_INSUFFICIENTMEMORY;
}

}  // namespace

int32_t vn_getAttributes(ApiHandle* handle, int32_t cid, ClientAttributes* attributes,
                         uint32_t reserved) {
    if (handle == nullptr || cid < 0 || attributes == nullptr || reserved != 0) {
        return velnor::refuseArguments();
    }
    _vn_setLastError(INSTALL_ERROR_INTERNAL);
    velnor::RequestPath request("getClientAttributes", cid);
    request.add("&complete");
    const OwnedText reply(_vn_makeAPIRequest(handle, cid, request.get()));
    if (!reply) return -1;
    release(attributes);
    if (read(attributes, reply.get())) return velnor::conclude(INSTALL_ERROR_OK);
    release(attributes);
    return -1;
}

int32_t vn_cleanAttributes(ApiHandle* handle, ClientAttributes* attributes, uint32_t reserved) {
    if (handle == nullptr || attributes == nullptr || reserved != 0) {
        return velnor::refuseArguments();
    }
    release(attributes);
    return 0;
}
