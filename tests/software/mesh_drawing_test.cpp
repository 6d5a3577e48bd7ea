#include "software/mesh_drawing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <string>
#include <vector>

#include "src/view/view_matrix.h"
#include "support/model_renderer.h"

namespace quorvane::software {
namespace {

using Bytes = std::vector<uint8_t>;
using test::ModelScene;

/// Smooth coloured waves with a disc of another colour where the depth map has one.
Bytes photoOf(int width, int height) {
    Bytes rgb;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const double s = (x + 0.5) / width, t = (y + 0.5) / height;
            const bool disc = std::hypot(s - 0.6, (t - 0.4) * height / width) < 0.15;
            rgb.push_back(static_cast<uint8_t>(disc ? 230 : 125 + 85 * std::sin(23 * s) * std::cos(19 * t)));
            rgb.push_back(static_cast<uint8_t>(30 + 200 * t));
            rgb.push_back(static_cast<uint8_t>(disc ? 40 : 220 - 190 * s));
        }
    return rgb;
}

/// Colours that say where in the photo a pixel lies.
Bytes places(int width, int height) {
    Bytes rgb;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            rgb.insert(rgb.end(),
                       {static_cast<uint8_t>(255 * x / width), static_cast<uint8_t>(255 * y / height), 200});
    return rgb;
}

/// Shaped depth: a slope with a near disc and a far hole.
Bytes depthOf(int width, int height) {
    Bytes depth;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const double s = (x + 0.5) / width, t = (y + 0.5) / height,
                         aspect = static_cast<double>(height) / width;
            if (std::hypot(s - 0.6, (t - 0.4) * aspect) < 0.15)
                depth.push_back(245);
            else if (std::hypot(s - 0.3, (t - 0.7) * aspect) < 0.1)
                depth.push_back(5);
            else
                depth.push_back(static_cast<uint8_t>(80 + 90 * t));
        }
    return depth;
}

struct Case {
    const char* name;
    int width, height;  ///< picture
    int photo_width, photo_height;
    int grid_width, grid_height;
    float x, y;  ///< view position
    float fov_scale;
    float pivot;
};

void PrintTo(const Case& c, std::ostream* out) { *out << c.name; }

constexpr float kHalfHeight = 18.5f;
float halfWidth(const Case& c) {
    return kHalfHeight * static_cast<float>(c.width) / static_cast<float>(c.height) + 1;
}

ModelScene sceneOf(const Case& c) {
    ModelScene scene = {};
    scene.photo_width = c.photo_width;
    scene.photo_height = c.photo_height;
    scene.photo = photoOf(c.photo_width, c.photo_height);
    scene.grid_width = c.grid_width;
    scene.grid_height = c.grid_height;
    scene.depth = depthOf(c.grid_width, c.grid_height);
    scene.width = c.width;
    scene.height = c.height;
    scene.half_width = static_cast<double>(halfWidth(c));
    scene.half_height = static_cast<double>(kHalfHeight);
    scene.view_x = static_cast<double>(c.x);
    scene.view_y = static_cast<double>(c.y);
    scene.pivot = static_cast<double>(c.pivot);
    scene.fov_scale = static_cast<double>(c.fov_scale);
    return scene;
}

Camera cameraOf(const Case& c) {
    const View view = {c.x, c.y, 12.0f, 12.0f, 0.6f, c.fov_scale, 100.0f, c.pivot, halfWidth(c), kHalfHeight};
    return {viewMatrix(view), halfWidth(c), kHalfHeight, 164.0f};
}

