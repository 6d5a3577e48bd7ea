#ifndef QUORVANE_MEDIA_CLIP_PLACES_H
#define QUORVANE_MEDIA_CLIP_PLACES_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane::media {

/// A format that a place takes, and what is made for it: a row of places.json, which has the sources.
struct Place {
    std::string_view name;
    std::string_view format;  ///< as --format takes it
    std::string_view codec;   ///< the only one that plays there; empty: any of the format's
    int64_t limit;            ///< bytes of the file
    int longest;              ///< pixels of the longer side at most; 0: `side` says it
    int side;                 ///< pixels of either side; 0: any
    int fps;                  ///< of a clip, where no other is asked for; 0: as usual
    double seconds;           ///< likewise
};

/// The names, in the order of the data.
std::vector<std::string> placeNames();

/// What a place takes, the usual format first; nothing for a name that there is not.
std::vector<const Place*> rowsOf(std::string_view place);

/// The day the data are of, as "2026-11-21".
std::string_view placesDate();

}  // namespace quorvane::media

#endif
