#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "definitions/supplierlist.h"
#include "discounts/letterexchange.h"
#include "discounts/letterrows.h"
#include "startup/companylist.h"

namespace kolmera {

/// What the discount-letter window shows and does, without its window. Rows are counted from 0, -1 is none. `open`
/// first.
class LetterEditor {
  public:
    LetterEditor(StartState& state, LanguageTexts& texts, MessageBoxes& boxes, CompanyRegister& companies);
    /// Closes the company database.
    ~LetterEditor();

    /// Asked again and again while another program holds the company locked, with what to show; false gives up.
    std::function<bool(const std::string& text)> keepWaiting;
    /// The lock is there, or was given up.
    std::function<void()> waited;

    LetterEditor(const LetterEditor&) = delete;
    LetterEditor& operator=(const LetterEditor&) = delete;

    /// Lists the companies; with a job, chooses its company and supplier.
    void open(int JobbNr);

    // Company and supplier.
    [[nodiscard]] const std::vector<Company>& companies() const { return companies_; }
    [[nodiscard]] int chosenCompany() const { return companyRow_; }
    /// Opens the company and lists its suppliers; the job's supplier is chosen. False when the company cannot be
    /// opened; the user is told.
    bool chooseCompany(int row);
    [[nodiscard]] const std::vector<SupplierRow>& suppliers() const { return suppliers_; }
    [[nodiscard]] int chosenSupplier() const { return supplierRow_; }
    void chooseSupplier(int row);
    /// What the caption says behind the window's text: " - 10 - Smedhult", or nothing.
    [[nodiscard]] std::string captionSuffix() const;

    // The supplier's groups.
    [[nodiscard]] const LetterRows& Lista() const { return rows_; }
    [[nodiscard]] int chosenRow() const { return row_; }
    /// Shows a group in the edit fields.
    void chooseRow(int row);

    // The edit fields: 0 the group code, 1 to 5 the discounts.
    static constexpr int kFields = 1 + kDiscountSteps;
    [[nodiscard]] const std::string& field(int number) const { return fields_.at(static_cast<std::size_t>(number)); }
    /// The combined discount as it is shown; empty beside empty fields.
    [[nodiscard]] const std::string& TotalRabatt() const { return total_; }
    /// The user types.
    void edit(int number, std::string text);
    /// A field loses the focus: a changed discount is counted in, and a changed code looked up.
    void leave(int number);

    /// Something was typed that is neither saved nor given up.
    [[nodiscard]] bool hasUnsaved() const { return unsaved_; }
    /// Saves the edit fields as a group. Returns the field that is to have the focus: the code behind a saved group,
    /// the wrong discount, or nothing when nothing was done.
    std::optional<int> Spara();
    void Avbryt();
    /// Deletes the group of the code field, when the user agrees.
    void TaBort();
    [[nodiscard]] bool canDelete() const { return !rows_.empty() && (!field(0).empty() || showsNamelessGroup()); }

    // Files.
    /// Whether a supplier is chosen, whose letter could be read; the user is told when not.
    [[nodiscard]] bool canRead();
    /// Replaces the letter by a file's, when the user agrees; the user is told what went wrong.
    void LäsFil(const std::filesystem::path& file);
    [[nodiscard]] bool canWrite() const { return !rows_.empty(); }
    /// The file that is proposed for writing: one number higher than the count of such files in the folder.
    [[nodiscard]] std::filesystem::path proposedFile() const;
    /// Where the last file was, at first the data folder.
    [[nodiscard]] const std::filesystem::path& folder() const { return folder_; }
    void SkapaFil(const std::filesystem::path& file);

  private:
    class Patience;
    bool waitForLock();
    bool mayExceedPrice(int number);
    [[nodiscard]] bool showsNamelessGroup() const;
    bool findGroupToDelete();
    bool tried(ModuleKey failureText, const std::function<void()>& statement);
    void closeCompany();
    void closeLetter();
    void openLetter();
    [[nodiscard]] const SupplierRow& supplier() const;
    void clearFields();
    void showGroup();
    [[nodiscard]] std::string TotalRabattText() const;
    [[nodiscard]] std::optional<int> wrongDiscount() const;
    [[nodiscard]] bool find(std::string_view code);
    void saveGroup();
    bool mayReplace(LetterExchange& exchange, const std::filesystem::path& file);
    std::int64_t usableLines(LetterExchange& exchange, const std::filesystem::path& file);

    StartState& state_;
    LanguageTexts& texts_;
    MessageBoxes& boxes_;
    CompanyRegister& register_;
    std::vector<Company> companies_;
    int companyRow_ = -1;
    std::string FtgFil_;        ///< database of the chosen company
    std::string jobsSupplier_;  ///< chosen when its company is
    std::vector<SupplierRow> suppliers_;
    int supplierRow_ = -1;
    std::unique_ptr<Recordset> letter_;  ///< the chosen supplier's rows
    LetterRows rows_;
    int row_ = -1;
    std::array<std::string, kFields> fields_;
    std::string total_;
    bool changed_ = false;  ///< since the last field was left
    bool unsaved_ = false;
    bool gaveUp_ = false;  ///< waiting for a lock
    std::filesystem::path folder_;
};

}  // namespace kolmera
