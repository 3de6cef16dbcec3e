#pragma once

#include <stdexcept>
#include <string>

namespace kolmera {

/// The engine's error numbers. Messages show them, and a few are told apart by number.
namespace errors {
inline constexpr int kInternal = 3000;
inline constexpr int kNoCurrentRecord = 3021;
inline constexpr int kDuplicateKey = 3022;
inline constexpr int kFileNotFound = 3024;
inline constexpr int kDiskFull = 3026;
inline constexpr int kReadOnly = 3027;
inline constexpr int kWrongPassword = 3031;
inline constexpr int kInvalidPath = 3044;  ///< a link where a file is written
inline constexpr int kNotPermitted = 3033;
inline constexpr int kDamaged = 3049;
inline constexpr int kUnknownTable = 3078;
inline constexpr int kServerUnwell = 3146;  ///< the database server cannot work at the moment
inline constexpr int kServerGone = 3151;    ///< no connection to the database server
inline constexpr int kServerSilent = 3152;  ///< the database server does not answer
inline constexpr int kTextTooLong = 3163;
inline constexpr int kChangedElsewhere = 3197;  ///< the stored record is no longer the one that was shown
inline constexpr int kCannotBeRepeated = 3198;  ///< others have changed what a transaction would write again
inline constexpr int kLocked = 3260;
inline constexpr int kUnknownField = 3265;
inline constexpr int kUnreadableSpreadsheet = 3274;
inline constexpr int kUnwritableFormat = 3275;
inline constexpr int kProtectedSpreadsheet = 3276;  ///< a password, a signature or a locked structure
inline constexpr int kNotADatabase = 3343;
inline constexpr int kWrongType = 3421;
// Of price files that are read as a table. What they are about is told with them: the row, the names, the limit.
inline constexpr int kRowTooLong = 3501;
inline constexpr int kTooManyColumns = 3502;
inline constexpr int kQuoteNotClosed = 3503;
inline constexpr int kSeveralMembers = 3504;  ///< of an archive, and none of them is chosen
inline constexpr int kNoSuchMember = 3505;
inline constexpr int kUnreadableArchive = 3506;
inline constexpr int kProtectedArchive = 3507;
inline constexpr int kUnpacksTooLarge = 3508;
inline constexpr int kUnreadableXml = 3509;
inline constexpr int kNoSuchSheet = 3510;
inline constexpr int kUnknownSource = 3511;  ///< nothing that a table can be read from
inline constexpr int kIsWorkbook = 3512;     ///< where another kind of file is expected
inline constexpr int kIsNoWorkbook = 3513;
inline constexpr int kUnreadableOptions = 3514;  ///< what is kept of jobs beside their records
}  // namespace errors

/// The one exception that the platform layer throws: a number of `errors`, a description in English for developers
/// and logs, and what the error is about: a file, table, column or value as the user knows it (UTF-8). Users read
/// `errorText` (lang/errortext.h). `endsRun()` is set when going on would do harm: the database has rolled a whole
/// transaction back by itself, a server would refuse every other statement too, or the user cancelled while waiting.
/// Such an error is never passed over.
class PlatformError : public std::runtime_error {
  public:
    PlatformError(int number, const std::string& description, bool endsRun = false)
        : std::runtime_error(description), number_(number), endsRun_(endsRun) {}

    /// The same error about a thing, which stands before what it was about so far.
    [[nodiscard]] PlatformError about(const std::string& subject) const {
        PlatformError error = *this;
        error.subject_ = subject_.empty() ? subject : subject + ": " + subject_;
        return error;
    }
    /// The error of a system call, by the value of errno.
    [[nodiscard]] PlatformError ofSystem(int systemError) const {
        PlatformError error = *this;
        error.systemError_ = systemError;
        return error;
    }
    [[nodiscard]] PlatformError endingRun() const {
        PlatformError error = *this;
        error.endsRun_ = true;
        return error;
    }

    /// The same error, described by the words of a driver or server, which users are shown behind the sentence.
    [[nodiscard]] PlatformError quoted() const {
        PlatformError error = *this;
        error.quoted_ = true;
        return error;
    }

    [[nodiscard]] int number() const { return number_; }
    [[nodiscard]] int systemError() const { return systemError_; }  ///< 0: none
    [[nodiscard]] const std::string& subject() const { return subject_; }
    /// Subject and description, in English.
    [[nodiscard]] std::string description() const { return subject_.empty() ? what() : subject_ + ": " + what(); }
    /// The words to be quoted; empty where there are none.
    [[nodiscard]] std::string quotation() const { return quoted_ ? what() : std::string(); }
    [[nodiscard]] bool endsRun() const { return endsRun_; }

  private:
    int number_;
    int systemError_ = 0;
    std::string subject_;
    bool quoted_ = false;
    bool endsRun_;
};

}  // namespace kolmera
