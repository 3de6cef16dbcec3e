#include "discounts/window/prisrab.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTreeView>

#include "definitions/window/suppliermodel.h"
#include "discounts/window/lettermodel.h"
#include "lang/keys/boxes.h"
#include "lang/keys/prisrab.h"
#include "ui/controls.h"
#include "ui/fields.h"
#include "ui/forms.h"
#include "ui/keys.h"
#include "ui/lists.h"
#include "ui/qttext.h"
#include "ui/searchbox.h"

namespace kolmera {
namespace {

constexpr std::string_view kForm = "PrisRab";
constexpr int kSecondFilter = 1;
constexpr int kCodeLength = 10;
constexpr int kDiscountLength = 15;
const std::vector<int> kCompanyTabStops{208};  ///< dialog units

// The captions of the labels "Lbl_0" to "Lbl_8".
constexpr std::array kCaptions = {"&Till företag", "&Från leverantör", "&Rabattkod", "Rab. % &1", "Rab. % &2",
                                  "Rab. % &3",     "Rab. % &4",        "Rab. % &5",  "Rabatt %"};
constexpr std::size_t kCompanyLabel = 0, kSupplierLabel = 1, kFirstFieldLabel = 2, kTotalLabel = 8;

QTreeView* grid(QWidget& parent, const char* name, QAbstractItemModel* model) {
    auto* made = named(new QTreeView(&parent), name);
    made->setModel(model);
    made->setRootIsDecorated(false);
    made->setUniformRowHeights(true);
    made->setAllColumnsShowFocus(true);
    made->setEditTriggers(QAbstractItemView::NoEditTriggers);
    installEnterSomTabOn(*made);
    return made;
}

/// Lists are filled while this object lives.
class Showing {
  public:
    explicit Showing(bool& showing) : showing_(showing), before_(showing) { showing_ = true; }
    ~Showing() { showing_ = before_; }
    Showing(const Showing&) = delete;
    Showing& operator=(const Showing&) = delete;

