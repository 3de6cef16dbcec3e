#include "definitions/window/prismtyp.h"

#include <QAccessible>
#include <QAction>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QScopedValueRollback>
#include <QSignalBlocker>
#include <QTableView>
#include <algorithm>

#include "definitions/masksample.h"
#include "definitions/window/masksamplewindow.h"
#include "definitions/window/relationmodel.h"
#include "lang/keys/prismtyp.h"
#include "ui/commands.h"
#include "ui/controls.h"
#include "ui/copyrows.h"
#include "ui/forms.h"
#include "ui/keys.h"
#include "ui/lists.h"
#include "ui/qttext.h"
#include "ui/searchbox.h"
#include "ui/ucuppner.h"

namespace kolmera {
namespace {

constexpr int kNumberLength = 4;
constexpr char kFilTyper[] = {'F', 'T', 'P'};
constexpr char kTecken[] = {'J', 'N'};
constexpr char kSkapaNya[] = {'J', 'N'};
const std::vector<int> kFieldTabStops{18};  ///< dialog units

QListWidget* list(QWidget& parent, const char* name, QLabel& caption) {
    auto* made = named(new QListWidget(&parent), name);
    made->setUniformItemSizes(true);
    setTabStops(*made, kFieldTabStops);
    installEnterSomTabOn(*made);
    caption.setBuddy(made);
    return made;
}

QLineEdit* numberBox(QWidget& parent, const char* name) {
    auto* box = named(new QLineEdit(&parent), name);
    box->setMaxLength(kNumberLength);
    // Room for the digits, the cursor and the frame.
    box->setFixedWidth((kNumberLength + 3) * box->fontMetrics().horizontalAdvance('0'));
    allowNumbersOnly(*box, ',', false, false);
    return box;
}

/// The arrows beside a number box.
UCUppNer* arrows(QLineEdit& box, const Locale& locale) {
    constexpr float kGreatest = 9999;  // of kNumberLength digits
    auto* made = new UCUppNer(locale, box);
    made->setObjectName("UppNer_" + box.objectName());
    made->steps.Max = kGreatest;
    return made;
}

/// The letter of the option with that number, counted from 1.
template <std::size_t Count>
char letterOf(const char (&letters)[Count], int option) {
    return letters[static_cast<std::size_t>(option - 1)];
}

/// Chooses the option of a letter; an unknown letter is the last one's.
template <std::size_t Count>
void check(QButtonGroup& options, const char (&letters)[Count], char letter) {
    std::size_t place = 0;
    while (place + 1 < Count && letters[place] != letter) ++place;
    options.button(static_cast<int>(place) + 1)->setChecked(true);
}

void fill(QComboBox& box, const RuleEntries& entries, int chosen) {
    const QSignalBlocker quiet(box);
    box.clear();
    for (const RuleEntry& entry : entries) box.addItem(toQt(entry.text));
    box.setCurrentIndex(chosen);
}

void select(QListWidget& list, int row) {
    const QSignalBlocker quiet(list);
    selectRow(list, row);
}

void setTextQuietly(QLineEdit& box, const std::string& text) {
    if (fromQt(box.text()) != text) box.setText(toQt(text));
}

}  // namespace

PrisMTyp::PrisMTyp(Program& program, MaskEditor& editor, QWidget* parent, MaskSurroundings around)
    : QDialog(parent),
      program_(program),
      editor_(editor),
      relations_(program.texts, editor),
      around_(std::move(around)) {
    const Hourglass loading(program.boxes.port());
    setObjectName(QStringLiteral("PrisMTyp"));
    setWindowTitle(QStringLiteral("Mask (filtyp)"));
    buildMask();
    buildLists();
    buildRules();
    buildRelations();
    buildButtons();
    layOut();
    installEnterSomTab(*this);
    loadForm(program_, *this);
    setSizes();
    showMask();
    connectMask();
    connectLists();
    connectRelations();
    connectButtons();
    connectUndo();
    present();
}

// The base class hides its children when the relations are gone.
PrisMTyp::~PrisMTyp() { relationer_->setModel(nullptr); }

void PrisMTyp::buildMask() {
    lblNamn_ = label(*this, "Lbl_Namn", "&Namn på mask");
    namn_ = named(new QLineEdit(this), "Namn");
    lblNamn_->setBuddy(namn_);

    ramFilTyp_ = named(new QGroupBox(QStringLiteral("Filstruktur"), this), "Ram_FilTyp");
    filTyp_ =
        addOptions(*ramFilTyp_, "FilTyp", {"Fast antal r&ader per post", "Ta&bbavgränsad text", "Fast &postlängd"});
    antalRader_ = addNumber(*ramFilTyp_, "AntalRader", "Antal ra&der");
    postlängd_ = addNumber(*ramFilTyp_, "Postlängd", "Post&längd");

    ramTecken_ = named(new QGroupBox(QStringLiteral("Teckenuppsättning"), this), "Ram_Tecken");
    tecken_ = addOptions(*ramTecken_, "Tecken", {"D&OS", "&Windows"});
    ramTecken_->layout()->setAlignment(Qt::AlignTop);

    ramSkapaNya_ = named(new QGroupBox(QStringLiteral("Produkter"), this), "Ram_SkapaNya");
    skapaNya_ = addOptions(*ramSkapaNya_, "SkapaNya", {"S&kapa nya produkter", "Ändra endast b&efintliga produkter"});
    uppdatLev_ = named(new QCheckBox(QStringLiteral("&Uppdatera priser på"), ramSkapaNya_), "UppdatLev");
    auto* grid = dynamic_cast<QGridLayout*>(ramSkapaNya_->layout());
    auto* supplier = new QHBoxLayout;
    supplier->setSpacing(0);
    supplier->addWidget(uppdatLev_);
    supplier->addWidget(label(*ramSkapaNya_, "Lbl_UppdatLev", "leverantör"), 1);
    grid->addLayout(supplier, grid->rowCount(), 0, 1, 2);
    grid->setAlignment(Qt::AlignTop);
}

QButtonGroup* PrisMTyp::addOptions(QGroupBox& frame, const char* name, std::initializer_list<const char*> captions) {
    auto* grid = new QGridLayout(&frame);
    auto* group = new QButtonGroup(&frame);
    int number = 0;
    for (const char* caption : captions) {
        ++number;
        auto* option = new QRadioButton(QString::fromUtf8(caption), &frame);
        option->setObjectName(QString::fromUtf8(name) + "_" + QString::number(number));
        group->addButton(option, number);
        grid->addWidget(option, number - 1, 0);
    }
    return group;
}

// The number stands beside the option that it belongs to.
QLineEdit* PrisMTyp::addNumber(QGroupBox& frame, const char* name, const char* caption) {
    auto* grid = dynamic_cast<QGridLayout*>(frame.layout());
    QLabel* boxLabel = label(frame, ("Lbl_" + std::string(name)).c_str(), caption);
    QLineEdit* box = numberBox(frame, name);
    boxLabel->setBuddy(box);
    const int row = std::string_view(name) == "AntalRader" ? 0 : 2;
    grid->addWidget(boxLabel, row, 1, Qt::AlignRight);
    grid->addWidget(box, row, 2);
    grid->addWidget(arrows(*box, program_.state.locale), row, 3);
    return box;
}

void PrisMTyp::buildLists() {
    lblFrånLista_ = label(*this, "Lbl_FrånLista", "&Fält i prisfilen");
    frånLista_ = list(*this, "FrånLista", *lblFrånLista_);
    positioner_ = named(new QGroupBox(QStringLiteral("Position i posten"), this), "Positioner");
    QLabel* from = label(*positioner_, "Lbl_FrånPos", "Fr&ån position");
    frånPos_ = numberBox(*positioner_, "FrånPos");
    from->setBuddy(frånPos_);
    QLabel* length = label(*positioner_, "Lbl_Längd", "L&ängd");
    längd_ = numberBox(*positioner_, "Längd");
    length->setBuddy(längd_);
    auto* boxes = new QHBoxLayout(positioner_);
    for (QWidget* control : std::initializer_list<QWidget*>{from, frånPos_, arrows(*frånPos_, program_.state.locale),
                                                            length, längd_, arrows(*längd_, program_.state.locale)}) {
        boxes->addWidget(control);
    }
    boxes->addStretch(1);
    lblTillLista_ = label(*this, "Lbl_TillLista", "Fält i företa&get");
    tillLista_ = list(*this, "TillLista", *lblTillLista_);
    sökTill_ = searchBoxOf(program_, *tillLista_, *this, "SökTill");
    sökTill_->takeFindKey(*this);
}

void PrisMTyp::buildRules() {
    lblTypKod_ = label(*this, "Lbl_TypKod", "Uppdaterings&metod");
    typKod_ = named(new QComboBox(this), "TypKod");
    lblTypKod_->setBuddy(typKod_);
    lblDivision_ = label(*this, "Lbl_Division", "S&öknyckel / division");
    division_ = named(new QComboBox(this), "Division");
    lblDivision_->setBuddy(division_);
}

// In the order of the list, which is that of the file: not to be sorted.
void PrisMTyp::buildRelations() {
    skapa_ = button(*this, "Skapa", "Skapa &relation");
    tabort_ = button(*this, "Tabort", "&Ta bort relation");
    lblRelationer_ = label(*this, "Lbl_Relationer", "Relat&ioner");
    ångra_ = button(*this, "Ångra", "Ångra");
    ångra_->setIcon(QIcon::fromTheme(QStringLiteral("edit-undo")));
    ångra_->setAutoDefault(false);
    görOm_ = button(*this, "GörOm", "Gör om");
    görOm_->setIcon(QIcon::fromTheme(QStringLiteral("edit-redo")));
    görOm_->setAutoDefault(false);
    relationer_ = named(new QTableView(this), "Relationer");
    modell_ = new RelationModel(relations_, editor_, this);
    relationer_->setModel(modell_);
    relationer_->setItemDelegate(new RelationDelegate(*modell_, relationer_));
    relationer_->setSelectionBehavior(QAbstractItemView::SelectRows);
    relationer_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    relationer_->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                                 QAbstractItemView::AnyKeyPressed);
    relationer_->setTabKeyNavigation(false);
    relationer_->setWordWrap(false);
    relationer_->verticalHeader()->hide();
    relationer_->horizontalHeader()->setStretchLastSection(true);
    relationer_->horizontalHeader()->setHighlightSections(false);
    lblRelationer_->setBuddy(relationer_);
    installEnterSomTabOn(*relationer_);
    anmärkning_ = named(new QLabel(this), "Anmärkning");
    anmärkning_->setWordWrap(true);
    sökRelation_ = searchBoxOf(program_, *relationer_, *this, "SökRelation");
}

