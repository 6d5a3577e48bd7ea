#ifndef QUORVANE_TESTS_SUPPORT_PROPERTIES_H
#define QUORVANE_TESTS_SUPPORT_PROPERTIES_H

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace quorvane::test {

/// Stands in for the system properties: `property_get` and `property_set` with the Android contract (the
/// default stands in for an unset or empty value, at most 91 bytes come back), remembering every look-up.
class Properties {
  public:
    static Properties& instance();

    void clear();
    void set(const std::string& key, const std::string& value) { m_values[key] = value; }
    void unset(const std::string& key) { m_values.erase(key); }
    std::string get(const std::string& key) const;

    /// Key and default text of every look-up, in order.
    std::vector<std::pair<std::string, std::string>> lookups;

  private:
    std::map<std::string, std::string> m_values;
};

}  // namespace quorvane::test

#endif
