// SPDX-License-Identifier: GPL-3.0-or-later
#include "HotkeyService.h"

#include "Support/InMemoryDesktop.h"
#include "Support/Waiting.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <memory>

namespace {

const KeyboardShortcut standardShortcut;
const KeyboardShortcut otherShortcut{.keyCode = 49,
                                     .modifiers = KeyboardShortcut::control | KeyboardShortcut::option};

std::pair<quint32, quint64> combination(const KeyboardShortcut &shortcut)
{
    return {shortcut.keyCode, shortcut.modifiers};
}

class HotkeyServiceTest : public testing::Test
{
protected:
    void press()
    {
        Q_EMIT hotKeys.pressed();
        QCoreApplication::processEvents();
    }

    InMemoryHotKeys hotKeys;
    HotkeyService service{hotKeys};
    int firstRuns = 0;
    int secondRuns = 0;
    const std::function<void()> first = [this] { ++firstRuns; };
    const std::function<void()> second = [this] { ++secondRuns; };
};

} // namespace

TEST_F(HotkeyServiceTest, aRegisteredShortcutRunsItsHandlerAtEveryPress)
{
    service.registerHotkey(standardShortcut, first);

    press();
    press();

    EXPECT_EQ(firstRuns, 2);
    EXPECT_EQ(hotKeys.registered, combination(standardShortcut));
    EXPECT_TRUE(service.isRegistered());
    EXPECT_FALSE(service.wasRefused());
}

TEST_F(HotkeyServiceTest, theHandlerRunsFromTheEventLoopAndNotInsideTheCallback)
{
    service.registerHotkey(standardShortcut, first);

    Q_EMIT hotKeys.pressed();

    EXPECT_EQ(firstRuns, 0);
    EXPECT_TRUE(waitUntil([this] { return firstRuns == 1; }));
}

TEST_F(HotkeyServiceTest, registeringTheSameShortcutTwiceLeavesOneRegistrationAndTheNewestHandler)
{
    service.registerHotkey(standardShortcut, first);
    service.registerHotkey(standardShortcut, second);

    press();

    EXPECT_EQ(firstRuns, 0);
    EXPECT_EQ(secondRuns, 1);
    EXPECT_EQ(hotKeys.registered, combination(standardShortcut));
}

TEST_F(HotkeyServiceTest, aPressThatWaitsForTheEventLoopRunsTheHandlerThatIsNewestThen)
{
    service.registerHotkey(standardShortcut, first);
    Q_EMIT hotKeys.pressed();

    service.registerHotkey(otherShortcut, second);
    QCoreApplication::processEvents();

    EXPECT_EQ(firstRuns, 0);
    EXPECT_EQ(secondRuns, 1);
}

TEST_F(HotkeyServiceTest, anotherShortcutReplacesTheFirst)
{
    service.registerHotkey(standardShortcut, first);
    service.registerHotkey(otherShortcut, second);

    EXPECT_EQ(hotKeys.registered, combination(otherShortcut));
}

TEST_F(HotkeyServiceTest, theOldShortcutIsGivenBackBeforeTheNewOneIsTaken)
{
    class StrictHotKeys final : public InMemoryHotKeys
    {
    public:
        bool wasHeldAtRegistration = false;
        bool registerHotKey(quint32 keyCode, quint64 modifiers) override
        {
            wasHeldAtRegistration = wasHeldAtRegistration || registered.has_value();
            return InMemoryHotKeys::registerHotKey(keyCode, modifiers);
        }
    };
    StrictHotKeys strict;
    HotkeyService strictService(strict);

    strictService.registerHotkey(standardShortcut, first);
    strictService.registerHotkey(standardShortcut, second);

    EXPECT_FALSE(strict.wasHeldAtRegistration);
}

TEST_F(HotkeyServiceTest, aRefusedShortcutLeavesNoRegistrationAndSaysNothing)
{
    service.registerHotkey(standardShortcut, first);
    hotKeys.isTaken = true;

    service.registerHotkey(otherShortcut, second);

    EXPECT_FALSE(service.isRegistered());
    EXPECT_TRUE(service.wasRefused());
    EXPECT_EQ(hotKeys.registered, std::nullopt);
}

TEST_F(HotkeyServiceTest, aShortcutThatWasRefusedCanBeRegisteredLater)
{
    hotKeys.isTaken = true;
    service.registerHotkey(standardShortcut, first);
    hotKeys.isTaken = false;

    service.registerHotkey(standardShortcut, first);

    EXPECT_TRUE(service.isRegistered());
    EXPECT_FALSE(service.wasRefused());
}

TEST_F(HotkeyServiceTest, aRemovedHotkeyRunsNothing)
{
    service.registerHotkey(standardShortcut, first);
    service.unregisterHotkey();

    press();

    EXPECT_EQ(firstRuns, 0);
    EXPECT_EQ(hotKeys.registered, std::nullopt);
    EXPECT_FALSE(service.isRegistered());
    EXPECT_FALSE(service.wasRefused());
}

TEST_F(HotkeyServiceTest, everyChangeOfTheRegistrationIsPublished)
{
    int changes = 0;
    QObject::connect(&service, &HotkeyService::registrationChanged, &service, [&changes] { ++changes; });

    service.registerHotkey(standardShortcut, first);
    EXPECT_EQ(changes, 1);
    service.unregisterHotkey();
    EXPECT_EQ(changes, 2);
}

TEST_F(HotkeyServiceTest, aHotkeyThatTheSessionTakesAwayAndGivesBackIsToldOf)
{
    service.registerHotkey(standardShortcut, first);
    QList<bool> told;
    QObject::connect(&service, &HotkeyService::registrationChanged, &service,
                     [&] { told.append(service.isRegistered()); });

    Q_EMIT hotKeys.lost();
    EXPECT_FALSE(service.isRegistered());
    EXPECT_TRUE(service.wasRefused());

    Q_EMIT hotKeys.regained();
    EXPECT_TRUE(service.isRegistered());
    EXPECT_FALSE(service.wasRefused());
    EXPECT_EQ(told, (QList<bool>{false, true}));
}

TEST_F(HotkeyServiceTest, aHandlerMayRegisterAnotherShortcutAndHandler)
{
    service.registerHotkey(standardShortcut, [this] { service.registerHotkey(otherShortcut, second); });

    press();
    press();

    EXPECT_EQ(secondRuns, 1);
    EXPECT_EQ(hotKeys.registered, combination(otherShortcut));
}

TEST_F(HotkeyServiceTest, aDestroyedServiceGivesTheShortcutBackAndRunsNoWaitingPress)
{
    InMemoryHotKeys others;
    auto shortLived = std::make_unique<HotkeyService>(others);
    shortLived->registerHotkey(standardShortcut, first);
    Q_EMIT others.pressed();

    shortLived.reset();
    QCoreApplication::processEvents();

    EXPECT_EQ(firstRuns, 0);
    EXPECT_EQ(others.registered, std::nullopt);
}

TEST_F(HotkeyServiceTest, theFirstServiceIsTheSharedOne)
{
    EXPECT_EQ(HotkeyService::shared(), &service);
    {
        InMemoryHotKeys others;
        const HotkeyService another(others);
        EXPECT_EQ(HotkeyService::shared(), &service);
    }
    EXPECT_EQ(HotkeyService::shared(), &service);
}