void PrisMTyp::buildButtons() {
    exempel_ = button(*this, "Exempel", "Föreslå och prova mot e&xempel...");
    spara_ = button(*this, "Spara", "&Spara");
    spara_->setDefault(true);
    avbryt_ = button(*this, "Avbryt", "A&vbryt");
}

void PrisMTyp::layOut() {
    auto* name = new QHBoxLayout;
    name->addWidget(lblNamn_);
    name->addWidget(namn_, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(exempel_);
    buttons->addStretch(1);
    buttons->addWidget(spara_);
    buttons->addWidget(avbryt_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(name);
    layout->addLayout(layOutMask());
    layout->addLayout(layOutFields(), 3);
    auto* relations = new QHBoxLayout;
    relations->addWidget(lblRelationer_);
    relations->addWidget(anmärkning_, 2);
    relations->addWidget(ångra_);
    relations->addWidget(görOm_);
    relations->addWidget(sökRelation_, 1);
    layout->addLayout(relations);
    layout->addWidget(relationer_, 2);
    layout->addLayout(buttons);
}

QLayout* PrisMTyp::layOutMask() {
    auto* frames = new QHBoxLayout;
    frames->addWidget(ramFilTyp_, 2);
    frames->addWidget(ramTecken_, 1);
    frames->addWidget(ramSkapaNya_, 2);
    return frames;
}

QLayout* PrisMTyp::layOutFields() {
    auto* rules = new QGridLayout;
    rules->addWidget(lblTypKod_, 0, 0);
    rules->addWidget(typKod_, 1, 0);
    rules->addWidget(lblDivision_, 0, 1);
    rules->addWidget(division_, 1, 1);
    rules->addWidget(skapa_, 1, 2);
    rules->addWidget(tabort_, 1, 3);
    rules->setColumnStretch(0, 1);
    rules->setColumnStretch(1, 1);
    auto* grid = new QGridLayout;
    grid->addWidget(lblFrånLista_, 0, 0);
    grid->addWidget(frånLista_, 1, 0);
    grid->addWidget(positioner_, 2, 0);
    auto* targets = new QHBoxLayout;
    targets->addWidget(lblTillLista_, 1);
    targets->addWidget(sökTill_, 1);
    grid->addLayout(targets, 0, 1);
    grid->addWidget(tillLista_, 1, 1, 2, 1);
    grid->addLayout(rules, 3, 0, 1, 2);
    grid->setColumnStretch(0, 1);
    grid->setColumnStretch(1, 1);
    grid->setRowStretch(1, 1);
    return grid;
}

void PrisMTyp::setSizes() {
    constexpr int kLetters = 130, kLines = 8, kRelationLines = 6;
    const QFontMetrics metrics = fontMetrics();
    for (QListWidget* fields : {frånLista_, tillLista_}) fields->setMinimumHeight(kLines * metrics.lineSpacing());
    const int line = metrics.lineSpacing() + metrics.lineSpacing() / 3;
    relationer_->verticalHeader()->setDefaultSectionSize(line);
    relationer_->setMinimumHeight(kRelationLines * line);
    // Not the window's own minimum: that one would replace what its layout needs.
    relationer_->setMinimumWidth(kLetters * metrics.averageCharWidth());
}

void PrisMTyp::setColumnWidths() {
    using Column = RelationTable::Column;
    const auto letters = [](Column column) {
        switch (column) {
            case Column::FrånPos:
            case Column::Längd:
                return 7;
            case Column::Mål:
                return 24;
            case Column::TypKod:
                return 32;
            case Column::Division:
                return 22;
            default:
                return 17;
        }
    };
    const QHeaderView& header = *relationer_->horizontalHeader();
    for (int place = 0; const Column column : relations_.columns()) {
        const int width = letters(column) * fontMetrics().averageCharWidth();
        relationer_->setColumnWidth(place, std::max(width, header.sectionSizeHint(place)));
        ++place;
    }
}

void PrisMTyp::showMask() {
    presentMask();
    for (const Target& target : editor_.targets()) tillLista_->addItem(toQt(target.text));
    if (const std::string caption = editor_.caption(); !caption.empty()) setWindowTitle(toQt(caption));
}

void PrisMTyp::connectMask() {
    connect(namn_, &QLineEdit::textEdited, this, [this](const QString& text) {
        editor_.setNamn(fromQt(text));
        presentUndo();
    });
    connect(filTyp_, &QButtonGroup::idToggled, this, [this](int option, bool on) {
        if (!on) return;
        editor_.setFilTyp(letterOf(kFilTyper, option));
        present();
    });
    connect(tecken_, &QButtonGroup::idToggled, this, [this](int option, bool on) {
        if (!on) return;
        editor_.setTecken(letterOf(kTecken, option));
        present();
    });
    connect(skapaNya_, &QButtonGroup::idToggled, this, [this](int option, bool on) {
        if (on) editor_.setSkapaNya(letterOf(kSkapaNya, option));
        presentUndo();
    });
    connect(uppdatLev_, &QCheckBox::toggled, this, [this](bool on) {
        editor_.setUppdatLev(on);
        presentUndo();
    });
    connect(antalRader_, &QLineEdit::textEdited, this, [this](const QString& text) {
        editor_.setAntalRader(fromQt(text));
        present();
    });
    connect(postlängd_, &QLineEdit::textEdited, this, [this](const QString& text) {
        editor_.setPostlängd(fromQt(text));
        present();
    });
}

void PrisMTyp::connectLists() {
    connect(frånLista_, &QListWidget::currentRowChanged, this, [this](int row) {
        editor_.chooseSource(row);
        presentChoice();
    });
    connect(tillLista_, &QListWidget::currentRowChanged, this, [this](int row) {
        editor_.chooseTarget(row);
        presentChoice();
    });
    connect(tillLista_, &QListWidget::itemDoubleClicked, this, [this] { skapa_->click(); });
    connect(typKod_, &QComboBox::currentIndexChanged, this, [this](int place) { editor_.chooseUpdateRule(place); });
    connect(division_, &QComboBox::currentIndexChanged, this, [this](int place) { editor_.chooseDivision(place); });
    connect(frånPos_, &QLineEdit::textEdited, this, [this](const QString& text) { editor_.setFrånPos(fromQt(text)); });
    connect(längd_, &QLineEdit::textEdited, this, [this](const QString& text) { editor_.setLängd(fromQt(text)); });
}

void PrisMTyp::connectRelations() {
    const auto chooseRelation = [this] {
        if (presenting_) return;
        editor_.chooseRelation(relationer_->currentIndex().row());
        presentChoice();
    };
    connect(relationer_->selectionModel(), &QItemSelectionModel::currentRowChanged, this, chooseRelation);
    // A click on the selected relation shows it again.
    connect(relationer_, &QTableView::clicked, this, chooseRelation);
    modell_->changed = [this] {
        present();
        // A screen reader says it at once.
        if (relations_.remark().empty()) return;
        QAccessibleEvent alert(anmärkning_, QAccessible::Alert);
        QAccessible::updateAccessibility(&alert);
    };
    const auto inTable = [this](const QKeySequence& key, const std::function<void()>& act) {
        onKey(*relationer_, key, act, Qt::WidgetShortcut);
    };
    inTable(QKeySequence::Delete, [this] { removeRelations(); });
    relationer_->setContextMenuPolicy(Qt::ActionsContextMenu);
    auto* copy = new QAction(toQt(program_.texts.FormulärSträng(text::prismtyp::kCopyRows)), this);
    copy->setShortcut(QKeySequence::Copy);
    copy->setShortcutContext(Qt::WidgetShortcut);
    connect(copy, &QAction::triggered, this, [this] { copyRows(*relationer_); });
    relationer_->addAction(copy);
    for (QPushButton* each : {tabort_, ångra_, görOm_}) relationer_->addAction(new ButtonAction(*each, *this, {}));
    nameButtonActions(*this);
}

std::vector<int> PrisMTyp::selectedRelations() const {
    std::vector<int> rows;
    for (const QModelIndex& index : relationer_->selectionModel()->selectedRows()) {
        if (!relationer_->isRowHidden(index.row())) rows.push_back(index.row());
    }
    if (rows.empty() && editor_.chosen().relation >= 0) rows.push_back(editor_.chosen().relation);
    return rows;
}

void PrisMTyp::removeRelations() {
    editor_.removeRelations(selectedRelations());
    present();
}

void PrisMTyp::connectUndo() {
    connect(ångra_, &QPushButton::clicked, this, [this] { takeBack(&MaskEditor::undo); });
    connect(görOm_, &QPushButton::clicked, this, [this] { takeBack(&MaskEditor::redo); });
    pressOnKey(*this, QKeySequence(Qt::CTRL | Qt::Key_Z), *ångra_);
    for (const auto key : {Qt::CTRL | Qt::SHIFT | Qt::Key_Z, Qt::CTRL | Qt::Key_Y})
        pressOnKey(*this, QKeySequence(key), *görOm_);
    ångra_->setToolTip(QKeySequence(Qt::CTRL | Qt::Key_Z).toString(QKeySequence::NativeText));
    görOm_->setToolTip(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z).toString(QKeySequence::NativeText));
    // Their own undoing would be a change of the mask.
    for (QLineEdit* box : {namn_, antalRader_, postlängd_}) box->installEventFilter(this);
}

bool PrisMTyp::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const auto& key = static_cast<const QKeyEvent&>(*event);
        const bool undo = key.matches(QKeySequence::Undo), redo = key.matches(QKeySequence::Redo);
        if (undo) ångra_->click();
        if (redo) görOm_->click();
        if (undo || redo) return true;
    }
    return QDialog::eventFilter(watched, event);
}

