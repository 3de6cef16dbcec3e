#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/bytestream.h"
#include "platform/error.h"

struct zip;
struct zip_source;

namespace kolmera {

/// A zip file. Every failure is a PlatformError: kUnreadableSpreadsheet for a damaged file, kProtectedSpreadsheet for
/// an entry with a password, or that of the system (kDiskFull ...).
class Archive {
  public:
    enum class Mode { Read, Change, Make };

    explicit Archive(const std::filesystem::path& file, Mode mode = Mode::Read);
    /// To read from an open file.
    explicit Archive(const Descriptor& file);

    /// The names of all entries, folders among them.
    [[nodiscard]] std::vector<std::string> names() const;

    /// The number of the entry of that name or, where there is none, of the same in another letter case.
    [[nodiscard]] std::optional<std::uint64_t> find(const std::string& name) const;

    /// The unpacked bytes of an entry; the archive has to outlive them. Reading throws kUnpacksTooLarge above `most`
    /// bytes, or where it is packed so tightly that only a trap can be (kMostUnpackedRatio).
    [[nodiscard]] std::unique_ptr<ByteStream> open(const std::string& name, std::uint64_t most) const;
    /// The same of a workbook's part: one that is missing or unpacks too large is a kUnreadableSpreadsheet.
    [[nodiscard]] std::unique_ptr<ByteStream> openPart(const std::string& name, std::uint64_t most) const;
    /// Hands the bytes of a workbook's part to `sink`, piece by piece.
    void stream(const std::string& name, std::uint64_t most, const std::function<void(std::string_view)>& sink) const;
    [[nodiscard]] std::string bytes(const std::string& name, std::uint64_t most) const;

    /// Changes wait for `save`; without it the file stays as it is. All other entries are kept byte for byte.
    void replace(const std::string& name, std::string bytes) { putBytes(name, std::move(bytes), false); }
    void add(const std::string& name, std::string bytes) { putBytes(name, std::move(bytes), true); }
    /// The file is read by `save`.
    void addFile(const std::string& name, const std::filesystem::path& file);
    void save();

  private:
    [[nodiscard]] std::unique_ptr<ByteStream> openEntry(const std::string& name, std::uint64_t most,
                                                        const PlatformError& tooLarge) const;
    [[nodiscard]] std::uint64_t existing(const std::string& name) const;
    void putBytes(const std::string& name, std::string bytes, bool isNew);
    void put(const std::string& name, zip_source* source, bool isNew);

    std::list<std::string> pending_;  ///< what `save` will write
    struct Discard {
        void operator()(zip* archive) const;
    };
    std::unique_ptr<zip, Discard> zip_;
};

}  // namespace kolmera
