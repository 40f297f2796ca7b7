// SPDX-License-Identifier: GPL-3.0-or-later
#include "ShortcutCaptureMonitor.h"
#include "ShortcutRecorderView.h"
#include "ThemedButton.h"

#include "Support/InMemoryDesktop.h"
#include "Support/Waiting.h"

#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

namespace {

constexpr quint64 control = KeyboardShortcut::control;

class Recorder : public testing::Test
{
protected:
    Recorder()
        : recorder(std::make_unique<ShortcutRecorderView>(
              capture, [this](const KeyboardShortcut &shortcut) { changes.append(shortcut); }))
    {
        auto *layout = new QVBoxLayout(&window);
        layout->addWidget(recorder.get());
        layout->addWidget(field = new QLineEdit);
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        QObject::connect(recorder.get(), &ShortcutRecorderView::refused, &window,
                         [this](const QString &reason) { refusals.append(reason); });
    }

    bool isRecording() const { return recorder->monitor().isRecording(); }
    QString label() const { return recorder->recordButton().text(); }
    void record() { recorder->recordButton().click(); }

    InMemoryKeyCapture capture;
    QWidget window;
    QLineEdit *field = nullptr;
    std::unique_ptr<ShortcutRecorderView> recorder;
    QList<KeyboardShortcut> changes;
    QStringList refusals;
};

} // namespace

TEST_F(Recorder, takesTheFirstCombinationAndEnds)
{
    EXPECT_EQ(label(), QStringLiteral("Record Shortcut"));
    record();
    EXPECT_EQ(label(), QStringLiteral("Press Shortcut..."));
    EXPECT_TRUE(capture.isActive);
    capture.press({.keyCode = 40, .modifiers = control});
    ASSERT_EQ(changes.size(), 1);
    EXPECT_EQ(changes.first(), (KeyboardShortcut{.keyCode = 40, .modifiers = control}));
    EXPECT_FALSE(isRecording());
    EXPECT_FALSE(capture.isActive);
    EXPECT_EQ(label(), QStringLiteral("Record Shortcut"));
    capture.press({.keyCode = 41, .modifiers = control});
    EXPECT_EQ(changes.size(), 1);
}

TEST_F(Recorder, swallowsWhatIsNoShortcutAndGoesOn)
{
    record();
    for (quint32 modifierKey = 54; modifierKey <= 62; ++modifierKey)
        capture.press({.keyCode = modifierKey, .modifiers = control});
    capture.press({.keyCode = {}, .modifiers = control, .isModifier = true});
    capture.press({.keyCode = 0, .modifiers = 0});
    capture.press({.keyCode = 53, .modifiers = 0}); // Escape is no cancel key
    EXPECT_TRUE(changes.isEmpty());
    EXPECT_TRUE(refusals.isEmpty());
    EXPECT_TRUE(isRecording());
}

TEST_F(Recorder, refusesWithAWordKeysOutsideTheTableAndWhatItPastesWith)
{
    record();
    capture.press({.keyCode = {}, .modifiers = control});
    EXPECT_EQ(refusals.size(), 1);
    capture.press({.keyCode = 9, .modifiers = control});
    capture.press({.keyCode = 114, .modifiers = KeyboardShortcut::shift});
    EXPECT_EQ(refusals.size(), 3);
    EXPECT_TRUE(refusals.last().contains(u"⇧Key 114"));
    EXPECT_TRUE(changes.isEmpty());
    EXPECT_TRUE(isRecording());
    capture.press({.keyCode = 9, .modifiers = KeyboardShortcut::command});
    EXPECT_EQ(changes.size(), 1);
}

TEST_F(Recorder, theButtonCancels)
{
    record();
    QTest::mouseClick(&recorder->recordButton(), Qt::LeftButton);
    EXPECT_FALSE(isRecording());
    EXPECT_FALSE(capture.isActive);
    EXPECT_TRUE(changes.isEmpty());
}

TEST_F(Recorder, resetGivesTheDefaultAndLeavesTheRecordingAlone)
{
    record();
    recorder->resetButton().click();
    EXPECT_EQ(changes, QList{KeyboardShortcut()});
    EXPECT_TRUE(isRecording());
}

TEST_F(Recorder, swallowsEveryKeyOfTheWindowWhileItRecordsAndNoneAfterwards)
{
    capture.isRefused = true;
    field->setFocus();
    record();
    EXPECT_TRUE(isRecording()) << "without the keyboard, what reaches the window can still be recorded";
    QTest::keyClicks(field, QStringLiteral("abc"));
    QTest::keyClick(field, Qt::Key_Escape);
    EXPECT_EQ(field->text(), QString());
    EXPECT_TRUE(window.isVisible());
    EXPECT_TRUE(isRecording());

    capture.numberOfEveryKey = 40;
    QTest::keyClick(field, Qt::Key_K, Qt::ControlModifier | Qt::MetaModifier);
    ASSERT_EQ(changes.size(), 1);
    EXPECT_EQ(changes.first().modifiers, control | KeyboardShortcut::command);
    QTest::keyClicks(field, QStringLiteral("abc"));
    EXPECT_EQ(field->text(), QStringLiteral("abc"));
}

TEST_F(Recorder, endsWhenItsWindowLosesTheFocus)
{
    record();
    QWidget other;
    other.show();
    other.activateWindow();
    EXPECT_TRUE(waitUntil([this] { return !isRecording(); }));
    EXPECT_FALSE(capture.isActive);
}

TEST_F(Recorder, endsWhenItIsHiddenOrItsWindowClosed)
{
    record();
    recorder->hide();
    EXPECT_FALSE(isRecording());
    recorder->show();
    record();
    window.close();
    EXPECT_FALSE(isRecording());
    EXPECT_FALSE(capture.isActive);
}

TEST_F(Recorder, endsAfterItsTimeLimit)
{
    recorder->monitor().setTimeLimit(std::chrono::milliseconds(30));
    record();
    EXPECT_TRUE(waitUntil([this] { return !isRecording(); }));
    EXPECT_FALSE(capture.isActive);
}

TEST_F(Recorder, endsWithItsWidget)
{
    record();
    recorder.reset();
    EXPECT_FALSE(capture.isActive);
    field->setFocus();
    QTest::keyClicks(field, QStringLiteral("a"));
    EXPECT_EQ(field->text(), QStringLiteral("a"));
}

TEST_F(Recorder, mayDieOfWhatItRecorded)
{
    ShortcutRecorderView *doomed = nullptr;
    auto *owned = new ShortcutRecorderView(capture, [&](const KeyboardShortcut &) { delete doomed; });
    doomed = owned;
    window.layout()->addWidget(owned);
    owned->recordButton().click();
    capture.press({.keyCode = 40, .modifiers = control});
    EXPECT_FALSE(capture.isActive);
}