Bytes drawn(const Case& c, const Camera& camera, int samples, const DrawingPath& path, int threads) {
    MeshDrawing drawing(path, threads);
    drawing.setPhoto(photoOf(c.photo_width, c.photo_height).data(), c.photo_width, c.photo_height);
    drawing.setShapedDepth(depthOf(c.grid_width, c.grid_height).data(), c.grid_width, c.grid_height);
    // Room behind the rows, in which nothing may be written.
    const size_t stride = 4 * static_cast<size_t>(c.width) + 12;
    Bytes rgba(stride * static_cast<size_t>(c.height), 77);
    drawing.draw(camera, samples, PictureBuffer{rgba.data(), stride, c.width, c.height});
    Bytes tight;
    for (size_t y = 0; y < static_cast<size_t>(c.height); ++y) {
        const auto row = rgba.begin() + static_cast<std::ptrdiff_t>(y * stride);
        const auto end = row + 4 * c.width;
        EXPECT_EQ(std::count(end, end + 12, 77), 12) << "row " << y;
        tight.insert(tight.end(), row, end);
    }
    return tight;
}

Bytes drawn(const Case& c, int samples) { return drawn(c, cameraOf(c), samples, chosenDrawingPath(), 2); }

/// Of even sides, as pictures in Y'CbCr are.
Case even(Case c) {
    c.width -= c.width % 2;
    c.height -= c.height % 2;
    return c;
}

/// Luma, and after it Cb and Cr at half the size.
Bytes drawnPlanar(const Case& c, const Camera& camera, int samples, const DrawingPath& path, int threads) {
    MeshDrawing drawing(path, threads);
    drawing.setPhoto(photoOf(c.photo_width, c.photo_height).data(), c.photo_width, c.photo_height);
    drawing.setShapedDepth(depthOf(c.grid_width, c.grid_height).data(), c.grid_width, c.grid_height);
    const size_t pixels = static_cast<size_t>(c.width) * static_cast<size_t>(c.height);
    // Room between the planes, in which nothing may be written.
    constexpr size_t kRoom = 16;
    Bytes luma(pixels + kRoom, 77), cb(pixels / 4 + kRoom, 77), cr(pixels / 4 + kRoom, 77);
    drawing.draw(camera, samples, PlanarPicture{luma.data(), cb.data(), cr.data(), c.width, c.height});
    Bytes all;
    for (const Bytes* plane : {&luma, &cb, &cr}) {
        const auto end = plane->end() - kRoom;
        EXPECT_EQ(std::count(end, plane->end(), 77), kRoom);
        all.insert(all.end(), plane->begin(), end);
    }
    return all;
}

Bytes drawnPlanar(const Case& c, int samples) {
    return drawnPlanar(c, cameraOf(c), samples, chosenDrawingPath(), 2);
}

/// Expects that draw(path, threads) gives `wanted` on every path that runs here.
template <typename Draw>
void expectOnEveryPath(const Bytes& wanted, int threads, const Draw& draw) {
    for (const DrawingPath& path : drawingPaths())
        if (path.runsHere()) {
            EXPECT_EQ(draw(path, threads), wanted) << path.name;
        }
}

/// 0..1, and in Y'CbCr as ITU-R BT.709-6 has it in 3.2 to 3.4 and 4.6.
struct Colour {
    double red = 0, green = 0, blue = 0;

    template <typename Sample>
    void add(const Sample* rgb, double share) {
        red += static_cast<double>(rgb[0]) / 255.0 * share;
        green += static_cast<double>(rgb[1]) / 255.0 * share;
        blue += static_cast<double>(rgb[2]) / 255.0 * share;
    }
    double brightness() const { return 0.2126 * red + 0.7152 * green + 0.0722 * blue; }
    double luma() const { return 16 + 219 * brightness(); }
    double cb() const { return 128 + 224 * (blue - brightness()) / 1.8556; }
    double cr() const { return 128 + 224 * (red - brightness()) / 1.5748; }
};