void PrisMTyp::takeBack(void (MaskEditor::*step)()) {
    (editor_.*step)();
    presentMask();
    present();
}

void PrisMTyp::connectButtons() {
    connect(skapa_, &QPushButton::clicked, this, [this] {
        editor_.createRelation();
        present();
        relationer_->scrollToBottom();  // where the new one stands
    });
    connect(tabort_, &QPushButton::clicked, this, [this] { removeRelations(); });
    connect(exempel_, &QPushButton::clicked, this, [this] { tryOnSample(); });
    connect(spara_, &QPushButton::clicked, this, [this] { save(); });
    connect(avbryt_, &QPushButton::clicked, this, [this] { QDialog::reject(); });
}

// Esc and the window's own button; "Avbryt" says what it does.
void PrisMTyp::reject() {
    if (editor_.changed() && !leaveUnsaved(program_)) return;
    QDialog::reject();
}

void PrisMTyp::tryOnSample() {
    SampleRun run;
    if (program_.trySample) {
        run = [this](const Mask& mask, const std::vector<Relation>& relations, const std::filesystem::path& sample,
                     std::int64_t record) {
            const bool converted = around_.sampleFor != nullptr;
            return program_.trySample(around_.supplier, mask, relations,
                                      converted ? around_.sampleFor({.mask = mask, .relations = relations}) : sample,
                                      record);
        };
    }
    MaskSample sample = openMaskSample(program_.state.sql, program_.texts, program_.boxes, program_.state.dataFolder(),
                                       editor_, std::move(run), around_.headings);
    MaskSampleWindow window(program_, sample, this);
    VisaFormulär(program_, window, true);
    present();
}

