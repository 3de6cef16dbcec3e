#include "import/window/prisutfa.h"

#include <QLabel>
#include <QListWidget>
#include <QVBoxLayout>

#include "lang/keys/prisutfa.h"
#include "ui/lists.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

const std::vector<int> kTabStops{90, 104, 186, 224};  ///< dialog units

}  // namespace

PrisUtFa::PrisUtFa(Program& program, const Confirmation& confirmation, QWidget* parent)
    : ConfirmationForm(program, "PrisUtFa", {text::prisutfa::kAskToEmpty, text::prisutfa::kEmptyTitle}, confirmation,
                       parent) {
    auto* label = new QLabel(QStringLiteral("Följande leverantörer kommer att användas vid inläsningen."), this);
    label->setObjectName(QStringLiteral("Lbl_LedtextLev"));
    auto* list = new QListWidget(this);
    list->setObjectName(QStringLiteral("LevFastLista"));
    label->setBuddy(list);
    setTabStops(*list, kTabStops);
    for (const std::string& row : confirmation.couplings) list->addItem(toQt(row));
    list->setMinimumWidth(list->sizeHintForColumn(0) + 2 * list->frameWidth() +
                          style()->pixelMetric(QStyle::PM_ScrollBarExtent));
    contents().addWidget(label);
    contents().addWidget(list, 1);
    load(confirmation);
}

}  // namespace kolmera
