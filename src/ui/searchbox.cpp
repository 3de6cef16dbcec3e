#include "ui/searchbox.h"

#include <QAbstractItemView>
#include <QKeyEvent>
#include <QListView>
#include <QTableView>
#include <QTreeView>

#include "lang/keys/searchbox.h"
#include "ui/controls.h"
#include "ui/keys.h"
#include "ui/qttext.h"

namespace kolmera {

SearchBox::SearchBox(QAbstractItemView& list, QWidget& form) : QLineEdit(&form), list_(list) {
    setClearButtonEnabled(true);
    connect(this, &QLineEdit::textChanged, this, [this](const QString& text) {
        words_ = SearchWords(fromQt(text));
        apply();
        if (words_.empty()) list_.scrollTo(list_.currentIndex());
    });
    const QAbstractItemModel* model = list.model();
    // The current row is the business of whoever has filled the list.
    const auto again = [this] {
        if (searches()) hideRows();
    };
    connect(model, &QAbstractItemModel::modelReset, this, again);
    connect(model, &QAbstractItemModel::layoutChanged, this, again);
    connect(model, &QAbstractItemModel::rowsInserted, this, again);
}

void SearchBox::takeFindKey(QWidget& form) {
    onKey(form, QKeySequence::Find, [this] {
        setFocus(Qt::ShortcutFocusReason);
        selectAll();
    });
}

void SearchBox::apply() {
    hideRows();
    // What is not seen must not be what a button works on.
    if (!keepsCurrent_ && searches()) moveToFound();
}

void SearchBox::hideRows() {
    const int kept = keepsCurrent_ ? list_.currentIndex().row() : -1;
    for (int row = 0; row < list_.model()->rowCount(); ++row) setHidden(row, row != kept && !finds(row));
}

bool SearchBox::finds(int row) const {
    if (alsoShows && !alsoShows(row)) return false;
    if (words_.empty()) return true;
    const QAbstractItemModel& model = *list_.model();
    QString text = model.index(row, 0).data(kSearchRole).toString();
    for (int column = 0; column < model.columnCount(); ++column) {
        text += QLatin1Char('\t') + model.index(row, column).data().toString();
    }
    return words_.in(fromQt(text));
}

void SearchBox::setHidden(int row, bool hidden) {
    if (auto* tree = dynamic_cast<QTreeView*>(&list_)) tree->setRowHidden(row, {}, hidden);
    if (auto* table = dynamic_cast<QTableView*>(&list_)) table->setRowHidden(row, hidden);
    if (auto* list = dynamic_cast<QListView*>(&list_)) list->setRowHidden(row, hidden);
}

/// The current row stays when it is one that is found.
void SearchBox::moveToFound() {
    const QModelIndex current = list_.currentIndex();
    if (current.isValid() && finds(current.row())) return;
    for (int row = 0; row < list_.model()->rowCount(); ++row) {
        if (!finds(row)) continue;
        list_.setCurrentIndex(list_.model()->index(row, 0));
        return;
    }
    if (keepsCurrent_) return;
    list_.clearSelection();
    list_.setCurrentIndex({});
}

bool SearchBox::event(QEvent* event) {
    // Escape is this box's own while it has something in it, whatever it means in the window.
    if (event->type() == QEvent::ShortcutOverride && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape &&
        !text().isEmpty()) {
        event->accept();
        return true;
    }
    // A form translates its lists when they stand.
    if (event->type() == QEvent::Show && accessibleName().isEmpty() && !placeholderText().isEmpty())
        setAccessibleName(placeholderText() + QStringLiteral(": ") + list_.accessibleName());
    return QLineEdit::event(event);
}

void SearchBox::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
        case Qt::Key_Escape:
            if (text().isEmpty()) break;
            clear();
            return;
        case Qt::Key_Down:
        case Qt::Key_Return:
        case Qt::Key_Enter:
            if (searches()) moveToFound();
            list_.setFocus(Qt::OtherFocusReason);
            return;
        default:
            break;
    }
    QLineEdit::keyPressEvent(event);
}

SearchBox* searchBoxOf(Program& program, QAbstractItemView& list, QWidget& form, const char* name) {
    auto* box = named(new SearchBox(list, form), name);
    box->setPlaceholderText(toQt(program.texts.ModulText(text::searchbox::kSearch)));
    box->keepCurrent();
    return box;
}

}  // namespace kolmera