void PrisMTyp::save() {
    switch (editor_.save()) {
        case MaskEditor::Saved::Yes:
            accept();
            break;
        case MaskEditor::Saved::WrongName:
            namn_->setFocus();
            break;
        case MaskEditor::Saved::Failed:
            break;
    }
}

void PrisMTyp::presentMask() {
    const QSignalBlocker structure(filTyp_), characters(tecken_), products(skapaNya_), supplier(uppdatLev_);
    const Mask& mask = editor_.mask();
    setTextQuietly(*namn_, mask.Namn);
    setTextQuietly(*antalRader_, mask.AntalRader);
    setTextQuietly(*postlängd_, mask.Postlängd);
    check(*filTyp_, kFilTyper, mask.FilTyp);
    check(*tecken_, kTecken, mask.Tecken);
    check(*skapaNya_, kSkapaNya, mask.SkapaNya);
    uppdatLev_->setChecked(mask.UppdatLev == 'J');
}

void PrisMTyp::presentUndo() {
    ångra_->setEnabled(editor_.canUndo());
    görOm_->setEnabled(editor_.canRedo());
}

// The one place that fills, enables and hides.
void PrisMTyp::present() {
    const char structure = editor_.mask().FilTyp;
    antalRader_->setEnabled(structure == 'F');
    postlängd_->setEnabled(structure == 'P');
    positioner_->setVisible(editor_.showsPositions());
    presentSources();
    presentRelations();
    presentChoice();
}

