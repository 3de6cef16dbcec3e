#include <unistd.h>

#include <QApplication>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

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
#include "lang/keys/startwindow.h"
#include "lang/keys/terminal.h"
#include "platform/attempt.h"
#include "platform/systemuser.h"
#include "setup/window/accesswindow.h"
#include "setup/window/startwindow.h"
#include "signin/signin.h"
#include "signin/window/loggain.h"
#include "startup/startplace.h"
#include "startup/startup.h"
#include "ui/forms.h"
#include "ui/qtmessageport.h"
#include "ui/qttext.h"
#include "ui/windowmemory.h"
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
    program.importAccess = [&program](QWidget* parent) { importAccessCompany(program, parent); };
    program.showPrisRab = [&program](QWidget* parent, int JobbNr) { visaPrisRab(program, parent, JobbNr); };
}

/// One session: a data folder, from signing in to the end of the main window. What is kept of the user's windows lasts
/// over all sessions.
class Session {
  public:
    Session(KolmeraApplication& application, std::filesystem::path programFolder, SettingsStore& windows)
        : application_(application),
          programFolder_(std::move(programFolder)),
          state_(SettingsStore(SettingsStore::userFile()), Locale::ofUser()),
          port_(texts_),
          boxes_(port_, (programFolder_ / "Dorvik.chm").string()),
          companies_(state_, texts_, boxes_),
          memory_(windows),
          recent_(windows),
          program_{.state = state_, .texts = texts_, .boxes = boxes_, .companies = companies_, .memory = &memory_} {
        application_.program = &program_;
        state_.sql.letEventsRun = [this] { port_.letEventsRun(); };
        program_.recentFolders = recent_.all();
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session() { application_.program = nullptr; }

    Program& program() { return program_; }

    /// Prepares the texts for a window that comes before there is a data folder.
    void speak() {
        state_.ProgramMapp = (programFolder_ / "").string();
        openTexts(state_, texts_);
        state_.Språkkod = LanguageTexts::NormaliseraSpråk(state_.settings.get("Start", "Lang", "SE"));
        texts_.InitSpråkOrd(state_.Språkkod);
        translateWindowSystem();
    }

    /// The exit code; `next` is what the user wants then. An empty folder: as DVKlient.ini says.
    int run(const std::filesystem::path& dataFolder, std::optional<NextWindow>& next);

  private:
    [[nodiscard]] bool signsIn(const std::filesystem::path& dataFolder);
    int showWindow(std::optional<NextWindow>& next);
    void translateWindowSystem();

    KolmeraApplication& application_;
    std::filesystem::path programFolder_;
    StartState state_;
    LanguageTexts texts_;
    QtMessagePort port_;
    MessageBoxes boxes_;
    CompanyRegister companies_;
    WindowMemory memory_;
    RecentFolders recent_;
    std::unique_ptr<WindowSystemTexts> swedish_;
    Program program_;
};

/// The window system's own texts (file dialogs) in the language of the program.
void Session::translateWindowSystem() {
    swedish_.reset();
    if (texts_.language() != "SE") return;
    swedish_ = std::make_unique<WindowSystemTexts>();
    QApplication::installTranslator(swedish_.get());
}

bool Session::signsIn(const std::filesystem::path& dataFolder) {
    bool cancelled = false;
    const auto askWho = [&](StartState&) {
        signIn(state_, SystemUser::current(), [&](std::span<const User> users) {
            Loggain form(program_, users);
            VisaFormulär(program_, form, true);
            cancelled = form.result() != QDialog::Accepted;
        });
    };
    startUp(state_, texts_, programFolder_.string(), askWho, dataFolder);
    return !cancelled;
}

int Session::run(const std::filesystem::path& dataFolder, std::optional<NextWindow>& next) {
    try {
        if (!signsIn(dataFolder)) return 0;
    } catch (const PlatformError& error) {
        boxes_.MeddelandeVarning(texts_.ModulTextMed(text::loggain::kUnreadableUserFile, errorText(texts_, error)));
        return 1;
    }
    openWindowsOfOthers(program_);
    program_.chooseDataFolder = [this](QWidget* parent) -> std::optional<std::filesystem::path> {
        const auto answer = askWhereToStart(program_, false, parent);
        if (!answer) return std::nullopt;
        return answer->dataFolder;
    };
    if (!state_.EjKlientIni) recent_.opened(state_.dataFolder());
    program_.recentFolders = recent_.all();
    for (;;) {
        next.reset();
        const int result = showWindow(next);
        if (!next || next->language.empty()) return result;
        PassedOverSilently passedOver;  // then the language is that of this session only
        attempt(passedOver, "Lang", [&] { state_.settings.set("Start", "Lang", next->language); });
        state_.Språkkod = next->language;
        openTexts(state_, texts_);
        texts_.InitSpråkOrd(state_.Språkkod);
    }
}

int Session::showWindow(std::optional<NextWindow>& next) {
    translateWindowSystem();
    PrisMain prisMain(program_);
    if (!VisaFormulär(program_, prisMain, false)) return 1;
    const int result = QApplication::exec();
    next = prisMain.next();
    return result;
}

/// Tells what is wrong with the command line; true when it is.
bool isWrong(const StartArguments& arguments, LanguageTexts& texts) {
    if (arguments.wrong.empty()) return false;
    const std::string wrong = texts.ModulTextMed(text::startwindow::kUnknownArgument, arguments.wrong);
    std::fprintf(stderr, "kolmera: %s\n%s\n", wrong.c_str(), texts.ModulText(text::startwindow::kUsage).c_str());
    return true;
}

/// The data folder to begin with; an empty one is as DVKlient.ini says, nothing ends the program.
std::optional<std::filesystem::path> beginning(Program& program, const StartArguments& arguments,
                                               const std::filesystem::path& programFolder, RecentFolders recent) {
    const auto warn = [&](ModuleKey text, const std::filesystem::path& folder, const std::string& reason) {
        program.boxes.MeddelandeVarning(program.texts.ModulTextMed(text, folder.string()) + reason);
    };
    if (!arguments.dataFolder.empty()) {
        std::error_code unreachable;
        if (std::filesystem::is_directory(arguments.dataFolder, unreachable)) return arguments.dataFolder;
        warn(text::startwindow::kCannotOpen, arguments.dataFolder, "");
    } else if (arguments.demo) {
        try {
            return demoFolder(program);
        } catch (const PlatformError& error) {
            warn(text::startwindow::kNotMade, userDemoFolder(), " " + errorText(program.texts, error));
        }
    } else {
        const StartPlace place = startPlace(programFolder, recent);
        if (place.kind != StartPlace::Kind::Ask) return place.folder;
    }
    const bool ownFolder = ::access(programFolder.c_str(), W_OK) == 0;
    const auto answer = askWhereToStart(program, ownFolder, nullptr);
    if (!answer) return std::nullopt;
    return answer->dataFolder;
}

std::filesystem::path folderOfProgram() {
    std::error_code unknown;
    return std::filesystem::read_symlink("/proc/self/exe", unknown).parent_path();
}

LanguageTexts textsBeforeTheScreen() {
    LanguageTexts texts;
    texts.ÖppnaSpråk(folderOfProgram(), {});
    texts.InitSpråkOrd(
        LanguageTexts::NormaliseraSpråk(SettingsStore(SettingsStore::userFile()).get("Start", "Lang", "SE")));
    return texts;
}

/// Version and usage need no screen. False when neither is asked for.
bool tellsOfItself(const StartArguments& arguments) {
    if (arguments.version) std::puts("kolmera " KOLMERA_VERSION);
    if (arguments.version || !arguments.help) return arguments.version;
    std::puts(textsBeforeTheScreen().ModulText(text::startwindow::kUsage).c_str());
    return true;
}

/// While the application is made. Without a screen the toolkit tells of plugins in several lines and aborts.
void endWithoutScreen(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    constexpr int kUnavailable = 69;  // EX_UNAVAILABLE, which ./run knows
    // What the system answered comes without a category.
    const bool aboutScreen = context.category == nullptr || std::string_view(context.category).starts_with("qt.qpa");
    if (type != QtFatalMsg) {
        if (!aboutScreen) std::fprintf(stderr, "%s\n", qPrintable(text));
        return;
    }
    std::string tried;
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY"}) {
        if (const char* value = std::getenv(name); value != nullptr && *value != '\0')
            tried.append(tried.empty() ? " (" : ", ").append(name).append("=").append(value);
    }
    if (!tried.empty()) tried += ')';
    const std::string told = textsBeforeTheScreen().ModulTextMed(text::startwindow::kNoDisplay, tried);
    std::fprintf(stderr, "kolmera: %s\n", told.empty() ? qPrintable(text) : told.c_str());
    std::_Exit(kUnavailable);
}

