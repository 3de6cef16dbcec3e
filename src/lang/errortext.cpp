#include "lang/errortext.h"

#include <cerrno>

namespace kolmera {
namespace {

struct Sentence {
    int error, text;
};

constexpr int kUnexpected = 700, kSystemError = 701;

/// By number; what is not listed is unexpected.
constexpr Sentence kByNumber[] = {
    {errors::kNoCurrentRecord, 702},
    {errors::kDuplicateKey, 703},
    {errors::kFileNotFound, 704},
    {errors::kDiskFull, 705},
    {errors::kReadOnly, 706},
    {errors::kWrongPassword, 707},
    {errors::kDamaged, 708},
    {errors::kInvalidPath, 422},
    {errors::kUnknownTable, 709},
    {errors::kServerGone, 710},
    {errors::kTextTooLong, 711},
    {errors::kChangedElsewhere, 423},
    {errors::kLocked, 712},
    {errors::kUnknownField, 713},
    {errors::kUnreadableSpreadsheet, 714},
    {errors::kUnwritableFormat, 715},
    {errors::kProtectedSpreadsheet, 716},
    {errors::kNotADatabase, 717},
    {errors::kWrongType, 718},
    {errors::kNotPermitted, 652},
    {errors::kServerUnwell, 655},
    {errors::kServerSilent, 660},
    {errors::kCannotBeRepeated, 661},
};

constexpr Sentence kBySystemError[] = {
    {EACCES, 730},  {EPERM, 730},  {EROFS, 731},        {EISDIR, 732}, {ENOTDIR, 733}, {EEXIST, 734},
    {EIO, 735},     {ELOOP, 736},  {ENAMETOOLONG, 737}, {EMFILE, 738}, {ENFILE, 738},  {EBUSY, 739},
    {ETXTBSY, 739}, {ENOMEM, 740}, {EFBIG, 741},        {EDQUOT, 742}, {ENOSPC, 705},  {ENOENT, 704},
};

template <std::size_t Count>
int textOf(const Sentence (&table)[Count], int error, int otherwise) {
    for (const Sentence& row : table) {
        if (row.error == error) return row.text;
    }
    return otherwise;
}

int textOf(const PlatformError& error) {
    return error.systemError() != 0 ? textOf(kBySystemError, error.systemError(), kSystemError)
                                    : textOf(kByNumber, error.number(), kUnexpected);
}

}  // namespace

std::string errorText(LanguageTexts& texts, const PlatformError& error) {
    const int number = textOf(error);
    const std::string sentence = texts.ModulText("KMR", number);
    if (sentence.empty()) return error.description();
    const bool ownWords = number == kUnexpected || number == kSystemError;
    const std::string about = ownWords ? error.description() : error.subject();
    const std::string quotation = ownWords ? std::string() : error.quotation();
    return sentence + (about.empty() ? "" : ": " + about) + "." + (quotation.empty() ? "" : " (" + quotation + ")");
}

}  // namespace kolmera
