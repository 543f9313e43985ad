# The Mac backend: CFNetwork, SystemConfiguration and the keychain behind the headers of
# src/platform.
velnor_room(platform
  SOURCES platform/mac/http_stream_cfnetwork.cc platform/mac/keychain_security.cc
    platform/mac/proxied_cfnetwork.cc platform/mac/system_proxies_sc.cc
  USES velnor_support)
# For the linker of a program with the static library, besides the C++ runtime.
set(platform_needs "-framework CFNetwork" "-framework CoreFoundation" "-framework Security"
  "-framework SystemConfiguration")
set(runtime_needs -lc++)
target_link_libraries(velnor_platform PRIVATE ${platform_needs})
