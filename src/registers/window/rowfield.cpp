#include "registers/window/rowfield.h"

#include <fmt/format.h>

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QCompleter>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTimer>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <algorithm>

#include "lang/keys/registers.h"
#include "lang/keys/registerswindow.h"
#include "platform/attempt.h"
#include "platform/lettercase.h"
#include "ui/controls.h"
#include "ui/keys.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

class TruthField final : public RowField {
  public:
    TruthField(LanguageTexts& texts, bool canEdit, QWidget* parent)
        : RowField(canEdit, parent),
          yes_(texts.FormulärSträng(text::registers::kYes)),
          no_(texts.FormulärSträng(text::registers::kNo)),
          box_(new QCheckBox(this)) {
        box_->setEnabled(canEdit);
        layOut(box_);
    }
    void setText(const std::string& text) override {
        before_ = text;
        box_->setChecked(text == yes_);
        first_ = box_->isChecked();
    }
    [[nodiscard]] std::string text() const override {
        if (box_->isChecked() == first_) return before_;
        return box_->isChecked() ? yes_ : no_;
    }

  private:
    std::string yes_, no_, before_;
    bool first_ = false;
    QCheckBox* box_;
};

class TextField final : public RowField {
  public:
    TextField(bool canEdit, QWidget* parent) : RowField(canEdit, parent), box_(new QLineEdit(this)) {
        box_->setReadOnly(!canEdit);
        connect(box_, &QLineEdit::editingFinished, this, [this] {
            if (std::exchange(touched_, false)) left();
        });
        connect(box_, &QLineEdit::textEdited, this, [this] { touched_ = true; });
        layOut(box_);
    }
    void setText(const std::string& text) override { box_->setText(toQt(text)); }
    [[nodiscard]] std::string text() const override { return fromQt(box_->text()); }
    QLineEdit& box() { return *box_; }

  private:
    QLineEdit* box_;
    bool touched_ = false;
};

/// A text of several lines.
class MemoField final : public RowField {
  public:
    MemoField(bool canEdit, QWidget* parent) : RowField(canEdit, parent), box_(new QPlainTextEdit(this)) {
        constexpr int kLines = 4;
        box_->setReadOnly(!canEdit);
        box_->setTabChangesFocus(true);
        box_->setFixedHeight(kLines * fontMetrics().lineSpacing());
        layOut(box_);
    }
    void setText(const std::string& text) override {
        before_ = text;
        box_->setPlainText(toQt(text));
        first_ = box_->toPlainText();
    }
    [[nodiscard]] std::string text() const override {
        if (box_->toPlainText() == first_) return before_;
        return replaceAll(fromQt(box_->toPlainText()), "\n", "\r\n");
    }

  private:
    std::string before_;
    QString first_;
    QPlainTextEdit* box_;
};

/// Whoever scrolls the form changes no choice.
class StillBox final : public QComboBox {
  public:
    using QComboBox::QComboBox;

  protected:
    void wheelEvent(QWheelEvent* event) override { event->ignore(); }
};

/// A key, chosen by key or by name; what the key means stands beside. Any key can be typed.
class ChoiceField final : public RowField {
  public:
    ChoiceField(Register& of, RegisterColumn cell, bool canEdit, QWidget* parent)
        : RowField(canEdit, parent),
          of_(of),
          cell_(std::move(cell)),
          box_(new StillBox(this)),
          name_(new QLabel(this)) {
        constexpr int kKeyLetters = 22;
        constexpr std::chrono::milliseconds kTyping{200};
        box_->setEditable(true);
        box_->setEnabled(canEdit);
        box_->setInsertPolicy(QComboBox::NoInsert);
        box_->setMinimumWidth(kKeyLetters * fontMetrics().averageCharWidth());
        box_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        box_->setMinimumContentsLength(kKeyLetters / 2);
        auto* completer = new QCompleter(box_->model(), box_);
        completer->setCaseSensitivity(Qt::CaseInsensitive);
        completer->setFilterMode(Qt::MatchContains);
        completer->setCompletionMode(QCompleter::PopupCompletion);
        box_->setCompleter(completer);
        name_->setTextFormat(Qt::PlainText);
        name_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        asks_.setSingleShot(true);
        connect(&asks_, &QTimer::timeout, this, [this] { offerTyped(); });
        connect(box_, &QComboBox::activated, this, [this](int place) { take(place); });
        connect(box_->lineEdit(), &QLineEdit::textEdited, this, [this] {
            touched_ = true;
            showName();
            if (choices_.more) asks_.start(kTyping);
        });
        connect(box_->lineEdit(), &QLineEdit::editingFinished, this, [this] {
            if (std::exchange(touched_, false)) left();
        });
        layOut(box_, name_);
        box_->setFocusPolicy(Qt::StrongFocus);
    }
    void setText(const std::string& text) override {
        if (choices_.rows.empty()) offer(text);
        box_->setEditText(toQt(text));
        showName();
    }
    [[nodiscard]] std::string text() const override { return fromQt(box_->currentText()); }

