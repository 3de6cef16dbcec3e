#pragma once

#include <QTranslator>

namespace kolmera {

/// The window system's own texts in Swedish: its file dialog and the menu of its text boxes. (Its catalogues on this
/// system have no Swedish; in English its texts need no translation.)
class WindowSystemTexts final : public QTranslator {
  public:
    using QTranslator::QTranslator;

    [[nodiscard]] QString translate(const char* context, const char* sourceText, const char* disambiguation,
                                    int n) const override;
    [[nodiscard]] bool isEmpty() const override { return false; }
};

}  // namespace kolmera
