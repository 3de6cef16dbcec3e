#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace kolmera {

/// The per-user settings store of the suite: sections of keys in $XDG_CONFIG_HOME/Dorvik/settings.ini (UTF-8; written
/// whole or not at all). Sections in use: "Start" (Lang, Kolmera), "Sökvägar" (Server), "Enheter" (drive letters).
/// Names of sections and keys go without regard to letter case; a value is one line without blanks at its ends. Lines
/// that mean nothing here, other sections among them, stay as they are.
class SettingsStore {
  public:
    /// Opens the store of a file; a missing or unreadable file reads as empty.
    explicit SettingsStore(std::filesystem::path file);
    /// The store of the user: $XDG_CONFIG_HOME, else $HOME/.config.
    static std::filesystem::path userFile();

    [[nodiscard]] std::string get(const std::string& section, const std::string& key,
                                  const std::string& otherwise = {}) const;
    /// Sets a value and writes the file, making its folder where needed. What other programs have written to the file
    /// since it was opened stays and is taken over. Throws PlatformError when it cannot be read or written (the old
    /// file then stays) and for a value of several lines.
    void set(const std::string& section, const std::string& key, const std::string& value);
    /// All keys of a section with their values.
    [[nodiscard]] std::map<std::string, std::string> section(const std::string& name) const;
    /// The names of all sections, in upper case.
    [[nodiscard]] std::vector<std::string> sectionNames() const;

  private:
    void takeOver(const std::vector<std::string>& lines);

    std::filesystem::path file_;
    std::map<std::string, std::map<std::string, std::string>> sections_;  ///< by the section's name in upper case
};

}  // namespace kolmera
