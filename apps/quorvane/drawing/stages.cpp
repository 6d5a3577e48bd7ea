#include "apps/quorvane/drawing/stages.h"

#include <algorithm>
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

/// The farthest places of a motion, from side to side or, if it only goes up and down, there.
struct Ends {
    Position first, last;
    bool upright = false;
};

Ends endsOf(const std::vector<Position>& path) {
    const auto less_right = [](const Position& a, const Position& b) { return a.x < b.x; };
    const auto less_high = [](const Position& a, const Position& b) { return a.y < b.y; };
    const auto [left, right] = std::minmax_element(path.begin(), path.end(), less_right);
    const auto [low, high] = std::minmax_element(path.begin(), path.end(), less_high);
    if (right->x - left->x >= high->y - low->y) return {*left, *right, false};
    return {*low, *high, true};
}

}  // namespace

Stages drawStages(const ViewOptions& options, const PictureOptions& asked, const Talk& talk,
                  media::RgbImage photo, const media::Plane& depth) {
    const Size size = sizeOf(asked, {photo.width, photo.height}, kLongestSide, false);
    const std::vector<Position> path = pathAround({}, asked.motion, asked.amount, 1);
    View view(options, talk, size);
    PlannedInput input = view.plan(std::move(photo), depth, path);
    view.upload(input);

    const auto picture = [&view](Position place) {
        throwIfCancelled();
        view.draw(place);
        return view.picture();
    };
    Stages stages;
    const Ends ends = endsOf(path);
    stages.upright = ends.upright;
    stages.guide = view.guide();
    stages.shaped = view.shapedDepth();
    stages.left = picture(ends.first);
    stages.rest = picture({});
    stages.right = picture(ends.last);
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
