#include "platform/recordfolder.h"

#include <fcntl.h>

#include <system_error>

#include "platform/error.h"
#include "platform/paths.h"
#include "platform/replacement.h"

namespace kolmera {

namespace fs = std::filesystem;

namespace {

/// Names the file in an error of the statement: the system's text does not.
template <typename Statement>
decltype(auto) naming(std::string_view file, Statement&& statement) {
    try {
        return statement();
    } catch (const PlatformError& error) {
        throw error.about(std::string(file));
    }
}

void completeInterrupted(const fs::path& folder) {
    if (!Replacement::isPending(folder)) return;
    const FolderLock lock(folder, FolderLock::Kind::Exclusive);
    Replacement::complete(folder);
}

std::string contentOf(const Descriptor& file) {
    std::string bytes(file.size(), '\0');
    bytes.resize(file.readAt(0, bytes.data(), bytes.size()));
    return bytes;
}

/// The content; empty when the file is missing, which is made where the folder can be written.
std::string readOrMake(const fs::path& file) {
    std::error_code error;
    if (fs::symlink_status(file, error).type() != fs::file_type::not_found)
        return contentOf(Descriptor(file, O_RDONLY));
    try {
        const Descriptor made(file, O_RDWR | O_CREAT | O_NOFOLLOW);
        return contentOf(made);
    } catch (const PlatformError&) {
        if (!fs::is_directory(file.parent_path(), error)) throw;
        return {};
    }
}

Records readNow(const fs::path& file, const RecordLayout& layout) {
    return naming(layout.file, [&] {
        return Records(layout, readOrMake(findWithoutCase(file.parent_path(), file.filename().string())));
    });
}

/// The file behind a change; none for a missing one.
Descriptor openForChange(const fs::path& file) {
    std::error_code error;
    const fs::file_status status = fs::symlink_status(file, error);
    if (fs::is_symlink(status)) throw PlatformError(errors::kInvalidPath, "a symbolic link is not written to");
    if (status.type() == fs::file_type::not_found) return {};
    // A file that may not be written must not be replaced either, though its folder would allow that.
    return Descriptor(file, O_RDWR | O_NOFOLLOW);
}

}  // namespace

Records readRecords(const fs::path& file, const RecordLayout& layout) {
    completeInterrupted(file.parent_path());
    return readNow(file, layout);
}

std::string readWholeText(const fs::path& folder, std::string_view name) {
    return naming(name, [&]() -> std::string {
        completeInterrupted(folder);
        const fs::path file = findWithoutCase(folder, std::string(name));
        std::error_code error;
        if (fs::symlink_status(file, error).type() == fs::file_type::not_found) return {};
        return contentOf(Descriptor(file, O_RDONLY));
    });
}

RecordSnapshot::RecordSnapshot(fs::path folder) : folder_(std::move(folder)) {
    do {
        lock_.reset();
        completeInterrupted(folder_);
        lock_.emplace(folder_, FolderLock::Kind::Shared);
    } while (Replacement::isPending(folder_));
}

Records RecordSnapshot::file(const RecordLayout& layout) const { return readNow(folder_ / layout.file, layout); }

RecordChange::RecordChange(fs::path folder) : folder_(std::move(folder)), lock_(folder_, FolderLock::Kind::Exclusive) {
    Replacement::complete(folder_);
}

Records& RecordChange::file(const RecordLayout& layout, std::string_view name) {
    const fs::path path = findWithoutCase(folder_, std::string(name.empty() ? layout.file : name));
    for (File& file : files_) {
        if (file.path == path) return file.records;
    }
    return naming(layout.file, [&]() -> Records& {
        Descriptor old = openForChange(path);
        Records records(layout, old.isOpen() ? contentOf(old) : std::string());
        std::string before = records.bytes();
        return files_.emplace_back(File{path, layout, std::move(old), std::move(records), std::move(before)}).records;
    });
}

std::string& RecordChange::text(std::string_view name) {
    const fs::path path = findWithoutCase(folder_, std::string(name));
    for (Text& text : texts_) {
        if (text.path == path) return text.content;
    }
    return naming(name, [&]() -> std::string& {
        Descriptor old = openForChange(path);
        std::string content = old.isOpen() ? contentOf(old) : std::string();
        std::string before = content;
        return texts_.emplace_back(Text{path, std::move(old), std::move(content), std::move(before)}).content;
    });
}

void RecordChange::commit() {
    constexpr unsigned kOwnerOnly = 0600, kEverybody = 0666;
    Replacement replacement(folder_);
    for (const File& file : files_) {
        if (file.records.bytes() == file.before) continue;
        const unsigned mode = file.layout.ownerOnly ? kOwnerOnly : kEverybody;
        replacement.add(file.path.filename().string(), file.records.bytes(), file.old, mode);
    }
    for (const Text& text : texts_) {
        if (text.content != text.before)
            replacement.add(text.path.filename().string(), text.content, text.old, kEverybody);
    }
    replacement.commit();
}

}  // namespace kolmera