/// A picture of 0..255 as drawnPlanar orders it: the colours for the mean of 2 x 2 pixels. `channels` a
/// pixel, the first three red, green and blue.
template <typename Sample>
std::vector<double> inPlanes(const std::vector<Sample>& picture, size_t channels, int width, int height) {
    const auto mean = [&](int x, int y, int side) {
        Colour sum;
        for (int i = 0; i < side * side; ++i)
            sum.add(&picture[channels * static_cast<size_t>((y + i / side) * width + x + i % side)],
                    1.0 / (side * side));
        return sum;
    };
    std::vector<double> luma, cb, cr;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) luma.push_back(mean(x, y, 1).luma());
    for (int y = 0; y < height; y += 2)
        for (int x = 0; x < width; x += 2) {
            cb.push_back(mean(x, y, 2).cb());
            cr.push_back(mean(x, y, 2).cr());
        }
    for (const std::vector<double>* plane : {&cb, &cr}) luma.insert(luma.end(), plane->begin(), plane->end());
    return luma;
}

/// A place on the photo, in texels from the middle of the first one.
struct Place {
    double u, v;
    bool seen;
};

/// Where each pixel lies, by the model: on a photo of 256 x 256 texels that say where they are, between which
/// the model's values are linear.
std::vector<Place> placesOf(const Case& c) {
    constexpr int kSide = 256;
    ModelScene scene = sceneOf(c);
    scene.photo_width = scene.photo_height = kSide;
    scene.photo.clear();
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x)
            scene.photo.insert(scene.photo.end(), {static_cast<uint8_t>(x), static_cast<uint8_t>(y), 255});
    const std::vector<double> picture = test::modelPicture(scene);
    std::vector<Place> all;
    for (size_t i = 0; i < picture.size(); i += 3)
        all.push_back({(picture[i] + 0.5) / kSide * c.photo_width - 0.5,
                       (picture[i + 1] + 0.5) / kSide * c.photo_height - 0.5, picture[i + 2] > 0});
    return all;
}

/// The photo's colours as PlanarPicture says, in double precision.
class ModelColours {
  public:
    explicit ModelColours(const Case& c)
        : m_width(c.photo_width), m_height(c.photo_height), m_photo(photoOf(c.photo_width, c.photo_height)) {
        const double texels = static_cast<double>(c.photo_width) / c.width;
        m_step = texels >= 1.125 ? 2 : 1;
        m_side = texels >= 0.625 ? 2 : 1;
    }

    /// Of 2 x 2 pixels.
    Colour of(const std::array<Place, 4>& pixels) const {
        Place mean = {0, 0, true}, low = pixels[0], high = pixels[0];
        Colour mean_colour;
        for (const Place& place : pixels) {
            mean = {mean.u + place.u / 4, mean.v + place.v / 4, mean.seen && place.seen};
            low = {std::min(low.u, place.u), std::min(low.v, place.v), true};
            high = {std::max(high.u, place.u), std::max(high.v, place.v), true};
            if (place.seen) read(place, 0.25, &mean_colour);
        }
        if (!mean.seen || high.u - low.u > 2 || high.v - low.v > 2) return mean_colour;
        Colour colour;
        read(mean, 1, &colour);
        return colour;
    }

  private:
    void read(const Place& place, double share, Colour* sum) const {
        const double middle = (m_side - 1) / 2.0;
        const auto along = [&](double at, int texels) {
            const int last = (texels - 1) / m_step;
            return std::clamp((at - middle) / m_step, 0.0, static_cast<double>(last));
        };
        const double x = along(place.u, m_width), y = along(place.v, m_height);
        const int left = static_cast<int>(x), top = static_cast<int>(y);
        const double right_share = x - left, lower_share = y - top;
        add(left, top, (1 - right_share) * (1 - lower_share) * share, sum);
        add(left + 1, top, right_share * (1 - lower_share) * share, sum);
        add(left, top + 1, (1 - right_share) * lower_share * share, sum);
        add(left + 1, top + 1, right_share * lower_share * share, sum);
    }

    void add(int column, int row, double share, Colour* sum) const {
        for (int i = 0; i < m_side * m_side; ++i) {
            const int x = std::min(column * m_step + i % m_side, m_width - 1);
            const int y = std::min(row * m_step + i / m_side, m_height - 1);
            sum->add(&m_photo[3 * static_cast<size_t>(y * m_width + x)], share / (m_side * m_side));
        }
    }

