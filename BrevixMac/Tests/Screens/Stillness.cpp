// SPDX-License-Identifier: GPL-3.0-or-later
#include "Stillness.h"

#include "Support/Waiting.h"

#include <QElapsedTimer>
#include <QWidget>

namespace {

constexpr std::chrono::milliseconds rest{50};

struct Place
{
    const QWidget *widget;
    QRect geometry;
    bool operator==(const Place &) const = default;
};

QList<Place> places(const QWidget &window)
{
    QList<Place> places{{&window, window.geometry()}};
    for (const QWidget *widget : window.findChildren<QWidget *>()) {
        if (widget->isVisible())
            places.append({widget, widget->geometry()});
    }
    return places;
}

} // namespace

bool waitUntilAtRest(const QWidget &window, std::chrono::milliseconds deadline)
{
    QList<Place> last = places(window);
    QElapsedTimer resting;
    resting.start();
    return waitUntil(
        [&] {
            QList<Place> now = places(window);
            if (now != last) {
                last = std::move(now);
                resting.start();
            }
            return resting.hasExpired(rest.count());
        },
        deadline);
}
