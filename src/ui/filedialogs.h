#pragma once

#include <QString>
#include <functional>

class QWidget;

namespace kolmera {

class WindowMemory;

/// What a file dialog is to say.
struct FileQuestion {
    QString title;
    QString filters;  ///< "Text files (*.txt);;All files (*)"
    int filter = 0;   ///< the one that is chosen at first
    QString path;     ///< the folder, or the proposed file
};

// With a memory, the dialog begins in the folder of the last file that was chosen in that window.

/// The file that the user chooses to open; empty when the dialog is cancelled.
QString askForFileToOpen(QWidget* parent, const FileQuestion& question, WindowMemory* memory = nullptr);
/// The file that the user chooses to write to, with the chosen filter's ending when none was typed; empty when the
/// dialog is cancelled. A file that exists is asked about unless `addsTo` says that writing only adds to it.
QString askForFileToSave(QWidget* parent, const FileQuestion& question,
                         const std::function<bool(const QString& file)>& addsTo, WindowMemory* memory = nullptr);

}  // namespace kolmera
