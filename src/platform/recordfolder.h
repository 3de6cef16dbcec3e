#pragma once

#include <deque>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/folderlock.h"
#include "platform/recordfile.h"

namespace kolmera {

// The files of fixed records of one folder. Names are found without regard to letter case. Errors are PlatformError
// with the file's name and the system's text. What an interrupted change has left is completed first, wherever it was.

/// The records of one file. A missing one is made empty; where the folder cannot be written it only reads as empty. A
/// folder that does not exist is an error.
Records readRecords(const std::filesystem::path& file, const RecordLayout& layout);

/// The content of a file that has no records; empty for a missing one, which is not made.
std::string readWholeText(const std::filesystem::path& folder, std::string_view name);

/// Several files as they are at one moment: nobody changes them while this object lives.
class RecordSnapshot {
  public:
    explicit RecordSnapshot(std::filesystem::path folder);
    [[nodiscard]] Records file(const RecordLayout& layout) const;

  private:
    std::filesystem::path folder_;
    std::optional<FolderLock> lock_;
};

/// One change of files of a folder. Other programs neither change them meanwhile nor ever meet a part of it: `commit`
/// puts the changed files on the disk and in place whole, all or none, whenever the program or the machine stops. They
/// keep their rights. A symbolic link is refused: what it points to is nobody's to overwrite, and replacing the link
/// would part the two.
class RecordChange {
  public:
    explicit RecordChange(std::filesystem::path folder);
    RecordChange(const RecordChange&) = delete;
    RecordChange& operator=(const RecordChange&) = delete;

    /// The records of a file as they are now, empty for a missing one; to be changed in place. `name` is the file's
    /// where several have one layout.
    Records& file(const RecordLayout& layout, std::string_view name = {});
    /// The same with a file that has no records.
    std::string& text(std::string_view name);
    /// The last call. Without it nothing has changed.
    void commit();

  private:
    struct File {
        std::filesystem::path path;
        const RecordLayout& layout;
        Descriptor old;
        Records records;
        std::string before;
    };
    struct Text {
        std::filesystem::path path;
        Descriptor old;
        std::string content, before;
    };
    std::filesystem::path folder_;
    FolderLock lock_;
    std::deque<File> files_;
    std::deque<Text> texts_;
};

}  // namespace kolmera
