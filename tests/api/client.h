// A handle as tests use it, and the client's common replies.
#ifndef TESTS_API_CLIENT_H
#define TESTS_API_CLIENT_H

#include <gtest/gtest.h>

#include <string>

#include "api/scripted_client.h"
#include "velnor/capi.h"

namespace test {

/// A handle from its construction to its destruction; the client has to be there.
class Handle {
  public:
    Handle() { EXPECT_EQ(vn_initialize("Test/1.0", &handle_), 0); }
    ~Handle() { EXPECT_EQ(vn_uninitialize(handle_, 0), 0); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    operator ApiHandle*() const { return handle_; }

  private:
    ApiHandle* handle_ = nullptr;
};

/// What a call came to: -1 is replaced by the last error, which must not be 0 then.
inline uint32_t outcome(int32_t result) {
    EXPECT_EQ(result, vn_getLastError() == INSTALL_ERROR_OK ? 0 : -1);
    return vn_getLastError();
}

inline const char* const kUrl = "http://a.example/b c";
/// What follows a function's name in every request for kUrl with cid 7.
inline const std::string kQuery = "&cid=7&apiversion=capi_1.6.5&url=http%3a%2f%2fa.example%2fb%20c";

inline const std::string kAsk = "getFileAttributes" + kQuery + "&complete";

inline const char* const kNull = R"({"http://a.example/b c" : null})";
inline const char* const kAttributes = R"({"status":"COMPLETE"})";

/// A client that does what it is asked.
inline const ScriptedClient::Replies kWilling = {
    {"downloadFile", {kNull}},       {"getFileAttributes", {kAttributes}},
    {"pauseFile", {kNull}},          {"deleteFile", {kNull}},
    {"getClientAttributes", {"{}"}}, {"runPeriodicTasks", {R"({"result": null})"}},
};

/// A client's error text for kUrl.
inline std::string textReply(const std::string& text) {
    return R"({"http:\/\/a.example/b c":")" + text + "\"}";
}

}  // namespace test

#endif
