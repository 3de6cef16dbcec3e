#include "ui/folderwatch.h"

#include <QSet>

#include "ui/qttext.h"

namespace kolmera {
namespace {

constexpr std::chrono::milliseconds kPause{400};

}  // namespace

FolderWatch::FolderWatch(QObject* parent, std::function<void()> changed) : QObject(parent) {
    pause_.setSingleShot(true);
    pause_.setInterval(kPause);
    connect(&pause_, &QTimer::timeout, this, std::move(changed));
    connect(&watcher_, &QFileSystemWatcher::directoryChanged, this, [this] { look(); });
    connect(&watcher_, &QFileSystemWatcher::fileChanged, this, [this] { look(); });
}

void FolderWatch::look() {
    if (!pause_.isActive()) pause_.start();
}

void FolderWatch::watch(const std::vector<std::filesystem::path>& paths) {
    QSet<QString> wanted;
    for (const std::filesystem::path& path : paths) {
        std::error_code missing;
        if (std::filesystem::exists(path, missing)) wanted.insert(toQt(path.string()));
    }
    const QStringList watched = watcher_.files() + watcher_.directories();
    QStringList gone;
    for (const QString& path : watched) {
        if (!wanted.remove(path)) gone += path;
    }
    if (!gone.isEmpty()) watcher_.removePaths(gone);
    if (!wanted.isEmpty()) watcher_.addPaths(wanted.values());
}

}  // namespace kolmera
