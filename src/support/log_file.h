// The installer's log: one line of text an event, appended to a file in the install directory.
#ifndef VELNOR_SUPPORT_LOG_FILE_H
#define VELNOR_SUPPORT_LOG_FILE_H

#include <cstdint>

#include "support/product.h"

/// Appends "V1001:<UTC time>: [<level>] <sourceFile>:<functionName>(<line>): <message>" LF to the
/// file `logName` of the install directory. `level` is 0 (info), 1 (warn) or 2 (error); any other
/// number counts as 1. The message is `format` filled as by printf(3), of any length. Never fails
/// loudly: a null or empty text leaves code 1, no memory 4, a failed write 7, and the line is lost.
/// Callers that report a code of their own therefore set it after logging.
void _vn_writeToLogFile(const char* logName, const char* sourceFile, const char* functionName,
                        int32_t line, uint32_t level, const char* format, ...)
    __attribute__((format(printf, 6, 7)));

// One line of the installation, from the place of the call.
#define VN_LOG_INFO(function, ...) \
    _vn_writeToLogFile(velnor::kLogFileName, "Installer", function, __LINE__, 0, __VA_ARGS__)
#define VN_LOG_ERROR(function, ...) \
    _vn_writeToLogFile(velnor::kLogFileName, "Installer", function, __LINE__, 2, __VA_ARGS__)

#endif
