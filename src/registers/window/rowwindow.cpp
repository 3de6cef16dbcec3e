#include "registers/window/rowwindow.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <algorithm>

#include "lang/errortext.h"
#include "lang/keys/registerswindow.h"
#include "registers/registertexts.h"
#include "ui/controls.h"
#include "ui/forms.h"
#include "ui/keys.h"
#include "ui/qttext.h"

namespace kolmera {

RowWindow::RowWindow(Program& program, RegisterEditor& editor, RegisterRow row, bool isNew, QWidget* parent)
    : QDialog(parent), program_(program), editor_(editor), row_(std::move(row)), new_(isNew) {
    setObjectName(QStringLiteral("RegisterRow"));
    auto* fields = new QScrollArea(this);
    fields->setWidgetResizable(true);
    fields->setFrameShape(QFrame::NoFrame);
    fields->setFocusPolicy(Qt::NoFocus);
    fields->setWidget(new QWidget(fields));
    auto* form = new QFormLayout(fields->widget());
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    buildFields();
    for (const auto& [column, field] : fields_) form->addRow(toQt(editor_.opened().column(column).caption), field);
    save_ = button(*this, "Spara", "&Spara");
    cancel_ = button(*this, "Avbryt", "&Avbryt");
    save_->setDefault(true);
    connect(save_, &QPushButton::clicked, this, [this] { save(); });
    connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });
    pressOnKey(*this, QKeySequence(Qt::Key_F7), *save_);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(save_);
    buttons->addWidget(cancel_);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(fields, 1);
    layout->addLayout(buttons);
    loadForm(program_, *this);
    for (const auto& [column, field] : fields_) {
        if (field->isReadOnly()) continue;
        field->setFocus();
        break;
    }
    const std::string title = editor_.opened().title();
    setWindowTitle(toQt(new_ ? title : fmt::format("{}: {}", title, rowName(editor_.opened().keyOf(row_)))));
    constexpr int kLetters = 70, kMostLines = 30;
    const QFontMetrics metrics = fontMetrics();
    const int height =
        std::min(fields->widget()->sizeHint().height() + 5 * metrics.lineSpacing(), kMostLines * metrics.lineSpacing());
    resize(QSize(kLetters * metrics.averageCharWidth(), height)
               .boundedTo(screen()->availableSize() - QSize(2, 4) * metrics.averageCharWidth()));
}

void RowWindow::buildFields() {
    const Register& of = editor_.opened();
    for (int column = 0; column < static_cast<int>(of.columns().size()); ++column) {
        const bool canEdit = editor_.canEdit(row_, column, new_);
        if (!canEdit && !of.column(column).key) continue;
        auto* field = new QLineEdit(this);
        field->setObjectName(QStringLiteral("Kolumn_%1").arg(column));
        field->setAccessibleName(toQt(of.column(column).caption));
        before_[column] = new_ ? std::string() : of.textOf(row_, column);
        field->setText(toQt(before_[column]));
        field->setReadOnly(!canEdit);
        fields_[column] = field;
    }
}

std::map<int, std::string> RowWindow::texts() const {
    std::map<int, std::string> texts;
    for (const auto& [column, field] : fields_) {
        if (!field->isReadOnly()) texts[column] = fromQt(field->text());
    }
    return texts;
}

bool RowWindow::isChanged() const {
    return std::ranges::any_of(fields_,
                               [&](const auto& each) { return fromQt(each.second->text()) != before_.at(each.first); });
}

void RowWindow::save() {
    try {
        const std::vector<std::string> wrong = editor_.save(row_, new_, texts());
        if (wrong.empty()) return accept();
        program_.boxes.MeddelandeVarning(fmt::format("{}", fmt::join(wrong, "\r\n")));
    } catch (const PlatformError& error) {
        program_.boxes.MeddelandeVarning(errorText(program_.texts, error));
    }
}

void RowWindow::reject() {
    if (!isChanged() || leaveUnsaved(program_)) QDialog::reject();
}

}  // namespace kolmera