void PrisMTyp::presentSources() {
    const QSignalBlocker quiet(frånLista_);
    frånLista_->clear();
    for (const SourceField& source : editor_.sources()) frånLista_->addItem(toQt(source.text));
}

void PrisMTyp::presentRelations() {
    const QScopedValueRollback presenting(presenting_, true);
    const int columns = modell_->columnCount(), column = std::max(relationer_->currentIndex().column(), 0);
    modell_->refresh();
    if (columns != modell_->columnCount()) setColumnWidths();
    if (const int row = editor_.chosen().relation; row >= 0 && !relationer_->currentIndex().isValid())
        relationer_->setCurrentIndex(modell_->index(row, std::min(column, modell_->columnCount() - 1)));
    anmärkning_->setText(toQt(relations_.remark()));
}

void PrisMTyp::presentChoice() {
    const MaskEditor::Choice& chosen = editor_.chosen();
    select(*frånLista_, chosen.source);
    select(*tillLista_, chosen.target);
    // Its cell stays, and what is selected beside it.
    if (relationer_->currentIndex().row() != chosen.relation) {
        const QScopedValueRollback presenting(presenting_, true);
        selectRow(*relationer_, chosen.relation);
    }
    skapa_->setEnabled(chosen.source >= 0 && chosen.target >= 0);
    tabort_->setEnabled(chosen.relation >= 0);
    presentUndo();
    presentRules();
    presentPositions();
}

void PrisMTyp::presentRules() {
    fill(*typKod_, editor_.updateRules(), editor_.chosen().updateRule);
    fill(*division_, editor_.divisions(), editor_.chosen().division);
}

void PrisMTyp::presentPositions() {
    setTextQuietly(*frånPos_, editor_.FrånPos());
    setTextQuietly(*längd_, editor_.Längd());
}

std::optional<int> visaPrisMTyp(Program& program, QWidget* parent, const MaskSurroundings& around, int maskNumber) {
    MaskEditor editor(program.texts, program.boxes, program.state.dataFolder(), around.sample, program.misreadSample);
    editor.sampleIsConvertedFrom(around.convertedFrom);
    if (!editor.open(program.state.sql, maskNumber)) return std::nullopt;
    PrisMTyp form(program, editor, parent, around);
    VisaFormulär(program, form, true);
    if (form.result() != QDialog::Accepted) return std::nullopt;
    return editor.mask().number;
}

}  // namespace kolmera
