#include "peers.h"

#if defined(QUORVANE_BENCH_OPENCV)
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <opencv2/ximgproc/edge_filter.hpp>
#include <utility>
#endif

namespace quorvane::bench {

#if !defined(QUORVANE_BENCH_OPENCV)

std::string opencv::version() { return ""; }
void opencv::addReductions(const Reduction&, std::vector<Contender>*) {}
void addCrossDenoisePeers(const Bytes&, int, int, std::vector<Contender>*) {}
void addDenoiseAndContrastPeers(const Bytes&, int, int, const uint8_t*, std::vector<Contender>*) {}
void addGuidedFilterPeers(const GuidedFiltering&, std::vector<Contender>*) {}
void addUploadPeers(const Upload&, std::vector<Contender>*) {}

#else

namespace {

/// OpenCV's view of memory that it only reads.
cv::Mat view(const uint8_t* bytes, int width, int height, int type) {
    return {height, width, type, const_cast<uint8_t*>(bytes)};
}

/// The reference's kernel for a ratio, read off its answers to planes that are white in a single column.
std::vector<float> kernelOf(int ratio) {
    const int taps = 4 * ratio;  // more than any window has
    Bytes plane(static_cast<size_t>(taps) * static_cast<size_t>(taps));
    uint8_t out[16];
    std::vector<float> kernel;
    for (int x = 0; x < taps; ++x) {
        for (size_t i = 0; i < plane.size(); ++i) plane[i] = static_cast<int>(i) % taps == x ? 255 : 0;
        reference::downsize({taps, taps, plane.data(), 4, 4, out, ratio, ratio, false});
        if (out[5] != 0) kernel.push_back(static_cast<float>(out[5]) / 256.0f);
    }
    return kernel;
}

/// A reduction in one of OpenCV's ways, from one cv::Mat to another.
using Reduce = std::function<void(const cv::Mat&, cv::Mat*)>;

/// The second pyramid: every level halves, by a 5 x 5 kernel.
Reduce byPyramid(int ratio) {
    return [ratio, levels = std::make_shared<std::vector<cv::Mat> >(6)](const cv::Mat& from, cv::Mat* to) {
        const cv::Mat* source = &from;
        size_t level = 0;
        for (int left = ratio; left > 1; left /= 2, ++level) {
            cv::Mat* target = left == 2 ? to : &(*levels)[level];
            cv::pyrDown(*source, *target);
            source = target;
        }
    };
}

Reduce byResize(cv::Size size, int interpolation) {
    return [=](const cv::Mat& from, cv::Mat* to) { cv::resize(from, *to, size, 0, 0, interpolation); };
}

/// Filters everywhere and keeps every ratio-th pixel: OpenCV has no filter with a step.
Reduce bySepFilter(cv::Size size, int ratio) {
    const std::vector<float> kernel = kernelOf(ratio);
    return [=, filtered = std::make_shared<cv::Mat>()](const cv::Mat& from, cv::Mat* to) {
        const int anchor = (static_cast<int>(kernel.size()) - ratio + 1) / 2;
        cv::sepFilter2D(from, *filtered, -1, kernel, kernel, {anchor, anchor}, 0, cv::BORDER_REPLICATE);
        cv::resize(*filtered, *to, size, 0, 0, cv::INTER_NEAREST);
    };
}

const cv::Mat& crossKernel() {
    static const cv::Mat kernel = (cv::Mat_<float>(3, 3) << 0, .2f, 0, .2f, .2f, .2f, 0, .2f, 0);
    return kernel;
}

void crossDenoise(const cv::Mat& from, cv::Mat* to) {
    cv::filter2D(from, *to, -1, crossKernel(), {-1, -1}, 0, cv::BORDER_REPLICATE);
}

cv::Mat table(const uint8_t* values) { return view(values, 256, 1, CV_8U).clone(); }

/// The guided filter from six box filters, in single precision.
class SixBoxes {
  public:
    SixBoxes(int rx, int ry, float eps)
        : m_window(2 * rx + 1, 2 * ry + 1), m_eps(static_cast<double>(eps) * 65025) {}

