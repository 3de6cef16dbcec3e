#include "registers/window/rowwindow.h"

#include <fmt/format.h>

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <algorithm>

#include "lang/errortext.h"
#include "platform/lettercase.h"
#include "registers/registertexts.h"
#include "ui/controls.h"
#include "ui/forms.h"
#include "ui/keys.h"
#include "ui/qttext.h"
#include "ui/windowmemory.h"

namespace kolmera {

RowWindow::RowWindow(Program& program, RegisterEditor& editor, RegisterRow row, bool isNew, QWidget* parent)
    : QDialog(parent), program_(program), editor_(editor), row_(std::move(row)), new_(isNew) {
    setObjectName(QStringLiteral("RegisterRow"));
    setProperty(kOwnMemory, toQt(editor.opened().definition().name));
    auto* fields = new QScrollArea(this);
    area_ = fields;
    fields->setWidgetResizable(true);
    fields->setFrameShape(QFrame::NoFrame);
    fields->setFocusPolicy(Qt::NoFocus);
    fields->setWidget(new QWidget(fields));
    auto* form = new QFormLayout(fields->widget());
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    buildFields();
    for (const auto& [column, field] : fields_) {
        auto* caption = new QLabel(toQt(replaceAll(editor_.opened().column(column).caption, "&", "&&")), this);
        caption->setBuddy(field->editor());
        form->addRow(caption, field);
    }
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
    const auto first = std::ranges::find_if(fields_, [](const auto& each) { return each.second->canEdit(); });
    if (first != fields_.end()) first->second->editor()->setFocus();
    const std::string title = editor_.opened().title();
    setWindowTitle(toQt(new_ ? title : fmt::format("{}: {}", title, rowName(editor_.opened().keyOf(row_)))));
    constexpr int kLetters = 90, kMostLines = 30;
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
        RowField* field = RowField::make(editor_.opened(), program_.texts, program_.state.locale.decimalSign(), row_,
                                         column, canEdit, this);
        before_[column] = new_ ? std::string() : of.textOf(row_, column);
        field->setText(before_[column]);
        field->left = [this, column = column] { check(column); };
        fields_[column] = field;
    }
}

std::map<int, std::string> RowWindow::texts() const {
    std::map<int, std::string> texts;
    for (const auto& [column, field] : fields_) {
        if (field->canEdit()) texts[column] = field->text();
    }
    return texts;
}

bool RowWindow::isChanged() const {
    return std::ranges::any_of(fields_,
                               [&](const auto& each) { return each.second->text() != before_.at(each.first); });
}

void RowWindow::check(int column) {
    RowField& field = *fields_.at(column);
    const std::string typed = field.text();
    try {
        std::string text = typed;
        // An empty key is told when the row is saved: its field may be filled in last.
        field.setFault(trimmed(typed).empty() ? std::string() : editor_.check(row_, column, text));
        if (text != typed) field.setText(text);
    } catch (const PlatformError& error) {
        field.setFault(errorText(program_.texts, error));
    }
}

void RowWindow::save() {
    try {
        const auto faults = editor_.save(row_, new_, texts());
        if (faults.empty()) return accept();
        tell(faults);
    } catch (const PlatformError& error) {
        program_.boxes.MeddelandeVarning(errorText(program_.texts, error));
    }
}

/// At the fields, the first one in sight; what is of no field, in a box.
void RowWindow::tell(const std::vector<RegisterEditor::Fault>& faults) {
    for (const auto& [column, field] : fields_) field->setFault({});
    std::string others;
    RowField* first = nullptr;
    for (const RegisterEditor::Fault& fault : faults) {
        const auto field = fields_.find(fault.column);
        if (field == fields_.end()) {
            others += (others.empty() ? "" : "\r\n") + fault.text;
            continue;
        }
        field->second->setFault(fault.text);
        if (first == nullptr) first = field->second;
    }
    if (first != nullptr) {
        first->editor()->setFocus();
        area_->ensureWidgetVisible(first);
    }
    if (!others.empty()) program_.boxes.MeddelandeVarning(others);
}

void RowWindow::reject() {
    if (!isChanged() || leaveUnsaved(program_)) QDialog::reject();
}

}  // namespace kolmera
