#include "ui/filedialogs.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QRegularExpression>

#include "ui/windowmemory.h"

namespace kolmera {
namespace {

/// Asks before a file is replaced, and only then.
class SaveDialog final : public QFileDialog {
  public:
    SaveDialog(QWidget* parent, std::function<bool(const QString&)> addsTo)
        : QFileDialog(parent), addsTo_(std::move(addsTo)) {}

    void accept() override {
        setOption(DontConfirmOverwrite, addsTo_(selectedFiles().value(0)));
        QFileDialog::accept();
    }

  private:
    std::function<bool(const QString&)> addsTo_;
};

/// "txt" of "Text files (*.txt)"; empty for a filter that takes every file.
QString endingOf(const QString& filter) {
    return filter.section(QStringLiteral("(*."), 1).section(QRegularExpression("[ )]"), 0, 0);
}

void describe(QFileDialog& dialog, const FileQuestion& question) {
    dialog.setObjectName(QStringLiteral("Fildialog"));
    dialog.setWindowTitle(question.title);
    dialog.setNameFilters(question.filters.split(QStringLiteral(";;")));
    dialog.selectNameFilter(dialog.nameFilters().value(question.filter));
}

QString answer(QFileDialog& dialog, const QWidget* parent, WindowMemory* memory) {
    if (memory != nullptr) {
        const QString folder = memory->folder(parent->objectName());
        if (!folder.isEmpty()) dialog.setDirectory(folder);
    }
    if (dialog.exec() != QDialog::Accepted) return {};
    const QString file = dialog.selectedFiles().value(0);
    if (memory != nullptr) memory->keepFolder(parent->objectName(), QFileInfo(file).path());
    return file;
}

}  // namespace

QString askForFileToOpen(QWidget* parent, const FileQuestion& question, WindowMemory* memory) {
    QFileDialog dialog(parent);
    describe(dialog, question);
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.setDirectory(question.path);
    return answer(dialog, parent, memory);
}

QString askForFileToSave(QWidget* parent, const FileQuestion& question,
                         const std::function<bool(const QString& file)>& addsTo, WindowMemory* memory) {
    SaveDialog dialog(parent, addsTo);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    describe(dialog, question);
    const QFileInfo proposed(question.path);
    dialog.setDirectory(proposed.path());
    dialog.selectFile(proposed.fileName());
    dialog.setDefaultSuffix(endingOf(dialog.selectedNameFilter()));
    QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog,
                     [&dialog](const QString& filter) { dialog.setDefaultSuffix(endingOf(filter)); });
    return answer(dialog, parent, memory);
}

}  // namespace kolmera
