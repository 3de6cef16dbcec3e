#pragma once

#include <QDialog>

#include "definitions/masksample.h"
#include "ui/program.h"

class QComboBox;
class QLabel;
class QPushButton;
class QTableView;
class QTableWidget;

namespace kolmera {

class RulerView;
class RecordsModel;

/// A mask tried on its sample: the records as a table or under a ruler, and the fields with their targets, those that
/// are suggested, and what a record gives. It changes the mask that is being edited; saving is the mask editor's.
class MaskSampleWindow final : public QDialog {
  public:
    MaskSampleWindow(Program& program, MaskSample& sample, QWidget* parent);

  private:
    void buildRecords();
    void buildFields();
    void buildButtons();
    void layOut();
    void setSizes();
    void connectRecords();
    void connectFields();
    void present();
    void presentRecords();
    void presentFields();
    void presentChoice();
    void stepRecord(int step);

    Program& program_;
    MaskSample& sample_;
    QLabel *lblPoster_, *post_, *produkt_, *lblFält_, *lblMål_, *påpekande_;
    QTableView* poster_ = nullptr;
    RecordsModel* records_ = nullptr;
    RulerView* linjal_ = nullptr;
    QPushButton *gränser_ = nullptr, *föregående_, *nästa_, *anta_, *antaAlla_, *stäng_;
    QTableWidget* fält_;
    QComboBox* mål_;
    bool presenting_ = false;
};

}  // namespace kolmera
