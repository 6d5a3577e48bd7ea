// Linked into every program of a sanitized build: which leaks and races are other libraries' own.

#include <dlfcn.h>

// Mesa's loader unloads the driver at the end, and what the driver still holds is then reported as leaked by
// an unknown module. It stays loaded, and so reachable.
extern "C" int dlclose(void*) { return 0; }

// The leak check of these versions now and then crashes on the thread-local storage of a thread that is just
// ending, which the driver and libvips have; it is told not to look there.
extern "C" const char* __asan_default_options() { return "intercept_tls_get_addr=0"; }

extern "C" const char* __lsan_default_suppressions() {
    return
        // Keeps its configuration until the process ends; reached by the labels of the stages sheet.
        "leak:libfontconfig\n"
        // Pango's font maps and GLib's type system live as long as the process, by design.
        "leak:libpango\n"
        "leak:libgobject\n"
        "leak:libglib\n"
        // The HEIC encoder, which only tests use, to make pictures.
        "leak:libx265\n"
        // Mesa's software driver loses some blocks of a context that ends with every state of an app's set.
        // What we leave alive in a context is counted by the tests' GL recorder.
        "leak:swrast_dri\n"
        // The AV1 decoder loses a small block when libheif gives it no data.
        "leak:libdav1d\n";
}

// Libraries that are not built for the thread sanitizer: it does not see their locks and takes what they hand
// from one of their threads to another for races.
extern "C" const char* __tsan_default_suppressions() {
    return "race:libvips\nrace:libpng16\nrace:libz.so\nrace:libglib\nrace:libgobject\n"
           "race:swrast_dri\nrace:libLLVM\nrace:libEGL\nrace:libGLES\nrace:libglapi\n";
}
