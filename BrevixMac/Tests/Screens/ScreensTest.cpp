// SPDX-License-Identifier: GPL-3.0-or-later
#include "AccessibleRoles.h"
#include "GalleryCamera.h"
#include "GalleryPicture.h"
#include "HintBubble.h"
#include "ScreenChecks.h"
#include "TabWalk.h"

#include <QApplication>
#include <QMap>
#include <QTest>

#include <gtest/gtest.h>

namespace {

struct Tour
{
    GalleryPart part;
    int percent;
};

void PrintTo(const Tour &tour, std::ostream *out)
{
    *out << tour.part.name << ' ' << tour.percent << " %";
}

std::vector<Tour> tours()
{
    std::vector<Tour> tours;
    for (const GalleryPart &part : galleryParts) {
        for (const int percent : {100, 200})
            tours.push_back({part, percent});
    }
    return tours;
}

/// What waits for a key combination leads no key on.
const QStringList takesAllKeys{QStringLiteral("settings-recording")};

/// Looks at every state that the gallery arranges of a screen, at one font size.
class Screens : public testing::TestWithParam<Tour>
{
protected:
    static void SetUpTestSuite() { AccessibleRoles::install(); }

    Screens()
    {
        Theme::shared().forceScheme(Theme::Scheme::light);
        Theme::shared().forceFontScale(m_scale);
    }

    ~Screens() override
    {
        Theme::shared().forceScheme(std::nullopt);
        Theme::shared().forceFontScale(std::nullopt);
    }

    void walk()
    {
        // Some states bring a font size of their own.
        GetParam().part.draw(
            {.wants = [this](const QString &) { return Theme::shared().fontScale() == m_scale; },
             .shoot =
                 [this](QWidget &screen, const QString &name, PictureGround ground) {
                     // The panel around it would show its tips.
                     std::optional<HintBubble> bubble;
                     if (ground == PictureGround::panel)
                         bubble.emplace(&screen);
                     look(screen, name);
                 }});
    }

    /// In how many states.
    int m_looked = 0;
    /// The states that show each fault.
    QMap<QString, QStringList> m_faults;

private:
    void look(QWidget &screen, const QString &name)
    {
        ++m_looked;
        screen.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&screen)) << qPrintable(name);
        QApplication::setActiveWindow(&screen); // the offscreen platform forgets a window that was hidden
        waitUntilStill(screen);
        QStringList faults = ScreenChecks::all(screen);
        if (!takesAllKeys.contains(name))
            faults += TabWalk::faults(screen);
        for (const QString &fault : std::as_const(faults))
            m_faults[fault].append(name);
    }

    qreal m_scale = GetParam().percent / 100.0;
};

TEST_P(Screens, canBeReadReachedHitAndHeardInEveryState)
{
    walk();
    EXPECT_GT(m_looked, 0);
    for (auto fault = m_faults.cbegin(); fault != m_faults.cend(); ++fault)
        ADD_FAILURE() << qPrintable(fault.key()) << "\n  in "
                      << qPrintable(fault->join(QStringLiteral(", ")));
}

INSTANTIATE_TEST_SUITE_P(Gallery, Screens, testing::ValuesIn(tours()), [](const auto &info) {
    return info.param.part.name + std::to_string(info.param.percent);
});

} // namespace