    int m_width, m_height, m_step, m_side;
    Bytes m_photo;
};

/// Calls visit(x, y, jump) for every pixel: how much the neighbourhood's places differ at most.
template <typename Visit>
void eachPixel(const Case& c, const Visit& visit) {
    ModelScene scene = sceneOf(c);
    scene.photo = places(c.photo_width, c.photo_height);
    const std::vector<double> model = test::modelPicture(scene);
    for (int y = 0; y < c.height; ++y)
        for (int x = 0; x < c.width; ++x) {
            double jump = 0;
            for (size_t channel = 0; channel < 3; ++channel) {
                double low = 255, high = 0;
                for (int row = std::max(y - 1, 0); row <= std::min(y + 1, c.height - 1); ++row)
                    for (int column = std::max(x - 1, 0); column <= std::min(x + 1, c.width - 1); ++column) {
                        const double value = model[3 * static_cast<size_t>(row * c.width + column) + channel];
                        low = std::min(low, value);
                        high = std::max(high, value);
                    }
                jump = std::max(jump, high - low);
            }
            visit(x, y, jump);
        }
}

/// Neighbours differ by more only where a silhouette, or a wall of the mesh seen almost edge-on, lies between
/// them.
constexpr double kSilhouette = 4;

class MeshDrawingView : public testing::TestWithParam<Case> {};

TEST_P(MeshDrawingView, AgreesWithTheModelAwayFromSilhouettes) {
    const Case& c = GetParam();
    const std::vector<double> model = test::modelPicture(sceneOf(c));
    for (const int samples : {1, 4}) {
        const Bytes picture = drawn(c, samples);
        int compared = 0, wrong = 0;
        eachPixel(c, [&](int x, int y, double jump) {
            const size_t pixel = static_cast<size_t>(y * c.width + x);
            EXPECT_EQ(picture[4 * pixel + 3], 255);
            if (jump > kSilhouette) return;
            ++compared;
            double worst = 0;
            for (size_t channel = 0; channel < 3; ++channel)
                worst = std::max(worst, std::abs(model[3 * pixel + channel] - picture[4 * pixel + channel]));
            if (worst > 1.0) ++wrong;
        });
        EXPECT_GT(compared, c.width * c.height * 8 / 10);
        EXPECT_LE(wrong, compared / 1000) << samples << " samples";
    }
}

TEST_P(MeshDrawingView, InPlanesAgreesWithTheModelAwayFromSilhouettes) {
    const Case c = even(GetParam());
    std::vector<double> model = inPlanes(test::modelPicture(sceneOf(c)), 3, c.width, c.height);
    const size_t pixels = static_cast<size_t>(c.width) * static_cast<size_t>(c.height);
    const std::vector<Place> at = placesOf(c);
    const ModelColours colours(c);
    for (size_t i = 0; i < pixels / 4; ++i) {
        const size_t half = static_cast<size_t>(c.width) / 2, first = i / half * 4 * half + i % half * 2;
        const Colour colour =
            colours.of({at[first], at[first + 1], at[first + 2 * half], at[first + 2 * half + 1]});
        model[pixels + i] = colour.cb();
        model[pixels / 4 * 5 + i] = colour.cr();
    }
    for (const int samples : {1, 4}) {
        const Bytes planes = drawnPlanar(c, samples);
        ASSERT_EQ(planes.size(), model.size());
        int compared = 0, wrong = 0;
        const auto compare = [&](size_t i) {
            ++compared;
            if (std::abs(model[i] - planes[i]) > 1.0) ++wrong;
        };
        std::vector<int> smooth(pixels / 4);
        eachPixel(c, [&](int x, int y, double jump) {
            if (jump > kSilhouette) return;
            compare(static_cast<size_t>(y * c.width + x));
            ++smooth[static_cast<size_t>(y / 2 * (c.width / 2) + x / 2)];
        });
        for (size_t i = 0; i < smooth.size(); ++i)
            for (const size_t plane : {pixels, pixels + pixels / 4})
                if (smooth[i] == 4) compare(plane + i);
        EXPECT_GT(compared, c.width * c.height * 12 / 10);
        EXPECT_LE(wrong, compared / 1000) << samples << " samples";
    }
}

