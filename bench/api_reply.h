// One exchange of the client API, the same for both sides of its benchmarks.
#ifndef BENCH_API_REPLY_H
#define BENCH_API_REPLY_H

#include <cstdint>

namespace bench {

inline constexpr char kApiUrl[] = "https://downloads.example/releases/1.6.5/archive.zip";
inline constexpr char kApiUrlEncoded[] =
    "https%3a%2f%2fdownloads.example%2freleases%2f1.6.5%2farchive.zip";
inline constexpr int64_t kApiSize = 268435456;

/// What the client says of a download.
inline constexpr char kApiReply[] =
    R"({"status":"DOWNLOADING","path":"/Users/somebody/Downloads/archive.zip","size":268435456,)"
    R"("uniquerecv":118112256,"progress":44,"downloadrate":10485760,"errorstring":"",)"
    R"("error":0,"suberror":0,"verifiedcontentmd5":"0123456789abcdef0123456789abcdef"})";

}  // namespace bench

#endif
