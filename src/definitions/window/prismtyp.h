#pragma once

#include <QDialog>
#include <filesystem>
#include <functional>
#include <optional>

#include "definitions/maskeditor.h"
#include "definitions/relationtable.h"
#include "ui/program.h"

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLayout;
class QLineEdit;
class QListWidget;
class QPushButton;
class QTableView;

namespace kolmera {

class RelationModel;
class SearchBox;

/// What the mask editor is shown against.
struct MaskSurroundings {
    std::filesystem::path sample = {};
    std::string convertedFrom = {};          ///< the file whose beginning, converted, the sample is
    std::vector<std::string> headings = {};  ///< of its columns
    std::string supplier = {};               ///< the job's, whose products the mask is tried on
    /// The sample as it is converted for the mask as it is edited; unset where nothing is converted.
    std::function<std::filesystem::path(const WholeMask&)> sampleFor = {};
};

/// The mask editor's window: a mask is made against the first record of a sample price file.
class PrisMTyp final : public QDialog {
  public:
    /// `editor` is open already.
    PrisMTyp(Program& program, MaskEditor& editor, QWidget* parent, MaskSurroundings around = {});

    ~PrisMTyp() override;
    PrisMTyp(const PrisMTyp&) = delete;
    PrisMTyp& operator=(const PrisMTyp&) = delete;
    PrisMTyp(PrisMTyp&&) = delete;
    PrisMTyp& operator=(PrisMTyp&&) = delete;

    void reject() override;

  private:
    void buildMask();
    QButtonGroup* addOptions(QGroupBox& frame, const char* name, std::initializer_list<const char*> captions);
    QLineEdit* addNumber(QGroupBox& frame, const char* name, const char* caption);
    void buildLists();
    void buildRules();
    void buildRelations();
    void buildButtons();
    void layOut();
    QLayout* layOutMask();
    QLayout* layOutFields();
    void setSizes();
    void setColumnWidths();
    void connectMask();
    void connectLists();
    void connectRelations();
    void connectButtons();
    void connectUndo();
    bool eventFilter(QObject* watched, QEvent* event) override;
    void showMask();
    void takeBack(void (MaskEditor::*step)());
    void removeRelations();
    [[nodiscard]] std::vector<int> selectedRelations() const;

    void present();
    void presentMask();
    void presentSources();
    void presentRelations();
    void presentChoice();
    void presentUndo();
    void presentRules();
    void presentPositions();
    void save();
    void tryOnSample();

    Program& program_;
    MaskEditor& editor_;
    RelationTable relations_;
    MaskSurroundings around_;
    QLabel* lblNamn_;
    QLineEdit* namn_;
    QGroupBox *ramFilTyp_, *ramTecken_, *ramSkapaNya_, *positioner_;
    QButtonGroup *filTyp_, *tecken_, *skapaNya_;
    QLineEdit *antalRader_, *postlängd_;
    QCheckBox* uppdatLev_;
    QLabel *lblFrånLista_, *lblTillLista_, *lblTypKod_, *lblDivision_, *lblRelationer_, *anmärkning_;
    QListWidget *frånLista_, *tillLista_;
    QTableView* relationer_;
    RelationModel* modell_;
    bool presenting_ = false;  ///< the table shows another row than the user's
    SearchBox *sökTill_, *sökRelation_;
    QLineEdit *frånPos_, *längd_;
    QComboBox *typKod_, *division_;
    QPushButton *skapa_, *tabort_, *ångra_, *görOm_, *exempel_, *spara_, *avbryt_;
};

/// Edits the mask of that number, 0 for a new one, against a sample file; the company database is open. Answers the
/// number of the saved mask, or nothing.
std::optional<int> visaPrisMTyp(Program& program, QWidget* parent, const MaskSurroundings& around, int maskNumber);

}  // namespace kolmera
