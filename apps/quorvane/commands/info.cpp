#include <GLES2/gl2.h>

#include <cstdio>
#include <memory>

#include "apps/quorvane/commands/command.h"
#include "apps/quorvane/terminal/text.h"
#include "media/depth/known_models.h"
#include "media/depth/model_session.h"
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

/// Which networks are known to suit --depth-model, and where what runs them was looked for.
void models() {
    std::printf(
        "Quorvane comes without a network and fetches none. These .onnx files have an interface that\n"
        "--depth-model understands. Sizes and licences are what their pages say; the weights themselves "
        "were\n"
        "not run when this was made.\n");
    for (const media::KnownModel& model : media::kKnownModels)
        std::printf("\n%s\n  files     %s\n  size      %s\n  licence   %s\n  gives     %s\n", model.name,
                    model.files, model.size, model.licence, model.gives);
    std::printf("\nONNX Runtime's package for Node is looked for in node_modules of\n");
    bool found = false;
    for (const media::RuntimePlace& place : media::runtimePlaces()) {
        const bool taken = place.holds_it && !found;
        found = found || place.holds_it;
        std::printf("  %-22s %s%s\n", place.what.c_str(),
                    place.folder.empty() ? "not known here" : printable(place.folder).c_str(),
                    taken            ? ": there, used"
                    : place.holds_it ? ": there"
                                     : "");
    }
    if (!found) std::printf("It is not there; %s installs it.\n", printable(media::runtimeCommand()).c_str());
}

void info(bool of_models) {
    if (of_models) return models();
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

std::function<void()> prepare(CommandLine* line) {
    const auto of_models = std::make_shared<bool>(false);
    line->flag(
        "--models", of_models.get(),
        "say instead which networks suit --depth-model, their size and licence, and where the runtime that "
        "they need was looked for");
    return [of_models] { info(*of_models); };
}

}  // namespace

Command infoCommand() {
    return {"info",
            "version, graphics driver and its limits; networks for --depth-model",
            {{"the driver and its limits", "quorvane info"},
             {"networks for --depth-model, and whether they can be run here", "quorvane info --models"}},
            prepare,
            false};
}

}  // namespace quorvane::app
