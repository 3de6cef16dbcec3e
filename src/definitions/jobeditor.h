#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "definitions/convertedsample.h"
#include "definitions/couplingeditor.h"
#include "definitions/jobfile.h"
#include "definitions/joboptions.h"
#include "definitions/maskfile.h"
#include "definitions/supplierlist.h"
#include "startup/companylist.h"

namespace kolmera {

/// An alternative-number heading that FINFO can write to; 0 is none.
struct HeadingChoice {
    int number = 0;
    std::string text;
};

/// What the job window shows and does, without its window. Rows are counted from 0, -1 is none. `open` first.
class JobEditor {
  public:
    JobEditor(StartState& state, LanguageTexts& texts, MessageBoxes& boxes, CompanyRegister& companies);
    /// Closes the company database.
    ~JobEditor();
    JobEditor(const JobEditor&) = delete;
    JobEditor& operator=(const JobEditor&) = delete;

    /// Begins with the job of that number, 0 for a new one, and chooses its company.
    void open(int JobbNr, bool ÄrStandardJobb);

    [[nodiscard]] bool isTradeFormat() const { return tradeFormat_; }
    [[nodiscard]] bool isFinfo() const { return tradeFormat_ && job.name == "(FINFO)"; }
    Job job;        ///< the settings as typed; mask, company and supplier follow the choices below
    Limits limits;  ///< what a run may change without asking; `save` writes them too
    /// How the price file is converted before the mask reads it; nothing: the mask reads it as it is. `save` writes it
    /// too, with the mask's columns bound to the headings.
    std::optional<SourceSettings> source;
    /// What is read of so many columns of the price file.
    [[nodiscard]] TargetLayout target(std::size_t columns) const;
    /// The price file, where there is one.
    [[nodiscard]] std::optional<std::filesystem::path> foundFile() const;

    /// The window's caption for a job that exists, empty for a new one.
    [[nodiscard]] std::string caption() const;
    /// Where the user begins to look for a file: beside the price file, else in the data folder.
    [[nodiscard]] std::filesystem::path fileFolder() const;

    // Company.
    [[nodiscard]] const std::vector<Company>& companies() const { return companies_; }
    [[nodiscard]] int chosenCompany() const { return companyRow_; }
    /// Opens the company and reads what the window shows of it. False when it cannot be opened; the user is told.
    bool chooseCompany(int row);
    [[nodiscard]] std::string supplierCaption(std::string_view label) const;

    // Mask job: masks and suppliers.
    [[nodiscard]] const std::vector<Mask>& masks() const { return masks_; }
    [[nodiscard]] int chosenMask() const { return maskRow_; }
    void chooseMask(int row);
    [[nodiscard]] const std::vector<SupplierRow>& suppliers() const { return suppliers_; }
    [[nodiscard]] int chosenSupplier() const { return rowOfSupplier(suppliers_, job.supplier); }
    void chooseSupplier(int row);
    [[nodiscard]] bool canDeleteMask() const { return maskRow_ >= 0; }
    [[nodiscard]] bool canMakeMask() const;
    [[nodiscard]] bool canOpenMask() const { return canDeleteMask() && canMakeMask(); }
    /// The price file that the mask editor is shown against, with the company open. Nothing when it does not exist or
    /// the company cannot be opened; the user is told. Of a file that is converted, its beginning as the chosen mask,
    /// or a `newMask`, is going to read it.
    [[nodiscard]] std::optional<std::filesystem::path> sampleForMask(bool newMask = false);
    [[nodiscard]] const std::vector<std::string>& sampleHeadings() const { return sample_.headings; }
    /// That sample as it is converted for a mask that is being edited: what is read as a number is made one. Throws
    /// PlatformError.
    [[nodiscard]] std::filesystem::path sampleFor(const WholeMask& mask);
    /// Whether the chosen mask is stored as the list shows it; if not, the user is told and the masks are listed anew.
    [[nodiscard]] bool maskIsAsShown();
    /// Lists the masks anew, after the editor saved one, which is chosen.
    void maskSaved(int number);
    /// Makes another mask like the chosen one, and chooses it; the user is told why not.
    void copyMask();
    /// Deletes the chosen mask, when the user agrees.
    void deleteMask();

    // Trade-format job: couplings and, for FINFO, headings.
    CouplingEditor couplings;
    [[nodiscard]] std::string couplingCaption() const;
    [[nodiscard]] const std::vector<HeadingChoice>& headings() const { return headings_; }
    /// Row of a heading in both lists; the first row when it is not there.
    [[nodiscard]] int headingRow(int number) const;

    enum class Control { None, Namn, FilNamn, KompFilNamn, Mask_Lista, FTG_Lista, FromGrp, TomGrp };
    struct Outcome {
        std::optional<int> JobbNr{};    ///< of the saved job
        Control focus = Control::None;  ///< what the user has to fill in first
    };
    /// Checks and writes the job; tells the user what is missing.
    Outcome save();
    /// Whether there is something that `save` would write.
    [[nodiscard]] bool changed() const;

  private:
    void readCompany();
    void readLimits();
    JobOptionsChange changedOptions();
    [[nodiscard]] std::optional<WholeMask> chosenWholeMask() const;
    void readHeadings();
    void readMasks();
    [[nodiscard]] std::filesystem::path priceFile() const;
    bool openCompany();
    [[nodiscard]] std::optional<std::pair<FormKey, Control>> missing() const;
    [[nodiscard]] std::optional<std::pair<std::string, Control>> notStorable() const;
    [[nodiscard]] std::string chosenMaskName() const;
    [[nodiscard]] bool agreesToDelete(const std::string& mask, std::size_t count);
    void tell(const PlatformError& error, ModuleKey changedElsewhere, const std::string& name);
    void closeCompany();
    [[nodiscard]] const std::string& companyName() const {
        return companies_.at(static_cast<std::size_t>(companyRow_)).name;
    }

    StartState& state_;
    LanguageTexts& texts_;
    MessageBoxes& boxes_;
    CompanyRegister& register_;
    bool tradeFormat_ = false;
    std::optional<Job> shown_;  ///< as it is stored; none for a new one
    Job begun_;                 ///< as the window first showed it
    Limits begunLimits_;
    std::optional<SourceSettings> begunSource_;
    ConvertedSample sample_;
    std::optional<WholeMask> editedMask_;  ///< that `editedSample_` is converted for
    ConvertedSample editedSample_;
    std::string begunMask_;
    std::vector<Company> companies_;
    int companyRow_ = -1;
    std::vector<Mask> masks_;
    int maskRow_ = -1;
    std::vector<SupplierRow> suppliers_;
    std::vector<HeadingChoice> headings_;
};

}  // namespace kolmera
