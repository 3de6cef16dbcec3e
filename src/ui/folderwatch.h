#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>
#include <filesystem>
#include <functional>
#include <vector>

namespace kolmera {

/// Tells when something changes in folders or files that others write to, a moment later and once for many changes at a
/// time. Where the system does not tell of others' changes (folders on a network), `look` is to be called now and then.
class FolderWatch final : public QObject {
  public:
    FolderWatch(QObject* parent, std::function<void()> changed);

    /// Watches these and nothing else. Of a file that is not there its folder tells.
    void watch(const std::vector<std::filesystem::path>& paths);
    /// Tells as if something had changed.
    void look();

  private:
    QFileSystemWatcher watcher_;
    QTimer pause_;
};

}  // namespace kolmera
