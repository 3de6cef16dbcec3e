#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "definitions/maskfile.h"
#include "definitions/rulelists.h"
#include "definitions/sourcelist.h"
#include "definitions/targetlist.h"
#include "definitions/undohistory.h"
#include "startup/messageboxes.h"

namespace kolmera {

/// A relation in the editor's list.
struct EditedRelation {
    int slot = 0;  ///< place in the position table, from 1
    Relation relation;

    /// "1", then slot, source and target in three digits each.
    [[nodiscard]] std::int64_t identity() const;
    bool operator==(const EditedRelation&) const = default;
};

/// What a run through the mask would do wrong with the sample, each in a sentence or two.
using SampleLook = std::function<std::vector<std::string>(const Mask&, const std::vector<Relation>&,
                                                          const std::filesystem::path& sample)>;

/// What the mask editor shows and does, without its window. Rows are counted from 0, -1 is none. Call `open` first; it
/// needs the open company database.
class MaskEditor {
  public:
    /// `sample` is the price file that the mask is shown against; empty when none is known. `look` is asked when the
    /// mask has been saved.
    MaskEditor(LanguageTexts& texts, MessageBoxes& boxes, std::filesystem::path dataFolder,
               std::filesystem::path sample, SampleLook look);

    /// The sample is the beginning of a file of that name, converted to tab columns: a new mask begins as one of these.
    void sampleIsConvertedFrom(std::string name) { convertedFrom_ = std::move(name); }
    /// Begins with the mask of that number, 0 for a new one. Tells the user of headings that masks cannot use, and of
    /// relations beyond the hundredth, which are not shown and not saved again. False when the company's tables cannot
    /// be read, which the user is told.
    bool open(SqlLayer& sql, int maskNumber);

    // The mask. Whatever the sample is cut by cuts it anew.
    [[nodiscard]] const Mask& mask() const { return mask_; }
    void setNamn(std::string name);
    void setFilTyp(char structure);
    void setTecken(char characterSet);
    void setSkapaNya(char rule);
    void setUppdatLev(bool on);
    void setAntalRader(std::string typed);
    void setPostlängd(std::string typed);
    /// How long the records of the file seem to be, for a new mask whose length is still the one that was offered.
    [[nodiscard]] std::optional<int> suggestedLength() const;
    /// Caption for a new mask; empty for an existing one, whose window has its own.
    [[nodiscard]] std::string caption() const;

    // The lists.
    [[nodiscard]] const SourceFields& sources() const { return sources_; }
    [[nodiscard]] const std::vector<Target>& targets() const { return targets_.targets; }
    [[nodiscard]] const std::vector<EditedRelation>& relations() const { return relations_; }
    [[nodiscard]] std::string relationText(const EditedRelation& edited) const;
    /// The field that a relation reads, as the sample shows it, or its number alone where the sample has none.
    [[nodiscard]] std::string sourceText(const Relation& relation) const;
    /// A column that this company does not have is shown by its code.
    [[nodiscard]] Target targetOf(const Relation& relation) const;
    [[nodiscard]] const RuleEntries& updateRules() const { return updateRules_; }
    [[nodiscard]] const RuleEntries& divisions() const { return divisions_; }

    // What is chosen in them.
    struct Choice {
        int source = -1;
        int target = -1;
        int relation = -1;
        int updateRule = -1;
        int division = -1;
    };
    [[nodiscard]] const Choice& chosen() const { return chosen_; }
    void chooseSource(int row);
    /// Offers the target's rules and preselects the first ones, or "no search key" when the mask has one already.
    void chooseTarget(int row);
    void chooseRelation(int row);
    void chooseUpdateRule(int place) { chosen_.updateRule = place; }
    void chooseDivision(int place) { chosen_.division = place; }

    // The position boxes.
    [[nodiscard]] bool showsPositions() const { return mask_.FilTyp == 'P'; }
    [[nodiscard]] const std::string& FrånPos() const { return FrånPos_; }
    [[nodiscard]] const std::string& Längd() const { return Längd_; }
    void setFrånPos(std::string typed) { FrånPos_ = std::move(typed); }
    void setLängd(std::string typed) { Längd_ = std::move(typed); }

    // Relations as the try-out on the sample makes them.
    [[nodiscard]] const std::filesystem::path& sample() const { return sample_; }
    [[nodiscard]] const TargetList& targetList() const { return targets_; }
    [[nodiscard]] bool hasTarget(int code) const;
    [[nodiscard]] bool hasSearchKey() const;
    /// A relation to that target with the rules that are preselected.
    [[nodiscard]] Relation ordinaryRelation(int targetRow, int source, Piece piece);
    /// Adds a relation to a target that has none yet. False when there are a hundred; the user is told.
    bool join(const Relation& relation);
    void movePiece(int relationRow, Piece piece);

    /// What the relation becomes where it stands. It is chosen.
    void changeRelation(int row, const Relation& relation);

    // Every change of the mask and its relations can be taken back, and done again.
    /// Changes that are one step. Those of a kind that follow each other are one, too; a step alone has none.
    enum class Kind { Alone, Namn, AntalRader, Postlängd, Boundary };
    void asOneStep(const std::function<void()>& changes, Kind kind = Kind::Alone);
    [[nodiscard]] bool canUndo() const { return history_.canUndo(); }
    [[nodiscard]] bool canRedo() const { return history_.canRedo(); }
    void undo();
    void redo();

    // The buttons.
    void createRelation();
    /// The chosen one.
    void removeRelation();
    /// Several at once, by their rows.
    void removeRelations(const std::vector<int>& rows);
    enum class Saved { Yes, WrongName, Failed };
    /// Tells the user what stands in the way, and of a saved mask what a run with it would do wrong.
    Saved save();
    /// Whether there is something that `save` would write.
    [[nodiscard]] bool changed() const { return edited() != begun_; }

  private:
    struct State {
        Mask mask;
        std::vector<EditedRelation> relations;
        int chosenRelation;
    };
    [[nodiscard]] State state() const { return {mask_, relations_, chosen_.relation}; }
    void restore(State state);
    void load(int maskNumber);
    void readSources();
    SourceFields cutSample();
    [[nodiscard]] bool doublesProducts() const;
    void tellWhatRunsWillDo(const std::vector<Relation>& relations);
    [[nodiscard]] std::vector<Piece> pieces() const;
    void numberPieces();
    void showPositions(Piece piece);
    void offerRules(const Target& target);
    [[nodiscard]] int freeSlot() const;
    void dropRelation(int row);
    [[nodiscard]] Relation newRelation() const;
    [[nodiscard]] bool agreesToReplace(int target);
    [[nodiscard]] WholeMask edited() const;
    [[nodiscard]] std::string wrongName() const;
    void tell(const PlatformError& error);

    LanguageTexts& texts_;
    MessageBoxes& boxes_;
    std::filesystem::path dataFolder_;
    std::filesystem::path sample_;
    std::string convertedFrom_;
    SampleLook look_;
    Mask mask_;
    std::optional<WholeMask> shown_;  ///< as it is stored; none for a new one
    WholeMask begun_;                 ///< as the window first showed it
    TargetList targets_;
    SourceFields sources_;
    std::vector<EditedRelation> relations_;  ///< in the order of the list
    bool relationsLeftOut_ = false;
    RuleEntries updateRules_, divisions_;
    Choice chosen_;
    std::string FrånPos_, Längd_;
    UndoHistory<State> history_;
    bool withinStep_ = false;
};

}  // namespace kolmera
