#pragma once

#include <QByteArray>
#include <QString>

#include "platform/settings.h"

class QWidget;

namespace kolmera {

/// A form's property that tells windows of one name apart, each of which is remembered by itself.
inline constexpr const char* kOwnMemory = "ownMemory";

/// How the user left each window: its place and size, the columns and the order of its lists, its splitters, and the
/// folders that its file dialogs showed. Kept in the user's own settings, never in a data folder; what cannot be read
/// is as if it were not there, and what cannot be written is forgotten.
class WindowMemory {
  public:
    explicit WindowMemory(SettingsStore& settings) : settings_(settings) {}

    /// Puts a window as it was left, as far as the screens allow. Called when its controls stand and it is not shown
    /// yet. False where nothing is known of it.
    bool restore(QWidget& form) const;
    /// Keeps how the window stands.
    void keep(const QWidget& form);

    /// The folder of the last file that was chosen for this purpose, if it is still there.
    [[nodiscard]] QString folder(const QString& purpose) const;
    void keepFolder(const QString& purpose, const QString& folder);

  private:
    void set(const char* section, const std::string& key, const std::string& value);

    SettingsStore& settings_;
};

}  // namespace kolmera
