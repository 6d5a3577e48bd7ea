#ifndef QUORVANE_APPS_TUNER_CORE_SESSION_H
#define QUORVANE_APPS_TUNER_CORE_SESSION_H

#include <optional>
#include <string>

#include "apps/tuner/core/workbench.h"
#include "sizes/sizes.h"

namespace quorvane::tuner {

/// What is remembered from one session to the next.
struct Session {
    std::string photo;
    std::string depth;
    Pair tunings;
    Size window;  ///< in the desktop's units; nothing of it: as usual
};

/// Written whole or not at all; the folder is made where it is missing. Throws Error.
void saveSession(const Session& session, const std::string& path);

/// Nothing where there is none. One that cannot be read is none either: `*remark` then says why.
std::optional<Session> loadSession(const std::string& path, std::string* remark);

}  // namespace quorvane::tuner

#endif
