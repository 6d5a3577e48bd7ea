#include "apps/quorvane/drawing/stages.h"

#include <utility>

#include "apps/quorvane/drawing/clip_drawing.h"
#include "composition/geometry.h"
#include "media/picture/picture_file.h"
#include "system/cancel.h"

namespace quorvane::app {
namespace {

using Save = void (*)(const Stages&, int descriptor, const std::string& name);

template <auto kStage>
void save(const Stages& stages, int descriptor, const std::string& name) {
    media::savePng(stages.*kStage, descriptor, name);
}

struct StageFile {
    const char* name;
    Save save;
};

constexpr StageFile kFiles[] = {
    {"photo.png", save<&Stages::photo>}, {"depth.png", save<&Stages::depth>},
    {"guide.png", save<&Stages::guide>}, {"shaped.png", save<&Stages::shaped>},
    {"left.png", save<&Stages::left>},   {"rest.png", save<&Stages::rest>},
    {"right.png", save<&Stages::right>},
};

}  // namespace

Stages drawStages(const ViewOptions& options, const Talk& talk, media::RgbImage photo, media::Plane depth) {
    const Size size = pictureSize({photo.width, photo.height}, kLongestSide, false);
    View view(options, talk, size);
    PlannedInput input = view.plan(std::move(photo), depth, pathAround({}, motions().front(), 1.0, 1));
    view.upload(input);

    const auto picture = [&view](double x) {
        throwIfCancelled();
        view.draw({x, 0.0});
        return view.picture();
    };
    Stages stages;
    stages.guide = view.guide();
    stages.shaped = view.shapedDepth();
    stages.left = picture(-1.0);
    stages.rest = picture(0.0);
    stages.right = picture(1.0);
    stages.fov_scale = input.plan.fov_scale;
    stages.still_depth = depthAtDistance(input.plan.rotate_z_trans);
    stages.stretch = stretchOf(options, input.target, input.fit, input.plan);
    stages.depth.width = input.plan.depth_width;
    stages.depth.height = input.plan.depth_height;
    stages.depth.samples = std::move(input.plan.depth);
    stages.photo = std::move(input.photo);
    return stages;
}

const std::vector<std::string>& stageFiles() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> all;
        for (const StageFile& file : kFiles) all.emplace_back(file.name);
        return all;
    }();
    return names;
}

void addStages(const Stages& stages, PendingFolder* folder) {
    for (const StageFile& file : kFiles) {
        throwIfCancelled();
        folder->add(file.name,
                    [&](int descriptor, const std::string& name) { file.save(stages, descriptor, name); });
    }
}

}  // namespace quorvane::app
