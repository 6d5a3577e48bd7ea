#include <GLES2/gl2.h>

#include <cstdio>

#include "apps/quorvane/commands/command.h"
#include "quorvane/host/OffscreenContext.h"
#include "quorvane/version.h"
#include "system/error.h"

namespace quorvane::app {
namespace {

const char* glText(GLenum name) {
    const GLubyte* text = glGetString(name);
    return text != nullptr ? reinterpret_cast<const char*>(text) : "unknown";
}

int glInteger(GLenum name) {
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}

void info() {
    std::printf("quorvane %s\n", QUORVANE_VERSION);
    std::unique_ptr<OffscreenContext> context;
    const Status made = OffscreenContext::create(&context);
    if (!made) throw Error(made.message());
    GLint viewport[2] = {0, 0};
    glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);
    std::printf("context                %s\n", context->platform().c_str());
    std::printf("renderer               %s\n", glText(GL_RENDERER));
    std::printf("vendor                 %s\n", glText(GL_VENDOR));
    std::printf("version                %s\n", glText(GL_VERSION));
    std::printf("largest texture        %d\n", glInteger(GL_MAX_TEXTURE_SIZE));
    std::printf("largest renderbuffer   %d\n", glInteger(GL_MAX_RENDERBUFFER_SIZE));
    std::printf("largest viewport       %d x %d\n", viewport[0], viewport[1]);
    std::printf("vertex texture units   %d\n", glInteger(GL_MAX_VERTEX_TEXTURE_IMAGE_UNITS));
}

}  // namespace

Command infoCommand() {
    return {"info",
            "version, graphics driver and its limits",
            {{"the driver and its limits", "quorvane info"}},
            [](CommandLine*) -> std::function<void()> { return info; },
            false};
}

}  // namespace quorvane::app