  private:
    void offer(const std::string& typed) {
        PassedOverSilently passedOver;  // what cannot be listed can be typed
        attempt(passedOver, cell_.field, [&] { choices_ = of_.choices(cell_, typed); });
        const QSignalBlocker quiet(box_);
        box_->clear();
        std::size_t widest = 0;
        for (const RegisterChoice& choice : choices_.rows) {
            const std::string shown = choice.name.empty() ? choice.key : fmt::format("{}  {}", choice.key, choice.name);
            widest = std::max(widest, shown.size());
            box_->addItem(toQt(shown));
        }
        constexpr std::size_t kMostLetters = 60;
        box_->view()->setMinimumWidth(static_cast<int>(std::min(widest + 4, kMostLetters)) *
                                      fontMetrics().averageCharWidth());
    }
    void offerTyped() {
        const QString typed = box_->currentText();
        const int cursor = box_->lineEdit()->cursorPosition();
        offer(fromQt(typed));
        box_->setEditText(typed);
        box_->lineEdit()->setCursorPosition(cursor);
        showName();
        if (!choices_.rows.empty() && box_->lineEdit()->hasFocus()) box_->completer()->complete();
    }
    void take(int place) {
        if (place < 0 || static_cast<std::size_t>(place) >= choices_.rows.size()) return;
        box_->setEditText(toQt(choices_.rows[static_cast<std::size_t>(place)].key));
        showName();
        touched_ = false;
        left();
    }
    void showName() {
        const std::string key(trimmed(text()));
        const auto found =
            std::ranges::find_if(choices_.rows, [&](const auto& choice) { return equalNoCase(choice.key, key); });
        name_->setText(found == choices_.rows.end() ? QString() : toQt(found->name));
        box_->setAccessibleDescription(name_->text());
    }

    Register& of_;
    RegisterColumn cell_;
    RegisterChoices choices_;
    QTimer asks_;
    bool touched_ = false;
    StillBox* box_;
    QLabel* name_;
};

bool isNumber(FieldType type) {
    return type != FieldType::Text && type != FieldType::Memo && type != FieldType::Date && type != FieldType::Boolean;
}

/// Only what a number, or a date, is made of; the form stands in the empty box.
void setForm(QLineEdit& box, const RegisterColumn& cell, LanguageTexts& texts, char decimalSign) {
    if (cell.type == FieldType::Date) {
        const Locale locale(decimalSign == ',' ? Locale::Kind::Swedish : Locale::Kind::English);
        box.setPlaceholderText(
            toQt(texts.FormulärSträngMed1(text::registerswindow::kForExample, locale.formatDate(Date::today()))));
    }
    if (!isNumber(cell.type)) return;
    const bool whole = cell.type == FieldType::Byte || cell.type == FieldType::Integer || cell.type == FieldType::Long;
    allowNumbersOnly(box, decimalSign, !whole, cell.low == cell.high || cell.low < 0);
    box.setAlignment(Qt::AlignRight);
}

}  // namespace

RowField* RowField::make(Register& of, LanguageTexts& texts, char decimalSign, const RegisterRow& row, int column,
                         bool canEdit, QWidget* parent) {
    RegisterColumn cell = of.cell(row, column);
    RowField* made = nullptr;
    if (cell.type == FieldType::Boolean) {
        made = new TruthField(texts, canEdit, parent);
    } else if (cell.type == FieldType::Memo) {
        made = new MemoField(canEdit, parent);
    } else if (canEdit && (cell.refersTo() != nullptr || !cell.choices.empty() || !cell.suggests.empty())) {
        made = new ChoiceField(of, std::move(cell), canEdit, parent);
    } else {
        auto* field = new TextField(canEdit, parent);
        setForm(field->box(), cell, texts, decimalSign);
        made = field;
    }
    made->editor()->setObjectName(QStringLiteral("Kolumn_%1").arg(column));
    made->editor()->setAccessibleName(toQt(of.column(column).caption));
    return made;
}

void RowField::layOut(QWidget* editor, QWidget* beside) {
    editor_ = editor;
    fault_ = new QLabel(this);
    fault_->setTextFormat(Qt::PlainText);
    fault_->setWordWrap(true);
    fault_->hide();
    auto* line = new QHBoxLayout;
    line->addWidget(editor, beside == nullptr ? 1 : 0);
    if (beside != nullptr) line->addWidget(beside, 1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(line);
    layout->addWidget(fault_);
}

void RowField::setFault(const std::string& fault) {
    // Red that can be read on light and on dark.
    constexpr QColor kOnLight(0xB0, 0x00, 0x20), kOnDark(0xFF, 0x8A, 0x80);
    constexpr int kMiddle = 128;
    QPalette colours = palette();
    colours.setColor(QPalette::WindowText,
                     palette().color(QPalette::Window).lightness() < kMiddle ? kOnDark : kOnLight);
    fault_->setPalette(colours);
    fault_->setText(toQt(fault));
    fault_->setVisible(!fault.empty());
    if (!fault.empty()) editor_->setAccessibleDescription(fault_->text());
}

}  // namespace kolmera
