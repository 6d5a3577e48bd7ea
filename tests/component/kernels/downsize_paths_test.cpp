// Every path of the reduction against the reference, between no-access pages: one byte too far is a crash
// here and not on a device. A strip holds 8 to 128 outputs, as the path and the ratio have it; the widths
// reach from 1, below every strip, to three strips of the widest path and a bit.

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>

#include "../each_path.h"
#include "support/guarded_bytes.h"
#include "support/models.h"

namespace quorvane::test {
namespace {

constexpr int kRatios[] = {1, 2, 4, 8, 16, 32};

int widest(int ratio) { return std::min(400, 816 / ratio); }

/// A reduction, of gray or of colour.
struct Shape {
    int out_width, out_height;
    int across, down;
    bool rgb;
    int columns_left = 0;  ///< source columns that belong to no output
    int rows_left = 0;

    int width() const { return out_width * across + columns_left; }
    int height() const { return out_height * down + rows_left; }
    size_t photoBytes() const {
        return static_cast<size_t>(width()) * static_cast<size_t>(height()) * (rgb ? 3 : 1);
    }
    /// How many bytes behind the photo the reference reads: 3 for each pixel of its right margin that is not
    /// there. The widest kernel's last weight is 0, and that pixel is not read.
    size_t bytesBehind() const {
        const int margin = across == 32 ? 9 : weightsOf(across).margin;
        return rgb ? 3 * static_cast<size_t>(std::max(margin - columns_left, 0)) : 0;
    }
    size_t sourceBytes() const { return photoBytes() + bytesBehind(); }
};

std::ostream& operator<<(std::ostream& out, const Shape& s) {
    return out << (s.rgb ? "colour " : "gray ") << s.width() << " x " << s.height() << " to " << s.out_width
               << " x " << s.out_height;
}

/// `shape` for gray and for colour, for all ratio pairs.
template <typename Run>
void forEveryRatioPair(Run run) {
    for (const bool rgb : {false, true})
        for (const int across : kRatios)
            for (const int down : kRatios) {
                run(across, down, rgb);
                if (testing::Test::HasFatalFailure()) return;
            }
}

class DownsizePaths : public testing::Test {
  protected:
    /// What every path makes of the source, which is the photo and the bytes behind it.
    void expectOnEveryPath(const Shape& shape, const Bytes& source, const Bytes& wanted) {
        ASSERT_EQ(source.size(), shape.sourceBytes());
        for (Room& room : m_rooms) {
            room.source.hold(source);
            for (const Path& path : m_paths) {
                room.out.hold(wanted.size());
                reduce(path, shape, room.source.data(), room.out.data());
                ASSERT_EQ(difference(room.out.data(), wanted), "") << path.name << ", " << shape;
                ASSERT_TRUE(room.out.surroundingsUntouched()) << path.name << ", " << shape;
            }
        }
    }

    void expectTheReferencesBytes(const Shape& shape, const Bytes& source) {
        Bytes wanted(static_cast<size_t>(shape.out_width) * static_cast<size_t>(shape.out_height));
        reduce(referencePath(), shape, source.data(), wanted.data());
        expectOnEveryPath(shape, source, wanted);
    }

    /// `size` bytes of noise, other ones each time.
    Bytes freshNoise(size_t size) {
        m_noise_start = (m_noise_start + 7919) % (m_noise.size() - size);
        const auto first = m_noise.begin() + static_cast<ptrdiff_t>(m_noise_start);
        return {first, first + static_cast<ptrdiff_t>(size)};
    }

  private:
    static void reduce(const Path& path, const Shape& s, const uint8_t* source, uint8_t* out) {
        path.downsize(
            {s.width(), s.height(), source, s.out_width, s.out_height, out, s.across, s.down, s.rgb});
    }

