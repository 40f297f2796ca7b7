// SPDX-License-Identifier: GPL-3.0-or-later
#include "ContentScrollArea.h"
#include "Doctor.h"
#include "DoctorRows.h"
#include "PickerStage.h"
#include "SettingsCard.h"
#include "SettingsPage.h"
#include "SettingsRow.h"
#include "SettingsView.h"
#include "SettingsWindowController.h"
#include "StatusChip.h"
#include "Theme.h"
#include "ThemedButton.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

using Tint = StatusChip::Tint;

class SettingsDoctorTest : public testing::Test
{
protected:
    ~SettingsDoctorTest() override { Theme::shared().forceFontScale(std::nullopt); }

    SessionFacts &facts() { return probe().facts; }
    InMemorySessionProbe &probe() { return stage.desk.sessionProbe; }
    DoctorRows &rows() { return view().doctor(); }
    SettingsView &view() { return stage.view().settingsPage().view(); }

    /// Opens the settings in the panel and waits for what is found.
    void open()
    {
        stage.open();
        stage.view().setRoute(PickerPanelRoute::settings);
        ASSERT_TRUE(waitUntil([this] { return isDone(); }));
    }

    bool isDone()
    {
        const Doctor &doctor = stage.appState().doctor();
        return !doctor.isExamining() && !doctor.report().rows.isEmpty();
    }

    void expectRow(const QString &id, Tint tint, const QString &word, const QString &reason,
                   const QString &fix)
    {
        EXPECT_EQ(rows().chip(id).tint(), tint) << qPrintable(id);
        EXPECT_EQ(rows().chip(id).text(), word) << qPrintable(id);
        EXPECT_TRUE(rows().row(id).subtitle().contains(reason)) << qPrintable(rows().row(id).subtitle());
        EXPECT_TRUE(rows().row(id).note().contains(fix)) << qPrintable(rows().row(id).note());
        EXPECT_EQ(rows().row(id).note().isEmpty(), fix.isEmpty()) << qPrintable(id);
    }

    void bringIntoView(QWidget &widget)
    {
        view().findChild<ContentScrollArea *>()->ensureWidgetVisible(&widget);
        QTest::qWait(20);
    }

    PickerStage stage;
};

} // namespace

TEST_F(SettingsDoctorTest, nothingIsExaminedBeforeTheSettingsAreOpened)
{
    stage.open();
    EXPECT_EQ(probe().examinations, 0);
    EXPECT_EQ(rows().chip(u"tray"_s).text(), u"Checking"_s);
    stage.view().setRoute(PickerPanelRoute::settings);
    EXPECT_TRUE(waitUntil([this] { return isDone(); }));
    EXPECT_EQ(probe().examinations, 1);
    EXPECT_EQ(probe().scheme, stage.appState().configuration().firebase.reversedClientID);
}

TEST_F(SettingsDoctorTest, everyRowOfTheReportStandsUnderSystemAccess)
{
    open();
    const SettingsCard *card = nullptr;
    for (const SettingsCard *each : view().cards()) {
        if (each->title() == u"System Access")
            card = each;
    }
    ASSERT_TRUE(card);
    int above = rows().headRow().y();
    for (const DoctorRow &row : Doctor::emptyRows()) {
        const SettingsRow &shown = rows().row(row.id);
        EXPECT_EQ(shown.title(), row.title);
        EXPECT_EQ(shown.parentWidget(), card);
        EXPECT_GT(shown.y(), above) << qPrintable(row.id);
        above = shown.y();
        expectRow(row.id, Tint::success, u"Works"_s, u"."_s, {});
    }
}

TEST_F(SettingsDoctorTest, eachStateHasItsWordItsReasonAndItsFix)
{
    facts().mutePrograms = {u"Kate"_s};
    facts().accessiblePrograms = 0;
    facts().tray = SessionFacts::Tray::none;
    open();
    expectRow(u"hotkey"_s, Tint::success, u"Works"_s, u"Super+Shift+P opens the picker."_s, {});
    expectRow(u"capture"_s, Tint::warning, u"Degraded"_s, u"Kate does not tell"_s, u"Restart"_s);
    expectRow(u"directInsertion"_s, Tint::neutral, u"Unknown"_s, u"No open program tells"_s,
              u"Open an editor"_s);
    expectRow(u"tray"_s, Tint::danger, u"Fails"_s, u"Nothing shows tray icons"_s, u"panel"_s);
    EXPECT_EQ(rows().chip(u"tray"_s).accessibleName(), u"Tray: fails"_s);
}

