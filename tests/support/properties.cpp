#include "support/properties.h"

#include <cutils/properties.h>

#include <algorithm>
#include <cstring>

namespace quorvane::test {

Properties& Properties::instance() {
    static Properties* properties = new Properties;
    return *properties;
}

void Properties::clear() {
    m_values.clear();
    lookups.clear();
}

std::string Properties::get(const std::string& key) const {
    const auto found = m_values.find(key);
    return found != m_values.end() ? found->second : std::string();
}

}  // namespace quorvane::test

using quorvane::test::Properties;

int property_get(const char* key, char* value, const char* default_value) {
    Properties& properties = Properties::instance();
    properties.lookups.emplace_back(key, default_value != nullptr ? default_value : "(null)");
    std::string text = properties.get(key);
    if (text.empty() && default_value != nullptr) text = default_value;
    text.resize(std::min(text.size(), size_t{PROPERTY_VALUE_MAX - 1}));
    std::memcpy(value, text.c_str(), text.size() + 1);
    return static_cast<int>(text.size());
}

int property_set(const char* key, const char* value) {
    Properties::instance().set(key, value != nullptr ? value : "");
    return 0;
}
