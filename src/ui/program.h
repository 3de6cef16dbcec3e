#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "lang/languagetexts.h"
#include "startup/company.h"
#include "startup/messageboxes.h"
#include "startup/startstate.h"

class QWidget;

namespace kolmera {

class WindowMemory;

struct Mask;
struct Relation;
struct RunHeader;
struct SampleValues;
class RecordReader;

/// What the forms share: made in `main`, handed to every form by reference. The windows that one form opens and another
/// subsystem owns are members here, and what one asks of a subsystem above its own, so that a test can put its own in
/// their place.
struct Program {
    StartState& state;
    LanguageTexts& texts;
    MessageBoxes& boxes;
    CompanyRegister& companies;
    WindowMemory* memory = nullptr;  ///< how the user left the windows; null: nothing is remembered

    /// The data folders that the user has opened, this one among them, the last one first.
    std::vector<std::filesystem::path> recentFolders{};
    /// Lets the user choose or make a data folder; nothing when he thinks better of it.
    std::function<std::optional<std::filesystem::path>(QWidget* parent)> chooseDataFolder{};
    /// Opens the job settings modally for a job number (0: a new job). Answers the number of the job that was saved
    /// (SvarOK), or nothing.
    std::function<std::optional<int>(QWidget* parent, int JobbNr, bool ÄrStandardJobb)> showPrisStyr{};
    /// Lets the user make a company of an Access-format file.
    std::function<void(QWidget* parent)> importAccess{};
    /// Opens the discount letters modally.
    std::function<void(QWidget* parent, int JobbNr)> showPrisRab{};
    /// Shows how the prices of a product came about in a run, or in a preview, from `column` ("Produkt.Inpris") on.
    std::function<void(QWidget* parent, const RunHeader& run, const std::string& product, const std::string& column)>
        explainPrice{};
    /// Saves the rejected records of a run, or of a preview, where the user wants them.
    std::function<void(QWidget* parent, const RecordReader& run)> saveRejects{};
    /// What a run through that mask would read wrongly of a sample file, each in a sentence or two.
    std::function<std::vector<std::string>(const Mask&, const std::vector<Relation>&,
                                           const std::filesystem::path& sample)>
        misreadSample{};
    /// What a run through that mask, of a job with that supplier, would do with a record of a sample file (from 0).
    std::function<SampleValues(std::string_view supplier, const Mask&, const std::vector<Relation>&,
                               const std::filesystem::path& sample, std::int64_t record)>
        trySample{};
};

}  // namespace kolmera
