# The Linux backend: libcurl, libproxy and libsecret behind the headers of src/platform.
pkg_check_modules(CURL REQUIRED IMPORTED_TARGET libcurl>=7.87)
pkg_check_modules(PROXY REQUIRED IMPORTED_TARGET libproxy-1.0)
pkg_check_modules(SECRET REQUIRED IMPORTED_TARGET libsecret-1)

velnor_room(platform
  SOURCES platform/linux/bounded_call.cc platform/linux/curl_handle.cc
    platform/linux/http_stream_curl.cc platform/linux/keychain_libsecret.cc
    platform/linux/proxy_address.cc platform/linux/system_proxies_libproxy.cc
  USES velnor_support)
target_link_libraries(velnor_platform PRIVATE PkgConfig::CURL PkgConfig::PROXY PkgConfig::SECRET
  OpenSSL::SSL)
# The same, and the C++ runtime, for the linker of a program with the static library.
set(platform_needs ${CURL_LDFLAGS} ${PROXY_LDFLAGS} ${SECRET_LDFLAGS} -lssl)
set(runtime_needs -lstdc++ -pthread)
