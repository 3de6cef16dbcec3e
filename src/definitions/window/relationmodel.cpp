#include "definitions/window/relationmodel.h"

#include <QComboBox>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTimer>
#include <algorithm>

#include "ui/keys.h"
#include "ui/lists.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

/// What is chosen in its list counts at once; what keys choose, when Enter is pressed or the cell is left.
class CellBox final : public QComboBox {
  public:
    using QComboBox::QComboBox;

    [[nodiscard]] bool listJustClosed() const { return listJustClosed_; }
    void hidePopup() override {
        listJustClosed_ = true;
        QTimer::singleShot(0, this, [this] { listJustClosed_ = false; });
        QComboBox::hidePopup();
    }

  private:
    bool listJustClosed_ = false;
};

}  // namespace

void RelationModel::refresh() {
    if (columns_ == relations_.columns() && rows_ == relations_.rows()) {
        if (rows_ > 0) emit dataChanged(index(0, 0), index(rows_ - 1, columnCount() - 1));
        return;
    }
    beginResetModel();
    columns_ = relations_.columns();
    rows_ = relations_.rows();
    endResetModel();
}

RelationTable::Column RelationModel::columnOf(const QModelIndex& index) const {
    return columns_.at(static_cast<std::size_t>(index.column()));
}

int RelationModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : rows_; }

int RelationModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

QVariant RelationModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal) return {};
    if (role == Qt::TextAlignmentRole) return QVariant::fromValue(Qt::AlignLeft | Qt::AlignVCenter);
    if (role != Qt::DisplayRole) return {};
    return toQt(relations_.caption(columns_.at(static_cast<std::size_t>(section))));
}

QVariant RelationModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= relations_.rows()) return {};
    if (index.column() == 0) {
        const EditedRelation& edited = editor_.relations()[static_cast<std::size_t>(index.row())];
        if (role == kIdRole) return QVariant::fromValue<qlonglong>(edited.identity());
        // Of a cell a screen reader says no more than the cell.
        if (role == Qt::AccessibleDescriptionRole) return toQt(editor_.relationText(edited)).simplified();
    }
    const bool shown = role == Qt::DisplayRole || role == Qt::ToolTipRole;
    return shown ? toQt(relations_.text(index.row(), columnOf(index))) : QVariant();
}

Qt::ItemFlags RelationModel::flags(const QModelIndex& index) const {
    Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    if (index.isValid() && relations_.canChange(columnOf(index))) flags |= Qt::ItemIsEditable;
    return flags;
}

bool RelationModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::EditRole || !index.isValid() || index.row() >= relations_.rows()) return false;
    const RelationTable::Column column = columnOf(index);
    const bool done = value.typeId() == QMetaType::Int ? relations_.choose(index.row(), column, value.toInt())
                                                       : relations_.type(index.row(), column, fromQt(value.toString()));
    // The cell's own editor is still open.
    QMetaObject::invokeMethod(
        this, [this] { changed(); }, Qt::QueuedConnection);
    return done;
}

QWidget* RelationDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& /*option*/,
                                        const QModelIndex& index) const {
    const RelationTable::Column column = model_.columnOf(index);
    const QString caption = toQt(model_.relations().caption(column));
    const std::vector<std::string> choices = model_.relations().choices(index.row(), column);
    if (choices.empty()) {
        auto* field = new QLineEdit(parent);
        field->setFrame(false);
        field->setAccessibleName(caption);
        field->setMaxLength(static_cast<int>(std::to_string(RelationTable::greatest(column)).size()));
        allowNumbersOnly(*field, ',', false, false);
        return field;
    }
    auto* box = new CellBox(parent);
    box->setAccessibleName(caption);
    for (const std::string& choice : choices) box->addItem(toQt(choice));
    auto* self = const_cast<RelationDelegate*>(this);  // signals are not const
    QObject::connect(box, &QComboBox::activated, self, [self, box] {
        if (!box->listJustClosed()) return;
        emit self->commitData(box);
        emit self->closeEditor(box);
    });
    // A double click asks for the list.
    if (QGuiApplication::mouseButtons() != Qt::NoButton) QTimer::singleShot(0, box, [box] { box->showPopup(); });
    return box;
}

void RelationDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
    const RelationTable::Column column = model_.columnOf(index);
    if (auto* box = dynamic_cast<QComboBox*>(editor)) {
        box->setCurrentIndex(model_.relations().chosen(index.row(), column));
    } else if (auto* field = dynamic_cast<QLineEdit*>(editor)) {
        const bool isSource = column == RelationTable::Column::Källa;
        field->setText(
            toQt(isSource ? model_.relations().number(index.row()) : model_.relations().text(index.row(), column)));
        field->selectAll();
    }
}

void RelationDelegate::setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const {
    if (const auto* box = dynamic_cast<const QComboBox*>(editor)) {
        model->setData(index, box->currentIndex(), Qt::EditRole);
    } else if (const auto* field = dynamic_cast<const QLineEdit*>(editor)) {
        model->setData(index, field->text(), Qt::EditRole);
    }
}

/// Enter is the cell's: in the list it goes on to the next control.
bool RelationDelegate::eventFilter(QObject* editor, QEvent* event) {
    auto* cell = dynamic_cast<QWidget*>(editor);
    if (cell == nullptr || event->type() != QEvent::KeyPress) return QStyledItemDelegate::eventFilter(editor, event);
    const int key = static_cast<const QKeyEvent&>(*event).key();
    if (key != Qt::Key_Return && key != Qt::Key_Enter) return QStyledItemDelegate::eventFilter(editor, event);
    emit commitData(cell);
    emit closeEditor(cell);
    return true;
}

/// A list's text may be longer than its cell.
void RelationDelegate::updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                                            const QModelIndex& /*index*/) const {
    QRect place = option.rect;
    if (dynamic_cast<const QComboBox*>(editor) != nullptr) {
        const QSize wanted = editor->sizeHint();
        place.setWidth(
            std::max(place.width(), std::min(wanted.width(), editor->parentWidget()->width() - place.left())));
        place.setHeight(std::max(place.height(), wanted.height()));
    }
    editor->setGeometry(place);
}

}  // namespace kolmera
