// A program that keeps a context and a view to its end: what the host needs for their destructors lives
// longer than any static. Exit code 0 where it ends as programs do, 77 without a graphics driver.

#include <quorvane/host/OffscreenContext.h>
#include <quorvane/host/ParallaxView.h>

#include <cstdio>

namespace {

// Made before anything of the host's, so destroyed after it.
std::unique_ptr<quorvane::OffscreenContext> s_global;

std::unique_ptr<quorvane::OffscreenContext>& local() {
    static std::unique_ptr<quorvane::OffscreenContext> context;
    return context;
}

}  // namespace

int main() {
    static std::unique_ptr<quorvane::ParallaxView> view;
    for (std::unique_ptr<quorvane::OffscreenContext>* context : {&s_global, &local()}) {
        const quorvane::Status made = quorvane::OffscreenContext::create(context);
        if (made) continue;
        std::fprintf(stderr, "NO GRAPHICS DRIVER, NOT TESTED: %s\n", made.message().c_str());
        return 77;
    }
    return quorvane::ParallaxView::create(64, 48, 4, &view) ? 0 : 1;
}