TEST_P(MeshDrawingView, InPlanesIsTheSamePictureAtSilhouettesToo) {
    const Case c = even(GetParam());
    const size_t pixels = static_cast<size_t>(c.width) * static_cast<size_t>(c.height);
    for (const int samples : {1, 4}) {
        SCOPED_TRACE(std::to_string(samples) + " samples");
        const std::vector<double> wanted = inPlanes(drawn(c, samples), 4, c.width, c.height);
        const Bytes planes = drawnPlanar(c, samples);
        ASSERT_EQ(planes.size(), wanted.size());
        // Both round twice: the colours of the texels or of the pixels, and what is given out.
        for (size_t i = 0; i < pixels; ++i) ASSERT_NEAR(planes[i], wanted[i], 2.0) << "byte " << i;
        // Colours are from more of the photo than 2 x 2 pixels show. An edge between two may be off by a part
        // of what lies between them, and at a few places it is hidden by a silhouette.
        const int width = c.width / 2, height = c.height / 2;
        double sum = 0;
        int wrong = 0;
        for (const size_t plane : {pixels, pixels / 4 * 5}) {
            const auto wanted_at = [&](int x, int y) {
                return wanted[plane + static_cast<size_t>(y * width + x)];
            };
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x) {
                    double low = 255, high = 0;
                    for (int row = std::max(y - 1, 0); row <= std::min(y + 1, height - 1); ++row)
                        for (int column = std::max(x - 1, 0); column <= std::min(x + 1, width - 1);
                             ++column) {
                            low = std::min(low, wanted_at(column, row));
                            high = std::max(high, wanted_at(column, row));
                        }
                    const double error =
                        std::abs(planes[plane + static_cast<size_t>(y * width + x)] - wanted_at(x, y));
                    sum += error;
                    if (error > 2.0 + (high - low) / 4) ++wrong;
                }
        }
        EXPECT_LT(sum / (2 * width * height), 0.5);
        EXPECT_LE(wrong, 2 * width * height / 400);
    }
}

TEST_P(MeshDrawingView, HasNoHolesAndIsBlackPastTheMesh) {
    const Case& c = GetParam();
    const std::vector<double> model = test::modelPicture(sceneOf(c));
    const Bytes picture = drawn(c, 1);
    // The photo has no black: a pixel that is black in one of them only lies at the mesh's edge.
    int wrong = 0;
    for (size_t pixel = 0; pixel < picture.size() / 4; ++pixel)
        wrong += (picture[4 * pixel + 1] == 0) != (model[3 * pixel + 1] == 0.0) ? 1 : 0;
    EXPECT_LE(wrong, 2);
}

TEST_P(MeshDrawingView, EveryPathAndNumberOfThreadsGivesTheSameBytes) {
    const Case& c = GetParam();
    for (const int samples : {1, 2, 8}) {
        SCOPED_TRACE(std::to_string(samples) + " samples");
        const auto draw = [&](const DrawingPath& path, int threads) {
            return drawn(c, cameraOf(c), samples, path, threads);
        };
        const Bytes wanted = draw(drawingPaths().front(), 1);
        expectOnEveryPath(wanted, 1, draw);
        for (const int threads : {2, 3, 7})
            EXPECT_EQ(draw(chosenDrawingPath(), threads), wanted) << threads << " threads";
    }
}

TEST_P(MeshDrawingView, EveryPathAndNumberOfThreadsGivesTheSamePlanes) {
    const Case c = even(GetParam());
    for (const int samples : {1, 8}) {
        SCOPED_TRACE(std::to_string(samples) + " samples");
        const auto draw = [&](const DrawingPath& path, int threads) {
            return drawnPlanar(c, cameraOf(c), samples, path, threads);
        };
        const Bytes wanted = draw(drawingPaths().front(), 1);
        expectOnEveryPath(wanted, 1, draw);
        for (const int threads : {2, 7})
            EXPECT_EQ(draw(chosenDrawingPath(), threads), wanted) << threads << " threads";
    }
}

