#pragma once

#include <filesystem>
#include <functional>

#include "platform/jet/jetcontent.h"

namespace kolmera::jet {

/// The name of the reader, a program that stands beside ours.
inline constexpr const char* kReaderProgram = "kolmera-access-reader";

/// Whether a file begins as those of the Access formats do.
bool isAccessFile(const std::filesystem::path& file);

/// Has a file read by the program `reader` and tells the listener what is in it. The file is open for reading only.
/// The reader is a process with limits of its own: whatever becomes of it, or of what it says, is
/// PlatformError(kDamaged) here. Throws what the listener throws, too, and kNotADatabase, kNewerAccessFile,
/// kFileNotFound. `goOn` is asked again and again; false ends the reader and returns false.
bool readAccessFile(const std::filesystem::path& reader, const std::filesystem::path& file, ContentListener& listener,
                    const std::function<bool()>& goOn);

}  // namespace kolmera::jet
