#pragma once

#include <QString>
#include <QTextDocument>

namespace kolmera {

/// A text for a tool tip, which would take "<b>" in a price file for bold letters.
inline QString plainToolTip(const QString& text) {
    return Qt::mightBeRichText(text) ? QStringLiteral("<qt>") + text.toHtmlEscaped() + QStringLiteral("</qt>") : text;
}

}  // namespace kolmera
