#pragma once

#include <cstddef>
#include <filesystem>
#include <string_view>

namespace kolmera {

/// Throws the PlatformError of a value of errno: its number (kFileNotFound, kDiskFull, else kInternal) and the
/// system's text.
[[noreturn]] void throwSystemError(int systemError);

/// An open file of the system, closed when it goes out of scope. Every failure is a PlatformError.
class Descriptor {
  public:
    Descriptor() = default;  ///< no file
    /// Opens with the flags of open(2); `mode` is that of a file that is made. A folder is refused.
    Descriptor(const std::filesystem::path& file, int flags, unsigned mode = 0666);
    /// Takes over what a call of the system has opened; -1 is its failure, told by errno.
    explicit Descriptor(int opened);
    Descriptor(Descriptor&& other) noexcept;
    Descriptor& operator=(Descriptor&& other) noexcept;
    ~Descriptor();

    [[nodiscard]] bool isOpen() const { return descriptor_ >= 0; }
    [[nodiscard]] int get() const { return descriptor_; }
    [[nodiscard]] std::size_t size() const;  ///< bytes of the file now

    /// Reads up to `count` bytes; 0 at the end of the file.
    std::size_t read(char* bytes, std::size_t count) const;
    /// Reads `count` bytes at an offset, fewer at the end of the file.
    std::size_t readAt(std::size_t offset, char* bytes, std::size_t count) const;
    /// Writes all bytes behind those written before.
    void write(std::string_view bytes) const;
    /// Writes all bytes at an offset.
    void writeAt(std::size_t offset, std::string_view bytes) const;
    /// Takes over who may read and write from another file, and its owner as far as the system lets us.
    void copyRights(const Descriptor& other) const;
    /// Returns when the file is on the disk.
    void sync() const;

  private:
    int descriptor_ = -1;
};

/// Returns when the names of a folder's files are on the disk. Some network file systems cannot tell; that is no error.
void syncFolder(const std::filesystem::path& folder);

/// Puts a finished file in the place of another: syncs it, renames it, and syncs the folder, so that after a crash one
/// of the two is there whole.
void moveOver(const Descriptor& finished, const std::filesystem::path& from, const std::filesystem::path& to);

}  // namespace kolmera
