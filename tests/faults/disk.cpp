#include "faults/disk.h"

#include <sys/stat.h>

#include <algorithm>
#include <fstream>

#include "platform/tsv.h"

namespace kolmera::test {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kSector = 512;

std::string folderOf(const std::string& path) { return fs::path(path).parent_path().string(); }

void put(std::string& content, std::size_t offset, std::string_view bytes) {
    if (content.size() < offset + bytes.size()) content.resize(offset + bytes.size(), '\0');
    content.replace(offset, bytes.size(), bytes);
}

}  // namespace

Disk::Disk(const fs::path& folder) {
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const std::string name = fs::relative(entry.path(), folder).string();
        if (entry.is_directory()) folders_.push_back(name);
        if (!entry.is_regular_file() || name.ends_with("-shm")) continue;
        struct stat status {};
        if (stat(entry.path().c_str(), &status) != 0) continue;
        const std::string content = readWholeFile(entry.path());
        now_[name] = kept_[name] = files_[status.st_ino] = std::make_shared<File>(File{content, content, {}});
    }
}

void Disk::carryOut(const NameChange& change, Names& names) {
    if (!change.from.empty()) names.erase(change.from);
    if (!change.to.empty()) names[change.to] = change.file;
}

void Disk::change(NameChange change) {
    carryOut(change, now_);
    unsynced_.push_back(std::move(change));
}

void Disk::apply(const RecordedCall& call) {
    using Kind = RecordedCall::Kind;
    const auto named = [&] { return now_.contains(call.first) ? now_.at(call.first) : nullptr; };
    const auto opened = files_.find(call.file);
    File* const file = opened == files_.end() ? nullptr : opened->second.get();
    switch (call.kind) {
        case Kind::Create:
            if (file != nullptr && named().get() == file) break;  // it was there before
            files_[call.file] = std::make_shared<File>();
            change({folderOf(call.first), "", call.first, files_[call.file]});
            break;
        case Kind::Write:
            if (file == nullptr) break;
            put(file->now, call.offset, call.first);
            file->unsynced.push_back({call.offset, call.first});
            break;
        case Kind::Truncate:
            // Given room at once: a shorter file is what a loss cannot undo, and a longer one is zeros.
            if (file == nullptr) break;
            file->now.resize(call.offset, '\0');
            file->kept.resize(std::min(file->kept.size(), static_cast<std::size_t>(call.offset)));
            std::erase_if(file->unsynced, [&](const Write& write) { return write.offset >= call.offset; });
            break;
        case Kind::SyncFile:
            if (file == nullptr) break;
            file->kept = file->now;
            file->unsynced.clear();
            break;
        case Kind::SyncFolder:
            std::erase_if(unsynced_, [&](const NameChange& each) {
                if (each.folder != call.first) return false;
                carryOut(each, kept_);
                return true;
            });
            break;
        case Kind::Rename:
            change({folderOf(call.second), call.first, call.second, named()});
            break;
        case Kind::Link:
            change({folderOf(call.second), "", call.second, named()});
            break;
        case Kind::Unlink:
            change({folderOf(call.first), call.first, "", nullptr});
            break;
    }
}

std::string Disk::afterLoss(const File& file, std::mt19937* chance) {
    std::string content = file.kept;
    if (chance == nullptr) return content;
    for (const Write& write : file.unsynced) {
        for (std::size_t at = 0; at < write.bytes.size(); at += kSector) {
            if ((*chance)() % 2 == 0) put(content, write.offset + at, write.bytes.substr(at, kSector));
        }
    }
    return content;
}

void Disk::writeTo(const fs::path& folder, std::mt19937* chance) const {
    Names names = kept_;
    if (chance != nullptr) {
        const std::size_t count = (*chance)() % (unsynced_.size() + 1);
        for (std::size_t i = 0; i < count; ++i) carryOut(unsynced_[i], names);
    }
    for (const std::string& each : folders_) fs::create_directories(folder / each);
    for (const auto& [name, file] : names) {
        fs::create_directories((folder / name).parent_path());
        std::ofstream(folder / name, std::ios::binary) << afterLoss(*file, chance);
    }
}

std::size_t Disk::hash() const {
    std::size_t sum = 0;
    for (const auto& [name, file] : kept_) {
        sum = sum * 31 + std::hash<std::string>()(name);
        sum = sum * 31 + std::hash<std::string>()(file->kept);
    }
    return sum;
}

}  // namespace kolmera::test
