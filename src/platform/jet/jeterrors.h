#pragma once

/// The numbers of errors (platform/error.h) about companies in another format.
namespace kolmera::errors {
inline constexpr int kAccessFile = 3520;       ///< has to be imported first
inline constexpr int kNewerAccessFile = 3521;  ///< none that can be imported
}  // namespace kolmera::errors
