// Profiles: values that are written and read back as they are, or one line.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "media/profile/profile.h"
#include "one_line.h"

using namespace quorvane;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data),
                                 std::min(size, media::kMostProfileBytes));
    fuzz::orOneLine([bytes] {
        const media::Profile profile = media::readProfile(bytes, "profile");
        const media::Profile again = media::readProfile(media::profileText(profile), "again");
        fuzz::promised(again.parameters == profile.parameters, "parameters read back");
        fuzz::promised(again.options == profile.options, "options read back");
        for (const auto& [key, value] : profile.options)
            if (std::holds_alternative<double>(value))
                fuzz::promised(media::valueOf(media::textOf(value)) == value,
                               "a number's text is that number");
    });
    return 0;
}
