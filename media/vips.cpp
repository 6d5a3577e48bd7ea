#include "vips.h"

namespace quorvane::media {

void startVips() {
    static const bool started = [] {
        const auto quiet = [](const gchar*, GLogLevelFlags, const gchar*, gpointer) {};
        g_log_set_handler("VIPS", static_cast<GLogLevelFlags>(G_LOG_LEVEL_MASK), quiet, nullptr);
        if (VIPS_INIT("quorvane") != 0) throw Error("libvips does not start: " + vipsReason());
        // Every picture is read once; a cache would only hold on to memory.
        vips_cache_set_max(0);
        return true;
    }();
    static_cast<void>(started);
}

std::string vipsReason() {
    std::string text = vips_error_buffer();
    vips_error_clear();
    const size_t end = text.find('\n');
    if (end != std::string::npos) text.resize(end);
    return text.empty() ? "unknown reason" : text;
}

}  // namespace quorvane::media
