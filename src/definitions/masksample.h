#pragma once

#include <optional>
#include <string>
#include <vector>

#include "definitions/headingwords.h"
#include "definitions/maskeditor.h"
#include "definitions/ruler.h"
#include "definitions/samplevalues.h"
#include "definitions/supplierlist.h"
#include "definitions/targetsuggestion.h"

namespace kolmera {

/// A mask that is being edited, tried on its sample: the file's records, the fields with what they are read into or
/// what is suggested for them, and what a record gives. Logic of a window, without it. Rows, records and columns are
/// counted from 0, sources and bytes from 1.
class MaskSample {
  public:
    /// A field of the file and one of its relations or suggestions, or a field that nothing is read from.
    struct Row {
        int source = 0;
        Piece piece{};
        int relation = -1;    ///< in the editor's list
        int suggestion = -1;  ///< what is suggested and not accepted
        std::string field, raw, target, rule, read, present, after;
    };

    /// `run` tells what a run would do, empty when nobody knows; `headings` are those of the source, where it has some.
    MaskSample(LanguageTexts& texts, MaskEditor& editor, HeadingWords words, std::vector<SupplierRow> suppliers,
               SampleRun run, std::vector<std::string> headings = {});

    // The records.
    static constexpr std::size_t kShownRecords = 100, kReadRecords = 1000;
    [[nodiscard]] std::size_t records() const { return records_.size(); }
    /// A line each of the first hundred: the fields, or for fixed length the record, a character a byte.
    [[nodiscard]] const std::vector<std::vector<std::string>>& fields() const { return records_.fields; }
    [[nodiscard]] const std::vector<std::string>& lines() const { return lines_; }
    [[nodiscard]] int fieldCount() const { return fieldCount_; }
    /// Number, heading, and what the field is read into; suggested targets with a question mark.
    [[nodiscard]] std::string columnCaption(int column) const;
    [[nodiscard]] int record() const { return record_; }
    void chooseRecord(int record);
    [[nodiscard]] bool hasRecord(int record) const { return record >= 0 && record < static_cast<int>(records()); }
    [[nodiscard]] std::string recordText() const;   ///< "Record 3 of 100"
    [[nodiscard]] std::string productText() const;  ///< what a run would do with it

    // The fields.
    [[nodiscard]] const std::vector<Row>& rows() const { return rows_; }
    [[nodiscard]] int chosen() const { return chosen_; }
    void choose(int row);
    void chooseField(int column);  ///< the first row of a field
    [[nodiscard]] const std::vector<Target>& targets() const { return editor_.targets(); }
    /// Row of the chosen row's target in the editor's list, 0 for none.
    [[nodiscard]] int chosenTarget() const;
    /// Joins the chosen field to another target, or, by the first, to none. A refusal is said in `remark`.
    void setTarget(int targetRow);
    [[nodiscard]] bool canAccept() const;
    /// Takes the suggestion of the chosen row, and goes on to the next.
    void accept();
    void acceptAll();
    [[nodiscard]] std::size_t suggestions() const { return suggestions_.size(); }

    // The ruler, for records of fixed length.
    [[nodiscard]] bool hasRuler() const { return editor_.showsPositions(); }
    [[nodiscard]] const Ruler& ruler() const { return ruler_; }
    void choosePieceAt(int byte);
    /// Sets a boundary before the byte, or removes the one that is there. A relation of the piece that is cut keeps the
    /// first part; pieces that both have relations are not joined.
    void toggleBoundary(int byte);
    void moveBoundary(int from, int to);
    /// Boundaries behind blank columns, but none within a piece that is read.
    void suggestBoundaries();

    /// What was refused last, or why the chosen row's target is suggested; empty when there is nothing to say.
    [[nodiscard]] std::string remark() const;

  private:
    void readRecords();
    void findHeadings();
    void present();
    void buildRows();
    void addRows(int source, Piece piece, const std::string& field);
    void addRelationsBeside();
    void fillRow(Row& row, const Relation& relation);
    void fillValues();
    void suggest();
    void takeSuggestedLength();
    [[nodiscard]] std::vector<FieldSample> samples() const;
    [[nodiscard]] std::vector<std::string> fieldsOf(std::size_t record) const;
    [[nodiscard]] std::string rawOf(int source, Piece piece) const;
    [[nodiscard]] std::string headingOfField(int source) const;
    [[nodiscard]] bool isRead(Piece piece) const;
    void changePiece(Piece from, Piece to);
    [[nodiscard]] Relation relationOf(const TargetSuggestion& suggestion) const;

    LanguageTexts& texts_;
    MaskEditor& editor_;
    HeadingWords words_;
    std::vector<SupplierRow> suppliers_;
    SampleRun run_;
    std::vector<std::string> headings_;
    bool headingsInFile_ = false;  ///< the first record is one
    SampleRecords records_;
    std::vector<std::string> lines_;
    int fieldCount_ = 0;
    int record_ = 0;
    Ruler ruler_;
    std::vector<TargetSuggestion> suggestions_;
    std::vector<Row> rows_;
    int chosen_ = -1;
    SampleValues values_;
    std::string refusal_;
};

/// A mask editor's try-out with the company's suppliers and the headings' meanings of the data folder. What of these
/// cannot be read, the user is told.
MaskSample openMaskSample(SqlLayer& sql, LanguageTexts& texts, MessageBoxes& boxes,
                          const std::filesystem::path& dataFolder, MaskEditor& editor, SampleRun run,
                          std::vector<std::string> headings = {});

}  // namespace kolmera