TEST_F(SettingsDoctorTest, theInstancesOwnTruthCounts)
{
    stage.desk.hotKeys.isTaken = true;
    stage.desk.keyEvents.allowed = false;
    stage.desk.statusItem.shown = false;
    open();
    expectRow(u"hotkey"_s, Tint::danger, u"Fails"_s, u"held by another"_s, u"Record another"_s);
    expectRow(u"paste"_s, Tint::danger, u"Fails"_s, u"lost its connection"_s, u"start it again"_s);
    expectRow(u"tray"_s, Tint::danger, u"Fails"_s, u"has not taken the icon"_s, u"Restart"_s);
}

TEST_F(SettingsDoctorTest, theButtonLooksAgainByMouseAndByKeyboard)
{
    facts().tray = SessionFacts::Tray::none;
    open();
    expectRow(u"tray"_s, Tint::danger, u"Fails"_s, u"Nothing shows"_s, u"panel"_s);

    facts().tray = SessionFacts::Tray::embedding;
    probe().delay = std::chrono::milliseconds(30);
    bringIntoView(rows().examineButton());
    QTest::mouseClick(&rows().examineButton(), Qt::LeftButton);
    EXPECT_EQ(rows().examineButton().text(), u"Examining..."_s);
    expectRow(u"tray"_s, Tint::danger, u"Fails"_s, u"Nothing shows"_s, u"panel"_s);
    EXPECT_TRUE(waitUntil([this] { return isDone(); }));
    expectRow(u"tray"_s, Tint::success, u"Works"_s, u"XEmbed"_s, {});
    EXPECT_EQ(rows().examineButton().text(), u"Examine Again"_s);

    facts().clipboard = SessionFacts::Clipboard::silent;
    rows().examineButton().setFocus(Qt::TabFocusReason);
    stage.key(Qt::Key_Space);
    EXPECT_TRUE(rows().examineButton().hasFocus());
    EXPECT_TRUE(waitUntil([this] { return isDone(); }));
    expectRow(u"clipboardRestore"_s, Tint::danger, u"Fails"_s, u"Editor, which owns"_s, u"restart Editor"_s);
    EXPECT_EQ(probe().examinations, 3);
}

TEST_F(SettingsDoctorTest, openingTheSettingsAgainLooksAgain)
{
    open();
    stage.key(Qt::Key_Escape);
    EXPECT_EQ(stage.view().route(), PickerPanelRoute::picker);
    facts().tray = SessionFacts::Tray::none;
    stage.view().setRoute(PickerPanelRoute::settings);
    EXPECT_TRUE(waitUntil([this] { return rows().chip(u"tray"_s).text() == u"Fails"; }));

    facts().tray = SessionFacts::Tray::notifier;
    SettingsWindowController controller(stage.appState());
    controller.show();
    ASSERT_TRUE(controller.view());
    EXPECT_TRUE(waitUntil([&] { return controller.view()->doctor().chip(u"tray"_s).text() == u"Works"; }));
}

TEST_F(SettingsDoctorTest, longTextsWrapAndNothingLiesOverAnything)
{
    for (const double scale : {1.0, 2.0}) {
        Theme::shared().forceFontScale(scale);
        facts().mutePrograms = {u"A program with quite a long name"_s, u"Another of them"_s,
                                u"Anticonstitutionnellement"_s, u"And one more"_s, u"Fifth"_s};
        facts().tray = SessionFacts::Tray::none;
        open();
        QTest::qWait(50);
        const QStringList ids{u"capture"_s, u"tray"_s, u"hotkey"_s};
        for (const QString &id : ids) {
            const SettingsRow &row = rows().row(id);
            const StatusChip &chip = rows().chip(id);
            EXPECT_GE(chip.width(), chip.sizeHint().width()) << qPrintable(id);
            EXPECT_LE(chip.geometry().right(), row.width()) << qPrintable(id);
            QList<QRect> texts;
            for (const QLabel *label : row.findChildren<QLabel *>()) {
                if (!label->isVisible())
                    continue;
                EXPECT_GE(label->height(), label->heightForWidth(label->width()))
                    << qPrintable(id) << " at " << scale;
                for (const QRect &other : std::as_const(texts))
                    EXPECT_FALSE(other.intersects(label->geometry())) << qPrintable(id) << " at " << scale;
                texts.append(label->geometry());
            }
        }
        stage.controller.reset();
    }
}