int run(KolmeraApplication& application) {
    constexpr int kUsage = 2;
    const std::filesystem::path programFolder = folderOfProgram();
    const auto settings = SettingsStore::userFile().parent_path().parent_path();
    SettingsStore windows(settings / "Kolmera" / "windows.ini");
    std::vector<std::string> given;
    for (const QString& argument : QApplication::arguments().mid(1)) given.push_back(fromQt(argument));
    const StartArguments arguments = startArguments(given);

    std::optional<std::filesystem::path> folder;
    {
        Session before(application, programFolder, windows);
        before.speak();
        if (isWrong(arguments, before.program().texts)) return kUsage;
        folder = beginning(before.program(), arguments, programFolder, RecentFolders(windows));
    }
    int result = 0;
    while (folder) {
        std::optional<NextWindow> next;
        Session session(application, programFolder, windows);
        result = session.run(*folder, next);
        folder.reset();
        if (next) folder = next->dataFolder;
    }
    return result;
}

}  // namespace
}  // namespace kolmera

int main(int argc, char** argv) {
    QApplication::setApplicationName(QStringLiteral("Kolmera"));
    try {
        if (kolmera::tellsOfItself(kolmera::startArguments({argv + 1, argv + argc}))) return 0;
        qInstallMessageHandler(kolmera::endWithoutScreen);
        kolmera::KolmeraApplication application(argc, argv);
        qInstallMessageHandler(nullptr);
        QApplication::setWindowIcon(kolmera::maskJobIcon(QApplication::palette()));
        return kolmera::run(application);
    } catch (const std::bad_alloc&) {
        std::fputs("kolmera: Minnet räcker inte. There is not enough memory.\n", stderr);
        return 1;
    }
}
