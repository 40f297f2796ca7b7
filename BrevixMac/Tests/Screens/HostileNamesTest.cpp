// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppWindows.h"
#include "FloatingPanelController.h"
#include "LibraryPage.h"
#include "PickerStage.h"
#include "PromptPalettePanel.h"
#include "PromptPaletteView.h"
#include "ShareConfirmationBannerView.h"
#include "TextLabel.h"
#include "ThemedButton.h"

#include <QAbstractItemView>

namespace {

constexpr QChar turnsRight(0x202e);

struct Name
{
    const char *what;
    QString text;
};

void PrintTo(const Name &name, std::ostream *out)
{
    *out << name.what;
}

const Name names[] = {
    {"markup", QStringLiteral("<img src=x onerror=alert(1)><b>bold</b> &amp; {{x}}")},
    {"lineBreaks", QStringLiteral("first\nsecond\r\nthird\u2028fourth\tfifth")},
    {"overrides", QStringLiteral("invoice \u202efdp.exe\u202c \u2067isolated\u2069")},
    {"tenThousandCharacters", QString(10'000, u'W')},
    {"oneLongWordOfMarks", QStringLiteral("e") + QString(2'000, QChar(0x0301))},
    {"empty", QString()},
    {"blanks", QStringLiteral(" \u3000\t ")},
    {"controls", QStringLiteral("bell\a escape\x1b[31m")},
};

/// What a hostile name must not leave on any screen: lines, or marks that turn the writing around.
bool isPlainLine(const QString &text)
{
    return !text.contains(u'\n') && !text.contains(turnsRight) && !text.contains(QChar(0x2067));
}

/// Every title and name of the library is the same hostile one.
class HostileNames : public testing::TestWithParam<Name>
{
protected:
    PickerStage stage;

    HostileNames()
    {
        const QString &name = GetParam().text;
        QString variable = name;
        variable.remove(u'{').remove(u'}');
        stage.desk.server.addCategory(QStringLiteral("c"), name, QStringLiteral("no colour"));
        stage.desk.server.addPrompt(QStringLiteral("p"), name, name + u"{{" + variable + u"}} {{y}} {{z}}",
                                    QStringLiteral("c"));
        stage.desk.server.addSkill(QStringLiteral("s"), name, name);
        stage.desk.workspace.addApplication(PickerDesk::editorPid, name,
                                            QStringLiteral("org.example.Editor"));
    }

    /// The window has kept its size, and everything in it is one plain line.
    static void expectOrder(QWidget &window, const QSize &size)
    {
        QTest::qWait(20);
        EXPECT_EQ(window.size(), size);
        for (const TextLabel *label : window.findChildren<TextLabel *>()) {
            EXPECT_EQ(label->textFormat(), Qt::PlainText);
            EXPECT_TRUE(label->isHidden() || isPlainLine(label->text()))
                << qPrintable(label->text().left(100));
        }
        for (QAbstractItemView *list : window.findChildren<QAbstractItemView *>()) {
            for (int row = 0; list->isVisible() && row < list->model()->rowCount(); ++row) {
                const QModelIndex index = list->model()->index(row, 0);
                for (const int role : {int(Qt::DisplayRole), int(Qt::AccessibleTextRole),
                                       int(PickerListModel::previewRole), int(PickerListModel::categoryRole)})
                    EXPECT_TRUE(isPlainLine(index.data(role).toString()));
            }
        }
        for (QWidget *button : window.findChildren<ThemedButton *>()) {
            EXPECT_TRUE(isPlainLine(button->toolTip()));
            EXPECT_TRUE(isPlainLine(button->accessibleDescription()));
        }
    }
};

TEST_P(HostileNames, doNotDisturbThePalette)
{
    stage.install();
    AppWindows windows(stage.appState(), stage.desk.workspace, *stage.controller);
    windows.showPalette();
    ASSERT_TRUE(waitUntil([&] { return windows.palette()->isVisible(); }));
    PromptPalettePanel &panel = windows.palette()->panel();
    const QSize size = panel.size();
    expectOrder(panel, size);
    stage.appState().setSelectedCategoryID(QStringLiteral("c"));
    expectOrder(panel, size);
}

TEST_P(HostileNames, doNotDisturbTheBanner)
{
    stage.open();
    const QSize size = stage.panel().size();
    stage.list().actions().shareButton().click();
    ASSERT_TRUE(waitUntil([&] { return stage.view().banner().isVisible(); }));
    expectOrder(stage.panel(), size);
    EXPECT_TRUE(isPlainLine(stage.view().banner().accessibleName()));
}

TEST_P(HostileNames, doNotDisturbTheLibrary)
{
    stage.open();
    const QSize size = stage.panel().size();
    stage.view().setRoute(PickerPanelRoute::library);
    LibraryPage &library = stage.view().libraryPage();
    ASSERT_TRUE(waitUntil([&] { return library.isVisible(); }));
    EXPECT_EQ(library.list().items().rowCount(), 2) << "a prompt and a skill";
    expectOrder(stage.panel(), size);
    library.setFilter(LibraryFilter::category(QStringLiteral("c")));
    EXPECT_TRUE(isPlainLine(library.title()));
    EXPECT_TRUE(isPlainLine(library.searchField().accessibleName()));
    expectOrder(stage.panel(), size);
}

/// The fields of the form on screen say in one line whose they are.
void expectPlainFields(QWidget &window)
{
    int shown = 0;
    for (const TextField *field : window.findChildren<TextField *>()) {
        EXPECT_TRUE(isPlainLine(field->accessibleName()));
        EXPECT_TRUE(isPlainLine(field->placeholderText()));
        shown += field->isVisible();
    }
    EXPECT_GE(shown, 2);
}

TEST_P(HostileNames, doNotDisturbTheVariableFormOfThePicker)
{
    stage.open();
    const QSize size = stage.panel().size();
    stage.key(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return stage.appState().activeVariablePrompt().has_value(); }));
    expectPlainFields(stage.panel());
    stage.type(QStringLiteral("a value"));
    expectOrder(stage.panel(), size);
}

TEST_P(HostileNames, doNotDisturbTheVariableFormOfTheLibrary)
{
    stage.open();
    const QSize size = stage.panel().size();
    stage.view().setRoute(PickerPanelRoute::library);
    LibraryPage &library = stage.view().libraryPage();
    QTest::keyClick(&library.searchField(), Qt::Key_Return, Qt::ControlModifier);
    ASSERT_TRUE(library.isFormShown());
    expectPlainFields(stage.panel());
    stage.type(QStringLiteral("a value"));
    expectOrder(stage.panel(), size);
}

INSTANTIATE_TEST_SUITE_P(All, HostileNames, testing::ValuesIn(names),
                         [](const auto &info) { return std::string(info.param.what); });

} // namespace
