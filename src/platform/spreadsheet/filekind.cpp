#include "platform/spreadsheet/filekind.h"

#include <fcntl.h>

#include <string>
#include <string_view>

#include "platform/descriptor.h"
#include "platform/error.h"

namespace kolmera {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view kZip = "PK\3\4"sv;
constexpr std::string_view kEmptyZip = "PK\5\6"sv;
constexpr std::string_view kCompound = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"sv;
/// The name of the stream that holds a workbook with a password, as it stands in the list of streams (UTF-16).
constexpr std::string_view kEncryptedStream = "E\0n\0c\0r\0y\0p\0t\0e\0d\0P\0a\0c\0k\0a\0g\0e\0"sv;

/// Whether the bytes stand anywhere in the file.
bool contains(const Descriptor& file, std::string_view bytes) {
    std::string block(std::size_t{1} << 16, '\0');
    const std::size_t step = block.size() - bytes.size() + 1;  // a find across two blocks lies in the overlap
    for (std::size_t offset = 0;; offset += step) {
        const std::size_t got = file.readAt(offset, block.data(), block.size());
        if (std::string_view(block).substr(0, got).find(bytes) != std::string_view::npos) return true;
        if (got < block.size()) return false;
    }
}

}  // namespace

FileKind kindOf(const std::filesystem::path& file) {
    std::error_code ignored;
    if (std::filesystem::exists(file, ignored) && !std::filesystem::is_regular_file(file, ignored)) {
        throw PlatformError(errors::kUnreadableSpreadsheet, "This is not a file.");
    }
    const Descriptor descriptor(file, O_RDONLY);
    std::string beginning(kCompound.size(), '\0');
    beginning.resize(descriptor.readAt(0, beginning.data(), beginning.size()));
    if (beginning.starts_with(kZip) || beginning.starts_with(kEmptyZip)) return FileKind::Xlsx;
    if (beginning != kCompound) return FileKind::Other;
    return contains(descriptor, kEncryptedStream) ? FileKind::Encrypted : FileKind::Xls;
}

}  // namespace kolmera
