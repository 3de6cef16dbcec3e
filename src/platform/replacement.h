#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "platform/descriptor.h"

namespace kolmera {

/// Puts new files in the place of old ones of one folder: all of them or none, whenever the program or the machine
/// stops. Every new file is first written beside the old one under a name of its own (KOLMERA-number.TMP) and synced.
/// One file is then renamed. For several, KOLMERA.JNL names them first: from then on they count, and `complete` carries
/// out what is left of it. All of this only under the folder's exclusive lock.
class Replacement {
  public:
    explicit Replacement(std::filesystem::path folder) : folder_(std::move(folder)) {}
    ~Replacement();  ///< without `commit` nothing has changed
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    /// Writes the new content of a file, with the rights of the old one, or with `mode` where there is none.
    void add(const std::string& name, std::string_view content, const Descriptor& old, unsigned mode);
    void commit();

    /// Whether a replacement in the folder has begun to count and is not carried out.
    [[nodiscard]] static bool isPending(const std::filesystem::path& folder);
    /// Carries it out, and removes new files that an interrupted program has left behind. Throws PlatformError.
    static void complete(const std::filesystem::path& folder);

  private:
    struct NewFile {
        std::filesystem::path temporary;
        std::string name;
    };
    void write(const std::string& name, std::string_view content, const Descriptor& old, unsigned mode);
    void moveLast();
    void writeJournal();

    std::filesystem::path folder_;
    std::vector<NewFile> files_;
};

}  // namespace kolmera
