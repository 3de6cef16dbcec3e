#include "support/qt/formworld.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>
#include <QPixmap>
#include <QTest>
#include <QTimer>
#include <map>
#include <set>

#include "definitions/datafolder.h"
#include "setup/democompany.h"
#include "startup/newcompany.h"
#include "ui/qttext.h"
#include "ui/searchbox.h"

namespace kolmera::test {
namespace {

constexpr int kPatience = 5000;  ///< milliseconds

std::filesystem::path made(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    return folder;
}

QString captionOf(const QWidget& control) {
    if (const auto* label = dynamic_cast<const QLabel*>(&control)) return label->text();
    if (const auto* button = dynamic_cast<const QAbstractButton*>(&control)) return button->text();
    if (const auto* group = dynamic_cast<const QGroupBox*>(&control)) return group->title();
    if (const auto* menu = dynamic_cast<const QMenu*>(&control)) return menu->title();
    return {};
}

void expectText(LanguageTexts& texts, const std::string& key, const QString& shown) {
    if (const auto stored = texts.storedText(key)) {
        EXPECT_EQ(fromQt(shown), *stored) << key;
    }
}

}  // namespace

Answer ScriptedBoxes::show(const Message& message) {
    shown.push_back(message.title + "|" + message.text);
    if (answers.empty()) {
        ADD_FAILURE() << "unexpected message: " << shown.back();
        return message.buttons == Buttons::YesNo ? Answer::No : Answer::OK;
    }
    const Answer answer = answers.front();
    answers.erase(answers.begin());
    return answer;
}

void ScriptedBoxes::letEventsRun() { QCoreApplication::processEvents(); }

FormWorld::FormWorld(Data kind, std::string_view language)
    : state(SettingsStore(folder / "settings.ini"), Locale(Locale::Kind::Swedish)),
      boxes(boxPort, "Dorvik.chm"),
      companies(state, texts, boxes),
      program{.state = state, .texts = texts, .boxes = boxes, .companies = companies} {
    made(data);
    state.ProgramMapp = (made(folder / "program") / "").string();
    state.DataMapp = (data / "").string();
    state.Språkkod = language;
    texts.ÖppnaSpråk(KOLMERA_BIN_DIR, {});
    texts.InitSpråkOrd(language);
    if (kind == Data::Empty) return;
    createDataFolder(data);
    createCompany(data, std::string(kFirstCompany), "Demoföretaget");
    fillDemoCompany(std::filesystem::path(KOLMERA_SOURCE_DIR) / "data" / "demo", data, data / kFirstCompany,
                    state.locale);
    state.StandardFöretag = "FTG1.MDB";
}

FormWorld::~FormWorld() { EXPECT_TRUE(boxPort.answers.empty()) << "a message that was expected never came"; }

bool eventually(const std::function<bool()>& condition) { return QTest::qWaitFor(condition, kPatience); }

WhenShown::WhenShown(const char* form, std::function<void(QDialog&)> act) {
    auto* timer = new QTimer(qApp);
    QElapsedTimer waited;
    waited.start();
    QObject::connect(timer, &QTimer::timeout, qApp,
                     [timer, waited, name = QString::fromUtf8(form), act = std::move(act), came = came_] {
                         auto* dialog = dynamic_cast<QDialog*>(QApplication::activeModalWidget());
                         if (dialog == nullptr || dialog->objectName() != name) {
                             if (waited.elapsed() > kPatience) timer->deleteLater();
                             return;
                         }
                         timer->stop();
                         timer->deleteLater();
                         *came = true;
                         act(*dialog);
                         EXPECT_FALSE(dialog->isVisible()) << "left open: " << fromQt(name);
                         if (dialog->isVisible()) dialog->reject();
                     });
    timer->start(10);
}

void expectTextsInBothLanguages(QWidget& form, FormWorld& world) {
    const std::string formKey = "SP_FRM_" + fromQt(form.objectName());
    expectText(world.texts, formKey, form.windowTitle());
    for (QWidget* child : form.findChildren<QWidget*>()) {
        const std::string name = fromQt(child->objectName());
        const QString caption = captionOf(*child);
        if (name.empty() || name.starts_with("qt_")) continue;
        expectText(world.texts, formKey + "_" + name, caption);
        expectText(world.texts, formKey + "_" + name + "_TT", child->toolTip());
        const bool menu = dynamic_cast<QMenu*>(child) != nullptr;
        if (!menu && child->isVisibleTo(&form) && !caption.isEmpty() && dynamic_cast<QGroupBox*>(child) == nullptr) {
            EXPECT_GE(child->width(), child->minimumSizeHint().width()) << "cut off: " << name;
        }
    }
    for (const QAction* action : form.findChildren<QAction*>()) {
        // Behind a tab stands a key.
        const QString caption = action->text().section(QLatin1Char('\t'), 0, 0);
        if (!action->objectName().isEmpty())
            expectText(world.texts, formKey + "_" + fromQt(action->objectName()), caption);
    }
    expectUniqueMnemonics(form);
    expectNamesForScreenReaders(form);
    expectReadingOrder(form);
}

void expectNamesForScreenReaders(QWidget& form) {
    for (QWidget* child : form.findChildren<QWidget*>()) {
        // What a control is made of is not met by itself.
        const bool part = child->objectName().startsWith("qt_") || child->focusProxy() != nullptr ||
                          child->parentWidget()->focusPolicy() != Qt::NoFocus;
        if (part || !child->isVisibleTo(&form) || (child->focusPolicy() & Qt::TabFocus) == 0) continue;
        const QAccessibleInterface* met = QAccessible::queryAccessibleInterface(child);
        ASSERT_NE(met, nullptr);
        const QAccessible::Role role = met->role();
        EXPECT_TRUE(role != QAccessible::NoRole && role != QAccessible::Client && role != QAccessible::Window)
            << "not said what it is: " << fromQt(child->objectName()) << " " << child->metaObject()->className();
        EXPECT_FALSE(met->text(QAccessible::Name).isEmpty())
            << "no name: " << fromQt(child->objectName()) << " " << child->metaObject()->className();
    }
}

void expectReadingOrder(QWidget& form) {
    std::vector<const QWidget*> order;
    for (const QWidget* at = form.nextInFocusChain(); at != &form; at = at->nextInFocusChain()) {
        const bool met = (at->focusPolicy() & Qt::TabFocus) == Qt::TabFocus && at->focusProxy() == nullptr &&
                         at->isVisibleTo(&form) && form.isAncestorOf(at) && at->window() == &form &&
                         !at->objectName().startsWith("qt_");
        if (met) order.push_back(at);
    }
    const auto placeOf = [&form](const QWidget& each) { return QRect(each.mapTo(&form, QPoint()), each.size()); };
    for (std::size_t i = 1; i < order.size(); ++i) {
        // So that Enter goes on from list to list.
        if (dynamic_cast<const SearchBox*>(order[i]) != nullptr) continue;
        if (order[i]->objectName() == "LevFastLista") continue;  // only to be looked at, so behind the buttons
        const QRect from = placeOf(*order[i - 1]), to = placeOf(*order[i]);
        const bool back = (to.bottom() < from.top() && to.left() <= from.right()) ||
                          (to.right() < from.left() && to.top() <= from.bottom() && to.bottom() >= from.top());
        EXPECT_FALSE(back) << "Tab goes back from " << fromQt(order[i - 1]->objectName()) << " to "
                           << fromQt(order[i]->objectName());
    }
}

void expectUniqueMnemonics(const QWidget& form) {
    // Captions that the suite's users know: the letter goes from one to the other.
    const std::set<std::string> known{"Lbl_Namn, NyMask", "TaBortMask, Lbl_FTG_Lista"};
    std::map<QString, std::string> letters;
    for (const QWidget* child : form.findChildren<QWidget*>()) {
        const auto* menu = dynamic_cast<const QMenu*>(child);
        // What a menu has is pressed in the menu; a menu of the bar, in the window.
        const bool ofWindow =
            menu != nullptr ? !child->objectName().isEmpty() && child->objectName().startsWith(QStringLiteral("Meny"))
                            : child->isVisibleTo(&form);
        const QString letter = QKeySequence::mnemonic(captionOf(*child)).toString();
        if (!ofWindow || letter.isEmpty()) continue;
        const auto [at, added] = letters.emplace(letter, fromQt(child->objectName()));
        const std::string both = at->second + ", " + fromQt(child->objectName());
        EXPECT_TRUE(added || known.contains(both)) << fromQt(letter) << ": " << both;
    }
}

void takePicture(QWidget& form, const std::string& name) {
    const QString folder = qEnvironmentVariable("KOLMERA_PICTURES");
    if (!folder.isEmpty()) form.grab().save(folder + "/" + toQt(name) + ".png");
}

}  // namespace kolmera::test
