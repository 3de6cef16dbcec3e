#include "ui/qtmessageport.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QUrl>
#include <span>

#include "lang/keys/boxes.h"
#include "ui/guidewindow.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

/// A button: its answer, its text, the designed text, and its part in the box.
struct ButtonRow {
    Answer answer;
    ModuleKey text;
    const char* designed;
    QMessageBox::ButtonRole role;
};

constexpr ButtonRow kOK{Answer::OK, text::boxes::kOk, "OK", QMessageBox::AcceptRole};
constexpr ButtonRow kCancel{Answer::Cancel, text::boxes::kCancel, "Avbryt", QMessageBox::RejectRole};
constexpr ButtonRow kYes{Answer::Yes, text::boxes::kYes, "&Ja", QMessageBox::YesRole};
constexpr ButtonRow kNo{Answer::No, text::boxes::kNo, "&Nej", QMessageBox::NoRole};

constexpr ButtonRow kJustOK[] = {kOK};
constexpr ButtonRow kOKCancel[] = {kOK, kCancel};
constexpr ButtonRow kYesNo[] = {kYes, kNo};

std::span<const ButtonRow> buttonsOf(Buttons buttons) {
    switch (buttons) {
        case Buttons::OKCancel:
            return kOKCancel;
        case Buttons::YesNo:
            return kYesNo;
        default:
            return kJustOK;
    }
}

QMessageBox::Icon iconOf(Icon icon) {
    switch (icon) {
        case Icon::Information:
            return QMessageBox::Information;
        case Icon::Question:
            return QMessageBox::Question;
        default:
            return QMessageBox::Warning;
    }
}

QString withLineFeeds(const std::string& text) { return toQt(text).replace("\r\n", "\n"); }

QString textOr(const std::string& text, const char* designed) {
    return text.empty() ? QString::fromUtf8(designed) : toQt(text);
}

}  // namespace

Answer QtMessagePort::show(const Message& message) {
    hourglass(false);
    QMessageBox box(QApplication::activeWindow());
    box.setObjectName(QStringLiteral("Meddelanderuta"));
    box.setWindowTitle(withLineFeeds(message.title));
    box.setTextFormat(Qt::PlainText);
    box.setText(withLineFeeds(message.text));
    box.setIcon(iconOf(message.icon));
    const std::span<const ButtonRow> rows = buttonsOf(message.buttons);
    std::vector<QPushButton*> buttons;
    for (const ButtonRow& row : rows) {
        buttons.push_back(box.addButton(textOr(texts_.ModulText(row.text), row.designed), row.role));
    }
    box.setDefaultButton(message.secondIsDefault && buttons.size() > 1 ? buttons[1] : buttons[0]);
    box.setEscapeButton(buttons.back());
    if (message.helpButton) addHelp(box, message);
    const std::string words = texts_.originalWords().in(message.text);
    if (!words.empty()) box.setDetailedText(toQt(words));
    box.exec();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (box.clickedButton() == buttons[i]) return rows[i].answer;
    }
    return rows.back().answer;
}

void QtMessagePort::addHelp(QMessageBox& box, const Message& message) {
    QPushButton* help = box.addButton(textOr(texts_.ModulText(text::boxes::kHelp), "&Hjälp"), QMessageBox::HelpRole);
    // The box stays while the help is read: the button's own connection would close it.
    QObject::disconnect(help, &QPushButton::clicked, nullptr, nullptr);
    QObject::connect(help, &QPushButton::clicked, &box, [&] { openHelp(message, box); });
}

void QtMessagePort::openHelp(const Message& message, QMessageBox& box) {
    const QString file = toQt(message.helpFile);
    if (QFileInfo::exists(file) && QDesktopServices::openUrl(QUrl::fromLocalFile(file))) return;
    const QWidget* const asker = box.parentWidget();
    const std::string topic = asker == nullptr ? std::string() : asker->window()->objectName().toStdString();
    if (openGuide(&box, texts_, std::filesystem::path(message.helpFile).parent_path(), topic)) return;
    QMessageBox missing(QMessageBox::Warning, box.windowTitle(),
                        toQt(texts_.ModulTextMed(text::boxes::kHelpFileMissing, message.helpFile)),
                        QMessageBox::NoButton, &box);
    missing.addButton(textOr(texts_.ModulText(kOK.text), kOK.designed), kOK.role);
    missing.exec();
}

void QtMessagePort::hourglass(bool on) {
    if (on == hourglass_) return;
    hourglass_ = on;
    if (on) {
        QApplication::setOverrideCursor(Qt::WaitCursor);
    } else {
        QApplication::restoreOverrideCursor();
    }
}

void QtMessagePort::letEventsRun() { QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents); }

}  // namespace kolmera
