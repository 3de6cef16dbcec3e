#pragma once

#include <memory>

#include "source/rowreader.h"
#include "source/sourcefile.h"
#include "source/sourceformat.h"

namespace kolmera {

// One function a kind of file, each in a file of its own; `opensource.cpp` has the table of them.
std::unique_ptr<RowReader> readDelimited(SourceFile file, const SourceFormat& format, const SourceLimits& limits);
std::unique_ptr<RowReader> readFixed(SourceFile file, const SourceFormat& format, const SourceLimits& limits);
std::unique_ptr<RowReader> readXlsx(SourceFile file, const SourceFormat& format, const SourceLimits& limits);
std::unique_ptr<RowReader> readXls(SourceFile file, const SourceFormat& format, const SourceLimits& limits);
std::unique_ptr<RowReader> readOds(SourceFile file, const SourceFormat& format, const SourceLimits& limits);
std::unique_ptr<RowReader> readXml(SourceFile file, const SourceFormat& format, const SourceLimits& limits);

}  // namespace kolmera
