// What the client's control interface is known by: where it listens, and the version that it is
// spoken to in.
#ifndef VELNOR_API_CLIENT_INTERFACE_H
#define VELNOR_API_CLIENT_INTERFACE_H

namespace velnor {

inline constexpr char kClientHost[] = "127.0.0.1";
inline constexpr int kClientPort = 9421;
inline constexpr char kApiVersion[] = "capi_1.6.5";

}  // namespace velnor

#endif
