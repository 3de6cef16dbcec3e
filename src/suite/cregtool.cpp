#include "suite/cregtool.h"

#include <algorithm>

#include "platform/lettercase.h"

namespace kolmera {
namespace {

bool isUserRoot(std::string_view rootKey) { return equalNoCase(rootKey, "HKEY_CURRENT_USER"); }

std::string_view withoutLastSeparator(std::string_view path) {
    if (path.ends_with('\\')) path.remove_suffix(1);
    return path;
}

}  // namespace

bool cRegTool::OpenRegKey(std::string_view rootKey, std::string_view path) {
    CloseRegKey();
    if (!isUserRoot(rootKey)) return false;
    key_ = withoutLastSeparator(path);
    if (!EnumRegValues().empty() || !EnumRegKeys().empty()) return true;
    CloseRegKey();
    return false;
}

std::vector<std::string> cRegTool::EnumRegKeys() const {
    std::vector<std::string> names;
    if (key_.empty()) return names;
    const std::string parent = upperCase(key_) + "\\";
    for (const std::string& section : settings_.sectionNames()) {
        if (!section.starts_with(parent)) continue;
        std::string name = section.substr(parent.size());
        name.resize(std::min(name.find('\\'), name.size()));
        if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
    }
    return names;
}

std::vector<std::string> cRegTool::EnumRegValues() const {
    std::vector<std::string> names;
    if (key_.empty()) return names;
    for (const auto& [name, value] : settings_.section(key_)) names.push_back(name);
    return names;
}

std::string cRegTool::GetRegValue(std::string_view rootKey, std::string_view path) const {
    const std::size_t separator = path.rfind('\\');
    if (!isUserRoot(rootKey) || separator == std::string_view::npos) return {};
    return settings_.get(std::string(path.substr(0, separator)), std::string(path.substr(separator + 1)));
}

}  // namespace kolmera
