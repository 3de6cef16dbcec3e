#include <QApplication>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <new>

#include "definitions/window/prisstyr.h"
#include "discounts/window/prisrab.h"
#include "import/masks/masklook.h"
#include "import/masks/samplerun.h"
#include "import/window/calculationwindow.h"
#include "import/window/jobicons.h"
#include "import/window/prismain.h"
#include "import/window/rejectssaving.h"
#include "lang/errortext.h"
#include "lang/keys/fault.h"
#include "lang/keys/loggain.h"
#include "lang/keys/terminal.h"
#include "platform/systemuser.h"
#include "signin/signin.h"
#include "signin/window/loggain.h"
#include "startup/startup.h"
#include "ui/forms.h"
#include "ui/qtmessageport.h"
#include "ui/windowsystemtexts.h"

namespace kolmera {
namespace {

/// Tells of a fault of ours instead of ending the program: what is open can still be saved.
class KolmeraApplication final : public QApplication {
  public:
    using QApplication::QApplication;
    Program* program = nullptr;

    bool notify(QObject* receiver, QEvent* event) override {
        try {
            return QApplication::notify(receiver, event);
        } catch (const std::bad_alloc&) {
            if (program == nullptr) throw;
            program->boxes.MeddelandeVarning(program->texts.ModulText(text::fault::kOutOfMemory));
            return true;
        } catch (const std::exception& fault) {
            if (program == nullptr) throw;
            program->boxes.MeddelandeVarning(
                program->texts.ModulTextMed(text::terminal::kUnexpectedError, fault.what()));
            return true;
        }
    }
};

void openWindowsOfOthers(Program& program) {
    program.showPrisStyr = [&program](QWidget* parent, int JobbNr, bool ÄrStandardJobb) {
        return visaPrisStyr(program, parent, JobbNr, ÄrStandardJobb);
    };
    program.misreadSample = [&program](const Mask& mask, const std::vector<Relation>& relations, const auto& sample) {
        return misreadSample(program.texts, mask, relations, sample);
    };
    program.explainPrice = [&program](QWidget* parent, const RunHeader& run, const std::string& product,
                                      const std::string& column) {
        explainPrice(program, parent, run, product, column);
    };
    program.trySample = [&program](std::string_view supplier, const Mask& mask, const std::vector<Relation>& relations,
                                   const std::filesystem::path& sample, std::int64_t record) {
        return readSample(program.state.sql, program.texts, Date::today(), supplier, mask, relations, sample, record);
    };
    program.saveRejects = [&program](QWidget* parent, const RecordReader& run) { saveRejects(program, parent, run); };
    program.showPrisRab = [&program](QWidget* parent, int JobbNr) { visaPrisRab(program, parent, JobbNr); };
}

/// The window system's own texts (file dialogs) in the language of the program.
void translateWindowSystem(QApplication& application, const LanguageTexts& texts) {
    if (texts.language() == "SE") QApplication::installTranslator(new WindowSystemTexts(&application));
}

int run(KolmeraApplication& application) {
    std::error_code unknown;
    const auto programFile = std::filesystem::read_symlink("/proc/self/exe", unknown);
    StartState state(SettingsStore(SettingsStore::userFile()), Locale::ofUser());
    LanguageTexts texts;
    QtMessagePort port(texts);
    MessageBoxes boxes(port, (programFile.parent_path() / "Dorvik.chm").string());
    CompanyRegister companies(state, texts, boxes);
    Program program{.state = state, .texts = texts, .boxes = boxes, .companies = companies};
    application.program = &program;
    state.sql.letEventsRun = [&port] { port.letEventsRun(); };

    bool signInCancelled = false;
    try {
        startUp(state, texts, programFile.parent_path().string(), [&](StartState&) {
            signIn(state, SystemUser::current(), [&](std::span<const User> users) {
                Loggain form(program, users);
                VisaFormulär(program, form, true);
                signInCancelled = form.result() != QDialog::Accepted;
            });
        });
    } catch (const PlatformError& error) {
        boxes.MeddelandeVarning(texts.ModulTextMed(text::loggain::kUnreadableUserFile, errorText(texts, error)));
        return 1;
    }
    if (signInCancelled) return 0;
    translateWindowSystem(application, texts);

    openWindowsOfOthers(program);
    PrisMain prisMain(program);
    if (!VisaFormulär(program, prisMain, false)) return 1;
    const int result = QApplication::exec();
    application.program = nullptr;
    return result;
}

}  // namespace
}  // namespace kolmera

int main(int argc, char** argv) {
    QApplication::setApplicationName(QStringLiteral("Kolmera"));
    try {
        kolmera::KolmeraApplication application(argc, argv);
        QApplication::setWindowIcon(kolmera::maskJobIcon(QApplication::palette()));
        return kolmera::run(application);
    } catch (const std::bad_alloc&) {
        std::fputs("kolmera: Minnet räcker inte. There is not enough memory.\n", stderr);
        return 1;
    }
}