  private:
    bool& showing_;
    bool before_;
};

}  // namespace

PrisRab::PrisRab(Program& program, int JobbNr, QWidget* parent)
    : QDialog(parent),
      program_(program),
      letters_(program.state, program.texts, program.boxes, program.companies),
      wait_(*this) {
    const Hourglass loading(program.boxes.port());
    setObjectName(toQt(kForm));
    setWindowTitle(QStringLiteral("Rabattbrev"));
    askForFiles();
    buildLists();
    buildFields();
    buildButtons();
    layOut();
    setTabOrders();
    installEnterSomTab(*this);
    loadForm(program_, *this);
    caption_ = windowTitle();
    nameColumns();
    setSizes();
    connectLists();
    connectFields();
    connectButtons();
    connectKeys();
    connectWaiting();
    letters_.open(JobbNr);
    for (const Company& company : letters_.companies()) ftgLista_->addItem(toQt(rowOf(company)));
    selectRow(*ftgLista_, letters_.chosenCompany());
    showing_ = false;
    presentCompany();
}

// A field that loses the focus with the window, and a list that goes, must still find what they belong to.
PrisRab::~PrisRab() {
    hide();
    showing_ = true;
    delete lista_;
    delete levLista_;
}

// The window's own button; "Stäng" closes, and Escape gives up what is typed.
void PrisRab::closeEvent(QCloseEvent* event) {
    if (letters_.hasUnsaved() && !leaveUnsaved(program_)) {
        event->ignore();
        return;
    }
    QDialog::closeEvent(event);
}

void PrisRab::askForFiles() {
    fileToRead = [this](const FileQuestion& question) { return askForFileToOpen(this, question, program_.memory); };
    fileToWrite = [this](const FileQuestion& question) {
        return askForFileToSave(
            this, question, [](const QString& file) { return isSpreadsheet(fromQt(file)); }, program_.memory);
    };
}

void PrisRab::buildLists() {
    for (std::size_t number = 0; number < labels_.size(); ++number) {
        const QByteArray name = QStringLiteral("Lbl_%1").arg(number).toUtf8();
        labels_.at(number) = label(*this, name.constData(), kCaptions.at(number));
    }
    ftgLista_ = named(new QListWidget(this), "FTG_Lista");
    setTabStops(*ftgLista_, kCompanyTabStops);
    installEnterSomTabOn(*ftgLista_);
    labels_.at(kCompanyLabel)->setBuddy(ftgLista_);
    suppliers_ = new SupplierModel(letters_.suppliers(), this);
    levLista_ = grid(*this, "Lev_Lista", suppliers_);
    levLista_->setHeaderHidden(true);
    labels_.at(kSupplierLabel)->setBuddy(levLista_);
    sökLev_ = searchBoxOf(program_, *levLista_, *this, "SökLev");
    groups_ = new LetterModel(letters_.Lista(), this);
    lista_ = grid(*this, "Lista", groups_);
    lista_->setToolTip(QStringLiteral("Leverantörens rabattgrupper"));
    sökGrupp_ = searchBoxOf(program_, *lista_, *this, "SökGrupp");
    sökGrupp_->takeFindKey(*this);
}

void PrisRab::buildFields() {
    for (std::size_t number = 0; number < fields_.size(); ++number) {
        auto* field = named(new QLineEdit(this), "");
        field->setObjectName(QStringLiteral("Fält_%1").arg(number));
        labels_.at(kFirstFieldLabel + number)->setBuddy(field);
        fields_.at(number) = field;
        if (number == 0) {
            field->setMaxLength(kCodeLength);
            continue;
        }
        field->setMaxLength(kDiscountLength);
        field->setAlignment(Qt::AlignRight);
        allowNumbersOnly(*field, program_.state.Decimaltecken, true, true);
    }
    saTecken_ = label(*this, "SaTecken", "Σ");
    totalRabatt_ = named(new QLabel(this), "TotalRabatt");
    totalRabatt_->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    totalRabatt_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    totalRabatt_->setTextFormat(Qt::PlainText);
}

void PrisRab::buildButtons() {
    spara_ = button(*this, "Spara", "F7 - Spara");
    avbryt_ = button(*this, "Avbryt", "F8 - Avbryt");
    taBort_ = button(*this, "TaBort", "F9 - Ta bort");
    stäng_ = button(*this, "Stäng", "F12 - Stäng");
    läsFil_ = button(*this, "LäsFil", "Läs in te&xtfil...");
    skapaFil_ = button(*this, "SkapaFil", "&Spara som textfil...");
}

void PrisRab::layOut() {
    auto* upper = new QGridLayout;
    upper->addWidget(labels_.at(kCompanyLabel), 0, 0);
    upper->addWidget(ftgLista_, 1, 0);
    auto* suppliers = new QHBoxLayout;
    suppliers->addWidget(labels_.at(kSupplierLabel), 1);
    suppliers->addWidget(sökLev_, 1);
    upper->addLayout(suppliers, 0, 1);
    upper->addWidget(levLista_, 1, 1);
    upper->setColumnStretch(0, 1);
    upper->setColumnStretch(1, 1);
    auto* fields = new QGridLayout;
    layOutFields(*fields);
    auto* buttons = new QHBoxLayout;
    layOutButtons(*buttons);
    auto* layout = new QVBoxLayout(this);
    auto* groups = new QHBoxLayout;
    groups->addStretch(1);
    groups->addWidget(sökGrupp_, 1);
    layout->addLayout(upper, 2);
    layout->addLayout(groups);
    layout->addWidget(lista_, 5);
    layout->addLayout(fields);
    layout->addSpacing(fontMetrics().height() / 2);
    layout->addLayout(buttons);
}

void PrisRab::layOutFields(QGridLayout& grid) {
    int column = 0;
    for (std::size_t number = 0; number < fields_.size(); ++number, ++column) {
        grid.addWidget(labels_.at(kFirstFieldLabel + number), 0, column);
        grid.addWidget(fields_.at(number), 1, column);
        grid.setColumnStretch(column, number == 0 ? 3 : 2);
    }
    grid.addWidget(saTecken_, 1, column++);
    grid.addWidget(labels_.at(kTotalLabel), 0, column);
    grid.addWidget(totalRabatt_, 1, column);
    grid.setColumnStretch(column, 2);
}

void PrisRab::layOutButtons(QBoxLayout& box) {
    for (QPushButton* each : {spara_, avbryt_, taBort_}) box.addWidget(each);
    box.addStretch(1);
    for (QPushButton* each : {läsFil_, skapaFil_}) box.addWidget(each);
    box.addStretch(1);
    box.addWidget(stäng_);
}

void PrisRab::setTabOrders() {
    QWidget* before = ftgLista_;
    const auto follows = [&before](QWidget* next) {
        setTabOrder(before, next);
        before = next;
    };
    follows(sökLev_);
    follows(levLista_);
    follows(sökGrupp_);
    follows(lista_);
    for (QLineEdit* field : fields_) follows(field);
    for (QPushButton* each : {spara_, avbryt_, taBort_, läsFil_, skapaFil_, stäng_}) follows(each);
}

void PrisRab::setSizes() {
    constexpr int kUpperLines = 5, kGroupLines = 12;
    constexpr int kSupplierLetters = 30;  ///< number and search name
    constexpr int kCompanyLetters = 66;   ///< the tab stop is at 52, a file's name behind it
    const QFontMetrics metrics = fontMetrics();
    const int letter = metrics.averageCharWidth();
    ftgLista_->setMinimumHeight(kUpperLines * metrics.lineSpacing());
    ftgLista_->setMinimumWidth(kCompanyLetters * letter);
    levLista_->setMinimumHeight(kUpperLines * metrics.lineSpacing());
    levLista_->setMinimumWidth(kSupplierLetters * letter);
    levLista_->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    lista_->setMinimumHeight(kGroupLines * metrics.lineSpacing());
    for (QLineEdit* field : fields_) field->setMinimumWidth((kCodeLength + 1) * letter);
    totalRabatt_->setMinimumWidth((kCodeLength + 1) * letter);
}

/// The columns of the list are named as the fields that show them.
void PrisRab::nameColumns() {
    QStringList headers;
    for (std::size_t number = kFirstFieldLabel; number < labels_.size(); ++number) {
        headers.push_back(labels_.at(number)->text().remove('&'));
    }
    groups_->setHeaders(std::move(headers));
    totalRabatt_->setAccessibleName(labels_.at(kTotalLabel)->text());
    lista_->header()->setSectionResizeMode(QHeaderView::Stretch);
    lista_->header()->setStretchLastSection(false);  // which would keep it wider than its share
    // The code's caption is the longest; the other columns share what is left.
    lista_->header()->setSectionResizeMode(0, QHeaderView::Fixed);
    lista_->setColumnWidth(0, lista_->header()->sectionSizeHint(0));
    // Scaled fonts round the columns to a pixel more than there is.
    lista_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    ftgLista_->setAccessibleName(labels_.at(kCompanyLabel)->text().remove('&'));
    levLista_->setAccessibleName(labels_.at(kSupplierLabel)->text().remove('&'));
}

void PrisRab::connectLists() {
    connect(ftgLista_, &QListWidget::currentRowChanged, this, [this](int row) {
        if (showing_ || row < 0) return;
        const Hourglass loading(program_.boxes.port());
        letters_.chooseCompany(row);
        presentCompany();
    });
    connect(levLista_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& current) {
                if (showing_) return;
                const Hourglass loading(program_.boxes.port());
                letters_.chooseSupplier(current.row());
                presentLetter();
            });
    const auto choose = [this](const QModelIndex& current) {
        if (showing_ || !current.isValid()) return;
        letters_.chooseRow(current.row());
        presentFields();
    };
    connect(lista_->selectionModel(), &QItemSelectionModel::currentRowChanged, this, choose);
    // A click on the selected group shows it again.
    connect(lista_, &QTreeView::clicked, this, choose);
}

