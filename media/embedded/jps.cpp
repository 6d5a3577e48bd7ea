// The JPEG Stereo block of VRex: an APP3 segment of "_JPSJPS_", u16 length, then four bytes for separation,
// flags, layout and type of medium.

#include "media/embedded/bytes.h"
#include "media/embedded/container.h"

namespace quorvane::media {

void readJps(const PhotoFile& file, Contents* contents) {
    if (!file.jpeg) return;
    constexpr uint8_t kApp3 = 0xe3;
    constexpr std::string_view kSignature = "_JPSJPS_";
    for (const JpegSegment& segment : file.jpeg->segments) {
        if (segment.marker != kApp3 || !startsWith(segment.body, kSignature)) continue;
        constexpr uint64_t kFlags = 11, kLayout = 12, kType = 13;
        constexpr uint64_t kStereo = 1, kSideBySide = 2, kOverUnder = 3, kAnaglyph = 4;
        constexpr uint64_t kHalfHeight = 1, kHalfWidth = 2, kLeftFirst = 4;
        const uint64_t layout = bigEndian(segment.body, kLayout, 1).value_or(0);
        if (bigEndian(segment.body, kType, 1) != kStereo) return;
        const bool beside = layout == kSideBySide, below = layout == kOverUnder;
        if (layout == kAnaglyph) {
            contents->remarks.emplace_back("an anaglyph; its views cannot be parted");
        } else if (!beside && !below) {
            contents->remarks.emplace_back("its views lie in alternate rows, which are not read");
        } else {
            const uint64_t flags = bigEndian(segment.body, kFlags, 1).value_or(0);
            PairLayout halves;
            halves.one_above_other = below;
            halves.squeezed = (flags & (halves.one_above_other ? kHalfHeight : kHalfWidth)) != 0;
            halves.right_first = (flags & kLeftFirst) == 0;
            contents->pair = pairOfHalves(halves);
        }
        return;
    }
}

}  // namespace quorvane::media
