// Challenges: texts that the client wants to find in a file before it does what it was asked.
#ifndef VELNOR_API_CHALLENGE_H
#define VELNOR_API_CHALLENGE_H

#include <cstdint>

#include "velnor/capi.h"

/// When `reply` holds a text under `url` that begins with "Challenge:", writes what follows into
/// the file at `challengeFilePath`, replacing it, and sends `requestPath` once more. The request is
/// sent also when the file could not be written; the client knows what to make of that.
///
/// Takes `reply` over. Returns it, or the reply to the repeated request, owned by the caller; null
/// when there was none, or no memory.
char* _vn_answerChallenge(ApiHandle* handle, int32_t cid, const char* url, const char* requestPath,
                          char* reply, const char* challengeFilePath);

#endif