    static constexpr size_t kRoom = 1 << 19;
    struct Room {
        explicit Room(GuardedBytes::Against against) : source(kRoom, against), out(kRoom, against) {}
        GuardedBytes source, out;
    };
    Room m_rooms[2] = {Room(GuardedBytes::Against::end), Room(GuardedBytes::Against::start)};
    const std::vector<Path> m_paths = vectorPaths();
    const Bytes m_noise = noise(2 * kRoom, 60221);
    size_t m_noise_start = 0;
};

TEST_F(DownsizePaths, GiveTheReferencesBytesAtEveryWidthAndRatioPair) {
    forEveryRatioPair([this](int across, int down, bool rgb) {
        for (int w = 1; w <= widest(across); ++w) {
            // Two rows, but others now and then; and rows that belong to no output.
            const int h = w % 8 == 0 ? 3 : w % 8 == 4 ? 1 : 2;
            const Shape shape = {w, h, across, down, rgb, 0, h == 3 ? w / 8 % 3 : 0};
            expectTheReferencesBytes(shape, freshNoise(shape.sourceBytes()));
            if (HasFatalFailure()) return;
        }
    });
}

TEST_F(DownsizePaths, GiveTheReferencesBytesWhereColumnsAreLeftOver) {
    forEveryRatioPair([this](int across, int down, bool rgb) {
        for (int w = 2; w <= widest(across); w += 1 + down / 4) {
            // As many as the ratio allows, up to more than the widest margin.
            const Shape shape = {w, 2, across, down, rgb, 1 + w % std::min(w - 1, 12), 0};
            expectTheReferencesBytes(shape, freshNoise(shape.sourceBytes()));
            if (HasFatalFailure()) return;
        }
    });
}

// The widths about whole vectors and strips.
constexpr int kWidths[] = {1, 7, 8, 17, 32, 33, 64, 65, 128, 200};

/// Runs `fill(x, y, channel)` for every byte of the photo; what lies behind it becomes as in another row.
template <typename Fill>
Bytes filled(const Shape& s, Fill fill) {
    Bytes source;
    const int channels = s.rgb ? 3 : 1;
    for (size_t i = 0; i < s.sourceBytes(); ++i) {
        const int pixel = static_cast<int>(i) / channels;
        source.push_back(fill(pixel % s.width(), pixel / s.width(), static_cast<int>(i) % channels));
    }
    return source;
}

TEST_F(DownsizePaths, GiveTheReferencesBytesOfExtremePictures) {
    forEveryRatioPair([this](int across, int down, bool rgb) {
        for (const int w : kWidths) {
            if (w > widest(across)) break;
            const Shape shape = {w, down < 8 ? 5 : 2, across, down, rgb};
            const auto level = [](bool bright) { return static_cast<uint8_t>(bright ? 255 : 0); };
            for (const Bytes& source : {
                     Bytes(shape.sourceBytes(), 255),
                     Bytes(shape.sourceBytes(), 0),
                     Bytes(shape.sourceBytes(), 128),
                     filled(shape, [&](int x, int, int) { return level(x % 2 == 0); }),
                     filled(shape, [&](int x, int, int) { return level(x % 2 == 1); }),
                     filled(shape, [&](int x, int, int) { return level(x / std::max(across, 2) % 2 == 0); }),
                     filled(shape, [&](int, int y, int) { return level(y / down % 2 == 0); }),
                     filled(shape, [&](int x, int, int channel) { return level(x % 3 == channel); }),
                 })
                expectTheReferencesBytes(shape, source);
            if (HasFatalFailure()) return;
        }
    });
}

// Each column alone: a weight in the wrong place shows, however small.
TEST_F(DownsizePaths, GiveTheReferencesBytesOfOneBrightColumn) {
    for (const bool rgb : {false, true})
        for (const int across : kRatios) {
            // More than a strip of every path.
            const Shape shape = {across == 1 ? 131 : across <= 4 ? 67 : 288 / across + 3, 2, across, 1, rgb};
            for (int column = 0; column < shape.width(); ++column) {
                const Bytes source = filled(
                    shape, [&](int x, int, int) { return static_cast<uint8_t>(x == column ? 255 : 3); });
                ASSERT_NO_FATAL_FAILURE(expectTheReferencesBytes(shape, source)) << "column " << column;
            }
        }
}

TEST_F(DownsizePaths, GiveTheReferencesBytesOfOneBrightRow) {
    for (const bool rgb : {false, true})
        for (const int across : {1, 8})
            for (const int down : kRatios) {
                const Shape shape = {widest(across) / 3, 3, across, down, rgb, 0, 1};
                for (int row = 0; row < shape.height(); ++row) {
                    const Bytes source = filled(
                        shape, [&](int, int y, int) { return static_cast<uint8_t>(y == row ? 255 : 3); });
                    ASSERT_NO_FATAL_FAILURE(expectTheReferencesBytes(shape, source)) << "row " << row;
                }
            }
}

TEST_F(DownsizePaths, GiveTheModelsBytes) {
    forEveryRatioPair([this](int across, int down, bool rgb) {
        for (const int w : {3, 37, 150}) {
            if (w > widest(across)) break;
            const Shape shape = {w, 2, across, down, rgb};
            const Bytes source = freshNoise(shape.sourceBytes());
            Bytes padded = source;
            padded.resize(source.size() + 3);
            const auto model = rgb ? reducedLuma : reducedGray;
            expectOnEveryPath(shape, source, model(padded, shape.width(), shape.height(), w, 2));
            if (HasFatalFailure()) return;
        }
    });
}

TEST_F(DownsizePaths, WeighEveryColourAlike) {
    // All values of each channel under extreme and middling values of the others.
    Shape shape = {256, 27, 1, 1, true};
    const Bytes source = filled(shape, [](int x, int y, int channel) {
        constexpr int kOthers[] = {0, 101, 255};
        const int first = kOthers[y % 3], second = kOthers[y / 3 % 3];
        const int varied = y / 9;
        return static_cast<uint8_t>(channel == varied ? x : channel == (varied + 1) % 3 ? first : second);
    });
    Bytes wanted;
    for (size_t i = 0; i < source.size(); i += 3)
        wanted.push_back(static_cast<uint8_t>(
            16 + (66 * source[i] + 129 * source[i + 1] + 25 * source[i + 2] + 128) / 256));
    expectOnEveryPath(shape, source, wanted);
}

}  // namespace
}  // namespace quorvane::test
