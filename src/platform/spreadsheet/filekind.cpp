#include "platform/spreadsheet/filekind.h"

#include <fcntl.h>

#include <string>
#include <string_view>

#include "platform/descriptor.h"
#include "platform/error.h"
#include "platform/spreadsheet/compoundfile.h"

namespace kolmera {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view kZip = "PK\3\4"sv;
constexpr std::string_view kEmptyZip = "PK\5\6"sv;
constexpr std::string_view kCompound = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"sv;
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
    return CompoundFile(file).stream("EncryptedPackage") ? FileKind::Encrypted : FileKind::Xls;
}

}  // namespace kolmera
