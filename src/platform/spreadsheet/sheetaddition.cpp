#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "platform/descriptor.h"
#include "platform/error.h"
#include "platform/lettercase.h"
#include "platform/privatefolder.h"
#include "platform/spreadsheet/filekind.h"
#include "platform/spreadsheet/newworkbook.h"
#include "platform/spreadsheet/package.h"
#include "platform/spreadsheet/sheetpart.h"
#include "platform/spreadsheet/workbook.h"
#include "platform/spreadsheet/workbookframe.h"

namespace kolmera {

namespace fs = std::filesystem;

namespace {

using NextRow = std::function<std::optional<std::vector<Value>>()>;

[[noreturn]] void refuseToWrite() {
    throw PlatformError(errors::kReadOnly, "The workbook or its folder may only be read.");
}

bool isReadOnly(int systemError) { return systemError == EACCES || systemError == EROFS || systemError == EPERM; }

/// The file behind a link, also when it is still to be made.
fs::path withoutLinks(fs::path file) {
    constexpr int kMostLinks = 40;
    std::error_code ignored;
    for (int i = 0; i < kMostLinks && fs::is_symlink(file, ignored); ++i) {
        file = file.parent_path() / fs::read_symlink(file, ignored);
    }
    return fs::absolute(file);
}

/// Beside the workbook, on the same disk: the new one is made there.
class WorkFolder {
  public:
    explicit WorkFolder(const fs::path& beside) try : folder_(beside.parent_path(), ".kolmera") {
    } catch (const PlatformError& error) {
        if (isReadOnly(error.systemError())) refuseToWrite();
        throw;
    }

    [[nodiscard]] fs::path workbook() const { return folder_.path() / "workbook"; }
    [[nodiscard]] fs::path sheet() const { return folder_.path() / "sheet"; }

  private:
    PrivateFolder folder_;
};

/// Refuses a name that spreadsheet programs would not open as what we write.
void checkName(const fs::path& file, bool exists) {
    const std::string extension = lowerCase(file.extension().string());
    if (extension == ".xlsx" || (extension == ".xlsm" && exists)) return;
    throw PlatformError(errors::kUnwritableFormat, "Only .xlsx workbooks can be written.");
}

void checkContent(const fs::path& file) {
    struct stat status {};
    const bool nobodyMayWrite = stat(file.c_str(), &status) == 0 && (status.st_mode & 0222) == 0;
    if (nobodyMayWrite || faccessat(AT_FDCWD, file.c_str(), W_OK, AT_EACCESS) != 0) refuseToWrite();
    switch (kindOf(file)) {
        case FileKind::Xlsx:
            return;
        case FileKind::Xls:
            throw PlatformError(errors::kUnwritableFormat, "Only .xlsx workbooks can be written.");
        case FileKind::Encrypted:
            throw PlatformError(errors::kProtectedSpreadsheet, "The workbook is protected by a password.");
        case FileKind::Other:
            throw PlatformError(errors::kUnreadableSpreadsheet, "The file is not a workbook.");
    }
}

void checkProtection(const Package& package) {
    if (package.isSigned) throw PlatformError(errors::kProtectedSpreadsheet, "The workbook has a digital signature.");
    if (package.isLocked) throw PlatformError(errors::kProtectedSpreadsheet, "The workbook is protected from changes.");
}

void writeSheet(const fs::path& file, bool isStrict, std::span<const SheetColumn> columns, const NextRow& next) {
    SheetPartWriter sheet(file, columns,
                          isStrict ? "http://purl.oclc.org/ooxml/spreadsheetml/main"
                                   : "http://schemas.openxmlformats.org/spreadsheetml/2006/main");
    while (const auto row = next()) sheet.row(*row);
    sheet.finish();
}

void copyFile(const fs::path& from, const fs::path& to) {
    const Descriptor source(from, O_RDONLY);
    const Descriptor copy(to, O_WRONLY | O_CREAT | O_EXCL);
    std::string block(std::size_t{1} << 20, '\0');
    for (std::size_t offset = 0;;) {
        const std::size_t got = source.readAt(offset, block.data(), block.size());
        if (got == 0) return;
        copy.writeAt(offset, std::string_view(block).substr(0, got));
        offset += got;
    }
}

/// Makes the workbook of the folder from the target and one sheet more.
void extend(const fs::path& target, const WorkFolder& folder, const std::string& prefix,
            std::span<const SheetColumn> columns, const NextRow& next) {
    copyFile(target, folder.workbook());
    Archive archive(folder.workbook(), Archive::Mode::Change);
    const Package package = Package::of(archive);
    checkProtection(package);
    writeSheet(folder.sheet(), package.isStrict, columns, next);
    FrameChange frame(archive, package);
    const std::string part = frame.freePart();
    frame.enter(part, frame.freeName(prefix));
    archive.addFile(part, folder.sheet());
    archive.save();
}

/// Makes the workbook of the folder with one sheet.
void make(const WorkFolder& folder, const std::string& prefix, std::span<const SheetColumn> columns,
          const NextRow& next) {
    writeSheet(folder.sheet(), false, columns, next);
    Archive archive(folder.workbook(), Archive::Mode::Make);
    addNewFrame(archive, numberedSheetName(prefix, 1));
    archive.addFile(kNewSheetPart, folder.sheet());
    archive.save();
}

}  // namespace

void addSheet(const fs::path& file, const std::string& prefix, std::span<const SheetColumn> columns,
              const NextRow& next) {
    const fs::path target = withoutLinks(file);
    std::error_code ignored;
    const bool exists = fs::exists(target, ignored);
    checkName(target, exists);
    if (exists) checkContent(target);

    const WorkFolder folder(target);
    if (exists) {
        extend(target, folder, prefix, columns, next);
    } else {
        make(folder, prefix, columns, next);
    }

    const Descriptor finished(folder.workbook(), O_RDONLY);
    if (exists) finished.copyRights(Descriptor(target, O_RDONLY));
    moveOver(finished, folder.workbook(), target);
}

}  // namespace kolmera
