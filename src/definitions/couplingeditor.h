#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "db/sqllayer.h"
#include "definitions/couplingfile.h"
#include "lang/languagetexts.h"
#include "startup/messageboxes.h"

namespace kolmera {

/// The supplier couplings of one trade-format job, as the job window shows and changes them. Rows are counted from 0,
/// -1 is none. `setCompany` before anything that looks a supplier up; `close` before the company database goes.
class CouplingEditor {
  public:
    CouplingEditor(LanguageTexts& texts, MessageBoxes& boxes, std::filesystem::path dataFolder)
        : texts_(texts), boxes_(boxes), file_(std::move(dataFolder)) {}

    void setJob(std::string name) { job_ = std::move(name); }
    /// Looks suppliers up in the open company database from now on, and lists the couplings anew.
    void setCompany(SqlLayer& sql, std::string database);
    void close() { suppliers_.reset(); }

    struct Row {
        Coupling coupling;
        std::string text;  ///< code, "-->", supplier, "H" and search name, between tabs
    };
    [[nodiscard]] const std::vector<Row>& rows() const { return rows_; }
    [[nodiscard]] int chosen() const { return chosen_; }
    /// Loads a coupling into the boxes.
    void choose(int row);

    // The boxes.
    std::string code;
    std::string supplier;
    bool mainSupplier = false;
    [[nodiscard]] const std::string& searchName() const { return searchName_; }
    /// The code box was left after a change: a coupling of that code becomes the chosen one.
    void codeEntered();
    /// The supplier box was left after a change: the number is spelt as the company spells it.
    void supplierEntered();

    /// False when nothing is saved: there is no code, or the user is told or asked what stands in the way.
    bool save();
    void cancel();
    /// Removes the chosen coupling, when the user agrees.
    void remove();

  private:
    void list();
    [[nodiscard]] int rowOfCode(const std::string& wanted) const;
    [[nodiscard]] std::string rowText(const Coupling& coupling);
    struct Supplier {
        std::string number, searchName;
    };
    [[nodiscard]] std::optional<Supplier> find(const std::string& number);
    [[nodiscard]] std::vector<Coupling> shown() const;
    [[nodiscard]] bool canBeStored();
    [[nodiscard]] bool supplierIsMeant();
    [[nodiscard]] bool change(const std::function<void()>& statement);

    LanguageTexts& texts_;
    MessageBoxes& boxes_;
    CouplingFile file_;
    std::string job_, database_;
    SqlLayer* sql_ = nullptr;
    std::unique_ptr<Recordset> suppliers_;
    std::vector<Row> rows_;
    int chosen_ = -1;
    std::string searchName_;
};

}  // namespace kolmera
