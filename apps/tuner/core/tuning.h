#ifndef QUORVANE_APPS_TUNER_CORE_TUNING_H
#define QUORVANE_APPS_TUNER_CORE_TUNING_H

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/quorvane/drawing/motion.h"
#include "apps/quorvane/drawing/view_options.h"
#include "apps/quorvane/input/input_options.h"
#include "media/profile/profile.h"
#include "quorvane/parameters.h"

namespace quorvane::tuner {

/// How closely the mesh follows the photo, as --grid says it.
enum class Grid { kAuto, kFine, kCoarse };

/// Everything that can be tuned for a photo. What is empty is left to be chosen for the photo.
struct Tuning {
    int orientation = 4;
    std::map<std::string, double> parameters;  ///< those that somebody has set; in their range
    Pivot pivot = Pivot::kAuto;
    double pivot_x = 0.5;  ///< of Pivot::kPoint: 0 to 1 from the photo's left
    double pivot_y = 0.5;  ///< from its top
    bool clean_edges = true;
    Grid grid = Grid::kAuto;
    std::optional<bool> invert_depth;
    media::Holes holes = media::Holes::kAuto;
    int samples = kAutoSamples;
    std::string motion = "sway";  ///< as --motion takes it
    double amount = 1.0;          ///< how far the view swings, 0 to 1
    int frames = 120;             ///< of a loop
    int fps = 30;
    int longest = 0;  ///< pixels of the picture's longer side; 0: as many as the window shows

    /// Options of a profile that the window has no control for.
    std::vector<std::pair<std::string, media::Profile::Value>> others;

    bool operator==(const Tuning& other) const;
};

/// What `quorvane render` makes of the same options.
app::ViewOptions viewOptions(const Tuning& tuning);

/// Sets a parameter, which a pivot that was chosen gives way to. Does nothing where it may not have the
/// value.
void setParameter(const std::string& name, double value, Tuning* tuning);

/// A pivot chosen at a place of the photo, or automatically; it replaces a distance that was set.
void setPivot(Pivot pivot, double x, double y, Tuning* tuning);

/// A place of another photo says nothing of this one.
void forgetPlace(Tuning* tuning);

/// The tuned set of the tuning's orientation.
LibParam tunedSet(const Tuning& tuning);

/// All parameters as they are drawn with: of the tuned set, what was chosen for the photo, and what was set.
LibParam inForce(const Tuning& tuning, const std::vector<std::pair<std::string, double>>& planned);

/// Whether the two are of the same decoded images.
bool decodesAlike(const Tuning& a, const Tuning& b);

/// The double with the fewest digits that is the same as a float: 0.6 and not 0.60000002384185791.
double shortest(double value);

/// Names of the choices, in the order of their enumerations, as the command line has them.
extern const char* const kGridNames[3];
extern const char* const kHolesNames[3];

}  // namespace quorvane::tuner

#endif
