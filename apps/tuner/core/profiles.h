#ifndef QUORVANE_APPS_TUNER_CORE_PROFILES_H
#define QUORVANE_APPS_TUNER_CORE_PROFILES_H

#include <string>
#include <vector>

#include "apps/tuner/core/tuning.h"
#include "media/profile/profile.h"

namespace quorvane::tuner {

/// A tuning as a profile that `quorvane render --profile` draws the same with. It names every parameter but
/// those that are left to be chosen for a photo, which the options `pivot`, `frame` and `edges` stand for.
media::Profile profileOf(const Tuning& tuning);

/// The same with every parameter, as `values` has them: for this photo alone.
media::Profile fixedProfileOf(const Tuning& tuning, const LibParam& values);

/// A profile as a tuning. Options that the window has no control for are kept for the next profileOf. Throws
/// Error, which begins with `name`, for values that `quorvane render` does not take.
Tuning tuningOf(const media::Profile& profile, const std::string& name);

/// Profiles with a name, each a file in a folder.
class NamedProfiles {
  public:
    explicit NamedProfiles(std::string folder) : m_folder(std::move(folder)) {}

    /// Sorted. None where there is no such folder.
    std::vector<std::string> names() const;

    /// Whether a file can have this name: letters of any script, digits, blanks and "-_.()", not more than 80
    /// bytes, and not beginning with a dot.
    static bool isName(const std::string& name);

    /// Makes the folder where it is missing and writes the profile whole or not at all, over one of the same
    /// name. Throws Error.
    void save(const std::string& name, const Tuning& tuning) const;

    /// Throws Error.
    Tuning load(const std::string& name) const;

    /// Throws Error.
    void remove(const std::string& name) const;

  private:
    std::string pathOf(const std::string& name) const;

    std::string m_folder;
};

/// Where this user's settings of quorvane-tuner are: in XDG_CONFIG_HOME, or ~/.config. Throws Error where
/// neither XDG_CONFIG_HOME nor HOME is set.
std::string settingsFolder();

/// Makes a folder and those it lies in. Throws Error.
void makeFolder(const std::string& path);

}  // namespace quorvane::tuner

#endif
