#include "platform/settings.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/descriptor.h"
#include "platform/error.h"
#include "platform/lettercase.h"
#include "platform/outputfile.h"

namespace kolmera {

namespace fs = std::filesystem;

namespace {

std::string contentOf(const fs::path& file) {
    const Descriptor descriptor(file, O_RDONLY);
    std::string content(descriptor.size(), '\0');
    content.resize(descriptor.readAt(0, content.data(), content.size()));
    if (content.starts_with("\xEF\xBB\xBF")) content.erase(0, 3);
    return content;
}

/// The lines of a settings file; a missing file has none.
std::vector<std::string> linesOf(const fs::path& file) {
    try {
        std::vector<std::string> lines = split(contentOf(file), "\n");
        if (lines.back().empty()) lines.pop_back();
        return lines;
    } catch (const PlatformError& error) {
        if (error.number() != errors::kFileNotFound) throw;
        return {};
    }
}

std::string_view stripped(std::string_view line) {
    if (line.ends_with('\r')) line.remove_suffix(1);
    return trimmed(line);
}

std::optional<std::string_view> sectionName(std::string_view line) {
    line = stripped(line);
    if (!line.starts_with('[') || !line.ends_with(']')) return std::nullopt;
    return trimmed(line.substr(1, line.size() - 2));
}

struct Entry {
    std::string_view key, value;
};

std::optional<Entry> entryOf(std::string_view line) {
    line = stripped(line);
    const std::size_t equals = line.find('=');
    if (line.starts_with(';') || line.starts_with('#') || equals == std::string_view::npos) return std::nullopt;
    return Entry{trimmed(line.substr(0, equals)), trimmed(line.substr(equals + 1))};
}

/// Puts "key=value" in the place of the key's line, else behind the last entry of its section, else into a new section.
void setEntry(std::vector<std::string>& lines, const std::string& section, const std::string& key,
              const std::string& value) {
    const std::string newLine = key + "=" + value;
    bool inSection = false;
    std::optional<std::size_t> behind;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (const auto name = sectionName(lines[i])) {
            inSection = equalNoCase(*name, section);
            if (inSection) behind = i + 1;
        } else if (const auto entry = inSection ? entryOf(lines[i]) : std::nullopt) {
            behind = i + 1;
            if (!equalNoCase(entry->key, key)) continue;
            lines[i] = newLine;
            return;
        }
    }
    if (!behind) {
        lines.push_back("[" + section + "]");
        behind = lines.size();
    }
    lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(*behind), newLine);
}

void createFolders(const fs::path& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) throwSystemError(error.value());
}

}  // namespace

SettingsStore::SettingsStore(fs::path file) : file_(std::move(file)) {
    try {
        takeOver(linesOf(file_));
    } catch (const PlatformError&) {
        sections_.clear();  // unreadable: as empty; `set` will report it
    }
}

fs::path SettingsStore::userFile() {
    const auto variable = [](const char* name) {
        const char* value = std::getenv(name);
        return fs::path(value == nullptr ? "" : value);
    };
    fs::path folder = variable("XDG_CONFIG_HOME");
    if (!folder.is_absolute()) {
        fs::path home = variable("HOME");
        const passwd* const user = home.empty() ? getpwuid(getuid()) : nullptr;
        if (user != nullptr) home = user->pw_dir;
        folder = home / ".config";
    }
    return folder / "Dorvik" / "settings.ini";
}

std::string SettingsStore::get(const std::string& section, const std::string& key, const std::string& otherwise) const {
    const auto entries = sections_.find(upperCase(section));
    if (entries == sections_.end()) return otherwise;
    for (const auto& [name, value] : entries->second) {
        if (equalNoCase(name, key)) return value;
    }
    return otherwise;
}

void SettingsStore::set(const std::string& section, const std::string& key, const std::string& value) {
    if (value.find_first_of("\r\n") != std::string::npos)
        throw PlatformError(errors::kWrongType, "a setting is one line").about(key + ": " + value);
    // Read again: other programs of the suite write the same file.
    std::vector<std::string> lines = linesOf(file_);
    setEntry(lines, section, key, value);
    std::string content;
    for (const std::string& line : lines) content += line + "\n";
    createFolders(file_.parent_path());
    OutputFile file(file_);
    file.write(content);
    file.finish();
    takeOver(lines);
}

std::map<std::string, std::string> SettingsStore::section(const std::string& name) const {
    const auto entries = sections_.find(upperCase(name));
    return entries == sections_.end() ? std::map<std::string, std::string>{} : entries->second;
}

std::vector<std::string> SettingsStore::sectionNames() const {
    std::vector<std::string> names;
    for (const auto& [name, entries] : sections_) names.push_back(name);
    return names;
}

void SettingsStore::takeOver(const std::vector<std::string>& lines) {
    sections_.clear();
    std::string section;
    for (const std::string& line : lines) {
        if (const auto name = sectionName(line)) {
            section = upperCase(*name);
        } else if (const auto entry = entryOf(line)) {
            sections_[section].insert_or_assign(std::string(entry->key), std::string(entry->value));
        }
    }
}

}  // namespace kolmera
