#include "ui/windowmemory.h"

#include <gtest/gtest.h>

#include <QHeaderView>
#include <QScreen>
#include <QSplitter>
#include <QStandardItemModel>
#include <QTest>
#include <QTreeView>
#include <QVBoxLayout>

#include "support/qt/formworld.h"
#include "ui/forms.h"
#include "ui/lists.h"

namespace kolmera {
namespace {

using namespace test;

/// A window with a list and a splitter.
struct Window final : QWidget {
    explicit Window(int columns = 3) : model(2, columns) {
        setObjectName("Fönstret");
        list.setObjectName("Lista");
        list.setModel(&model);
        sortByHeaderClicks(list);
        splitter.setObjectName("Delning");
        splitter.addWidget(new QWidget);
        splitter.addWidget(new QWidget);
        auto* layout = new QVBoxLayout(this);
        layout->addWidget(&list);
        layout->addWidget(&splitter);
        resize(400, 300);
        move(50, 60);
    }
    QStandardItemModel model;
    QTreeView list;
    QSplitter splitter;
};

class WindowMemoryTest : public testing::Test {
  protected:
    FormWorld world;
    SettingsStore settings{world.folder / "windows.ini"};
    WindowMemory memory{settings};
    QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
};

TEST_F(WindowMemoryTest, AWindowComesBackAsItWasLeft) {
    world.program.memory = &memory;
    {
        Window window;
        VisaFormulär(world.program, window, false);
        EXPECT_EQ(window.pos(), QPoint(50, 60)) << "moved though nothing was known";
        window.setGeometry(120, 90, 500, 350);
        window.list.header()->moveSection(2, 0);
        window.list.header()->resizeSection(0, 77);
        window.list.header()->setSectionResizeMode(1, QHeaderView::Fixed);
        window.list.header()->resizeSection(1, 55);
        window.list.sortByColumn(1, Qt::DescendingOrder);
        window.splitter.setSizes({300, 100});
        window.close();
    }
    SettingsStore later(world.folder / "windows.ini");
    WindowMemory remembered(later);
    world.program.memory = &remembered;
    Window window;
    window.list.header()->setSectionResizeMode(1, QHeaderView::Fixed);
    window.list.header()->resizeSection(1, 66);
    VisaFormulär(world.program, window, false);
    EXPECT_EQ(window.geometry(), QRect(120, 90, 500, 350));
    EXPECT_EQ(window.list.header()->visualIndex(2), 0);
    EXPECT_EQ(window.list.columnWidth(0), 77);
    EXPECT_EQ(window.list.header()->sectionResizeMode(1), QHeaderView::Fixed);
    EXPECT_EQ(window.list.header()->sortIndicatorSection(), 1);
    EXPECT_GT(window.splitter.sizes()[0], window.splitter.sizes()[1]);
    EXPECT_FALSE(std::filesystem::exists(world.data / "windows.ini")) << "in the folder that all share";
}

TEST_F(WindowMemoryTest, NoWindowIsOffTheScreens) {
    Window left;
    left.setGeometry(screen.right() + 3000, screen.bottom() + 900, 9000, 200);
    memory.keep(left);
    Window window;
    memory.restore(window);
    EXPECT_TRUE(screen.contains(window.geometry())) << window.x() << " " << window.y() << " " << window.width();
}

TEST_F(WindowMemoryTest, BrokenValuesAreAsIfTheyWereNotThere) {
    Window left;
    memory.keep(left);
    const std::string whole = settings.get("Fönster", "Fönstret");
    ASSERT_GT(whole.size(), 40U);
    const std::string cases[] = {"", "not base 64 at all", whole.substr(0, whole.size() / 2), whole.substr(30),
                                 "AAAAAQ=="};
    for (const std::string& value : cases) {
        settings.set("Fönster", "Fönstret", value);
        Window window;
        EXPECT_FALSE(memory.restore(window)) << value;
        EXPECT_EQ(window.geometry(), QRect(50, 60, 400, 300)) << value;
    }
    settings.set("Fönster", "Fönstret", whole);
    Window other(5);
    other.list.header()->resizeSection(1, 33);
    EXPECT_TRUE(memory.restore(other));
    EXPECT_EQ(other.list.columnWidth(1), 33) << "columns of another list";
}

TEST_F(WindowMemoryTest, AFolderIsRememberedWhileItIsThere) {
    memory.keepFolder("Prisfil", QString::fromStdString(world.data.string()));
    EXPECT_EQ(memory.folder("Prisfil").toStdString(), world.data.string());
    EXPECT_EQ(memory.folder("Annat"), QString());
    memory.keepFolder("Prisfil", "/gone");
    EXPECT_EQ(memory.folder("Prisfil"), QString());
}

}  // namespace
}  // namespace kolmera
