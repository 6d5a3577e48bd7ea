// What the Java tests compare with: an image pair and the pictures that the C++ host makes of it, as raw
// bytes in the folder given. The Java tests repeat the calls.

#include <quorvane/host/OffscreenContext.h>
#include <quorvane/host/ParallaxView.h>
#include <quorvane/host/PicturePlan.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

namespace {

using quorvane::OffscreenContext;
using quorvane::ParallaxView;
using quorvane::PicturePlan;
using quorvane::PictureRequest;
using quorvane::Status;
using Bytes = std::vector<uint8_t>;

void require(const Status& status) {
    if (status) return;
    std::fprintf(stderr, "expected_pictures: %s\n", status.message().c_str());
    std::exit(1);
}

void write(const std::string& path, const Bytes& bytes) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    const bool written = file != nullptr && std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    if (!written || std::fclose(file) != 0) require(Status::failure(path + " cannot be written"));
}

Bytes picture(ParallaxView* view) {
    require(view->render());
    Bytes pixels(size_t{4} * static_cast<size_t>(view->width()) * static_cast<size_t>(view->height()));
    require(view->readPixels({pixels, view->width(), view->height()}));
    return pixels;
}

/// What a plan of that depth map looks like from (0.5, -0.25).
Bytes planned(const PictureRequest& request, const Bytes& photo) {
    PicturePlan plan;
    require(quorvane::planPicture(request, &plan));
    std::unique_ptr<ParallaxView> view;
    require(ParallaxView::create(request.width, request.height, request.orientation, &view));
    for (const auto& [name, value] : plan.parameters) require(view->setParameter(name, value));
    require(view->setPhoto({photo, request.sizes.photo_width, request.sizes.photo_height}));
    require(view->setDepth({plan.depth, plan.depth_width, plan.depth_height}));
    const auto swing = static_cast<float>(plan.swing);
    require(view->lookAt(0.5f * swing, -0.25f * swing));
    return picture(view.get());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: expected_pictures FOLDER\n");
        return 2;
    }
    const std::string folder = std::string(argv[1]) + "/";

    // Noise shows a byte that went elsewhere, and steps in depth show that the picture is tilted.
    std::mt19937 random(1);
    Bytes photo(size_t{320} * 240 * 3);
    for (uint8_t& value : photo) value = static_cast<uint8_t>(random());
    Bytes depth(size_t{160} * 120);
    for (size_t i = 0; i < depth.size(); ++i)
        depth[i] = static_cast<uint8_t>(60 * (i % 160 / 40) + 20 * (i / 160 / 40) + random() % 8);
    write(folder + "photo.rgb", photo);
    write(folder + "depth.gray", depth);

    std::unique_ptr<OffscreenContext> context;
    require(OffscreenContext::create(&context));
    std::unique_ptr<ParallaxView> view;
    require(ParallaxView::create(160, 120, 4, &view));
    require(view->setPhoto({photo, 320, 240}));
    require(view->setDepth({depth, 160, 120}));
    require(view->lookAt(0.5f, -0.25f));
    write(folder + "looked.rgba", picture(view.get()));

    require(view->setParameter("fov_scale", 0.6));
    require(view->setParameter("rotate_x_boundary", -20.0));
    require(view->setParameter("depth_contrast", 10.0));
    require(view->setDepth({depth, 160, 120}));
    require(view->resize(161, 119));
    require(view->setRotation(20.0f, 100.0f, 0.0f));
    require(view->setAccelerometerData(7.0f, -3.0f, 1.0f));
    require(view->setTranslation(1.0f, 2.0f, 3.0f));
    write(folder + "tuned.rgba", picture(view.get()));

    require(view->applyProperties(0));
    require(view->setDepth({depth, 160, 120}));
    write(folder + "turned.rgba", picture(view.get()));
    view.reset();

    PictureRequest request;
    request.sizes = {320, 240, 160, 120};
    request.depth = {depth, 160, 120};
    request.width = 160;
    request.height = 120;
    write(folder + "clean.rgba", planned(request, photo));

    request.parameters = {{"rotate_x_boundary", 40.0}, {"trans_to_rotate_scale", 1.5}};
    request.orientation = 0;
    write(folder + "reduced.rgba", planned(request, photo));

    request = {};
    request.sizes = {320, 240, 40, 30};
    request.photo = {photo, 320, 240};
    request.depth = {depth, 160, 120};
    request.clean_edges = false;
    request.width = 160;
    request.height = 120;
    request.pivot = quorvane::Pivot::kPoint;
    request.pivot_x = 0.9;
    request.pivot_y = 0.1;
    request.frame = 0.7;
    write(folder + "soft.rgba", planned(request, photo));
}
