#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/batchprocess.h"
#include "startup/startstate.h"

namespace kolmera {

/// The batch file of a preparation command; it deletes itself when the command has ended.
inline constexpr std::string_view kPreparationBatch = "EXPA@#01.BAT";

/// One run's preparation command as a batch file that is waiting for its turn. It works in the program folder's "Filer"
/// (made when missing), or in the program folder itself when the command names "\Filer". When nothing can be written
/// there, the data folder takes the program folder's place. Throws PlatformError.
BatchFile preparationBatch(const StartState& state, std::string_view command);

/// What can be seen of a file from outside, to tell whether a command has written it. Times of the content do not tell:
/// an unpacked file has those of the archive.
class FileMark {
  public:
    explicit FileMark(const std::filesystem::path& file);
    /// An ordinary file, and the same as when the other mark was made.
    [[nodiscard]] bool unchangedSince(const FileMark& before) const;

  private:
    std::optional<struct statx> seen_;  ///< of an ordinary file only
};

/// The letter of the diskette drive when a command or path begins with "A" or "B", or with such a drive in small
/// letters.
std::optional<char> disketteDrive(std::string_view text);

}  // namespace kolmera
