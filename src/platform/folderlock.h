#pragma once

#include <chrono>
#include <filesystem>

#include "platform/descriptor.h"

namespace kolmera {

/// Keeps other programs from changing the record files of a folder while this object lives: they take the same lock on
/// KOLMERA.LCK, which is made where it is missing and never removed. Not for two locks of one folder at a time in one
/// program: they wait for each other.
class FolderLock {
  public:
    enum class Kind {
        Shared,    ///< others may read. Where the folder is read-only or its file system has no locks: no lock
        Exclusive  ///< an error where the lock file can be neither made nor opened, or locks are not to be had
    };
    static constexpr std::chrono::milliseconds kLongest{5000};

    /// Waits while others hold the lock. Throws PlatformError: kLocked when they do so longer than `longest`.
    FolderLock(const std::filesystem::path& folder, Kind kind, std::chrono::milliseconds longest = kLongest);

  private:
    Descriptor file_;  ///< closing it gives the lock back
};

}  // namespace kolmera
