#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

#include "platform/descriptor.h"

namespace kolmera {

/// Says that the program that writes a record is alive: a lock on a byte, which belongs to the run, of one file beside
/// the records. The system gives it back however the program ends. Not on the record itself: closing a file gives back
/// the locks of its whole program, SQLite's too.
class RunLock {
  public:
    /// Where there are no locks, `held` is false.
    RunLock(const std::filesystem::path& folder, std::string_view run);
    [[nodiscard]] bool held() const { return held_; }

    /// Whether some program holds the lock; nothing where that cannot be known.
    static std::optional<bool> isHeld(const std::filesystem::path& folder, std::string_view run);

  private:
    Descriptor file_;
    bool held_ = false;
};

}  // namespace kolmera
