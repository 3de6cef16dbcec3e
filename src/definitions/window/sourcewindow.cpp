#include "definitions/window/sourcewindow.h"

#include <fmt/format.h>

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QTableWidget>
#include <QTimer>

#include "lang/keys/source.h"
#include "ui/controls.h"
#include "ui/forms.h"
#include "ui/keys.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

using Property = SourceEditor::Property;

constexpr int kMostColumns = 256;

/// The name of a property's box, under which it finds the focus again when all boxes are made anew.
QString nameOfBox(Property::Name name) { return QStringLiteral("Egenskap_%1").arg(static_cast<int>(name)); }

void removeAll(QLayout& layout) {
    while (QLayoutItem* item = layout.takeAt(0)) {
        delete item->widget();
        delete item;
    }
}

}  // namespace

SourceWindow::SourceWindow(Program& program, SourceEditor& editor, bool converts, QWidget* parent)
    : QDialog(parent), program_(program), editor_(editor) {
    constexpr int kWidth = 960, kHeight = 600;
    setObjectName(QStringLiteral("SourceWindow"));
    setWindowTitle(QStringLiteral("Prisfilens format"));
    build();
    layOut();
    loadForm(program_, *this);
    omvandla_->setChecked(converts);
    connect(omvandla_, &QCheckBox::toggled, this, [this] { present(); });
    connect(ok_, &QPushButton::clicked, this, [this] { accept(); });
    connect(avbryt_, &QPushButton::clicked, this, [this] { reject(); });
    resize(kWidth, kHeight);
    present();
}

bool SourceWindow::converts() const { return omvandla_->isChecked() && editor_.error().empty(); }

void SourceWindow::build() {
    ord_ = new QLabel(this);
    ord_->setWordWrap(true);
    ord_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    omvandla_ = named(new QCheckBox(QStringLiteral("O&mvandla filen så här innan masken läser den"), this), "Omvandla");
    egenskaper_ = new QWidget;
    new QGridLayout(egenskaper_);
    lblRader_ = label(*this, "Lbl_Rader", "&Rader i tabellen");
    rader_ = named(new QTableWidget(this), "Rader");
    rader_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    rader_->setTabKeyNavigation(false);
    rader_->setWordWrap(false);
    rader_->verticalHeader()->setDefaultSectionSize(fontMetrics().lineSpacing() + fontMetrics().lineSpacing() / 3);
    lblRader_->setBuddy(rader_);
    tolkningar_ = named(new QGroupBox(QStringLiteral("Teckenuppsättningen är osäker: välj den som läser rätt"), this),
                        "Tolkningar");
    new QHBoxLayout(tolkningar_);
    ok_ = button(*this, "OK", "&OK");
    ok_->setDefault(true);
    avbryt_ = button(*this, "Avbryt", "&Avbryt");
}