constexpr Case kCases[] = {
    {"Rest", 240, 160, 240, 160, 60, 40, 0, 0, 0.81f, 40},
    {"Left", 240, 160, 240, 160, 60, 40, -1, 0, 0.81f, 40},
    {"Above", 240, 160, 240, 160, 60, 40, 0, 1, 0.81f, 40},
    {"Corner", 237, 161, 480, 320, 60, 40, 0.7f, -0.6f, 0.81f, 40},
    {"Portrait", 160, 240, 160, 240, 40, 60, 1, 0.3f, 0.81f, 40},
    {"LargeCells", 240, 160, 60, 40, 15, 10, 0.9f, -0.4f, 0.81f, 40},
    {"FinePhoto", 240, 160, 315, 211, 63, 42, 0.8f, 0.5f, 0.81f, 40},
    {"FineGrid", 240, 160, 240, 160, 240, 160, 0.9f, 0.8f, 0.81f, 40},
    {"SteepWalls", 240, 160, 240, 160, 120, 80, 0.9f, -0.5f, 0.81f, 40},
    {"PastTheMesh", 240, 160, 240, 160, 60, 40, -0.8f, 0.5f, 1.0f, 50},
};

constexpr size_t kFirstWithSilhouettes = 7;

INSTANTIATE_TEST_SUITE_P(Views, MeshDrawingView, testing::ValuesIn(kCases),
                         [](const auto& test) { return std::string(test.param.name); });

class MeshDrawingSilhouettes : public testing::TestWithParam<Case> {};

TEST_P(MeshDrawingSilhouettes, AreSmoothWithSeveralSamples) {
    const Case& c = GetParam();
    constexpr int kFiner = 8;
    ModelScene finer = sceneOf(c);
    finer.width *= kFiner;
    finer.height *= kFiner;
    const std::vector<double> fine = test::modelPicture(finer);
    const auto truth = [&](int x, int y, size_t channel) {
        double sum = 0;
        for (int row = y * kFiner; row < (y + 1) * kFiner; ++row)
            for (int column = x * kFiner; column < (x + 1) * kFiner; ++column)
                sum += fine[3 * static_cast<size_t>(row * finer.width + column) + channel];
        return sum / (kFiner * kFiner);
    };
    std::vector<double> errors;
    for (const int samples : {1, 2, 4, 8}) {
        const Bytes picture = drawn(c, samples);
        double squares = 0;
        eachPixel(c, [&](int x, int y, double jump) {
            if (jump <= kSilhouette) return;
            for (size_t channel = 0; channel < 3; ++channel) {
                const double error =
                    picture[4 * static_cast<size_t>(y * c.width + x) + channel] - truth(x, y, channel);
                squares += error * error;
            }
        });
        errors.push_back(squares);
    }
    // What chance leaves of a pixel's coverage halves with twice the samples, and these patterns do better.
    EXPECT_LT(errors[1], 0.6 * errors[0]);
    EXPECT_LT(errors[2], 0.3 * errors[0]);
    EXPECT_LT(errors[3], 0.2 * errors[0]);
}

TEST_P(MeshDrawingSilhouettes, AreAsSmoothInTheColoursOfPlanes) {
    const Case c = even(GetParam());
    const std::vector<double> coarse = inPlanes(drawn(c, 1), 4, c.width, c.height);
    const std::vector<double> smooth = inPlanes(drawn(c, 8), 4, c.width, c.height);
    const Bytes planes = drawnPlanar(c, 8);
    double coarse_error = 0, error = 0;
    int compared = 0;
    for (size_t i = planes.size() / 3 * 2; i < planes.size(); ++i)
        if (std::abs(coarse[i] - smooth[i]) > 4) {
            coarse_error += std::abs(coarse[i] - smooth[i]);
            error += std::abs(planes[i] - smooth[i]);
            ++compared;
        }
    EXPECT_GT(compared, 10);
    EXPECT_LT(error, coarse_error / 4);
}

