// Pictures that the web element's are compared with: native_stills FOLDER
// Writes there photo.png and shaped.png of the painted scene, as the element takes them, depth.png, from
// which the shaped depth was made, and for each view position of stills.json the renderer's picture as bytes
// R G B A from the top row on.

#include <cstdio>
#include <fstream>
#include <memory>
#include <string>

#include "media/picture/picture_file.h"
#include "media/scene/sample_scene.h"
#include "quorvane/host/OffscreenContext.h"
#include "quorvane/host/ParallaxView.h"

namespace {

constexpr int kWidth = 384;
constexpr int kHeight = 512;
constexpr int kRatio = 4;
constexpr float kPositions[][2] = {{0.0F, 0.0F}, {0.5F, 0.0F}, {-1.0F, 1.0F}, {0.8F, -0.6F}, {1.0F, 0.0F}};

bool failed(const quorvane::Status& status) {
    if (!status) std::fprintf(stderr, "native_stills: %s\n", status.message().c_str());
    return !status;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const std::string folder = std::string(argv[1]) + "/";
    const quorvane::media::SampleScene scene = quorvane::media::makeSampleScene(kWidth, kHeight);

    std::unique_ptr<quorvane::OffscreenContext> context;
    std::unique_ptr<quorvane::ParallaxView> view;
    if (failed(quorvane::OffscreenContext::create(&context))) return 1;
    if (failed(quorvane::ParallaxView::create(kWidth, kHeight, 4, &view))) return 1;
    if (failed(view->setPhoto({scene.photo.samples, kWidth, kHeight}))) return 1;
    if (failed(view->setDepth({scene.depth.samples, kWidth, kHeight}))) return 1;

    quorvane::media::GrayImage shaped(kWidth / kRatio, kHeight / kRatio);
    const char* samples = view->renderer().m_pDepthData;
    shaped.samples.assign(samples, samples + shaped.samples.size());
    quorvane::media::writePng(scene.photo, folder + "photo.png");
    quorvane::media::writePng(scene.depth, folder + "depth.png");
    quorvane::media::writePng(shaped, folder + "shaped.png");

    std::string list;
    quorvane::media::RgbaImage picture(kWidth, kHeight);
    for (const auto& at : kPositions) {
        if (failed(view->lookAt(at[0], at[1])) || failed(view->render())) return 1;
        if (failed(view->readPixels({picture.samples, kWidth, kHeight}))) return 1;
        char entry[96];
        std::snprintf(entry, sizeof entry, R"({"x":%g,"y":%g,"file":"still%g_%g.rgba"})",
                      static_cast<double>(at[0]), static_cast<double>(at[1]), static_cast<double>(at[0]),
                      static_cast<double>(at[1]));
        list += (list.empty() ? "" : ",") + std::string(entry);
        char name[48];
        std::snprintf(name, sizeof name, "still%g_%g.rgba", static_cast<double>(at[0]),
                      static_cast<double>(at[1]));
        std::ofstream(folder + name, std::ios::binary)
            .write(reinterpret_cast<const char*>(picture.samples.data()),
                   static_cast<std::streamsize>(picture.samples.size()));
    }
    std::ofstream(folder + "stills.json")
        << "{\"width\":" << kWidth << ",\"height\":" << kHeight << ",\"stills\":[" << list << "]}\n";
}
