#include "media/clip/places.h"

namespace quorvane::media {
namespace {

#include "media/clip/places.inc"

}  // namespace

std::vector<std::string> placeNames() {
    std::vector<std::string> names;
    for (const Place& row : kPlaces)
        if (names.empty() || names.back() != row.name) names.emplace_back(row.name);
    return names;
}

std::vector<const Place*> rowsOf(std::string_view place) {
    std::vector<const Place*> rows;
    for (const Place& row : kPlaces)
        if (row.name == place) rows.push_back(&row);
    return rows;
}

std::string_view placesDate() { return kDate; }

}  // namespace quorvane::media
