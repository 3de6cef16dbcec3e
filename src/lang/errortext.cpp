#include "lang/errortext.h"

#include <fmt/format.h>

#include <cerrno>

#include "lang/keys/fault.h"
#include "platform/jet/jeterrors.h"

namespace kolmera {
namespace {

struct Sentence {
    int error;
    ModuleKey text;
};

/// By number; what is not listed is unexpected.
constexpr Sentence kByNumber[] = {
    {errors::kNoCurrentRecord, text::fault::kRecordGone},
    {errors::kDuplicateKey, text::fault::kDuplicateKey},
    {errors::kFileNotFound, text::fault::kFileNotFound},
    {errors::kDiskFull, text::fault::kDiskFull},
    {errors::kReadOnly, text::fault::kReadOnly},
    {errors::kWrongPassword, text::fault::kWrongPassword},
    {errors::kDamaged, text::fault::kDamaged},
    {errors::kInvalidPath, text::fault::kLinkToOtherFile},
    {errors::kUnknownTable, text::fault::kUnknownTable},
    {errors::kServerGone, text::fault::kServerGone},
    {errors::kTextTooLong, text::fault::kTextTooLong},
    {errors::kChangedElsewhere, text::fault::kRecordChanged},
    {errors::kLocked, text::fault::kLocked},
    {errors::kUnknownField, text::fault::kUnknownField},
    {errors::kUnreadableSpreadsheet, text::fault::kUnreadableSheet},
    {errors::kUnwritableFormat, text::fault::kUnwritableSheet},
    {errors::kProtectedSpreadsheet, text::fault::kProtectedSheet},
    {errors::kNotADatabase, text::fault::kNotADatabase},
    {errors::kWrongType, text::fault::kWrongType},
    {errors::kNotPermitted, text::fault::kNotPermitted},
    {errors::kServerUnwell, text::fault::kServerUnwell},
    {errors::kServerSilent, text::fault::kServerSilent},
    {errors::kCannotBeRepeated, text::fault::kRowsChanged},
    {errors::kRowTooLong, text::fault::kRowTooLong},
    {errors::kTooManyColumns, text::fault::kTooManyColumns},
    {errors::kQuoteNotClosed, text::fault::kQuoteNotClosed},
    {errors::kSeveralMembers, text::fault::kSeveralMembers},
    {errors::kNoSuchMember, text::fault::kNoSuchMember},
    {errors::kUnreadableArchive, text::fault::kUnreadableArchive},
    {errors::kProtectedArchive, text::fault::kProtectedArchive},
    {errors::kUnpacksTooLarge, text::fault::kUnpacksTooLarge},
    {errors::kUnreadableXml, text::fault::kUnreadableXml},
    {errors::kNoSuchSheet, text::fault::kNoSuchSheet},
    {errors::kUnknownSource, text::fault::kUnknownSource},
    {errors::kIsWorkbook, text::fault::kIsWorkbook},
    {errors::kIsNoWorkbook, text::fault::kIsNoWorkbook},
    {errors::kUnreadableOptions, text::fault::kUnreadableOptions},
    {errors::kAccessFile, text::fault::kAccessFile},
    {errors::kNewerAccessFile, text::fault::kNewerAccessFile},
};

constexpr Sentence kBySystemError[] = {
    {EACCES, text::fault::kNoPermission},
    {EPERM, text::fault::kNoPermission},
    {EROFS, text::fault::kWriteProtected},
    {EISDIR, text::fault::kFolderNotFile},
    {ENOTDIR, text::fault::kFileNotFolder},
    {EEXIST, text::fault::kExists},
    {EIO, text::fault::kUnreadableDisk},
    {ELOOP, text::fault::kLinkCircle},
    {ENAMETOOLONG, text::fault::kNameTooLong},
    {EMFILE, text::fault::kTooManyFiles},
    {ENFILE, text::fault::kTooManyFiles},
    {EBUSY, text::fault::kFileInUse},
    {ETXTBSY, text::fault::kFileInUse},
    {ENOMEM, text::fault::kOutOfMemory},
    {EFBIG, text::fault::kFileTooLarge},
    {EDQUOT, text::fault::kQuota},
    {ENOSPC, text::fault::kDiskFull},
    {ENOENT, text::fault::kFileNotFound},
    {EILSEQ, text::fault::kUnsavableCharacters},
};

template <std::size_t Count>
ModuleKey textOf(const Sentence (&table)[Count], int error, ModuleKey otherwise) {
    for (const Sentence& row : table) {
        if (row.error == error) return row.text;
    }
    return otherwise;
}

ModuleKey textOf(const PlatformError& error) {
    return error.systemError() != 0 ? textOf(kBySystemError, error.systemError(), text::fault::kSystemError)
                                    : textOf(kByNumber, error.number(), text::fault::kUnexpected);
}

}  // namespace

std::string errorText(LanguageTexts& texts, const PlatformError& error) {
    const ModuleKey key = textOf(error);
    const std::string sentence = texts.ModulText(key);
    if (sentence.empty()) return error.description();
    const bool ownWords = key == text::fault::kUnexpected || key == text::fault::kSystemError;
    const std::string about = ownWords ? error.description() : error.subject();
    const std::string quotation = ownWords ? std::string() : error.quotation();
    std::string told =
        sentence + (about.empty() ? "" : ": " + about) + "." + (quotation.empty() ? "" : " (" + quotation + ")");
    texts.originalWords().keep(told, originalText(error));
    return told;
}

std::string originalText(const PlatformError& error) {
    const std::string system =
        error.systemError() != 0 ? fmt::format(", errno {}", error.systemError()) : std::string();
    return fmt::format("{}{}: {}", error.number(), system, error.description());
}

}  // namespace kolmera
