#include "api/result/result_codes.h"

#include <array>

#include "velnor/capi.h"

namespace velnor {
namespace {

struct ResultCode {
    const char* key;  // null: shown under the key for unknown errors
    const char* text;
};

constexpr std::array<ResultCode, 25> kResultCodes{{
    {"INSTALL_ERROR_OK", "Success"},
    {"INSTALL_ERROR_INVALIDARGUMENT", "Invalid Argument"},
    {"INSTALL_ERROR_NOTINSTALLED", "Not Installed"},
    {"INSTALL_ERROR_INTERNAL", "Internal Failure"},
    {"INSTALL_ERROR_INSUFFICIENTMEMORY", "Insufficient Memory"},
    {"INSTALL_ERROR_NETWORK", "Network Failure"},
    {"INSTALL_ERROR_INI", "client.ini Failure"},
    {"INSTALL_ERROR_DISK", "Disk I/O Failure"},
    {"INSTALL_ERROR_PLATFORM", "Platform-specific Failure"},
    {"INSTALL_ERROR_START", "Error Starting Client"},
    {"INSTALL_ERROR_STOP", "Error Stopping Client"},
    {"INSTALL_ERROR_JSON", "JSON Error"},
    {"INSTALL_ERROR_FILEINUSE", "File In Use"},
    // Without the prefix that every other key bears: the string tables have it so.
    {"FILE_NOT_FOUND", "File Not Found"},
    {"INSTALL_ERROR_CLIENT_NOTRESPONDING",
     "A resource on your machine (TCP port 9421) required by the Corvane client is either blocked "
     "or in use by another application. Please check your firewall and antivirus settings"},
    {"INSTALL_ERROR_DOWNLOAD_FAILURE", "Network Failure. Failed to download %s"},
    {"INSTALL_ERROR_DISK_WRITE", "Disk I/O Failure: Failed in writing contents of file %s to disk"},
    {"INSTALL_ERROR_INI_PATH_NOT_FOUND", "Client.ini Failure: %s path not found"},
    {"INSTALL_ERROR_INI_PARSE_ERR", "Client.ini Failure: Error in parsing path %s"},
    {"INSTALL_ERROR_DISK_PATH_OPEN", "Disk I/O Failure: Unable to open path %s"},
    {"INSTALL_ERROR_FILE_ACCESS", "Disk I/O Failure: Unable to seek to %s"},
    {"INSTALL_ERROR_VERIFICATION_FAILURE", "%s failed verification"},
    {nullptr, "File already downloaded"},
    {nullptr, "Running of periodic tasks is throttled"},
    {nullptr, "File download was reset"},
}};

static_assert(kResultKeyCount == 22);
static_assert(kResultCodes[kResultKeyCount - 1].key != nullptr);
static_assert(kResultCodes[kResultKeyCount].key == nullptr);

}  // namespace

const char* resultKey(uint32_t code) {
    return code < kResultKeyCount ? kResultCodes[code].key : "INSTALL_ERROR_UNKNOWN";
}

}  // namespace velnor

const char* vn_errorToString(uint32_t code) {
    return code < velnor::kResultCodes.size() ? velnor::kResultCodes[code].text : "Unknown Error";
}
