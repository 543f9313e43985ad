// What the leak checker is to overlook: GNUstep and its runtime keep what they once made, libproxy
// leaks what it has when an allocation of its own fails, and libsecret the 8 bytes of a weak
// reference for each item that a search finds. The last two are seen only in stacks that are
// unwound in full.
extern "C" {
const char* __asan_default_options();
const char* __lsan_default_suppressions();

const char* __asan_default_options() { return "fast_unwind_on_malloc=0"; }
const char* __lsan_default_suppressions() {
    return "leak:libobjc.so\nleak:libgnustep-base.so\nleak:libproxy.so\n"
           "leak:secret_item_new_for_dbus_path\n";
}
}