INSTANTIATE_TEST_SUITE_P(Views, MeshDrawingSilhouettes,
                         testing::ValuesIn(kCases + kFirstWithSilhouettes, std::end(kCases)),
                         [](const auto& test) { return std::string(test.param.name); });

/// Turned so far that part of the mesh lies before the nearest plane, and part behind the camera.
Camera turnedCamera(const Case& c, float x_degrees, float y_degrees) {
    const View view = {1, 1, x_degrees, y_degrees, 1.0f, c.fov_scale, 100.0f, 20, halfWidth(c), kHalfHeight};
    return {viewMatrix(view), halfWidth(c), kHalfHeight, 164.0f};
}

TEST(MeshDrawing, ViewsFromWithinTheMeshAreTheSameEverywhere) {
    const Case& c = kCases[0];
    for (const float degrees : {60.0f, 85.0f, 90.0f})
        for (const int samples : {1, 4}) {
            const Camera camera = turnedCamera(c, degrees, degrees / 3);
            const auto draw = [&](const DrawingPath& path, int threads) {
                return drawn(c, camera, samples, path, threads);
            };
            const Bytes wanted = draw(drawingPaths().front(), 1);
            expectOnEveryPath(wanted, 2, draw);
        }
}

TEST(MeshDrawing, TinyPhotosGridsAndPicturesAreDrawn) {
    const Case sizes[] = {{"", 1, 1, 1, 1, 1, 1, 0, 0, 0.81f, 40},
                          {"", 5, 3, 2, 1, 1, 1, 0.5f, 0.5f, 0.81f, 40},
                          {"", 67, 35, 1, 9, 1, 3, -1, 1, 0.81f, 40},
                          {"", 9, 65, 65, 64, 65, 64, 1, -1, 0.81f, 40}};
    for (const Case& c : sizes)
        for (const int samples : {1, 4}) {
            const auto draw = [&](const DrawingPath& path, int threads) {
                return drawn(c, cameraOf(c), samples, path, threads);
            };
            const Bytes wanted = draw(drawingPaths().front(), 1);
            EXPECT_NE(wanted[4 * (wanted.size() / 8) + 1], 0) << "the middle is not black";
            expectOnEveryPath(wanted, 2, draw);
        }
}

TEST(MeshDrawing, TinyPhotosAndPicturesAreDrawnInPlanes) {
    const Case sizes[] = {{"", 2, 2, 1, 1, 1, 1, 0, 0, 0.81f, 40},
                          {"", 6, 4, 2, 1, 1, 1, 0.5f, 0.5f, 0.81f, 40},
                          {"", 70, 36, 1, 9, 1, 3, -1, 1, 0.81f, 40},
                          {"", 270, 34, 65, 64, 65, 64, 1, -1, 0.81f, 40}};
    for (const Case& c : sizes)
        for (const int samples : {1, 4}) {
            const auto draw = [&](const DrawingPath& path, int threads) {
                return drawnPlanar(c, cameraOf(c), samples, path, threads);
            };
            const Bytes wanted = draw(drawingPaths().front(), 1);
            const size_t middle = static_cast<size_t>(c.height / 2 * c.width + c.width / 2);
            EXPECT_GT(wanted[middle], 20) << "the middle is not black";
            expectOnEveryPath(wanted, 2, draw);
        }
}

