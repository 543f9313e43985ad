// Whole-file reads and writes.
#ifndef VELNOR_SUPPORT_FILES_H
#define VELNOR_SUPPORT_FILES_H

#include <cstdint>
#include <cstdio>
#include <memory>

#include "support/owned.h"

/// fopen(3). Every file of the library is opened here. Sets no code.
FILE* _vn_fopen(const char* path, const char* mode);

/// Reads up to `size` bytes of the file at `path`, opened with `mode`, into `buffer`, which is not
/// terminated. Returns the number of bytes read; 0 with code 7 when the file cannot be opened.
uint32_t _vn_readFile(const char* path, void* buffer, uint32_t size, const char* mode);

/// Writes `size` bytes of `buffer` to the file at `path`, opened with `mode` ("wb" replaces it,
/// "ab" appends). Returns 1 when every byte was written and the file was closed without an error,
/// else 0 with code 7; a partly written file stays as it is.
int32_t _vn_writeFile(const char* path, const void* buffer, uint32_t size, const char* mode);

namespace velnor {

struct FileCloser {
    void operator()(FILE* file) const { std::fclose(file); }
};

/// An open stream, closed when its owner goes.
using File = std::unique_ptr<FILE, FileCloser>;

/// Opens a stream with _vn_fopen; empty when that fails.
inline File openFile(const char* path, const char* mode) { return File(_vn_fopen(path, mode)); }

/// Reads up to `size` bytes from the stream's start and puts a NUL byte behind them; less when the
/// file is shorter. Empty with code 4 when there is no memory.
OwnedText readText(FILE* file, uint32_t size);

/// Writes `size` bytes behind the end of a file that was opened for appending, sees them on the
/// disk, and closes the stream. When they did not get there it returns false, and the file gets its
/// old length back.
bool extendAndClose(File file, const void* buffer, size_t size);

/// Sees what was written on the disk and closes the stream. True only when both succeeded.
bool closeDurably(File file);

/// Writes `size` bytes and closes the stream. True only when both succeeded: a full disk often
/// shows no sooner than at the close.
bool writeAndClose(File file, const void* buffer, size_t size);

}  // namespace velnor

#endif
