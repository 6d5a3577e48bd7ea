#include "peers.h"

#if defined(QUORVANE_BENCH_LIBYUV)
#include <libyuv.h>

#include <memory>
#endif

namespace quorvane::bench::libyuv_peer {

#if !defined(QUORVANE_BENCH_LIBYUV)

std::string version() { return ""; }
void addReductions(const Reduction&, std::vector<Contender>*) {}

#else

std::string version() { return "libyuv " + std::to_string(LIBYUV_VERSION); }

void addReductions(const Reduction& r, std::vector<Contender>* contenders) {
    const auto scale = [r](const uint8_t* plane, int height, int out_height, uint8_t* out) {
        libyuv::ScalePlane(plane, r.width, r.width, height, out, r.out_width, r.out_width, out_height,
                           libyuv::kFilterBox);
    };
    const auto out = std::make_shared<Bytes>(static_cast<size_t>(r.out_width * r.out_height));
    if (!r.rgb) {
        contenders->push_back(here("libyuv ScalePlane", Kind::box,
                                   [=] { scale(r.source, r.height, r.out_height, out->data()); }));
        return;
    }

    // "RAW" is R, G, B in memory.
    const auto gray = std::make_shared<Bytes>(static_cast<size_t>(r.width) * static_cast<size_t>(r.height));
    const auto toGray = [r](const uint8_t* rgb, int rows, uint8_t* plane) {
        libyuv::RAWToJ400(rgb, 3 * r.width, plane, r.width, r.width, rows);
    };
    if (r.across == 1) {
        contenders->push_back(
            here("libyuv RAWToJ400", Kind::box, [=] { toGray(r.source, r.height, gray->data()); }));
        return;
    }
    contenders->push_back(here("libyuv RAWToJ400 + ScalePlane", Kind::box, [=] {
        toGray(r.source, r.height, gray->data());
        scale(gray->data(), r.height, r.out_height, out->data());
    }));
    // A strip of gray a row of blocks high stays in the cache.
    contenders->push_back(here("libyuv, the same by strips", Kind::box, [=] {
        for (int j = 0; j < r.out_height; ++j) {
            toGray(r.source + static_cast<ptrdiff_t>(j) * r.down * r.width * 3, r.down, gray->data());
            scale(gray->data(), r.down, 1, out->data() + static_cast<ptrdiff_t>(j) * r.out_width);
        }
    }));
}

#endif

}  // namespace quorvane::bench::libyuv_peer