TEST(MeshDrawing, AnotherPhotoShowsInPlanesToo) {
    const Case& c = kCases[0];
    MeshDrawing drawing(chosenDrawingPath(), 2);
    const size_t pixels = static_cast<size_t>(c.width) * static_cast<size_t>(c.height);
    Bytes planes(pixels / 2 * 3);
    for (const int level : {0, 255, 128}) {
        const Bytes photo(3 * static_cast<size_t>(c.photo_width) * static_cast<size_t>(c.photo_height),
                          static_cast<uint8_t>(level));
        drawing.setPhoto(photo.data(), c.photo_width, c.photo_height);
        drawing.setShapedDepth(depthOf(c.grid_width, c.grid_height).data(), c.grid_width, c.grid_height);
        drawing.draw(cameraOf(c), 4,
                     PlanarPicture{planes.data(), planes.data() + pixels, planes.data() + pixels / 4 * 5,
                                   c.width, c.height});
        const int luma = static_cast<int>(std::lround(16 + 219 * level / 255.0));
        for (size_t i = 0; i < planes.size(); ++i) ASSERT_EQ(planes[i], i < pixels ? luma : 128) << i;
    }
}

TEST(MeshDrawing, HasNoGapsBetweenCellsOfAnyShape) {
    Case c = kCases[0];
    const Bytes photo(3 * static_cast<size_t>(c.photo_width) * static_cast<size_t>(c.photo_height), 201);
    // Deterministic noise: folds everywhere, or triangles that are nearly plain, or steps.
    uint32_t state = 1;
    const auto random = [&state](uint32_t below) {
        state = state * 1664525u + 1013904223u;
        return (state >> 16) % below;
    };
    for (int scene = 0; scene < 18; ++scene) {
        c.grid_width = static_cast<int>(20 + random(100));
        c.grid_height = static_cast<int>(20 + random(80));
        c.x = static_cast<float>(random(201)) / 100 - 1;
        c.y = scene % 4 == 0 ? 0 : static_cast<float>(random(201)) / 100 - 1;
        c.fov_scale = 0.75f;
        Bytes depth;
        for (int j = 0; j < c.grid_height; ++j)
            for (int i = 0; i < c.grid_width; ++i)
                depth.push_back(static_cast<uint8_t>(scene % 3 == 0             ? random(256)
                                                     : scene % 3 == 1           ? 100 + random(8)
                                                     : (i / 9 + j / 7) % 2 == 0 ? 220
                                                                                : 40));
        MeshDrawing drawing(chosenDrawingPath(), 2);
        drawing.setPhoto(photo.data(), c.photo_width, c.photo_height);
        drawing.setShapedDepth(depth.data(), c.grid_width, c.grid_height);
        Bytes rgba(4 * static_cast<size_t>(c.width) * static_cast<size_t>(c.height));
        for (const int samples : {1, 4}) {
            drawing.draw(cameraOf(c), samples,
                         PictureBuffer{rgba.data(), 4 * static_cast<size_t>(c.width), c.width, c.height});
            for (size_t i = 0; i < rgba.size(); i += 4)
                ASSERT_EQ(rgba[i], 201) << "scene " << scene << ", pixel " << i / 4;
        }
    }
}

TEST(MeshDrawing, OneColourStaysThatColourWhereverTheMeshIs) {
    const Case& c = kCases[3];
    MeshDrawing drawing(chosenDrawingPath(), 2);
    const Bytes photo(3 * static_cast<size_t>(c.photo_width) * static_cast<size_t>(c.photo_height), 201);
    drawing.setPhoto(photo.data(), c.photo_width, c.photo_height);
    drawing.setShapedDepth(depthOf(c.grid_width, c.grid_height).data(), c.grid_width, c.grid_height);
    Bytes rgba(4 * static_cast<size_t>(c.width) * static_cast<size_t>(c.height));
    for (const int samples : {1, 4}) {
        drawing.draw(cameraOf(c), samples,
                     PictureBuffer{rgba.data(), 4 * static_cast<size_t>(c.width), c.width, c.height});
        for (size_t i = 0; i < rgba.size(); ++i) ASSERT_EQ(rgba[i], i % 4 == 3 ? 255 : 201) << "byte " << i;
    }
}

}  // namespace
}  // namespace quorvane::software
