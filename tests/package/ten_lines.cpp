#include <quorvane/host/OffscreenContext.h>
#include <quorvane/host/ParallaxView.h>
int main() {
    std::vector<uint8_t> photo(64 * 48 * 3, 200), depth(64 * 48, 128), picture(64 * 48 * 4);
    std::unique_ptr<quorvane::OffscreenContext> context;
    std::unique_ptr<quorvane::ParallaxView> view;
    const bool drawn = quorvane::OffscreenContext::create(&context) &&
                       quorvane::ParallaxView::create(64, 48, 4, &view) && view->setPhoto({photo, 64, 48}) &&
                       view->setDepth({depth, 64, 48}) && view->render() &&
                       view->readPixels({picture, 64, 48});
    return drawn && picture[0] == 200 && picture[picture.size() - 2] == 200 ? 0 : 1;
}
