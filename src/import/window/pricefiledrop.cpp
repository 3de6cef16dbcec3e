#include "import/window/pricefiledrop.h"

#include <QAbstractItemView>
#include <QDropEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QTimer>
#include <QUrl>
#include <utility>

#include "ui/qttext.h"

namespace kolmera {
namespace {

/// The one file that is dragged; empty for anything else.
QString fileOf(const QMimeData& data) {
    if (data.urls().size() != 1) return {};
    const QString file = data.urls().front().toLocalFile();
    return QFileInfo(file).isFile() ? file : QString();
}

class TakesFiles final : public QObject {
  public:
    TakesFiles(QAbstractItemView& list, FileDrop drop) : QObject(&list), list_(list), drop_(std::move(drop)) {
        list.setAcceptDrops(true);
        list.viewport()->setAcceptDrops(true);
        list.viewport()->installEventFilter(this);
    }

    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        switch (event->type()) {
            case QEvent::DragEnter:
            case QEvent::DragMove:
            case QEvent::Drop:
                take(static_cast<QDropEvent&>(*event));
                return true;
            default:
                return false;
        }
    }

  private:
    void take(QDropEvent& event) {
        const QString file = fileOf(*event.mimeData());
        const QModelIndex row = list_.indexAt(event.position().toPoint());
        event.setDropAction(Qt::CopyAction);
        // All of the list can be entered, or the way to the row would be barred.
        const bool entering = event.type() == QEvent::DragEnter;
        if (file.isEmpty() || (!entering && !(row.isValid() && drop_.accepts(row)))) {
            event.ignore();
            return;
        }
        event.accept();
        if (event.type() != QEvent::Drop) return;
        // Whoever drags waits for the end of this event: what is asked comes behind it.
        const QPersistentModelIndex place(row);
        QTimer::singleShot(0, this, [this, place, file] {
            if (place.isValid()) drop_.take(place, fromQt(file));
        });
    }

    QAbstractItemView& list_;
    FileDrop drop_;
};

}  // namespace

void takeDroppedFiles(QAbstractItemView& list, FileDrop drop) { new TakesFiles(list, std::move(drop)); }

}  // namespace kolmera
