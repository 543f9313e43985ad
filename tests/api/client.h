// A handle as tests use it.
#ifndef TESTS_API_CLIENT_H
#define TESTS_API_CLIENT_H

#include <gtest/gtest.h>

#include <string>

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
    EXPECT_TRUE(result == 0 || result == -1);
    const uint32_t code = vn_getLastError();
    EXPECT_EQ(result == 0, code == INSTALL_ERROR_OK);
    return code;
}

inline const char* const kUrl = "http://a.example/b c";
/// What follows a function's name in every request for kUrl.
inline std::string query(int32_t cid) {
    return "&cid=" + std::to_string(cid) +
           "&apiversion=capi_1.6.5&url=http%3a%2f%2fa.example%2fb%20c";
}

inline const char* const kNull = R"({"http://a.example/b c" : null})";
inline const char* const kAttributes = R"({"status":"COMPLETE"})";

/// A client's error text for kUrl.
inline std::string textReply(const std::string& text) {
    return R"({"http:\/\/a.example/b c":")" + text + "\"}";
}

}  // namespace test

#endif