    void operator()(const cv::Mat& guide, const cv::Mat& input, cv::Mat* output) {
        guide.convertTo(m_guide, CV_32F);
        input.convertTo(m_input, CV_32F);
        mean(m_guide, &m_mean_guide);
        mean(m_input, &m_mean_input);
        meanOfProduct(m_guide, m_input, &m_covariance);
        meanOfProduct(m_guide, m_guide, &m_variance);
        subtractProduct(m_mean_guide, m_mean_input, &m_covariance);
        subtractProduct(m_mean_guide, m_mean_guide, &m_variance);
        cv::add(m_variance, m_eps, m_variance);
        cv::divide(m_covariance, m_variance, m_a);
        subtractProduct(m_a, m_mean_guide, &m_mean_input);
        mean(m_a, &m_mean_a);
        mean(m_mean_input, &m_mean_b);
        cv::multiply(m_mean_a, m_guide, m_product);
        cv::add(m_product, m_mean_b, m_product);
        m_product.convertTo(*output, CV_8U);
    }

  private:
    void mean(const cv::Mat& from, cv::Mat* to) const { cv::boxFilter(from, *to, CV_32F, m_window); }
    void meanOfProduct(const cv::Mat& a, const cv::Mat& b, cv::Mat* to) {
        cv::multiply(a, b, m_product);
        mean(m_product, to);
    }
    void subtractProduct(const cv::Mat& a, const cv::Mat& b, cv::Mat* from) {
        cv::multiply(a, b, m_product);
        cv::subtract(*from, m_product, *from);
    }

