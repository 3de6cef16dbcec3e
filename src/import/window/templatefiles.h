#pragma once

#include <QString>
#include <functional>

#include "definitions/jobfile.h"
#include "ui/filedialogs.h"
#include "ui/program.h"

namespace kolmera {

using FileAnswer = std::function<QString(const FileQuestion& question)>;  ///< empty: Cancel

/// Asks for a file, and saves the job as a template there.
void saveTemplate(Program& program, const Job& job, const FileAnswer& fileToWrite);
/// Asks for a template, and what has to be asked before it is stored here. The number of the job; 0 for none.
int openTemplate(Program& program, QWidget* parent, const FileAnswer& fileToRead);

}  // namespace kolmera
