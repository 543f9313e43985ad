#include "harness/harness.h"

#include <zlib.h>

namespace harness {

std::string gzip(const std::string& data, int level) {
    z_stream stream{};
    deflateInit2(&stream, level, Z_DEFLATED, 31, 9, Z_DEFAULT_STRATEGY);
    std::string out(deflateBound(&stream, data.size()) + 64, '\0');
    std::string in = data;
    stream.next_in = reinterpret_cast<Bytef*>(in.data());
    stream.avail_in = static_cast<uInt>(in.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    deflate(&stream, Z_FINISH);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    return out;
}

}  // namespace harness