    cv::Size m_window;
    cv::Scalar m_eps;
    cv::Mat m_guide, m_input, m_mean_guide, m_mean_input, m_covariance, m_variance, m_a, m_mean_a, m_mean_b;
    cv::Mat m_product;
};

/// Everything that setTexture and setDepth do on the CPU.
Contender upload(const char* name, Kind kind, const Upload& u, bool pyramid) {
    const cv::Size grid(u.depth_width / 4, u.depth_height / 4);
    const int ratio = u.photo_width / grid.width;
    struct Planes {
        cv::Mat photo, gray, small, guide, depth, denoised, filtered, crossed, shaped;
    };
    const auto prepare = [=]() -> Work {
        cv::setNumThreads(1);
        const auto planes = std::make_shared<Planes>();
        const auto boxes = std::make_shared<SixBoxes>(u.radius, u.radius, u.eps);
        const Reduce reduce_depth = pyramid ? byPyramid(4) : byResize(grid, cv::INTER_AREA);
        const Reduce reduce_photo = pyramid ? byPyramid(ratio) : byResize(grid, cv::INTER_AREA);
        return [=, curve = table(u.table)] {
            Planes& p = *planes;
            view(u.photo, u.photo_width, u.photo_height, CV_8UC3).copyTo(p.photo);
            if (pyramid) {
                cv::cvtColor(p.photo, p.gray, cv::COLOR_RGB2GRAY);
                reduce_photo(p.gray, &p.guide);
            } else {
                reduce_photo(p.photo, &p.small);
                cv::cvtColor(p.small, p.guide, cv::COLOR_RGB2GRAY);
            }
            reduce_depth(view(u.depth, u.depth_width, u.depth_height, CV_8U), &p.depth);
            crossDenoise(p.guide, &p.denoised);
            (*boxes)(p.denoised, p.depth, &p.filtered);
            crossDenoise(p.filtered, &p.crossed);
            cv::LUT(p.crossed, curve, p.shaped);
        };
    };
    return {name, kind, timedApart(nullptr, prepare), nullptr};
}

}  // namespace

std::string opencv::version() {
    cv::setNumThreads(1);
    return "OpenCV " CV_VERSION;
}

void opencv::addReductions(const Reduction& r, std::vector<Contender>* contenders) {
    cv::setNumThreads(1);
    const cv::Size size(r.out_width, r.out_height);
    const cv::Mat source = view(r.source, r.width, r.height, r.rgb ? CV_8UC3 : CV_8U);
    const auto gray = std::make_shared<cv::Mat>(), small = std::make_shared<cv::Mat>();
    const auto out = std::make_shared<cv::Mat>();
    const auto add = [&](const char* name, Kind kind, const Reduce& reduce) {
        contenders->push_back(here(std::string("OpenCV ") + (r.rgb ? "cvtColor + " : "") + name, kind, [=] {
            if (r.rgb) cv::cvtColor(source, *gray, cv::COLOR_RGB2GRAY);
            reduce(r.rgb ? *gray : source, out.get());
        }));
    };
    if (r.across == 1) {
        contenders->push_back(
            here("OpenCV cvtColor", Kind::box, [=] { cv::cvtColor(source, *gray, cv::COLOR_RGB2GRAY); }));
        return;
    }
    add("pyrDown", Kind::overlap, byPyramid(r.across));
    add("sepFilter2D", Kind::same, bySepFilter(size, r.across));
    // These look at 8 and 4 pixels across, whatever the ratio: a low-pass filter only where that is two
    // blocks.
    if (r.across == 4) add("resize LANCZOS4", Kind::overlap, byResize(size, cv::INTER_LANCZOS4));
    if (r.across == 2) add("resize CUBIC", Kind::overlap, byResize(size, cv::INTER_CUBIC));
    add("resize AREA", Kind::box, byResize(size, cv::INTER_AREA));
    if (!r.rgb) return;
    contenders->push_back(here("OpenCV resize AREA + cvtColor", Kind::box, [=] {
        cv::resize(source, *small, size, 0, 0, cv::INTER_AREA);
        cv::cvtColor(*small, *out, cv::COLOR_RGB2GRAY);
    }));
}

void addCrossDenoisePeers(const Bytes& plane, int width, int height, std::vector<Contender>* contenders) {
    cv::setNumThreads(1);
    const cv::Mat source = view(plane.data(), width, height, CV_8U);
    const auto out = std::make_shared<cv::Mat>();
    contenders->push_back(here("OpenCV filter2D", Kind::same, [=] { crossDenoise(source, out.get()); }));
    contenders->push_back(here("OpenCV blur", Kind::nearby, [=] {
        cv::blur(source, *out, {3, 3}, {-1, -1}, cv::BORDER_REPLICATE);
    }));
}

void addDenoiseAndContrastPeers(const Bytes& plane, int width, int height, const uint8_t* values,
                                std::vector<Contender>* contenders) {
    cv::setNumThreads(1);
    const cv::Mat source = view(plane.data(), width, height, CV_8U);
    const auto crossed = std::make_shared<cv::Mat>(), out = std::make_shared<cv::Mat>();
    contenders->push_back(here("OpenCV filter2D + LUT", Kind::same, [=, curve = table(values)] {
        crossDenoise(source, crossed.get());
        cv::LUT(*crossed, curve, *out);
    }));
}

void addGuidedFilterPeers(const GuidedFiltering& f, std::vector<Contender>* contenders) {
    cv::setNumThreads(1);
    const cv::Mat guide = view(f.guide, f.width, f.height, CV_8U);
    const cv::Mat input = view(f.input, f.width, f.height, CV_8U);
    const auto out = std::make_shared<cv::Mat>();
    contenders->push_back(here("OpenCV ximgproc guidedFilter", Kind::same, [=] {
        cv::ximgproc::guidedFilter(guide, input, *out, f.rx, static_cast<double>(f.eps) * 65025);
    }));
    contenders->push_back(here(
        "OpenCV six boxFilters", Kind::same,
        [=, boxes = std::make_shared<SixBoxes>(f.rx, f.ry, f.eps)] { (*boxes)(guide, input, out.get()); }));
}

void addUploadPeers(const Upload& u, std::vector<Contender>* contenders) {
    contenders->push_back(upload("OpenCV, pyrDown", Kind::same, u, true));
    contenders->push_back(upload("OpenCV, resize AREA", Kind::box, u, false));
}

#endif

std::string installedPeers() {
    const std::string opencv = opencv::version(), libyuv = libyuv_peer::version();
    return opencv + (opencv.empty() || libyuv.empty() ? "" : ", ") + libyuv;
}

void addReductionPeers(const Reduction& r, std::vector<Contender>* contenders) {
    opencv::addReductions(r, contenders);
    libyuv_peer::addReductions(r, contenders);
}

}  // namespace quorvane::bench
