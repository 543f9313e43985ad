// Data in gzip format, as servers send it.
#ifndef TESTS_HARNESS_GZIP_H
#define TESTS_HARNESS_GZIP_H

#include <string>

namespace harness {

/// `data` in gzip format (RFC 1952), compressed at `level` (1 to 9).
std::string gzip(const std::string& data, int level = 9);

}  // namespace harness

#endif
