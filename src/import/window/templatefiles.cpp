#include "import/window/templatefiles.h"

#include <filesystem>

#include "definitions/savemessages.h"
#include "import/window/templatewindow.h"
#include "lang/errortext.h"
#include "lang/keys/definitions.h"
#include "lang/keys/jobtemplate.h"
#include "platform/lettercase.h"
#include "ui/forms.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

FileQuestion question(LanguageTexts& texts, ModuleKey title, const std::filesystem::path& path) {
    FileQuestion question;
    question.title = toQt(texts.ModulText(title));
    question.filters = toQt(texts.ModulText(text::jobtemplate::kFilters));
    question.path = toQt(path.string());
    return question;
}

/// The suppliers of the job's company; none, and told, where it cannot be opened.
std::vector<SupplierRow> suppliersOf(Program& program, const Job& job) {
    SqlLayer& sql = program.state.sql;
    if (!program.companies.ÖppnaDatabas(job.company)) {
        program.boxes.MeddelandeInfo(program.texts.ModulText(text::jobtemplate::kNoNames));
        return {};
    }
    std::vector<SupplierRow> suppliers = readSuppliers(sql);
    sql.FtgDB.reset();
    return suppliers;
}

}  // namespace

void saveTemplate(Program& program, const Job& job, const FileAnswer& fileToWrite) {
    LanguageTexts& texts = program.texts;
    const std::filesystem::path folder = program.state.dataFolder();
    std::string name = job.name;
    for (const char* each : {"/", "\\", ":"}) name = replaceAll(name, each, "_");
    const std::filesystem::path file =
        fromQt(fileToWrite(question(texts, text::jobtemplate::kSaveTitle, folder / (name + ".json"))));
    if (file.empty()) return;
    try {
        JobTemplate made = templateOf(folder, job, {});
        if (!job.supplier.empty() || !made.definition.couplings.empty())
            made = templateOf(folder, job, suppliersOf(program, job));
        writeTemplate(made, file);
        std::string told = texts.ModulTextMed(text::jobtemplate::kSaved, file.string());
        if (!job.command.empty()) told.append(" ").append(texts.ModulText(text::jobtemplate::kCommandStays));
        program.boxes.MeddelandeInfo(told);
    } catch (const PlatformError& error) {
        program.boxes.MeddelandeVarning(errorText(texts, error));
    }
}

int openTemplate(Program& program, QWidget* parent, const FileAnswer& fileToRead) {
    LanguageTexts& texts = program.texts;
    const std::filesystem::path folder = program.state.dataFolder();
    const std::filesystem::path file = fromQt(fileToRead(question(texts, text::jobtemplate::kOpenTitle, folder)));
    if (file.empty()) return 0;
    std::string name;
    try {
        auto read = readTemplate(file);
        if (!read) {
            program.boxes.MeddelandeVarning(texts.ModulTextMed(text::jobtemplate::kNoTemplate, file.string()));
            return 0;
        }
        TemplateImport wanted(folder, std::move(*read));
        TemplateWindow form(program, wanted, parent);
        if (!VisaFormulär(program, form, true) || form.result() != QDialog::Accepted) return 0;
        name = wanted.job().name;
        const int number = wanted.save();
        program.boxes.MeddelandeInfo(texts.ModulTextMed(text::jobtemplate::kRead, name));
        return number;
    } catch (const PlatformError& error) {
        tellNotSaved(error, {.changedElsewhere = text::definitions::kImportChangedNothingDone, .name = name}, texts,
                     program.boxes);
        return 0;
    }
}

}  // namespace kolmera
