#include "media/picture/vips.h"

#include <dlfcn.h>
#include <gmodule.h>

#include <cstdlib>
#include <memory>
#include <string>

namespace quorvane::media {
namespace {

/// Loads libvips' reader of HEIC and AVIF, which many builds of it have in a module of its own next to the
/// library.
void loadHeifModule() {
    Dl_info library = {};
    if (dladdr(reinterpret_cast<const void*>(&vips_init), &library) == 0) return;
    const std::string path = library.dli_fname;
    const std::string folder = path.substr(0, path.rfind('/') + 1) + "vips-modules-" +
                               std::to_string(vips_version(0)) + "." + std::to_string(vips_version(1));
    GModule* module = g_module_open((folder + "/vips-heif." G_MODULE_SUFFIX).c_str(), G_MODULE_BIND_LAZY);
    if (module != nullptr) g_module_make_resident(module);
}

/// Without libvips' other modules. They read files that no photo comes in, with large libraries of their own:
/// to load them takes longer than to decode a small photo, and what is not there cannot be attacked.
bool initialiseVips() {
    constexpr char kHome[] = "VIPSHOME";
    if (std::getenv(kHome) != nullptr) return VIPS_INIT("quorvane") == 0;
    // It looks for modules below this folder.
    setenv(kHome, "/dev/null", 1);
    const bool started = VIPS_INIT("quorvane") == 0;
    unsetenv(kHome);
    if (started) loadHeifModule();
    return started;
}

}  // namespace

void startVips() {
    static const bool started = [] {
        const auto quiet = [](const gchar*, GLogLevelFlags, const gchar*, gpointer) {};
        g_log_set_handler("VIPS", static_cast<GLogLevelFlags>(G_LOG_LEVEL_MASK), quiet, nullptr);
        if (!initialiseVips()) throw Error("libvips does not start: " + vipsReason("version " VIPS_VERSION));
        // Every picture is read once; a cache would only hold on to memory.
        vips_cache_set_max(0);
        return true;
    }();
    static_cast<void>(started);
}

std::string vipsReason(const std::string& otherwise) {
    // In one step: the texts of all threads come together there.
    const std::unique_ptr<char, void (*)(void*)> copy(vips_error_buffer_copy(), g_free);
    std::string text = copy.get();
    const size_t end = text.find('\n');
    if (end != std::string::npos) text.resize(end);
    return text.empty() ? otherwise : text;
}

std::string takeBytes(VipsBlob* blob) {
    size_t size = 0;
    const void* bytes = vips_blob_get(blob, &size);
    std::string file(static_cast<const char*>(bytes), size);
    vips_area_unref(VIPS_AREA(blob));
    return file;
}

}  // namespace quorvane::media
