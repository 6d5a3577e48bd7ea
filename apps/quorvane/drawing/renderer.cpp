#include "apps/quorvane/drawing/renderer.h"

#include <cutils/properties.h>

#include <cstdlib>
#include <map>
#include <optional>

#include "quorvane/host/ParallaxView.h"
#include "software/SoftwareView.h"
#include "system/cores.h"
#include "system/error.h"
#include "system/graphics_devices.h"

namespace quorvane::app {
namespace {

std::shared_ptr<OffscreenContext> newContextFor(Renderer renderer) {
    std::unique_ptr<OffscreenContext> context;
    if (renderer == Renderer::kSoftware) return context;
    // A driver that would only draw in software takes 40 MB and as long as a frame to be asked.
    if (renderer == Renderer::kAuto && !hasGraphicsDevice() && !dumpsFrames()) return context;
    const Status made = OffscreenContext::create(&context);
    if (renderer == Renderer::kGl) {
        if (!made) throw Error(made.message());
        return context;
    }
    // The renderer that draws with OpenGL writes those files.
    if (made && context->drawsInSoftware() && !dumpsFrames()) context.reset();
    return context;
}

using Contexts = std::map<Renderer, std::shared_ptr<OffscreenContext>>;
std::optional<Contexts> g_warm;

}  // namespace

bool dumpsFrames() {
    char value[128] = {};
    return property_get("quorvane.debug", value, "0") > 0 && std::atoi(value) != 0;
}

std::shared_ptr<OffscreenContext> contextFor(Renderer renderer) {
    if (!g_warm) return newContextFor(renderer);
    auto found = g_warm->find(renderer);
    if (found == g_warm->end()) found = g_warm->emplace(renderer, newContextFor(renderer)).first;
    const std::shared_ptr<OffscreenContext>& context = found->second;
    if (context != nullptr && !context->isCurrent())
        if (const Status current = context->makeCurrent(); !current) throw Error(current.message());
    return context;
}

WarmContexts::WarmContexts() { g_warm.emplace(); }

WarmContexts::~WarmContexts() { g_warm.reset(); }

Status createView(const OffscreenContext* context, Size picture, int orientation, int samples,
                  std::unique_ptr<PhotoView>* view) {
    const auto code = static_cast<uint32_t>(orientation);
    if (context == nullptr) {
        // As where a driver draws on the processor: a larger picture shows more of the photo's detail than
        // samples do.
        if (samples == kAutoSamples) samples = 1;
        std::unique_ptr<SoftwareView> made;
        Status status =
            SoftwareView::create(picture.width, picture.height, {code, samples, usableCores()}, &made);
        *view = std::move(made);
        return status;
    }
    std::unique_ptr<ParallaxView> made;
    Status status = ParallaxView::create(picture.width, picture.height, ViewOptions{code, samples}, &made);
    *view = std::move(made);
    return status;
}

}  // namespace quorvane::app
