#include "media/picture/vips.h"

#include <memory>

namespace quorvane::media {

void startVips() {
    static const bool started = [] {
        const auto quiet = [](const gchar*, GLogLevelFlags, const gchar*, gpointer) {};
        g_log_set_handler("VIPS", static_cast<GLogLevelFlags>(G_LOG_LEVEL_MASK), quiet, nullptr);
        if (VIPS_INIT("quorvane") != 0)
            throw Error("libvips does not start: " + vipsReason("version " VIPS_VERSION));
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