void PrisRab::connectFields() {
    for (int number = 0; number < LetterEditor::kFields; ++number) {
        QLineEdit* field = fields_.at(static_cast<std::size_t>(number));
        connect(field, &QLineEdit::textEdited, this, [this, number](const QString& text) {
            letters_.edit(number, fromQt(text));
            presentButtons();
        });
        connect(field, &QLineEdit::editingFinished, this, [this, number] {
            if (wait_.shown()) return;
            letters_.leave(number);
            presentRow();
            presentFields();
        });
    }
}

void PrisRab::connectButtons() {
    connect(spara_, &QPushButton::clicked, this, [this] { save(); });
    connect(avbryt_, &QPushButton::clicked, this, [this] {
        letters_.Avbryt();
        RensaFält(fields_, 0, LetterEditor::kFields - 1);
        presentFields();
    });
    connect(taBort_, &QPushButton::clicked, this, [this] {
        letters_.TaBort();
        presentLetter();
        focusCode();
    });
    connect(stäng_, &QPushButton::clicked, this, [this] { reject(); });
    connect(läsFil_, &QPushButton::clicked, this, [this] { readFile(); });
    connect(skapaFil_, &QPushButton::clicked, this, [this] { writeFile(); });
}

void PrisRab::connectKeys() {
    pressOnKey(*this, QKeySequence(Qt::Key_F7), *spara_);
    pressOnKey(*this, QKeySequence(Qt::Key_F8), *avbryt_);
    pressOnKey(*this, QKeySequence(Qt::Key_Escape), *avbryt_);
    pressOnKey(*this, QKeySequence(Qt::Key_F9), *taBort_);
    pressOnKey(*this, QKeySequence(Qt::Key_F12), *stäng_);
    focusOnAltL(*this, *lista_);
}

