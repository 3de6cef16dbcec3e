#include "import/window/rejectssaving.h"

#include <QElapsedTimer>
#include <filesystem>

#include "import/rejects/rejectfile.h"
#include "lang/errortext.h"
#include "lang/keys/boxes.h"
#include "lang/keys/rejects.h"
#include "ui/lockwait.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

/// Beside the price file, under a name of its own.
QString proposedFile(LanguageTexts& texts, const std::filesystem::path& priceFile) {
    std::filesystem::path proposed = priceFile;
    proposed.replace_filename(priceFile.stem().string() + texts.ModulText(text::rejects::kFileNameEnd) +
                              priceFile.extension().string());
    return toQt(proposed.string());
}

Rejects write(Program& program, QWidget& parent, const RecordReader& run, const std::filesystem::path& file) {
    constexpr int kPatience = 300;  // milliseconds before the waiting is shown
    LockWait wait(parent);
    QElapsedTimer waited;
    waited.start();
    return writeRejects(run, file, [&] {
        return waited.elapsed() < kPatience || wait.keepWaiting(toQt(program.texts.ModulText(text::rejects::kWriting)),
                                                                toQt(program.texts.ModulText(text::boxes::kCancel)));
    });
}

}  // namespace

void saveRejects(Program& program, QWidget* parent, const RecordReader& run,
                 const std::function<QString(const FileQuestion&)>& fileToWrite) {
    FileQuestion question;
    question.title = toQt(program.texts.ModulText(text::rejects::kTitle));
    question.filters = toQt(program.texts.ModulText(text::rejects::kFilters));
    question.path = proposedFile(program.texts, run.header().priceFile.path);
    const std::filesystem::path file = fromQt(fileToWrite(question));
    if (file.empty()) return;
    try {
        const Rejects rejects = write(program, *parent, run, file);
        const std::string told = rejectsText(program.texts, rejects, run, file);
        if (rejects.good()) {
            program.boxes.MeddelandeInfo(told);
        } else {
            program.boxes.MeddelandeVarning(told);
        }
    } catch (const PlatformError& error) {
        program.boxes.MeddelandeVarning(program.texts.ModulTextMed(text::rejects::kNotWritten, file.string()) + " " +
                                        errorText(program.texts, error));
    }
}

void saveRejects(Program& program, QWidget* parent, const RecordReader& run) {
    saveRejects(program, parent, run, [parent](const FileQuestion& question) {
        return askForFileToSave(parent, question, [](const QString& /*file*/) { return false; });
    });
}

}  // namespace kolmera
