#pragma once

#include <QLabel>
#include <QPushButton>
#include <QString>
#include <QWidget>

namespace kolmera {

// Making named controls. Captions are those of the Swedish design.

template <typename Control>
Control* named(Control* control, const char* name) {
    control->setObjectName(QString::fromUtf8(name));
    return control;
}

inline QLabel* label(QWidget& parent, const char* name, const char* caption) {
    return named(new QLabel(QString::fromUtf8(caption), &parent), name);
}

inline QPushButton* button(QWidget& parent, const char* name, const char* caption) {
    return named(new QPushButton(QString::fromUtf8(caption), &parent), name);
}

}  // namespace kolmera