void PrisRab::connectWaiting() {
    letters_.keepWaiting = [this](const std::string& text) {
        return wait_.keepWaiting(toQt(text), toQt(program_.texts.ModulText(text::boxes::kCancel)));
    };
    letters_.waited = [this] { wait_.over(); };
}

// What follows from a choice: the company's suppliers, the supplier's letter, the fields of a group.

void PrisRab::presentCompany() {
    const Showing filling(showing_);
    suppliers_->refresh();
    presentLetter();
}

void PrisRab::presentLetter() {
    {
        const Showing filling(showing_);
        selectRow(*levLista_, letters_.chosenSupplier());
        groups_->refresh();
    }
    setWindowTitle(caption_ + toQt(letters_.captionSuffix()));
    presentRow();
    presentFields();
}

void PrisRab::presentRow() {
    const Showing filling(showing_);
    selectRow(*lista_, letters_.chosenRow());
}

void PrisRab::presentFields() {
    for (int number = 0; number < LetterEditor::kFields; ++number) {
        QLineEdit* field = fields_.at(static_cast<std::size_t>(number));
        const QString text = toQt(letters_.field(number));
        if (field->text() != text) field->setText(text);
    }
    totalRabatt_->setText(toQt(letters_.TotalRabatt()));
    presentButtons();
}

void PrisRab::presentButtons() {
    taBort_->setEnabled(letters_.canDelete());
    skapaFil_->setEnabled(letters_.canWrite());
}

void PrisRab::focusCode() { fields_.front()->setFocus(); }

/// A key leaves the focus in its field, but must act on what the field says.
void PrisRab::leaveField() {
    for (int number = 0; number < LetterEditor::kFields; ++number) {
        if (fields_.at(static_cast<std::size_t>(number))->hasFocus()) letters_.leave(number);
    }
}

void PrisRab::save() {
    leaveField();
    const std::optional<int> focus = letters_.Spara();
    presentLetter();
    if (focus) fields_.at(static_cast<std::size_t>(*focus))->setFocus();
}

void PrisRab::readFile() {
    if (!letters_.canRead()) return;
    const QString file = fileToRead({.title = toQt(program_.texts.FormulärSträng(text::prisrab::kReadTitle)),
                                     .filters = toQt(program_.texts.FormulärSträng(text::prisrab::kReadFilters)),
                                     .path = toQt(letters_.folder().string())});
    if (file.isEmpty()) return;
    letters_.LäsFil(fromQt(file));
    presentLetter();
}

void PrisRab::writeFile() {
    const QString file = fileToWrite({.title = toQt(program_.texts.FormulärSträng(text::prisrab::kWriteTitle)),
                                      .filters = toQt(program_.texts.FormulärSträng(text::prisrab::kWriteFilters)),
                                      .filter = kSecondFilter,
                                      .path = toQt(letters_.proposedFile().string())});
    if (!file.isEmpty()) letters_.SkapaFil(fromQt(file));
}

void visaPrisRab(Program& program, QWidget* parent, int JobbNr) {
    PrisRab form(program, JobbNr, parent);
    VisaFormulär(program, form, true);
}

}  // namespace kolmera
