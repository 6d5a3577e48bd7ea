#include <GLES2/gl2.h>

#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "apps/quorvane/commands/command.h"
#include "apps/quorvane/terminal/text.h"
#include "media/depth/known_models.h"
#include "media/depth/model_session.h"
#include "quorvane/host/OffscreenContext.h"
#include "quorvane/version.h"
#include "system/error.h"

namespace quorvane::app {
namespace {

using Json = nlohmann::ordered_json;

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

/// What the graphics driver says of itself, in the words of both reports.
struct Driver {
    std::string context, renderer, vendor, version;
    int largest_texture, largest_renderbuffer, viewport_width, viewport_height, vertex_texture_units;
};

/// Throws Error where there is no driver.
Driver driver() {
    std::unique_ptr<OffscreenContext> context;
    const Status made = OffscreenContext::create(&context);
    if (!made) throw Error(made.message());
    GLint viewport[2] = {0, 0};
    glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);
    return {context->platform(),
            glText(GL_RENDERER),
            glText(GL_VENDOR),
            glText(GL_VERSION),
            glInteger(GL_MAX_TEXTURE_SIZE),
            glInteger(GL_MAX_RENDERBUFFER_SIZE),
            viewport[0],
            viewport[1],
            glInteger(GL_MAX_VERTEX_TEXTURE_IMAGE_UNITS)};
}

Json driverJson() {
    try {
        const Driver found = driver();
        return {{"context", found.context},
                {"renderer", found.renderer},
                {"vendor", found.vendor},
                {"version", found.version},
                {"largest_texture", found.largest_texture},
                {"largest_renderbuffer", found.largest_renderbuffer},
                {"largest_viewport", {{"width", found.viewport_width}, {"height", found.viewport_height}}},
                {"vertex_texture_units", found.vertex_texture_units}};
    } catch (const Error& error) {
        return {{"missing", error.what()}};
    }
}

Json modelsJson() {
    Json known = Json::array(), places = Json::array();
    for (const media::KnownModel& model : media::kKnownModels)
        known.push_back({{"name", model.name},
                         {"files", model.files},
                         {"size", model.size},
                         {"licence", model.licence},
                         {"gives", model.gives}});
    for (const media::RuntimePlace& place : media::runtimePlaces())
        places.push_back({{"what", place.what},
                          {"folder", place.folder.empty() ? Json() : Json(place.folder)},
                          {"holds_it", place.holds_it}});
    return {{"known", known}, {"runtime_places", places}, {"runtime_command", media::runtimeCommand()}};
}

void infoJson(bool of_models) {
    Json report = {{"version", QUORVANE_VERSION}};
    if (of_models)
        report["models"] = modelsJson();
    else
        report["driver"] = driverJson();
    std::printf("%s\n", report.dump(2, ' ', true, Json::error_handler_t::replace).c_str());
}

void infoText(bool of_models) {
    if (of_models) return models();
    std::printf("quorvane %s\n", QUORVANE_VERSION);
    const Driver found = driver();
    std::printf("context                %s\n", found.context.c_str());
    std::printf("renderer               %s\n", found.renderer.c_str());
    std::printf("vendor                 %s\n", found.vendor.c_str());
    std::printf("version                %s\n", found.version.c_str());
    std::printf("largest texture        %d\n", found.largest_texture);
    std::printf("largest renderbuffer   %d\n", found.largest_renderbuffer);
    std::printf("largest viewport       %d x %d\n", found.viewport_width, found.viewport_height);
    std::printf("vertex texture units   %d\n", found.vertex_texture_units);
}

struct InfoOptions {
    bool models = false;
    bool json = false;
};

std::function<void()> prepare(CommandLine* line) {
    const auto options = std::make_shared<InfoOptions>();
    line->flag(
        "--models", &options->models,
        "say instead which networks suit --depth-model, their size and licence, and where the runtime that "
        "they need was looked for");
    line->flag("--json", &options->json, "for programs; without a driver it says so and succeeds");
    return [options] { options->json ? infoJson(options->models) : infoText(options->models); };
}

}  // namespace

Command infoCommand() {
    return {"info",
            "version, graphics driver and its limits; networks for --depth-model",
            {{"the driver and its limits", "quorvane info"},
             {"the same for a program", "quorvane info --json"},
             {"networks for --depth-model, and whether they can be run here", "quorvane info --models"}},
            prepare,
            false};
}

}  // namespace quorvane::app