void SourceWindow::layOut() {
    constexpr int kLetters = 66;
    auto* scrolled = new QScrollArea(this);
    scrolled->setWidget(egenskaper_);
    scrolled->setWidgetResizable(true);
    scrolled->setFrameShape(QFrame::NoFrame);
    scrolled->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scrolled->setFixedWidth(kLetters * fontMetrics().averageCharWidth());
    scrolled->setFocusPolicy(Qt::NoFocus);
    auto* table = new QVBoxLayout;
    table->addWidget(lblRader_);
    table->addWidget(rader_, 1);
    auto* middle = new QHBoxLayout;
    middle->addWidget(scrolled);
    middle->addLayout(table, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(ok_);
    buttons->addWidget(avbryt_);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(ord_);
    layout->addWidget(omvandla_);
    layout->addLayout(middle, 1);
    layout->addWidget(tolkningar_);
    layout->addLayout(buttons);
}

// The one place that fills, enables and hides.
void SourceWindow::present() {
    ord_->setText(toQt(editor_.words()));
    omvandla_->setEnabled(editor_.error().empty());
    presentProperties();
    presentRows();
    presentDecodings();
}

/// The box that was changed goes with the others, so not before it has done.
void SourceWindow::later(std::function<void()> change) {
    QTimer::singleShot(0, this, [this, change = std::move(change)] {
        {
            const Hourglass reading(program_.boxes.port());
            change();
        }
        present();
    });
}

QWidget* SourceWindow::box(const Property& property) {
    const Property::Name name = property.name;
    if (property.choices.empty()) {
        auto* field = new QLineEdit(toQt(property.text), egenskaper_);
        connect(field, &QLineEdit::editingFinished, this, [this, field, name, before = field->text()] {
            if (field->text() == before) return;
            later([this, name, typed = fromQt(field->text())] { editor_.type(name, typed); });
        });
        return field;
    }
    auto* choices = new QComboBox(egenskaper_);
    for (const std::string& choice : property.choices) choices->addItem(toQt(choice));
    choices->setCurrentIndex(property.chosen);
    choices->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    connect(choices, &QComboBox::activated, this,
            [this, name](int choice) { later([this, name, choice] { editor_.choose(name, choice); }); });
    return choices;
}

void SourceWindow::presentProperties() {
    const QWidget* focused = focusWidget();
    const QString before = focused == nullptr ? QString() : focused->objectName();
    auto& grid = dynamic_cast<QGridLayout&>(*egenskaper_->layout());
    removeAll(grid);
    int line = 0;
    QWidget* behind = omvandla_;
    for (const Property& property : editor_.properties()) {
        const std::string doubt =
            property.sure ? std::string() : fmt::format(" {}", program_.texts.ModulText(text::source::kNotSure));
        auto* caption = new QLabel(toQt(property.caption + doubt), egenskaper_);
        caption->setWordWrap(true);
        QWidget* value = box(property);
        value->setObjectName(nameOfBox(property.name));
        value->setEnabled(omvandla_->isChecked());
        value->setAccessibleName(caption->text());
        caption->setBuddy(value);
        SättTypsnittKontroll(*caption, program_.state.TypsnittTahoma);
        SättTypsnittKontroll(*value, program_.state.TypsnittTahoma);
        grid.addWidget(caption, line, 0);
        grid.addWidget(value, line++, 1);
        setTabOrder(behind, value);
        behind = value;
        installEnterSomTabOn(*value);
        value->show();
        if (value->objectName() == before) value->setFocus();
    }
    grid.setRowStretch(line, 1);
    grid.setColumnStretch(0, 2);
    grid.setColumnStretch(1, 3);
    setTabOrder(behind, rader_);
}

void SourceWindow::presentRows() {
    constexpr int kLetters = 16;
    const auto& rows = editor_.rows();
    const bool headings = !rows.empty() && editor_.format().headings;
    const std::size_t first = headings ? 1 : 0;
    const int columns = std::min(static_cast<int>(editor_.columns()), kMostColumns);
    rader_->clear();
    rader_->setColumnCount(columns);
    rader_->setRowCount(static_cast<int>(rows.size() - std::min(first, rows.size())));
    rader_->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    rader_->horizontalHeader()->setDefaultSectionSize(kLetters * fontMetrics().averageCharWidth());
    for (int column = 0; column < columns; ++column) {
        const auto place = static_cast<std::size_t>(column);
        QString caption = QString::number(column + 1);
        if (headings && place < rows.front().cells.size()) caption += " " + toQt(rows.front().cells[place]);
        rader_->setHorizontalHeaderItem(column, new QTableWidgetItem(caption));
    }
    for (std::size_t row = first; row < rows.size(); ++row) {
        const int line = static_cast<int>(row - first);
        rader_->setVerticalHeaderItem(line, new QTableWidgetItem(QString::number(rows[row].number)));
        for (int column = 0; column < columns; ++column) {
            const auto place = static_cast<std::size_t>(column);
            if (place >= rows[row].cells.size()) break;
            rader_->setItem(line, column, new QTableWidgetItem(toQt(rows[row].cells[place]).simplified()));
        }
    }
}

void SourceWindow::presentDecodings() {
    auto& layout = *tolkningar_->layout();
    removeAll(layout);
    const auto& decodings = editor_.decodings();
    tolkningar_->setVisible(omvandla_->isChecked() && !decodings.empty());
    for (const SourceEditor::Decoding& decoding : decodings) {
        QString text = toQt(decoding.name);
        for (const std::string& line : decoding.lines) text += "\n" + toQt(line).simplified().left(40);
        auto* choice = new QPushButton(text.replace("&", "&&"), tolkningar_);
        choice->setObjectName("Tolkning_" + toQt(decoding.name));
        choice->setStyleSheet(QStringLiteral("text-align: left"));
        choice->setAutoDefault(false);
        connect(choice, &QPushButton::clicked, this,
                [this, set = decoding.characters] { later([this, set] { editor_.chooseCharacters(set); }); });
        layout.addWidget(choice);
    }
}

}  // namespace kolmera
