#include "quorvane/parameters.h"

#include <cutils/properties.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "diagnostics/log.h"

namespace {

constexpr size_t kDefaultTextSize = 32;
constexpr size_t kValueSize = 128;

/// Looks properties up with the current value as the default, in its text form.
class PropertyReader {
  public:
    int integer(const char* key, int current) {
        std::snprintf(m_default, sizeof m_default, "%d", current);
        property_get(key, m_value, m_default);
        return std::atoi(m_value);
    }

    /// An unset property cuts `current` to the six decimals of its text. One whose text is too long for the
    /// buffer (about 1e24 and more) is kept as it is instead of being cut to another number.
    float real(const char* key, float current) {
        const int length = std::snprintf(m_default, sizeof m_default, "%f", static_cast<double>(current));
        const bool fits = static_cast<size_t>(length) < sizeof m_default;
        if (!fits) m_default[0] = '\0';
        const int found = property_get(key, m_value, m_default);
        if (!fits && found <= 0) return current;
        return static_cast<float>(std::atof(m_value));
    }

  private:
    char m_default[kDefaultTextSize] = {};
    char m_value[kValueSize] = {};
};

}  // namespace

LibParam quorvane::secondTunedSet() {
    LibParam set;
    for (const Parameter& parameter : kParameters)
        if (parameter.second) parameter.store(*parameter.second, &set);
    return set;
}

void ESRenderer::getProperties(uint32_t orientation) {
    LOGD("getProperties() orientation=%d\n", static_cast<int>(orientation));
    if (orientation != 7 && orientation != 4) params = quorvane::secondTunedSet();

    PropertyReader properties;
    m_debugEnable = static_cast<uint32_t>(properties.integer("quorvane.debug", 0));
    for (const quorvane::Parameter& parameter : quorvane::kParameters)
        if (parameter.integer != nullptr)
            params.*parameter.integer = properties.integer(parameter.property, params.*parameter.integer);
        else
            params.*parameter.real = properties.real(parameter.property, params.*parameter.real);

    if (m_debugEnable == 0) return;
    for (const quorvane::Parameter& parameter : quorvane::kParameters)
        if (parameter.integer != nullptr)
            LOGD("%-25s: %d\n", parameter.name, params.*parameter.integer);
        else
            LOGD("%-25s: %f\n", parameter.name, static_cast<double>(params.*parameter.real));
}
