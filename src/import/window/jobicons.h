#pragma once

#include <QIcon>

class QPalette;

namespace kolmera {

/// The two icons of the job list, drawn in the colours of the palette.
QIcon maskJobIcon(const QPalette& palette);         ///< a table of columns
QIcon tradeFormatJobIcon(const QPalette& palette);  ///< a sheet of lines

}  // namespace kolmera
