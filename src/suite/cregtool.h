#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/settings.h"

namespace kolmera {

/// Reads the registry: keys are sections of the settings store, named by their whole path without the root ("A\B"), so
/// the per-user root is the only one. Names go without regard to letter case.
class cRegTool {
  public:
    explicit cRegTool(const SettingsStore& settings) : settings_(settings) {}

    /// Makes a key the current one; false when it has neither values nor subkeys.
    bool OpenRegKey(std::string_view rootKey, std::string_view path);
    void CloseRegKey() { key_.clear(); }
    /// Names of the current key's subkeys, in upper case.
    [[nodiscard]] std::vector<std::string> EnumRegKeys() const;
    /// Names of the current key's values.
    [[nodiscard]] std::vector<std::string> EnumRegValues() const;
    /// The value whose name is the path's last part, as text; empty when it is missing. The current key stays.
    [[nodiscard]] std::string GetRegValue(std::string_view rootKey, std::string_view path) const;

  private:
    const SettingsStore& settings_;
    std::string key_;  ///< empty: none is open
};

}  // namespace kolmera
