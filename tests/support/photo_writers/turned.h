#ifndef QUORVANE_TESTS_SUPPORT_PHOTO_WRITERS_TURNED_H
#define QUORVANE_TESTS_SUPPORT_PHOTO_WRITERS_TURNED_H

#include <cstddef>

namespace quorvane::test {

/// A one-channel image as a viewer shows it that heeds Exif's `code`, worked out from Exif's own table: on
/// which side of the shown picture the first stored row and the first stored column lie.
template <typename Picture>
Picture turned(const Picture& stored, int code) {
    enum Side { kTop, kBottom, kLeft, kRight };
    constexpr Side kFirstRow[] = {kTop, kTop, kTop, kBottom, kBottom, kLeft, kRight, kRight, kLeft};
    constexpr Side kFirstColumn[] = {kLeft, kLeft, kRight, kRight, kLeft, kTop, kTop, kBottom, kBottom};
    const bool across = code >= 5;
    Picture shown(across ? stored.height : stored.width, across ? stored.width : stored.height);
    int x = 0, y = 0;
    const auto place = [&](Side side, int away) {
        if (side == kTop) y = away;
        if (side == kBottom) y = shown.height - 1 - away;
        if (side == kLeft) x = away;
        if (side == kRight) x = shown.width - 1 - away;
    };
    size_t next = 0;
    for (int row = 0; row < stored.height; ++row)
        for (int column = 0; column < stored.width; ++column) {
            place(kFirstRow[code], row);
            place(kFirstColumn[code], column);
            shown
                .samples[static_cast<size_t>(y) * static_cast<size_t>(shown.width) + static_cast<size_t>(x)] =
                stored.samples[next++];
        }
    return shown;
}

}  // namespace quorvane::test

#endif
