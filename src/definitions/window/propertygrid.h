#pragma once

#include <QWidget>
#include <functional>
#include <string>
#include <vector>

#include "definitions/property.h"
#include "ui/program.h"

class QLineEdit;

namespace kolmera {

/// Boxes for properties, one under the other, each with its caption. They are made anew at each `show`; the one that
/// had the focus gets it back.
class PropertyGrid final : public QWidget {
  public:
    PropertyGrid(Program& program, QWidget* parent);

    /// Told of what the user does: the place of a choice, or a text with -1.
    std::function<void(int name, int choice, const std::string& typed)> changed;

    /// `before` and `behind` are its neighbours in the order of the Tab key.
    template <typename Name>
    void show(const std::vector<Property<Name>>& properties, bool enabled, QWidget& before, QWidget& behind) {
        begin(before);
        for (const Property<Name>& property : properties) add(property, enabled);
        end(behind);
    }
    /// What is being typed counts, though the box has still the focus.
    void commit();

    /// The object name of a property's box.
    static QString nameOfBox(int name);

  private:
    struct Line {
        int name;
        const std::string& caption;
        const std::vector<std::string>& choices;
        int chosen;
        const std::string& text;
        bool sure, enabled;
    };
    template <typename Name>
    void add(const Property<Name>& property, bool enabled) {
        addLine({static_cast<int>(property.name), property.caption, property.choices, property.chosen, property.text,
                 property.sure, property.enabled && enabled});
    }
    void begin(QWidget& before);
    void addLine(const Line& line);
    void end(QWidget& behind);
    QWidget* choices(const Line& line);
    QWidget* field(const Line& line);
    void typed(const QLineEdit& field);
    void later(int name, int choice, std::string typed);

    Program& program_;
    QString focused_;
    QWidget* last_ = nullptr;
    int lines_ = 0;
};

}  // namespace kolmera
