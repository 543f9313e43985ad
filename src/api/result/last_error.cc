#include "api/result/last_error.h"

#include <pthread.h>

#include <atomic>

#include "velnor/capi.h"

namespace velnor {
namespace {

// The thread-specific-data key of all threads' codes; 0 means that it is not yet created.
std::atomic<pthread_key_t> g_key{0};

// Makes a key whose number is not 0: glibc hands out 0 first, which has another meaning here.
int createNonZeroKey(pthread_key_t* key) {
    const int error = pthread_key_create(key, nullptr);
    if (error != 0 || *key != 0) return error;
    const int second = pthread_key_create(key, nullptr);
    pthread_key_delete(0);
    return second;
}

int ensureKey(pthread_key_t* key) {
    *key = g_key.load();
    if (*key != 0) return 0;
    pthread_key_t created = 0;
    const int error = createNonZeroKey(&created);
    if (error != 0) return error;
    pthread_key_t current = 0;
    if (g_key.compare_exchange_strong(current, created)) {
        *key = created;
    } else {
        pthread_key_delete(created);
        *key = current;
    }
    return 0;
}

}  // namespace
}  // namespace velnor

int _vn_setLastError(uint32_t code) {
    pthread_key_t key = 0;
    const int error = velnor::ensureKey(&key);
    if (error != 0) return error;
    // The slot of a key holds a pointer; the code goes in as one.
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    return pthread_setspecific(key, reinterpret_cast<void*>(static_cast<uintptr_t>(code)));
}

uint32_t _vn_getLastError() {
    const pthread_key_t key = velnor::g_key.load();
    if (key == 0) return INSTALL_ERROR_OK;
    return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(pthread_getspecific(key)));
}

uint32_t vn_getLastError(void) { return _vn_getLastError(); }
