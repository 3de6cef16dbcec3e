#include "ui/windowmemory.h"

#include <QAbstractItemView>
#include <QDataStream>
#include <QDir>
#include <QHeaderView>
#include <QIODevice>
#include <QMap>
#include <QScreen>
#include <QSplitter>
#include <QTableView>
#include <QTreeView>
#include <QWidget>
#include <utility>
#include <vector>

#include "platform/attempt.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

constexpr const char* kWindows = "Fönster";
constexpr const char* kFolders = "Mappar";
constexpr qint32 kVersion = 1;
constexpr auto kStream = QDataStream::Qt_6_0;

/// A window as it is kept.
struct Kept {
    QByteArray geometry;
    QMap<QString, QByteArray> parts;  ///< headers and splitters, by object name
};

QByteArray packed(const Kept& kept) {
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(kStream);
    stream << kVersion << kept.geometry << kept.parts;
    return bytes;
}

bool unpack(const QByteArray& bytes, Kept& kept) {
    QDataStream stream(bytes);
    stream.setVersion(kStream);
    qint32 version = 0;
    stream >> version;
    if (version != kVersion) return false;
    stream >> kept.geometry >> kept.parts;
    return stream.status() == QDataStream::Ok;
}

/// The header of a list, where it has one whose columns the user can move.
QHeaderView* headerOf(QAbstractItemView& list) {
    if (auto* table = dynamic_cast<QTableView*>(&list)) return table->horizontalHeader();
    if (auto* tree = dynamic_cast<QTreeView*>(&list)) return tree->isHeaderHidden() ? nullptr : tree->header();
    return nullptr;
}

/// With another number of columns a list is another list.
QString nameOf(const QAbstractItemView& list, const QHeaderView& header) {
    return list.objectName() + QLatin1Char('/') + QString::number(header.count());
}

template <typename Take>
void forEachPart(const QWidget& form, const Take& take) {
    for (QAbstractItemView* list : form.findChildren<QAbstractItemView*>()) {
        QHeaderView* header = list->objectName().isEmpty() ? nullptr : headerOf(*list);
        if (header != nullptr && header->count() > 0) take(nameOf(*list, *header), *header);
    }
    for (QSplitter* splitter : form.findChildren<QSplitter*>()) {
        if (!splitter->objectName().isEmpty()) take(splitter->objectName(), *splitter);
    }
}

/// Columns whose width the window itself works out, from texts in the language of the program, keep it.
void putBack(QHeaderView& header, const QByteArray& state) {
    struct Section {
        QHeaderView::ResizeMode mode;
        int size;
    };
    std::vector<Section> sections;
    for (int section = 0; section < header.count(); ++section)
        sections.push_back({header.sectionResizeMode(section), header.sectionSize(section)});
    header.restoreState(state);
    for (int section = 0; section < header.count(); ++section) {
        const auto [mode, size] = sections[static_cast<std::size_t>(section)];
        header.setSectionResizeMode(section, mode);
        if (mode != QHeaderView::Interactive) header.resizeSection(section, size);
    }
}

void putBack(QSplitter& splitter, const QByteArray& state) { splitter.restoreState(state); }

/// The whole window on its screen: the screen may be another one than when it was kept.
void fitOnScreen(QWidget& form) {
    if (form.isMaximized() || form.isFullScreen()) return;
    const QRect room = form.screen()->availableGeometry();
    const QSize size = form.size().expandedTo(form.minimumSizeHint()).boundedTo(room.size());
    const QPoint place(qBound(room.left(), form.geometry().left(), room.right() + 1 - size.width()),
                       qBound(room.top(), form.geometry().top(), room.bottom() + 1 - size.height()));
    // Without its frame, which is not known before the window is shown: moved with it, it would wander off.
    if (const QRect wanted(place, size); wanted != form.geometry()) form.setGeometry(wanted);
}

std::string keyOf(const QWidget& form) { return fromQt(form.objectName() + form.property(kOwnMemory).toString()); }

}  // namespace

bool WindowMemory::restore(QWidget& form) const {
    const std::string text = settings_.get(kWindows, keyOf(form));
    Kept kept;
    if (text.empty() || !unpack(QByteArray::fromBase64(QByteArray::fromStdString(text)), kept)) return false;
    if (form.restoreGeometry(kept.geometry)) fitOnScreen(form);
    forEachPart(form, [&](const QString& name, auto& part) {
        if (const auto state = kept.parts.constFind(name); state != kept.parts.constEnd()) putBack(part, *state);
    });
    return true;
}

void WindowMemory::keep(const QWidget& form) {
    if (form.objectName().isEmpty()) return;
    // A list that has other columns now keeps those that it had.
    Kept kept;
    const std::string before = settings_.get(kWindows, keyOf(form));
    if (!before.empty() && !unpack(QByteArray::fromBase64(QByteArray::fromStdString(before)), kept)) kept = {};
    kept.geometry = form.saveGeometry();
    forEachPart(form, [&](const QString& name, const auto& part) { kept.parts.insert(name, part.saveState()); });
    set(kWindows, keyOf(form), packed(kept).toBase64().toStdString());
}

QString WindowMemory::folder(const QString& purpose) const {
    const QString folder = toQt(settings_.get(kFolders, fromQt(purpose)));
    return !folder.isEmpty() && QDir(folder).exists() ? folder : QString();
}

void WindowMemory::keepFolder(const QString& purpose, const QString& folder) {
    if (!folder.contains(QLatin1Char('\n'))) set(kFolders, fromQt(purpose), fromQt(folder));
}

void WindowMemory::set(const char* section, const std::string& key, const std::string& value) {
    if (settings_.get(section, key) == value) return;
    PassedOverSilently passedOver;
    attempt(passedOver, section, [&] { settings_.set(section, key, value); });
}

}  // namespace kolmera
