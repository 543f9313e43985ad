// What LeakSanitizer must know of the keyring's library: every item that a search finds leaves the
// 8 bytes of a weak reference behind, within libsecret and GIO. Their callers show only when stacks
// are unwound in full.
extern "C" {

const char* __asan_default_options();
const char* __lsan_default_suppressions();

const char* __asan_default_options() { return "fast_unwind_on_malloc=0"; }
const char* __lsan_default_suppressions() { return "leak:secret_item_new_for_dbus_path\n"; }
}
